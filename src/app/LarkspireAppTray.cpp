// The tray icon of LarkspireApp: its menu, what its clicks do, and the messages it shows.

#include "app/LarkspireApp.h"
#include "app/TrayCommand.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QStyle>

namespace {

/// The first icon that holds a picture.
QIcon trayPicture()
{
    for (const QString &path : {QStringLiteral(":/icons/app.ico"), QStringLiteral(":/images/alert.png")}) {
        const QIcon icon(path);
        if (!icon.availableSizes().isEmpty())
            return icon;
    }
    return QApplication::style()->standardIcon(QStyle::SP_ComputerIcon);
}

} // namespace

void LarkspireApp::setupTrayIcon()
{
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return;

    m_trayIcon = new QSystemTrayIcon(trayPicture(), this);
    m_trayIcon->setToolTip(QStringLiteral("云雀资讯"));

    m_trayMenu = new QMenu(this);
    m_showAction = m_trayMenu->addAction(QStringLiteral("显示主窗口"));
    m_hideAction = m_trayMenu->addAction(QStringLiteral("隐藏窗口"));
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(QStringLiteral("关键词管理"));
    m_trayMenu->addAction(QStringLiteral("设置"));
    m_topMostAction = m_trayMenu->addAction(QStringLiteral("置顶"));
    m_topMostAction->setCheckable(true);
    m_topMostAction->setChecked(m_config.enableTopmost);
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(QStringLiteral("关于"));
    m_exitAction = m_trayMenu->addAction(QStringLiteral("退出"));

    m_trayIcon->setContextMenu(m_trayMenu);
    m_trayIcon->setVisible(true);
}

bool LarkspireApp::trayVisible() const
{
    return m_trayIcon && m_trayIcon->isVisible();
}

void LarkspireApp::showTrayMessage(const QString &title, const QString &text,
                                   QSystemTrayIcon::MessageIcon icon, int durationMs)
{
    if (trayVisible())
        m_trayIcon->showMessage(title, text, icon, durationMs);
}

void LarkspireApp::onTrayMenuTriggered(QAction *action)
{
    switch (trayCommandForText(action->text())) {
    case TrayCommand::ShowWindow:
        showNormal();
        activateWindow();
        raise();
        break;
    case TrayCommand::HideWindow:
        hideToTray();
        break;
    case TrayCommand::KeywordManager:
        onKeywordManagerClicked();
        break;
    case TrayCommand::Settings:
        onConfigButtonClicked();
        break;
    case TrayCommand::About:
        showAboutDialog();
        break;
    case TrayCommand::Exit:
        // Speech is not switched off on this path; that is meant.
        if (confirmExit())
            QCoreApplication::quit();
        break;
    case TrayCommand::ToggleTopMost:
        toggleTopMostFromTray();
        break;
    case TrayCommand::None:
        break;
    }
}

void LarkspireApp::onTrayIconActivated(QSystemTrayIcon::ActivationReason reason)
{
    switch (reason) {
    case QSystemTrayIcon::DoubleClick:
        if (shownAtTrayClick() && isVisible() && !isMinimized()) {
            hideToTray();
            break;
        }
        showAndActivateWindow();
        break;
    case QSystemTrayIcon::Trigger:
        m_shownAtTrayClick = isVisible() && !isMinimized();
        m_sinceTrayClick.start();
        showAndActivateWindow();
        break;
    case QSystemTrayIcon::MiddleClick:
        showAndActivateWindow();
        break;
    case QSystemTrayIcon::Context:
    case QSystemTrayIcon::Unknown:
        break;
    }
}

bool LarkspireApp::shownAtTrayClick() const
{
    // The first click of a double click is reported as a click of its own and brings a hidden window back:
    // the second one is not to take it away again.
    const bool partOfADoubleClick =
        m_sinceTrayClick.isValid() && m_sinceTrayClick.elapsed() <= QApplication::doubleClickInterval();
    return !partOfADoubleClick || m_shownAtTrayClick;
}

void LarkspireApp::onTrayMessageClicked()
{
    showAndActivateWindow();
}
