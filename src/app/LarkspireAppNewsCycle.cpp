// The news cycle of LarkspireApp: full fetch, tick, what is announced, and the labels that tell the state.

#include "accounts/AuthManager.h"
#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "app/WindowRules.h"
#include "news/ConnectionStatusText.h"
#include "news/CustomNotification.h"
#include "news/NewsAlertPlan.h"
#include "news/SoundReminder.h"
#include "news/SpeechManager.h"
#include "newsclient/ApiClient.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QTextDocument>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr int FullFetchLimit = 200;
constexpr int TickLimit = 50;
constexpr int PopupDurationMs = 10000;
constexpr int SpeechExpirySeconds = 45;
constexpr qint64 AuthFailureGraceMs = 10000;
constexpr auto AuthFailurePause = 5000ms;
constexpr int TrayErrorMs = 5000;
constexpr int TrayNoticeMs = 3000;

} // namespace

int LarkspireApp::effectiveRefreshInterval(int seconds)
{
    return WindowRules::effectiveRefreshInterval(seconds);
}

void LarkspireApp::setStatusText(const QString &text, const QString &style)
{
    QLabel *label = m_ui->statusLabel;
    label->setStyleSheet(style);
    label->setText(text);
    // The label's place is fixed; what does not fit is told whole by the tip.
    const QString tip = Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
    label->setToolTip(label->sizeHint().width() > label->width() ? tip : QString());
}

void LarkspireApp::startRefreshTimer()
{
    if (!m_refreshTimer->isActive())
        m_refreshTimer->start(WindowRules::refreshTimerInterval(m_config.refreshInterval));
}

void LarkspireApp::refreshNews()
{
    if (!m_apiClient) {
        setStatusText(QStringLiteral("API客户端未初始化"));
        return;
    }
    setStatusText(QStringLiteral("正在刷新数据..."));
    m_ui->progressBar->show();
    m_initialLoadDone = false;
    m_apiClient->getNews(1, FullFetchLimit, QString());
    startRefreshTimer();
}

void LarkspireApp::onRefreshButtonClicked()
{
    refreshNews();
    startRefreshTimer();
}

void LarkspireApp::onRefreshTimer()
{
    if (!m_authManager || !m_authManager->isAuthenticated())
        return;
    if (!m_initialLoadDone || m_lastNewsId.isEmpty()) {
        refreshNews();
        return;
    }
    if (!m_apiClient) {
        setStatusText(QStringLiteral("API客户端未初始化"));
        return;
    }
    setStatusText(QStringLiteral("正在检查新数据..."));
    m_ui->progressBar->show();
    if (m_lastNewsTime.isValid())
        m_apiClient->getNewsAfterTime(m_lastNewsTime, TickLimit);
    else
        m_apiClient->getNewsAfterId(m_lastNewsId, TickLimit);
}

void LarkspireApp::onNewsReceived(const QList<NewsData> &newsList, int totalCount)
{
    Q_UNUSED(totalCount)
    m_ui->progressBar->hide();
    setStatusText(QStringLiteral("已加载 %1 条新闻").arg(newsList.size()));
    m_ui->connectionLabel->setText(ConnectionStatusText::connected());
    processNewsAlerts(newsList);
    displayNews(newsList);
    m_lastUpdateTime = m_clock();
}

void LarkspireApp::onIncrementalNewsReceived(const QList<NewsData> &newsList)
{
    m_ui->progressBar->hide();
    m_ui->connectionLabel->setText(ConnectionStatusText::connected());
    if (newsList.isEmpty()) {
        setStatusText(QStringLiteral("没有新数据"));
        return;
    }
    const bool merged = mergeIncrementalNews(newsList);
    m_lastUpdateTime = m_clock();
    // The status text of the tick stays, whether the list brought something or not; that is meant.
    if (!merged || !m_config.showNewsDetails)
        return;
    showFirstRow();
}

void LarkspireApp::onLatestNewsReceived(const QList<NewsData> &newsList)
{
    if (newsList.isEmpty())
        return;
    m_ui->connectionLabel->setText(ConnectionStatusText::connected());
    processNewsAlerts(newsList);
    m_lastUpdateTime = m_clock();
}

void LarkspireApp::processNewsAlerts(const QList<NewsData> &newsList)
{
    const NewsAlertPlan plan = NewsAlertPlan::forList(newsList, m_notifiedNewsIds, m_clock());
    m_notifiedNewsIds = plan.notifiedNewsIds;
    for (const NewsData &item : plan.toAlert) {
        if (item.hasKeywords) {
            if (m_config.enableSound && m_soundReminder)
                m_soundReminder->playSound(QStringLiteral(":/media/tip.wav"));
            // Without a title of its own: the card then carries the program's name.
            if (m_config.enableNotification && m_customNotification) {
                m_customNotification->showNotification(QString(), NewsAlertPlan::popupText(item.title),
                                                       PopupDurationMs);
            }
        }
        if (m_config.enableTts && m_speechManager)
            m_speechManager->speak(NewsAlertPlan::speechText(item.title), SpeechExpirySeconds);
    }
}

void LarkspireApp::checkApiConnection()
{
    setStatusText(QStringLiteral("正在连接API服务器..."));
    m_ui->connectionLabel->setText(QStringLiteral("API: 连接中..."));
    if (m_apiClient)
        m_apiClient->healthCheck();
}

void LarkspireApp::onApiError(const QString &errorMessage)
{
    m_ui->progressBar->hide();
    const ConnectionStatusText::Texts texts = ConnectionStatusText::forApiError(errorMessage);
    setStatusText(texts.status);
    m_ui->connectionLabel->setText(texts.connection);
}

void LarkspireApp::onNetworkError(const QString &errorMessage)
{
    m_ui->progressBar->hide();
    const ConnectionStatusText::Texts texts = ConnectionStatusText::forNetworkError(errorMessage);
    setStatusText(texts.status);
    m_ui->connectionLabel->setText(texts.connection);
}

void LarkspireApp::onAuthenticationFailed(const QString &reason)
{
    m_ui->progressBar->hide();
    // The moment of the very first failure, not of the program's start: that failure and any other in the ten
    // seconds after it are ignored, as meant.
    static const QDateTime firstFailure = m_clock();
    if (firstFailure.msecsTo(m_clock()) < AuthFailureGraceMs || m_handlingAuthFailure)
        return;
    m_handlingAuthFailure = true;
    QTimer::singleShot(AuthFailurePause, this, [this] { m_handlingAuthFailure = false; });
    m_refreshTimer->stop();
    setStatusText(QStringLiteral("认证失败"), QStringLiteral("color: red;"));
    m_ui->connectionLabel->setText(ConnectionStatusText::failed(QStringLiteral("认证失败")));
    showTrayMessage(QStringLiteral("认证失败"), reason, QSystemTrayIcon::Critical, TrayErrorMs);
}

void LarkspireApp::onAuthenticationRequired()
{
    m_refreshTimer->stop();
    setStatusText(QStringLiteral("需要配置API密钥"), QStringLiteral("color: orange;"));
    m_ui->connectionLabel->setText(QStringLiteral("API: <span style='color: orange;'>⚠</span> 需要配置"));
    onConfigButtonClicked();
}

void LarkspireApp::onDevicesReceived(const QList<DeviceData> &devices)
{
    setStatusText(QStringLiteral("已连接设备: %1").arg(devices.size()));
}

void LarkspireApp::onDeviceRemoved(const QString &deviceId)
{
    showTrayMessage(QStringLiteral("设备管理"), QStringLiteral("设备 %1 已成功移除").arg(deviceId),
                    QSystemTrayIcon::Information, TrayNoticeMs);
    setStatusText(QStringLiteral("设备已移除"));
}

void LarkspireApp::onDeviceLimitExceeded(const QString &message)
{
    // Every request may be refused for it while the box waits for an answer.
    if (m_deviceLimitShown)
        return;
    const QScopedValueRollback<bool> shown(m_deviceLimitShown, true);
    QMessageBox::warning(
        this, QStringLiteral("设备限制"),
        QStringLiteral("设备数量已达上限！\n\n%1\n\n请先解绑其他设备，然后重新连接。").arg(message));
    showTrayMessage(QStringLiteral("设备限制"), QStringLiteral("设备数量已达上限，请先解绑其他设备"),
                    QSystemTrayIcon::Warning, TrayErrorMs);
    setStatusText(QStringLiteral("设备限制超限"));
}

void LarkspireApp::onRefreshIntervalChanged(int interval)
{
    m_config.refreshInterval = effectiveRefreshInterval(interval);
    m_refreshTimer->setInterval(WindowRules::refreshTimerInterval(m_config.refreshInterval));
}
