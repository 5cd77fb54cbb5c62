// The market page in the main window.

#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/MarketStatisticsWidget.h"

#include <QSizePolicy>
#include <QVBoxLayout>

void LarkspireApp::addMarketPage()
{
    m_ui->marketStatisticsWidget->hide(); // the place that was kept
    m_ui->marketStatisticsPageLayout->addWidget(m_marketStatisticsWidget);
    // The ranking's least width is not to keep the window, and the small panel of the stock page, from being
    // narrower.
    m_ui->marketStatisticsPage->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void LarkspireApp::refreshMarketPage()
{
    if (m_marketStatisticsWidget)
        m_marketStatisticsWidget->refreshData();
}

void LarkspireApp::adoptMarketSettings(bool otherService)
{
    if (!m_marketStatisticsWidget)
        return;
    if (otherService) {
        StockApiConfig::instance()->refreshFromSettings();
        m_marketStatisticsWidget->useConfiguredService();
    }
    m_marketStatisticsWidget->applyFontSettings();
}
