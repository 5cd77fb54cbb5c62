// The concept panel of the stock page: opening it, filling it, having it follow the stock.

#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/ThemeStocksDialog.h"

void StockAnalysisWidget::onThemeButtonClicked()
{
    if (m_themeDialog && m_themeDialog->isOnScreen()) {
        m_themeDialog->close();
        return;
    }
    showStatus(QStringLiteral("正在查询主题信息..."));
    m_themesFollowStock = false;
    queryThemes(m_currentStockCode);
}

void StockAnalysisWidget::queryThemes(const QString &code)
{
    m_themeQueries.noteQuery(code);
    m_apiClient->getThemeStocks(code);
}

void StockAnalysisWidget::followWithThemeDialog(const QString &code)
{
    if (!m_themeDialog || !m_themeDialog->isVisible())
        return;
    m_themesFollowStock = true;
    queryThemes(code);
}

void StockAnalysisWidget::onThemeStocksReceived(const QList<ThemeStockInfo> &themes)
{
    const QString answered = themes.isEmpty() ? QString() : themes.first().stockCode;
    if (m_themeQueries.takeIsOfStockLeft(answered, m_currentStockCode)) {
        if (m_themeQueries.lastCode() != m_currentStockCode)
            queryThemes(m_currentStockCode);
        return;
    }
    showStatus(QStringLiteral("查询到 %1 个主题信息").arg(themes.size()));
    const int position = ConfigManager::instance()->getThemePosition();
    if (!m_themeDialog)
        m_themeDialog = new ThemeStocksDialog(m_currentStockCode, m_currentStockName, position, this);
    m_themeDialog->setPositionOption(position);
    m_themeDialog->setStockInfo(m_currentStockCode, m_currentStockName);
    // The page may end while the panel lets its layout settle, and takes the panel along.
    const QPointer<ThemeStocksDialog> dialog = m_themeDialog;
    dialog->setThemes(themes);
    // Closed while its answer was under way it stays closed.
    if (dialog && !m_themesFollowStock)
        dialog->bringOnScreen();
}
