// The move analysis of the stock page: its panel is opened and closed by the button or the hot key, and
// follows the stock on show while it is open.

#include "stockclient/StockApiClient.h"
#include "stockviews/DynamicAnalysisDialog.h"
#include "stockviews/StockAnalysisWidget.h"

void StockAnalysisWidget::onSearchStockButtonClicked()
{
    if (m_dynamicAnalysisDialog && m_dynamicAnalysisDialog->isOnScreen()) {
        // Its hot key may be Tab, which is pressed to get on in the entry, too.
        if (!m_dynamicAnalysisDialog->isWaitingForUser())
            m_dynamicAnalysisDialog->close();
        return;
    }
    if (m_currentStockCode.isEmpty()) {
        showStatus(QStringLiteral("请先选择股票再查询异动解析"));
        return;
    }
    showStatus(QStringLiteral("正在查询异动解析..."));
    m_analysisFollowsStock = false;
    queryMoveAnalysis(m_currentStockCode);
}

void StockAnalysisWidget::queryMoveAnalysis(const QString &code)
{
    m_analysisQueries.noteQuery(code);
    m_apiClient->getDynamicAnalysis(code, QString());
}

void StockAnalysisWidget::refreshMoveAnalysis(const QString &code)
{
    if (code.isEmpty() || !m_dynamicAnalysisDialog || !m_dynamicAnalysisDialog->isVisible())
        return;
    m_analysisFollowsStock = true;
    queryMoveAnalysis(code);
}

void StockAnalysisWidget::onDynamicAnalysisReceived(const QList<DynamicAnalysisRecord> &items)
{
    const QString answered = items.isEmpty() ? QString() : items.first().stockCode;
    if (m_analysisQueries.takeIsOfStockLeft(answered, m_currentStockCode)) {
        if (!m_analysisFollowsStock && !m_currentStockCode.isEmpty() &&
            m_analysisQueries.lastCode() != m_currentStockCode)
            queryMoveAnalysis(m_currentStockCode);
        return;
    }
    const bool wasVisible = m_dynamicAnalysisDialog && m_dynamicAnalysisDialog->isVisible();
    // The answer for a panel that has been closed in the meantime does not open it again.
    if (!wasVisible && m_analysisFollowsStock)
        return;
    if (!m_dynamicAnalysisDialog)
        m_dynamicAnalysisDialog =
            new DynamicAnalysisDialog(this, [this] { return m_surroundings.clock().date(); });
    if (items.isEmpty()) {
        showStatus(QStringLiteral("暂无异动解析数据"));
        m_dynamicAnalysisDialog->setAnalysis(m_currentStockCode, m_currentStockName, QString(), QString(),
                                             QString(), QString(), QString());
    } else {
        const DynamicAnalysisRecord &item = items.first();
        m_dynamicAnalysisDialog->setAnalysis(item.stockCode, item.stockName, item.tradeDate, item.title,
                                             item.publishTime, item.content, item.sourceUrl);
    }
    if (wasVisible && (m_analysisFollowsStock || m_dynamicAnalysisDialog->isOnScreen()))
        return;
    m_dynamicAnalysisDialog->bringOnScreen();
    if (!items.isEmpty())
        showStatus(QStringLiteral("已更新异动解析"));
}
