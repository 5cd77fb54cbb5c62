// The window of LarkspireApp: its place, closing and minimising, coming to the front, the top-most flag, the
// volume tip, and the small commands of its menus.

#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "app/WindowRules.h"
#include "desktop/WindowActivation.h"
#include "news/SpeechManager.h"
#include "settings/ConfigManager.h"
#include "settings/ProgramVersion.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QUrl>

namespace {

constexpr int EchoPeriodMs = 400;

} // namespace

void LarkspireApp::showAndActivateWindow()
{
    if (isVisible() && !isMinimized()) {
        // It stands where the user has put it: what was stored before that may not move it.
        storeGeometry();
    } else if (m_config.rememberWindowState) {
        const ConfigManager *settings = ConfigManager::instance();
        const QByteArray geometry = settings->getWindowGeometry();
        if (!geometry.isEmpty()) {
            restoreGeometry(geometry);
        } else {
            move(settings->getWindowPosition());
            resize(settings->getWindowSize());
        }
    }
    m_revealTimer->start();
}

void LarkspireApp::revealWindow()
{
    showRestored();
    m_raiseTimer->start();
}

void LarkspireApp::showRestored()
{
    // Never as an icon first: the window system's word about that would come late and hide the window again.
    if (isMinimized())
        showNormal();
    else
        show();
}

void LarkspireApp::raiseWindow()
{
    WindowActivation::bringToFrontNatively(this);
}

void LarkspireApp::closeEvent(QCloseEvent *event)
{
    if (m_config.rememberWindowState)
        storePlace();
    // The notification switch decides what closing means; there is no option of its own for it, as meant.
    if (trayVisible() && m_config.enableNotification) {
        hideToTray();
        event->ignore();
        return;
    }
    event->setAccepted(confirmExit());
    if (event->isAccepted())
        stayHidden();
}

bool LarkspireApp::confirmExit()
{
    if (!m_config.enableNotification || !trayVisible())
        return true;
    if (m_exitQuestion) {
        // The tray's menu works while the question is open.
        m_exitQuestion->raise();
        m_exitQuestion->activateWindow();
        return false;
    }

    QMessageBox box(this);
    m_exitQuestion = &box;
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(QStringLiteral("确认退出"));
    box.setText(QStringLiteral("确定要退出程序吗？\n\n提示：您可以最小化到系统托盘继续监控新闻。"));
    box.addButton(QStringLiteral("是，退出程序"), QMessageBox::YesRole);
    QPushButton *minimize = box.addButton(QStringLiteral("否，最小化"), QMessageBox::NoRole);
    QPushButton *cancel = box.addButton(QStringLiteral("取消"), QMessageBox::RejectRole);
    box.setDefaultButton(minimize);
    box.exec();
    if (box.clickedButton() == cancel)
        return false;
    if (box.clickedButton() == minimize) {
        hideToTray();
        return false;
    }
    return true;
}

void LarkspireApp::hideToTray()
{
    // A window that comes back goes by its stored geometry, so that has to be the one it leaves with.
    storeGeometry();
    stayHidden();
    hide();
}

void LarkspireApp::stayHidden()
{
    m_revealTimer->stop();
    m_raiseTimer->stop();
}

void LarkspireApp::storeGeometry()
{
    // A maximised one would come back with every change of the window's state: there would be no way down.
    if (m_config.rememberWindowState && !isMaximized())
        ConfigManager::instance()->setWindowGeometry(saveGeometry());
}

void LarkspireApp::storePlace()
{
    ConfigManager::instance()->setWindowPosition(pos());
    ConfigManager::instance()->setWindowSize(size());
}

void LarkspireApp::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange)
        return;

    if (isMinimized()) {
        if (m_config.rememberWindowState) {
            storePlace();
            ConfigManager::instance()->setWindowGeometry(saveGeometry());
        }
        if (m_sinceReturn.isValid() && m_sinceReturn.elapsed() < EchoPeriodMs) {
            // The window system may still be telling of the minimise from which the window has just come
            // back.
            QTimer::singleShot(EchoPeriodMs, this, &LarkspireApp::hideMinimized);
            return;
        }
        hideMinimized();
        // QWidget::showMinimized() shows the window once more after the change of its state.
        QTimer::singleShot(0, this, &LarkspireApp::hideMinimized);
        return;
    }
    // Also at a change to maximised; that is meant.
    const QByteArray geometry = ConfigManager::instance()->getWindowGeometry();
    if (m_config.rememberWindowState && !geometry.isEmpty())
        restoreGeometry(geometry);
}

void LarkspireApp::hideMinimized()
{
    if (!isMinimized() || !isVisible() || !trayVisible())
        return;
    hide();
    m_hiddenByMinimize = true;
}

void LarkspireApp::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    // A window that returns from being an icon is reported once more by the window system.
    if (event->spontaneous())
        return;
    const bool hiddenByMinimize = std::exchange(m_hiddenByMinimize, false);
    if (hiddenByMinimize && !isMinimized())
        m_sinceReturn.start();
    if (!m_config.rememberWindowState || hiddenByMinimize)
        return;
    const QByteArray geometry = ConfigManager::instance()->getWindowGeometry();
    if (!geometry.isEmpty()) {
        restoreGeometry(geometry);
        return;
    }
    const QSize configured = ConfigManager::instance()->getWindowSize();
    if (size() != configured)
        resize(configured);
}

void LarkspireApp::moveEvent(QMoveEvent *event)
{
    QMainWindow::moveEvent(event);
    if (m_config.rememberWindowState)
        ConfigManager::instance()->setWindowPosition(pos());
}

void LarkspireApp::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (m_config.rememberWindowState)
        ConfigManager::instance()->setWindowSize(size());
}

void LarkspireApp::onTopMostToggled(bool enabled)
{
    m_config.enableTopmost = enabled;
    changeWindowFlags(WindowRules::flagsAfterTopMostToggle(windowFlags(), enabled));
    ConfigManager::instance()->setEnableTopmost(enabled);
    ConfigManager::instance()->sync();
    updateTopMostAction(enabled);
}

void LarkspireApp::toggleTopMostFromTray()
{
    const bool enable = !windowFlags().testFlag(Qt::WindowStaysOnTopHint);
    Qt::WindowFlags flags = windowFlags();
    flags.setFlag(Qt::WindowStaysOnTopHint, enable);
    const QPoint position = pos();
    const QSize extent = size();
    const bool wasVisible = isVisible();
    // The box may change the flags once more. A window that goes and comes twice at once may be taken off the
    // screen by an X11 window manager that is late for the second going.
    hide();
    setWindowFlags(flags);
    m_config.enableTopmost = enable;
    ConfigManager::instance()->setEnableTopmost(enable);
    ConfigManager::instance()->sync();
    // When this changes the box, its own slot runs and takes a hint just added away again, while setting and
    // box stay on; that is meant.
    m_ui->topMostCheckBox->setChecked(enable);
    if (wasVisible) {
        show();
        move(position);
        resize(extent);
    }
    updateTopMostAction(enable);
}

void LarkspireApp::changeWindowFlags(Qt::WindowFlags flags)
{
    const QPoint position = pos();
    const QSize extent = size();
    const bool wasVisible = isVisible();
    setWindowFlags(flags);
    if (wasVisible && !isVisible()) {
        show();
        move(position);
        resize(extent);
    }
}

void LarkspireApp::updateTopMostAction(bool enabled)
{
    if (!m_topMostAction)
        return;
    m_topMostAction->setChecked(enabled);
    m_topMostAction->setText(enabled ? QStringLiteral("取消置顶") : QStringLiteral("置顶"));
}

bool LarkspireApp::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui->volumeSlider) {
        if (event->type() == QEvent::Enter) {
            onVolumeSliderEnter();
            return true;
        }
        if (event->type() == QEvent::Leave) {
            onVolumeSliderLeave();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void LarkspireApp::onVolumeChanged(int volume)
{
    const double fraction = volume / 100.0;
    if (m_speechManager)
        m_speechManager->setVolume(fraction);
    m_config.ttsVolume = fraction;
    m_ui->volumeValueLabel->setText(QString::number(volume));
    updateVolumeTooltipPosition();
}

void LarkspireApp::onVolumeSliderEnter()
{
    m_ui->volumeValueLabel->show();
    updateVolumeTooltipPosition();
}

void LarkspireApp::onVolumeSliderLeave()
{
    m_ui->volumeValueLabel->hide();
    m_volumeHideTimer->stop();
}

void LarkspireApp::hideVolumeDisplay()
{
    m_ui->volumeValueLabel->hide();
    m_volumeHideTimer->stop();
}

void LarkspireApp::updateVolumeTooltipPosition()
{
    QLabel *tip = m_ui->volumeValueLabel;
    if (!tip->isVisible())
        return;
    const QSlider *slider = m_ui->volumeSlider;
    const WindowRules::SliderState state{QRect(slider->mapToGlobal(QPoint(0, 0)), slider->size()),
                                         slider->minimum(), slider->maximum(), slider->value()};
    tip->move(WindowRules::volumeTipPosition(state, tip->size(), mapToGlobal(QPoint(0, 0)), width()));
}

void LarkspireApp::onExitClicked()
{
    if (!confirmExit())
        return;
    saveSettings();
    emit endBegun();
    if (m_speechManager)
        m_speechManager->setEnabled(false);
    QCoreApplication::quit();
}

void LarkspireApp::onAboutClicked()
{
    showAboutDialog();
}

void LarkspireApp::showAboutDialog()
{
    const QString text = QStringLiteral("云雀资讯 v%1\n"
                                        "\n"
                                        "功能特性：\n"
                                        "• 实时获取财经新闻\n"
                                        "• 语音播报实时新闻\n"
                                        "• 关键词过滤和提醒\n"
                                        "• 行情实时数据统计\n"
                                        "• 股票历史涨停分析\n"
                                        "• 股票关联概念题材\n"
                                        "• 黑名单风控管理\n"
                                        "• 通⮂同多屏同步联动\n"
                                        "\n"
                                        "Fernhollow 云雀工坊")
                             .arg(ProgramVersion::text());
    QMessageBox::about(this, QStringLiteral("关于"), text);
}

void LarkspireApp::onWebsiteClicked()
{
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.larkspire.example/")));
}

void LarkspireApp::onUpdateClicked()
{
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.larkspire.example/#download")));
}

void LarkspireApp::onDetailsLinkClicked(const QUrl &link)
{
    if (link.isValid())
        QDesktopServices::openUrl(link);
}
