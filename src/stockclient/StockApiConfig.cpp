#include "stockclient/StockApiConfig.h"

#include "accounts/DeviceIdentity.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"

#include <QCoreApplication>
#include <QDebug>
#include <QJsonObject>

StockApiConfig *StockApiConfig::instance()
{
    static auto *const theInstance = new StockApiConfig;
    return theInstance;
}

StockApiConfig::StockApiConfig()
{
    refreshFromSettings();
}

StockApiConfig::~StockApiConfig() = default;

void StockApiConfig::setTdxOffset(const QString &offset)
{
    m_tdxOffset = offset;
}

void StockApiConfig::setThsOffset(const QString &offset)
{
    m_thsOffset = offset;
}

void StockApiConfig::setTdxVersion(const QString &version)
{
    m_tdxVersion = version;
}

void StockApiConfig::setThsVersion(const QString &version)
{
    m_thsVersion = version;
}

void StockApiConfig::setCurrentSoftware(const QString &software)
{
    m_currentSoftware = software;
}

bool StockApiConfig::isValid() const
{
    return !m_baseUrl.isEmpty() && !ConfigManager::instance()->getSessionToken().isEmpty();
}

void StockApiConfig::refreshFromSettings()
{
    const ConfigManager *const settings = ConfigManager::instance();
    m_baseUrl = settings->getApiServerUrl();
    m_apiKey = settings->getApiKey();
    m_deviceId = DeviceIdentity::deviceId();
    m_deviceName = DeviceIdentity::deviceName();
    m_deviceType = DeviceIdentity::deviceType();
    m_osInfo = DeviceIdentity::osInfo();
}

void StockApiConfig::takeLinkage(const QJsonObject &config)
{
    const auto text = [&config](QLatin1String key) { return config.value(key).toString(); };
    setTdxOffset(text(QLatin1String("tdx_offset_addr")));
    setThsOffset(text(QLatin1String("ths_offset_addr")));
    setTdxVersion(text(QLatin1String("tdx_version")));
    setThsVersion(text(QLatin1String("ths_version")));
    setCurrentSoftware(text(QLatin1String("current_software")));
}

void StockApiConfig::loadFromServer()
{
    if (!isValid())
        return;
    auto *const client = new StockApiClient; // of no parent: each of its ends deletes it
    connect(client, &StockApiClient::stockHelperConfigReceived, this,
            [this, client](const QJsonObject &config) {
                takeLinkage(config);
                client->deleteLater();
            });
    connect(client, &StockApiClient::queryError, this, [client](const QString &error) {
        qWarning() << "The linkage configuration could not be loaded:" << error;
        client->deleteLater();
    });
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, client, &QObject::deleteLater);
    client->getStockHelperConfig();
}
