#include "desktop/HotkeyHolder.h"
#include "desktop/XTestKeyboard.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/DynamicAnalysisDialog.h"
#include "stockviews/StockPageFixture.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QCheckBox>
#include <QJsonArray>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QWindow>
#include <QtTest>

#include <X11/keysym.h>
#include <xcb/xcb.h>

#include <cstdlib>

namespace {

const QByteArray analysisPath = "/newsapi/dynamic_analysis";

QJsonObject analysisOf(const char *code, const char *title)
{
    return {{QStringLiteral("trade_date"), QStringLiteral("2024-06-12")},
            {QStringLiteral("stock_code"), QString::fromLatin1(code)},
            {QStringLiteral("stock_name"), QStringLiteral("贵州茅台")},
            {QStringLiteral("title"), QString::fromUtf8(title)},
            {QStringLiteral("publish_time"), QStringLiteral("Wed, 12 Jun 2024 09:30:00 +0800")},
            {QStringLiteral("content"), QStringLiteral("公司原因：1、渠道提价。")},
            {QStringLiteral("source_url"), QStringLiteral("https://news.larkspire.example/1")}};
}

RawAnswer answer(const QJsonArray &items)
{
    return dataAnswer(items);
}

RawAnswer found(const char *code, const char *title)
{
    return answer({analysisOf(code, title), analysisOf(code, "第二条")});
}

/// The window that the window manager keeps this one above.
WId ownerOf(const QWidget &window)
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const auto request = xcb_get_property(connection, 0, static_cast<xcb_window_t>(window.winId()),
                                          XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 0, 1);
    xcb_get_property_reply_t *reply = xcb_get_property_reply(connection, request, nullptr);
    WId owner = 0;
    if (reply && xcb_get_property_value_length(reply) == sizeof(xcb_window_t))
        owner = *static_cast<xcb_window_t *>(xcb_get_property_value(reply));
    std::free(reply);
    xcb_disconnect(connection);
    return owner;
}

/// The page with a stock on show.
struct MovePage : StockPageFixture
{
    MovePage()
    {
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("F24"));
        openInTdx("600519");
        openPage();
        service.answerPath(analysisPath, found("600519", "个股异动解析：提价"));
    }

    void showStock(const char *code)
    {
        openInTdx(code);
        if (!page->isMonitoring())
            switchOn();
        tick();
        QTRY_VERIFY(text("companyNameLabel").contains(QString::fromLatin1(code)));
    }
    /// Shows the first stock, and its panel.
    void openPanel()
    {
        showStock("600519");
        press();
        QTRY_VERIFY(isOpen());
    }
    /// Goes on with the panel open, to a stock whose answer is held back and from it to another one, which is
    /// answered.
    void leaveAStockWithoutItsAnswer()
    {
        service.answerPath(analysisPath, RawAnswer::hold());
        showStock("300001");
        QTRY_COMPARE(service.heldCount(), 1);
        showStock("600036");
        QTRY_COMPARE(service.heldCount(), 2);
        QVERIFY(service.releaseNewest(found("600036", "银行")));
        QTRY_VERIFY(shown().contains(QStringLiteral("银行")));
    }
    void press() const { find<QPushButton>("searchStockButton")->click(); }
    DynamicAnalysisDialog *panel() const { return page->findChild<DynamicAnalysisDialog *>(); }
    bool isOpen() const { return panel() && panel()->isVisible(); }
    QString shown() const
    {
        return panel()->findChild<QTextBrowser *>(QStringLiteral("analysisBrowser"))->toPlainText();
    }
    QStringList queries() const { return service.targets(analysisPath); }
    static QString query(const char *code)
    {
        return QString::fromLatin1(analysisPath) + QStringLiteral("?stock_code=") + QString::fromLatin1(code);
    }
};

} // namespace

class tst_StockPageMoveAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void theButtonOpensAndClosesThePanel()
    {
        MovePage page;
        page.showStock("600519");
        QVERIFY(!page.panel()); // made on first use
        page.press();
        QCOMPARE(page.status(), QStringLiteral("正在查询异动解析..."));
        QTRY_VERIFY(page.isOpen());
        QCOMPARE(page.status(), QStringLiteral("已更新异动解析"));
        QCOMPARE(page.queries(), QStringList{MovePage::query("600519")});
        QVERIFY(page.shown().startsWith(QStringLiteral("贵州茅台 600519\n提价\n发布时间：2024-06-12 09:30")));
        QVERIFY(page.shown().contains(QStringLiteral("1、渠道提价。")));
        QVERIFY(!page.shown().contains(QStringLiteral("第二条")));
        QPointer<DynamicAnalysisDialog> first = page.panel();

        page.press();
        QVERIFY(!page.isOpen());
        QCOMPARE(page.queries().size(), 1);
        page.press();
        QTRY_VERIFY(page.isOpen());
        QCOMPARE(page.panel(), first.data());
        QCOMPARE(page.queries().size(), 2);
    }

    void withoutAStockItSaysSo()
    {
        MovePage page;
        page.press();
        QCOMPARE(page.status(), QStringLiteral("请先选择股票再查询异动解析"));
        page.showStock("600519");
        QVERIFY(page.queries().isEmpty());
        QVERIFY(!page.panel());
    }

    void aStockWithoutAnAnalysisOpensThePanelForAnEntry()
    {
        MovePage page;
        page.service.answerPath(analysisPath, answer({}));
        page.showStock("600519");
        page.press();
        QTRY_VERIFY(page.isOpen());
        QCOMPARE(page.status(), QStringLiteral("暂无异动解析数据"));
        QCOMPARE(page.shown(), QStringLiteral("股600519 600519\n暂无异动信息"));
        QCOMPARE(page.panel()->analysis().content, QString());
    }

    void anOpenPanelFollowsTheStock()
    {
        MovePage page;
        page.openPanel();
        page.service.answerPath(analysisPath, found("300001", "机器人"));
        page.showStock("300001");
        QTRY_VERIFY(page.shown().contains(QStringLiteral("机器人")));
        QCOMPARE(page.queries().last(), MovePage::query("300001"));
        // Filled and no more.
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 300001 综合信息"));
        page.service.answerPath(analysisPath, answer({}));
        page.showStock("600036");
        QTRY_COMPARE(page.shown(), QStringLiteral("股600036 600036\n暂无异动信息"));
        QVERIFY(page.isOpen());

        // A code that is no stock as well.
        page.service.answerPath(analysisPath, found("399001", "大盘"));
        page.openInTdx("399001");
        page.tick();
        QTRY_VERIFY(page.shown().contains(QStringLiteral("大盘")));
        QCOMPARE(page.queries().last(), MovePage::query("399001"));
    }

    void aClosedPanelAsksNothing()
    {
        MovePage page;
        page.openPanel();
        page.panel()->close();
        page.showStock("300001");
        page.openInTdx("399001");
        page.tick();
        page.showStock("600036");
        QCOMPARE(page.queries().size(), 1);
        QVERIFY(!page.isOpen());
    }

    void aPanelThatWasClosedMeanwhileStaysClosed()
    {
        MovePage page;
        page.openPanel();
        page.service.answerPath(analysisPath, RawAnswer::hold());
        page.showStock("300001");
        QTRY_COMPARE(page.service.heldCount(), 1);
        page.press();
        QVERIFY(!page.isOpen());
        QVERIFY(page.service.releaseOldest(found("300001", "机器人")));
        // What is asked for later is answered later.
        page.service.answerPath(analysisPath, found("300001", "再次"));
        page.showStock("600036");
        QVERIFY(!page.isOpen());
        page.press();
        QTRY_VERIFY(page.isOpen());
        QVERIFY(page.shown().contains(QStringLiteral("再次")));
    }

    void anAnswerOfAStockThatWasLeftIsNotShown()
    {
        MovePage page;
        page.openPanel();
        page.leaveAStockWithoutItsAnswer();
        QVERIFY(page.service.releaseOldest(found("300001", "机器人")));
        // Behind it nothing of the earlier one has come in.
        page.service.answerPath(analysisPath, found("000001", "保险"));
        page.showStock("000001");
        const QString before = page.shown();
        QVERIFY2(!before.contains(QStringLiteral("机器人")), qPrintable(before));
        QTRY_VERIFY(page.shown().contains(QStringLiteral("保险")));
    }

    void noAnalysisOfAStockThatWasLeftIsNoneOfTheNext()
    {
        MovePage page;
        page.openPanel();
        page.leaveAStockWithoutItsAnswer();
        QSignalSpy answered(page.page->findChild<StockApiClient *>(),
                            &StockApiClient::dynamicAnalysisReceived);
        QVERIFY(page.service.releaseOldest(answer({})));
        QVERIFY(answered.wait());
        QVERIFY2(page.shown().contains(QStringLiteral("银行")), qPrintable(page.shown()));
    }

    void aPanelAskedForOnAStockThatWasLeftOpensOnTheNextOne()
    {
        MovePage page;
        page.showStock("600519");
        page.service.answerPath(analysisPath, RawAnswer::hold());
        page.press();
        QTRY_COMPARE(page.service.heldCount(), 1);
        page.showStock("300001");
        QCOMPARE(page.queries().size(), 1);
        page.service.answerPath(analysisPath, found("300001", "机器人"));
        QVERIFY(page.service.releaseOldest(found("600519", "提价")));
        QTRY_VERIFY(page.isOpen());
        QVERIFY(page.shown().contains(QStringLiteral("机器人")));
        QCOMPARE(page.queries().last(), MovePage::query("300001"));
    }

    void aFailureKeepsWhatIsOnShow_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("httpStatus");
        QTest::addColumn<QString>("said");
        QTest::newRow("refused") << QByteArray(R"({"success":false,"error":"服务繁忙"})") << 200
                                 << QStringLiteral("查询失败: 服务繁忙");
        QTest::newRow("broken") << QByteArray(R"({"error":"内部错误"})") << 500
                                << QStringLiteral("查询失败: 内部错误");
        QTest::newRow("garbage") << QByteArray("<html>") << 200 << QStringLiteral("查询失败: JSON解析错误: ");
    }

    void aFailureKeepsWhatIsOnShow()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const int, httpStatus);
        QFETCH(const QString, said);
        MovePage page;
        page.openPanel();
        const QString before = page.shown();
        page.service.answerPath(analysisPath, RawAnswer::body(body, httpStatus));
        page.showStock("300001");
        QTRY_VERIFY2(page.status().startsWith(said), qPrintable(page.status()));
        QCOMPARE(page.shown(), before);
        QVERIFY(page.isOpen());
        // And opens no panel that was closed.
        page.press();
        page.press();
        QTRY_COMPARE(page.queries().size(), 3);
        QTRY_VERIFY2(page.status().startsWith(said), qPrintable(page.status()));
        QVERIFY(!page.isOpen());
    }

    void dataOfOtherTypesAreTakenForEmpty()
    {
        MovePage page;
        page.showStock("600519");
        page.service.answerPath(analysisPath, answer({7, QStringLiteral("x"), QJsonObject()}));
        page.press();
        QTRY_VERIFY(page.isOpen());
        QCOMPARE(page.shown().trimmed(), QStringLiteral("暂无异动信息"));
    }

    void aServiceThatIsDownOpensNothing()
    {
        MovePage page;
        page.showStock("600519");
        page.service.server().refuseConnections();
        page.press();
        QTRY_VERIFY2(page.status().startsWith(QStringLiteral("查询失败: 网络错误")),
                     qPrintable(page.status()));
        QVERIFY(!page.isOpen());
    }

    void aDestroyedPanelIsMadeAnew()
    {
        MovePage page;
        page.openPanel();
        delete page.panel();
        page.showStock("300001");
        QCOMPARE(page.queries().size(), 1);
        page.press();
        QTRY_VERIFY(page.isOpen());
    }

    void thePageTakesItsPanelAlong()
    {
        MovePage page;
        page.openPanel();
        const QPointer<DynamicAnalysisDialog> panel = page.panel();
        page.window.reset();
        QVERIFY(!panel);
    }

    void theHotKeyLeavesThePanelOpenUnderItsEntry()
    {
        MovePage page;
        page.openPanel();
        const DialogVisit visit(QStringLiteral("录入异动信息"), [&page](QDialog &dialog) {
            page.press();
            QVERIFY(page.isOpen());
            dialog.reject();
        });
        QMetaObject::invokeMethod(page.panel(), "onManualInputClicked");
        QTRY_VERIFY(visit.ended());
        QVERIFY(page.isOpen());
        page.press();
        QVERIFY(!page.isOpen());
    }

    void thePanelBelongsToTheWindowAlsoWhenThatChangesItsFlags()
    {
        MovePage page;
        page.openPanel();
        QTRY_COMPARE(ownerOf(*page.panel()), page.window->windowHandle()->winId());
        const WId before = page.window->windowHandle()->winId();
        // As the compact mode does; without an owner the panel would go below the window. At times the window
        // system takes the same number again.
        const Qt::WindowFlags compact = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
        for (const Qt::WindowFlags flags : {compact, Qt::Window | Qt::FramelessWindowHint, compact}) {
            page.window->setWindowFlags(flags);
            page.window->show();
            QVERIFY(QTest::qWaitForWindowExposed(page.window.get()));
            QTRY_COMPARE(ownerOf(*page.panel()), page.window->windowHandle()->winId());
        }
        QVERIFY(page.window->windowHandle()->winId() != before);
        QVERIFY(page.isOpen());
        QVERIFY(page.shown().contains(QStringLiteral("1、渠道提价。")));
        // A closed one stays closed.
        page.press();
        page.window->setWindowFlags(Qt::Window);
        page.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(page.window.get()));
        QVERIFY(!page.isOpen());
    }

    void changedColorsShowAtOnce()
    {
        MovePage page;
        page.openPanel();
        ConfigManager::instance()->setThemeWidth(420);
        page.page->reloadSettings();
        QCOMPARE(page.panel()->width(), 420);
        QVERIFY(page.shown().contains(QStringLiteral("1、渠道提价。")));
    }

    void anotherServiceIsAskedWhenTheSettingsNameOne()
    {
        MovePage page;
        page.showStock("600519");
        ScriptedStockService other;
        other.answerPath(analysisPath, found("600519", "另一处"));
        ConfigManager::instance()->setApiServerUrl(other.url());
        StockApiConfig::instance()->refreshFromSettings();
        page.page->useConfiguredService();
        page.press();
        QTRY_VERIFY(page.isOpen());
        QVERIFY(page.shown().contains(QStringLiteral("另一处")));
        QVERIFY(page.queries().isEmpty());
    }

    void theHotKeyTogglesThePanelFromAnotherProgram()
    {
        XTestKeyboard keyboard;
        MovePage page;
        page.showStock("600519");
        HotkeyHolder other({QStringLiteral("window")}, QStringLiteral(HOTKEY_HOLDER));
        QVERIFY(other.says(QStringLiteral("focused")));
        keyboard.tap(keyboard.keycodeOf(XK_a));
        QVERIFY(other.says(QStringLiteral("key A")));
        QTRY_VERIFY(!page.window->isActiveWindow());

        const quint8 tab = keyboard.keycodeOf(XK_Tab);
        for (int turn = 0; turn < 2; ++turn) {
            keyboard.tap(tab);
            QTRY_VERIFY(page.isOpen());
            QVERIFY(QTest::qWaitForWindowExposed(page.panel()));
            QVERIFY(!page.panel()->isActiveWindow());
            keyboard.tap(tab);
            QTRY_VERIFY(!page.isOpen());
        }
        keyboard.tap(tab);
        QTRY_VERIFY(page.isOpen());
        // The keys have stayed with the other program, but for the hot key.
        keyboard.tap(keyboard.keycodeOf(XK_b));
        QVERIFY(other.says(QStringLiteral("key B")));
        QVERIFY(!other.lines().contains(QStringLiteral("key Tab")));

        // Given back with the loop.
        page.find<QCheckBox>("autoRefreshCheckBox")->click();
        keyboard.tap(tab);
        QVERIFY(other.says(QStringLiteral("key Tab")));
        QVERIFY(page.isOpen());
    }
};

LARKSPIRE_TEST_MAIN(tst_StockPageMoveAnalysis)
#include "tst_stockpagemoveanalysis.moc"
