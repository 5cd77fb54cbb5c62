// The stock page in the main window.

#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "stockviews/StockAnalysisWidget.h"

#include <QVBoxLayout>

void LarkspireApp::addStockPage()
{
    m_ui->stockAnalysisWidget->hide(); // the place that was kept
    m_ui->stockAnalysisPageLayout->addWidget(m_stockAnalysisWidget);
    connect(m_stockAnalysisWidget, &StockAnalysisWidget::stockCodeChanged, this,
            &LarkspireApp::onStockCodeChanged);
    connect(m_stockAnalysisWidget, &StockAnalysisWidget::searchStockNameRequested, this,
            &LarkspireApp::onSearchStockNameRequested);
}
