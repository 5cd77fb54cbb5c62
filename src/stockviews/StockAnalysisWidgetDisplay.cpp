// What the stock page shows of a stock. The rules say what each label reads; here it is put into the labels.

#include "settings/SkinLightness.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/ElidingLabel.h"
#include "stockviews/LimitUpDetail.h"
#include "stockviews/LimitUpPopup.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockRendering.h"
#include "stockviews/ValueLabel.h"

#include <QEvent>
#include <QLabel>
#include <QPalette>
#include <QProgressBar>
#include <QTimer>

StockRenderSettings StockAnalysisWidget::renderSettings() const
{
    return StockRenderSettings::stored(StockRenderSettings::badgeWidthIn(fontMetrics()));
}

void StockAnalysisWidget::displayStockInfo(const StockInfo &info)
{
    m_shownStock = info;
    m_shownPlainCode.clear();
    m_ui->showContents(StockRendering::basicInfo(info, renderSettings()));
    m_currentStockName = info.stockName;
    m_currentStockCode = info.stockCode;
    updatePortalToolTips();
    checkBlacklistOfShownStock();
    speakName(info.stockCode, info.stockName);
    followWithThemeDialog(info.stockCode);
    refreshMoveAnalysis(info.stockCode);
}

void StockAnalysisWidget::displayLimitStats(const LimitStats &stats)
{
    m_ui->showContents(StockRendering::historyStats(stats, m_surroundings.clock().date()));
    m_recentLimitUpDate = stats.recentLimitUpDate;
    if (m_ui->recentLimitUpValueLabel->underMouse() && !m_currentStockCode.isEmpty() &&
        !m_recentLimitUpDate.isEmpty())
        m_apiClient->getLimitUpDetailInfo(m_currentStockCode, m_recentLimitUpDate);
}

void StockAnalysisWidget::displayOpeningData(const ComprehensiveStockInfo &info)
{
    m_ui->showContents(StockRendering::openingData(info.basicInfo, info.limitStats, m_surroundings.clock(),
                                                   renderSettings()));
    showActivity(info.basicInfo.marketActivity);
}

void StockAnalysisWidget::showActivity(double activity)
{
    const StockRendering::ActivityContent content = StockRendering::marketActivity(activity);
    QProgressBar *bar = m_ui->marketActivityProgressBar;
    bar->setValue(content.value);
    if (bar->styleSheet() != content.style)
        bar->setStyleSheet(content.style);
    QPalette palette;
    if (content.textColor.isValid())
        palette.setColor(QPalette::Text, content.textColor);
    bar->setPalette(palette);
}

void StockAnalysisWidget::displayPlainCode(const QString &code)
{
    m_shownPlainCode = code;
    m_ui->showContent(QStringLiteral("companyNameLabel"),
                      StockRendering::nonStockName(code, renderSettings()));
}

void StockAnalysisWidget::clearStockDisplay()
{
    m_shownStock.reset();
    m_shownPlainCode.clear();
    m_ui->showContents(StockRendering::clearedDisplay(renderSettings()));
    showActivity(0);
}

void StockAnalysisWidget::showAgain()
{
    if (m_shownStock) {
        m_ui->showContents(StockRendering::basicInfo(*m_shownStock, renderSettings()));
    } else if (!m_shownPlainCode.isEmpty()) {
        displayPlainCode(m_shownPlainCode);
    } else {
        clearStockDisplay();
        return;
    }
    updateBlacklistDisplay();
}

QString StockAnalysisWidget::successStyle() const
{
    return QStringLiteral("color: %1; font-weight: bold;")
        .arg(isDarkSkin(palette()) ? QStringLiteral("#66BB6A") : QStringLiteral("#1B7A3D"));
}

void StockAnalysisWidget::applySkin()
{
    m_ui->setDarkSkin(isDarkSkin(palette()));
}

void StockAnalysisWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applySkin();
}

// --- the hover popup ---------------------------------------------------------------------------------------

void StockAnalysisWidget::onRecentLimitUpLabelEntered()
{
    if (!m_currentStockCode.isEmpty() && !m_recentLimitUpDate.isEmpty() &&
        (m_limitUpDetail.stockCode != m_currentStockCode ||
         m_limitUpDetail.tradeDate != m_recentLimitUpDate)) {
        m_apiClient->getLimitUpDetailInfo(m_currentStockCode, m_recentLimitUpDate);
        return;
    }
    showLimitUpPopup();
}

void StockAnalysisWidget::onLimitUpDetailInfoReceived(const LimitUpDetailInfo &info)
{
    if (info.stockCode != m_currentStockCode)
        return;
    m_limitUpDetail = info;
    // Shown as it came: asking again for an answer with another date would ask for ever.
    if (m_ui->recentLimitUpValueLabel->underMouse())
        showLimitUpPopup();
}

void StockAnalysisWidget::showLimitUpPopup()
{
    QLabel *label = m_ui->recentLimitUpValueLabel;
    if (m_limitUpDetail.stockCode.isEmpty()) {
        label->setToolTip(LimitUpDetail::noDetailText());
        return;
    }
    label->setToolTip(QString());
    m_popupHideTimer->stop();
    m_limitUpPopup->showBeside(QRect(label->mapToGlobal(QPoint(0, 0)), label->size()),
                               LimitUpDetail::html(m_limitUpDetail, renderSettings()));
}

void StockAnalysisWidget::onRecentLimitUpLabelLeft()
{
    // A brief exit must not make it flicker.
    m_popupHideTimer->start();
}
