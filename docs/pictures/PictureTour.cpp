#include "PictureTour.h"

#include "accounts/EnhancedLoginDialog.h"
#include "desktop/WindowActivation.h"
#include "stockviews/StockAnalysisWidget.h"
#include "support/DialogVisit.h"
#include "support/WindowInput.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

#include <cstdio>

namespace {

constexpr int patienceMs = 20000;

template <class Kind>
Kind *part(const QWidget &window, const char *name)
{
    return window.findChild<Kind *>(QLatin1String(name));
}

bool until(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, patienceMs);
}

/// Whether a window has the focus; takes it when not. A window manager may have lost it between two dialogs
/// that went at once, and may refuse it to a program that nobody really types into.
bool hasTheFocus(QWidget *window)
{
    if (window->isVisible() && !window->isActiveWindow())
        WindowActivation::bringToFrontNatively(window);
    return window->isVisible() && window->isActiveWindow();
}

/// Types into the fields of these names.
void fill(const QWidget &window, const QList<QPair<const char *, QString>> &texts)
{
    for (const auto &[name, text] : texts) {
        if (auto *field = part<QLineEdit>(window, name))
            WindowInput::fill(field, text);
    }
}

} // namespace

PictureTour::PictureTour(const QDir &folder, const QString &apiKey, bool dark)
    : m_folder(folder)
    , m_apiKey(apiKey)
    , m_ending(dark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png"))
{}

bool PictureTour::failed(const QString &what)
{
    std::fprintf(stderr, "pictures: %s\n", qPrintable(what));
    return false;
}

bool PictureTour::walk()
{
    // Nothing is to look pointed at.
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    QApplication::setCursorFlashTime(0);
    return waysIn() && login() && accountDialogs() && keywordManager() && pages() && settingsDialog() &&
           marketPage() && stockPage();
}

bool PictureTour::waitFor(const std::function<bool()> &condition, const QString &what)
{
    return until(condition) || failed(what);
}

bool PictureTour::shoot(QWidget *window, const QString &name)
{
    if (!window || !until([window] { return hasTheFocus(window); }))
        return failed(name + QStringLiteral(" is not in front"));
    return shootPanel(window, name);
}

bool PictureTour::shootPanel(QWidget *panel, const QString &name)
{
    if (!until([panel] { return panel->isVisible(); }))
        return failed(name + QStringLiteral(" is not in sight"));
    QCoreApplication::processEvents();
    if (!panel->grab().save(m_folder.filePath(name + m_ending)))
        return failed(name + QStringLiteral(" cannot be stored"));
    return true;
}

bool PictureTour::visit(const QString &title, const std::function<void()> &open,
                        const std::function<bool(QDialog &)> &visit)
{
    bool good = false;
    const DialogVisit running(title, [&](QDialog &dialog) {
        good = visit(dialog) && waitFor([&dialog] { return !dialog.isVisible() || hasTheFocus(&dialog); },
                                        title + QStringLiteral(" has lost the focus"));
        if (dialog.isVisible())
            WindowInput::press(&dialog, Qt::Key_Escape);
    });
    open();
    if (!until([&running] { return running.begun() && !QApplication::activePopupWidget(); }))
        return failed(title + QStringLiteral(" has not come"));
    return good || failed(QStringLiteral("at ") + title);
}

bool PictureTour::chooseTab(QTabWidget *tabs, const QString &text)
{
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index) == text) {
            tabs->setCurrentIndex(index);
            return true;
        }
    }
    return failed(QStringLiteral("there is no tab ") + text);
}

bool PictureTour::waysIn()
{
    // It comes by itself, a second after the start.
    if (!visit(
            QStringLiteral("选择登录方式"), [] {},
            [this](QDialog &dialog) {
                const bool good = shoot(&dialog, QStringLiteral("login-method"));
                WindowInput::press(&dialog, Qt::Key_Return);
                return good;
            }))
        return false;

    EnhancedLoginDialog *dialog = nullptr;
    if (!until([&] {
            dialog = m_window.findChild<EnhancedLoginDialog *>();
            return dialog && dialog->isActiveWindow();
        }))
        return failed(QStringLiteral("the login dialog has not come"));
    auto *tabs = dialog->findChild<QTabWidget *>();
    fill(*dialog, {{"usernameEdit", QStringLiteral("云雀用户")},
                   {"emailEdit", QStringLiteral("demo@larkspire.example")},
                   {"passwordEdit", QStringLiteral("lark-demo-2026")}});
    bool good = shoot(dialog, QStringLiteral("login-email"));
    for (int index = 1; index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        good = good && shoot(dialog, index == 1 ? QStringLiteral("login-key") : QStringLiteral("login-free"));
    }
    tabs->setCurrentIndex(0);
    return good &&
           visit(
               QStringLiteral("用户注册"),
               [dialog] { WindowInput::click(part<QPushButton>(*dialog, "registerButton")); },
               [this](QDialog &registration) {
                   fill(registration, {{"usernameEdit", QStringLiteral("lark2026")},
                                       {"emailEdit", QStringLiteral("trader@larkspire.example")}});
                   return shoot(&registration, QStringLiteral("register"));
               }) &&
           visit(
               QStringLiteral("重置密码"),
               [dialog] { WindowInput::click(part<QPushButton>(*dialog, "forgotPasswordButton")); },
               [this](QDialog &reset) { return shoot(&reset, QStringLiteral("reset-password")); });
}

bool PictureTour::login()
{
    auto *dialog = m_window.findChild<EnhancedLoginDialog *>();
    dialog->findChild<QTabWidget *>()->setCurrentIndex(1);
    fill(*dialog, {{"apiKeyEdit", m_apiKey}});
    WindowInput::press(dialog, Qt::Key_Return);
    const auto *news = part<QTableWidget>(m_window, "newsTableWidget");
    if (!until([this, news] { return m_window.isActiveWindow() && news->rowCount() > 0; }))
        return failed(QStringLiteral("there is no news"));
    return shoot(&m_window, QStringLiteral("main-window"));
}

bool PictureTour::accountDialogs()
{
    const struct
    {
        const char *action;
        const char *title;
        const char *name;
    } dialogs[] = {{"actionUserInfo", "用户信息", "user-card"},
                   {"actionCustomerService", "客服", "customer-service"}};
    for (const auto &entry : dialogs) {
        part<QAction>(m_window, entry.action)->trigger();
        QWidget *dialog = nullptr;
        if (!until([&dialog, this] {
                dialog = QApplication::activeWindow();
                return dialog && dialog != &m_window;
            }))
            return failed(QString::fromUtf8(entry.title) + QStringLiteral(" has not come"));
        if (!shoot(dialog, QString::fromLatin1(entry.name)))
            return false;
        dialog->close();
        if (!until([this] { return m_window.isActiveWindow(); }))
            return failed(QStringLiteral("the window has not come back"));
    }
    return true;
}

bool PictureTour::keywordManager()
{
    return visit(
        QStringLiteral("关键词管理"), [this] { part<QAction>(m_window, "actionKeywordManager")->trigger(); },
        [this](QDialog &dialog) {
            auto *list = part<QTableWidget>(dialog, "keywordTable");
            if (!until([list] { return list->rowCount() > 0; }))
                return failed(QStringLiteral("there are no keywords"));
            list->selectRow(1);
            return shoot(&dialog, QStringLiteral("keyword-manager")) &&
                   visit(
                       QStringLiteral("编辑关键词"),
                       [&dialog] { WindowInput::click(part<QPushButton>(dialog, "editButton")); },
                       [this](QDialog &editing) {
                           return shoot(&editing, QStringLiteral("keyword-edit"));
                       }) &&
                   visit(
                       QStringLiteral("添加关键词"),
                       [&dialog] {
                           WindowInput::fill(part<QLineEdit>(dialog, "keywordEdit"),
                                             QStringLiteral("固态电池"));
                           WindowInput::press(&dialog, Qt::Key_Return);
                       },
                       [this](QDialog &adding) { return shoot(&adding, QStringLiteral("keyword-add")); });
        });
}

bool PictureTour::pages()
{
    auto *tabs = part<QTabWidget>(m_window, "mainTabWidget");
    const auto *status = part<QLabel>(m_window, "statusLabel");
    const struct
    {
        const char *tab;
        const char *status;
        const char *name;
    } lists[] = {{"互动平台", "互动平台新闻已更新", "interactive-page"},
                 {"自选新闻", "自选新闻已更新", "selected-page"}};
    for (const auto &page : lists) {
        if (!chooseTab(tabs, QString::fromUtf8(page.tab)) ||
            !until([status, &page] { return status->text().startsWith(QString::fromUtf8(page.status)); }) ||
            !shoot(&m_window, QString::fromLatin1(page.name)))
            return failed(QString::fromUtf8(page.tab) + QStringLiteral(" is not there: ") + status->text());
        tabs->setCurrentIndex(0);
    }
    auto *search = part<QLineEdit>(m_window, "searchLineEdit");
    WindowInput::fill(search, QStringLiteral("机器人"));
    WindowInput::press(search, Qt::Key_Return);
    return waitFor([status] { return status->text().startsWith(QStringLiteral("搜索完成")); },
                   QStringLiteral("the search has not ended")) &&
           shoot(&m_window, QStringLiteral("search-page"));
}

bool PictureTour::settingsDialog()
{
    return visit(
        QStringLiteral("系统配置"), [this] { part<QAction>(m_window, "actionConfig")->trigger(); },
        [this](QDialog &dialog) {
            auto *tabs = part<QTabWidget>(dialog, "tabWidget");
            const char *const names[] = {"features", "stock", "market", "concept", "server", "device"};
            int index = 0;
            for (const char *name : names) {
                tabs->setCurrentIndex(index++);
                if (!shoot(&dialog, QStringLiteral("settings-") + QLatin1String(name)))
                    return false;
            }
            tabs->setCurrentIndex(1);
            return visit(
                QStringLiteral("股票代码颜色预览"),
                [&dialog] { WindowInput::click(part<QPushButton>(dialog, "previewColorsButton")); },
                [this](QDialog &preview) { return shoot(&preview, QStringLiteral("settings-colors")); });
        });
}

bool PictureTour::marketPage()
{
    auto *tabs = part<QTabWidget>(m_window, "mainTabWidget");
    const auto *rising = part<QLabel>(m_window, "riseCountValue");
    const bool good = chooseTab(tabs, QStringLiteral("行情统计")) &&
                      waitFor([rising] { return rising->text() != QStringLiteral("--"); },
                              QStringLiteral("the figures of the market have not come")) &&
                      shoot(&m_window, QStringLiteral("market-page"));
    tabs->setCurrentIndex(0);
    return good;
}

bool PictureTour::linkageSetUp()
{
    return visit(
        QStringLiteral("股票软件联动设置"),
        [this] { WindowInput::click(part<QPushButton>(m_window, "settingsButton")); },
        [this](QDialog &dialog) {
            const auto *versions = part<QComboBox>(dialog, "tdxComboBox");
            if (!waitFor([versions] { return versions->count() > 1; },
                         QStringLiteral("the versions have not come")))
                return false;
            // The trial and the storing report in message boxes.
            QTimer boxes;
            QObject::connect(&boxes, &QTimer::timeout, &dialog, [] {
                auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                if (box && !box->buttons().isEmpty())
                    box->buttons().first()->click();
            });
            boxes.start(50);
            part<QPushButton>(dialog, "tdxTestButton")->click();
            if (!shoot(&dialog, QStringLiteral("linkage-set-up")))
                return false;
            part<QPushButton>(dialog, "saveButton")->click();
            return true;
        });
}

bool PictureTour::stockPage()
{
    auto *tabs = part<QTabWidget>(m_window, "mainTabWidget");
    if (!chooseTab(tabs, QStringLiteral("股票分析")) || !linkageSetUp())
        return false;
    auto *page = m_window.findChild<StockAnalysisWidget *>();
    part<QCheckBox>(*page, "autoRefreshCheckBox")->click();
    const auto *status = part<QLabel>(*page, "statusLabel");
    const auto *marketCap = part<QLabel>(*page, "marketCapValueLabel");
    return waitFor([marketCap] { return marketCap->text() != QStringLiteral("--"); },
                   QStringLiteral("the stock page shows no stock: ") + status->text()) &&
           shoot(&m_window, QStringLiteral("stock-page")) && stockPanels();
}

bool PictureTour::stockPanels()
{
    auto *page = m_window.findChild<StockAnalysisWidget *>();
    const auto *label = part<QLabel>(*page, "recentLimitUpValueLabel");
    auto *popup = part<QWidget>(*page, "limitUpPopup");
    QCursor::setPos(label->mapToGlobal(label->rect().center()));
    const bool shown = shootPanel(popup, QStringLiteral("limit-up-detail"));
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    if (!shown || !visit(
                      QStringLiteral("添加到黑名单"),
                      [page] { WindowInput::click(part<QPushButton>(*page, "blacklistButton")); },
                      [this](QDialog &dialog) { return shoot(&dialog, QStringLiteral("add-to-blacklist")); }))
        return false;

    const struct
    {
        const char *button;
        const char *title;
        const char *name;
    } panels[] = {{"searchStockButton", "异动解析", "move-analysis"},
                  {"themeButton", "概念题材", "concepts"}};
    for (const auto &entry : panels) {
        auto *button = part<QPushButton>(*page, entry.button);
        WindowInput::click(button);
        QDialog *panel = nullptr;
        if (!waitFor(
                [&panel, &entry] {
                    panel = openDialog(QString::fromUtf8(entry.title));
                    return panel != nullptr;
                },
                QString::fromLatin1(entry.name) + QStringLiteral(" has not come")) ||
            !shootPanel(panel, QString::fromLatin1(entry.name)))
            return false;
        panel->close();
    }

    // As small as it gets.
    const QSize before = m_window.size();
    WindowInput::click(part<QPushButton>(*page, "compactModeButton"));
    m_window.resize(1, 1);
    const bool compact = waitFor([this, before] { return m_window.width() < before.width(); },
                                 QStringLiteral("the window has not become small")) &&
                         shootPanel(&m_window, QStringLiteral("stock-compact"));
    WindowInput::click(part<QPushButton>(*page, "compactModeButton"));
    m_window.resize(before);
    return compact;
}
