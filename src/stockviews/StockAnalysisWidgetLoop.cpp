// The loop of the stock page: from the code that is open in a trading program to the query and back.

#include "stockviews/StockAnalysisWidget.h"

#include "desktop/GlobalHotkey.h"
#include "linkage/ProcessUtils.h"
#include "linkage/StockCodeSender.h"
#include "linkage/TradingSoftware.h"
#include "news/SpeechManager.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/LimitUpPopup.h"
#include "stockviews/OpenedBox.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockBlacklist.h"
#include "stockviews/StockPageRules.h"
#include "stockviews/ValueLabel.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

using TradingSoftware::tdx;
using TradingSoftware::ths;

namespace {

constexpr int NameExpirySeconds = 3;

} // namespace

void StockAnalysisWidget::showIndicator(bool on)
{
    m_ui->autoRefreshIndicator->setStyleSheet(
        on ? QStringLiteral("background-color: #4CAF50; border: 1px solid #2E7D32; border-radius: 6px;")
           : QStringLiteral("background-color: transparent; border: none;"));
}

QString StockAnalysisWidget::configuredOffset() const
{
    const StockApiConfig *config = StockApiConfig::instance();
    if (m_currentSoftware == tdx)
        return config->getTdxOffset();
    return m_currentSoftware == ths ? config->getThsOffset() : QString();
}

void StockAnalysisWidget::onAutoRefreshToggled(bool enabled)
{
    if (enabled) {
        if (configuredOffset().isEmpty())
            loadOffset();
        else
            startAutoRefresh();
        return;
    }
    dropConfigConnections();
    stopLoop();
    showStatus(QStringLiteral("自动刷新已关闭"));
}

void StockAnalysisWidget::stopLoop()
{
    m_autoRefreshEnabled = false;
    m_isMonitoring = false;
    m_refreshTimer->stop();
    showIndicator(false);
    {
        const QSignalBlocker blocker(m_ui->autoRefreshCheckBox);
        m_ui->autoRefreshCheckBox->setChecked(false);
    }
    // The offsets go with it; the next tick after a start takes them from the configuration again.
    m_processUtils->detachAll();
    unregisterHotkeys();
}

void StockAnalysisWidget::dropConfigConnections()
{
    disconnect(m_configReceived);
    disconnect(m_configFailed);
}

void StockAnalysisWidget::loadOffset()
{
    showStatus(QStringLiteral("正在从服务器加载配置，请稍候..."));
    dropConfigConnections();
    m_configReceived = connect(m_apiClient, &StockApiClient::stockHelperConfigReceived, this,
                               &StockAnalysisWidget::onHelperConfigReceived);
    // An error of another request that is under way is no answer to this one; one of the client's own, as a
    // request that takes too long, names no request.
    m_configFailed = connect(m_apiClient, &StockApiClient::queryError, this,
                             [this](const QString &error, const QString &requestType) {
                                 if (requestType.isEmpty() || requestType == QLatin1String("configLoad"))
                                     onHelperConfigFailed(error);
                             });
    m_apiClient->getStockHelperConfig();
}

void StockAnalysisWidget::onHelperConfigReceived(const QJsonObject &config)
{
    StockApiConfig::instance()->takeLinkage(config);
    dropConfigConnections();
    if (!configuredOffset().isEmpty()) {
        startAutoRefresh();
        return;
    }
    openBox(this, QMessageBox::Warning, QStringLiteral("配置未完成"),
            QStringLiteral("请先在股票助手设置中测试并保存%1配置")
                .arg(StockPageRules::softwareWord(m_currentSoftware)));
    refuseAutoRefresh(QStringLiteral("配置未完成，请先设置股票助手"));
}

void StockAnalysisWidget::onHelperConfigFailed(const QString &error)
{
    dropConfigConnections();
    openBox(this, QMessageBox::Warning, QStringLiteral("加载配置失败"),
            QStringLiteral("无法从服务器加载配置：%1\n\n请检查网络连接或手动打开股票助手设置").arg(error));
    refuseAutoRefresh(QStringLiteral("加载配置失败，请检查网络连接"));
}

void StockAnalysisWidget::refuseAutoRefresh(const QString &status)
{
    stopLoop();
    showStatus(status);
}

void StockAnalysisWidget::startAutoRefresh()
{
    m_autoRefreshEnabled = true;
    showIndicator(true);
    {
        const QSignalBlocker blocker(m_ui->autoRefreshCheckBox);
        m_ui->autoRefreshCheckBox->setChecked(true);
    }
    showStatus(QStringLiteral("自动刷新已开启，正在监控股票代码变化..."));
    m_isMonitoring = true;
    m_restartedCopySearch.rearm();
    m_refreshTimer->start();
    registerHotkeys();
    if (m_currentStockCode.isEmpty())
        showStatus(QStringLiteral("没有可查询的股票"));
    else
        m_apiClient->getComprehensiveInfo(m_currentStockCode, QString());
}

void StockAnalysisWidget::registerHotkeys()
{
    const ConfigManager *settings = ConfigManager::instance();
    m_themeHotkey->setShortcut(StockPageRules::hotkey(settings->getThemeHotkey()), Qt::NoModifier, true);
    m_analysisHotkey->setShortcut(StockPageRules::hotkey(settings->getDynamicHotkey()), Qt::NoModifier, true);
}

void StockAnalysisWidget::unregisterHotkeys()
{
    m_themeHotkey->setRegistered(false);
    m_analysisHotkey->setRegistered(false);
}

bool StockAnalysisWidget::readCode(QString &code)
{
    const QString offset = configuredOffset();
    if (m_currentSoftware == tdx) {
        if (m_processUtils->tdxOffset() == 0 && (offset.isEmpty() || !m_processUtils->setTdxOffset(offset)))
            return false;
        return m_processUtils->readTdxCode(code);
    }
    if (m_currentSoftware == ths) {
        if (m_processUtils->thsOffset() == 0 && (offset.isEmpty() || !m_processUtils->setThsOffset(offset)))
            return false;
        return m_processUtils->readThsCode(code);
    }
    return false;
}

void StockAnalysisWidget::onStockCodeChanged()
{
    if (!m_isMonitoring)
        return;
    QString code;
    if (!readCode(code)) {
        followRestartedInstance();
        return;
    }
    m_restartedCopySearch.rearm();
    if (code == m_currentStockCode)
        return;
    m_currentStockCode = code;
    m_currentStockName.clear();
    m_blacklist->setStock(code, QString());
    updatePortalToolTips();
    // What it changed from stays empty, as it is meant in this version.
    showStatus(QStringLiteral("检测到股票代码变化: %1 -> %2").arg(QString(), code));
    m_limitUpDetail = {};
    m_recentLimitUpDate.clear();
    if (m_ui->recentLimitUpValueLabel->underMouse())
        m_limitUpPopup->hide();

    const QString target = StockPageRules::linkageTarget(m_linkageMode, m_currentSoftware);
    if (!target.isEmpty())
        sendStockCode(code, target);

    if (StockPageRules::isStockCode(code)) {
        m_apiClient->getComprehensiveInfo(code, QString());
        return;
    }
    clearStockDisplay();
    if (!code.isEmpty()) {
        m_currentStockName = code;
        m_blacklist->setStock(code, code);
        displayPlainCode(code);
        followWithThemeDialog(code);
    }
    refreshMoveAnalysis(code);
}

void StockAnalysisWidget::sendStockCode(const QString &code, const QString &target)
{
    if (code.isEmpty()) {
        showStatus(QStringLiteral("错误: 股票代码为空"));
        return;
    }
    bool sent = false;
    if (target == tdx) {
        sent = m_codeSender->sendToTdx(code);
    } else if (target == ths) {
        sent = m_codeSender->sendToThs(code);
    } else {
        showStatus(QStringLiteral("错误: 未知的目标软件"));
        return;
    }
    const QString pattern =
        sent ? QStringLiteral("已发送代码 %1 到 %2") : QStringLiteral("发送代码 %1 到 %2 失败");
    showStatus(pattern.arg(code, StockPageRules::softwareWord(target)));
}

void StockAnalysisWidget::handleAutoRefresh()
{
    if (m_currentStockCode.isEmpty())
        showStatus(QStringLiteral("请先选择要查询的股票"));
    else if (m_currentStockCode != m_lastQueriedCode)
        onRefreshButtonClicked();
    else
        showStatus(QStringLiteral("股票代码未变化: ") + m_currentStockCode);
}

void StockAnalysisWidget::onRefreshButtonClicked()
{
    showStatus(QStringLiteral("正在查询..."));
    if (StockPageRules::isStockCode(m_currentStockCode))
        m_apiClient->getComprehensiveInfo(m_currentStockCode, QString());
    else
        clearStockDisplay();
}

void StockAnalysisWidget::onStockInfoReceived(const StockInfo &info)
{
    // The comprehensive record carries the same and more.
    Q_UNUSED(info)
}

void StockAnalysisWidget::onLimitStatsReceived(const LimitStats &stats)
{
    displayLimitStats(stats);
}

void StockAnalysisWidget::onComprehensiveInfoReceived(const ComprehensiveStockInfo &info)
{
    displayStockInfo(info.basicInfo);
    displayLimitStats(info.limitStats);
    displayOpeningData(info);
    m_lastQueriedCode = info.basicInfo.stockCode;
    showStatus(QStringLiteral("已更新 %1 综合信息").arg(info.basicInfo.stockCode));
}

void StockAnalysisWidget::speakName(const QString &code, const QString &name)
{
    // Once for each new code and not for a refresh.
    if (code == m_lastQueriedCode || name.isEmpty() || name == QLatin1String("--") || !m_speechManager ||
        !ConfigManager::instance()->getEnableSpeakStock())
        return;
    m_speechManager->speak(name, NameExpirySeconds);
}

void StockAnalysisWidget::onQueryError(const QString &error, const QString &requestType)
{
    const StockPageRules::QueryFailure failure =
        StockPageRules::queryFailure(error, requestType, m_currentStockCode);
    // A late answer about the stock before tells nothing of the one whose record is on show: that is asked
    // for once more. Where it really has none, nothing is on show when this comes again.
    const bool mayBeOfAnother = failure.clearsDisplay && requestType == QLatin1String("comprehensiveInfo") &&
                                m_shownStock && m_shownStock->stockCode == m_currentStockCode;
    if (failure.clearsDisplay)
        clearStockDisplay();
    showStatus(failure.status);
    if (mayBeOfAnother)
        m_apiClient->getComprehensiveInfo(m_currentStockCode, QString());
}

void StockAnalysisWidget::onQueryError(const QString &error)
{
    onQueryError(error, QString());
}
