#pragma once

#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"

#include <QString>

/// Points the configuration at a service: clients that are built from now on ask there.
inline void useStockService(const QString &url, const QString &sessionToken = QString())
{
    ConfigManager::instance()->setApiServerUrl(url);
    ConfigManager::instance()->setSessionToken(sessionToken);
    StockApiConfig::instance()->refreshFromSettings();
}
