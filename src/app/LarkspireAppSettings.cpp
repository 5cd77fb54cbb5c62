#include "app/LarkspireApp.h"

#include "desktop/AutoStartManager.h"
#include "settings/ConfigDialog.h"
#include "settings/ConfigManager.h"
#include "stockviews/StockAnalysisWidget.h"

void LarkspireApp::onConfigButtonClicked()
{
    if (m_configDialog) {
        // The tray's menu works while the dialog is open.
        m_configDialog->raise();
        m_configDialog->activateWindow();
        return;
    }
    mirrorAutoStart();
    ConfigDialog dialog(m_config, this);
    m_configDialog = &dialog;
    placeDialog(&dialog);
    if (dialog.exec() == QDialog::Accepted)
        adoptConfig(dialog.getConfig());
    else if (dialog.wasReset())
        rereadConfig();
}

void LarkspireApp::mirrorAutoStart()
{
    if (!m_autoStartManager)
        return;
    m_config.enableAutoStart = m_autoStartManager->isAutoStartEnabled();
    ConfigManager::instance()->setEnableAutoStart(m_config.enableAutoStart);
}

void LarkspireApp::rereadConfig()
{
    const bool wasDark = m_config.darkMode;
    const QString oldServerUrl = m_config.serverUrl;
    readConfig();
    m_config.darkMode = ConfigManager::instance()->getDarkMode();
    applyConfig(isVisible());
    tellPagesOfSettings(m_config.serverUrl != oldServerUrl);
    if (m_config.darkMode != wasDark)
        adoptTheme();
}

void LarkspireApp::tellPagesOfSettings(bool otherService)
{
    // Brings the shared address of the service up to date as well.
    adoptMarketSettings(otherService);
    if (!m_stockAnalysisWidget)
        return;
    if (otherService)
        m_stockAnalysisWidget->useConfiguredService();
    m_stockAnalysisWidget->reloadSettings();
}
