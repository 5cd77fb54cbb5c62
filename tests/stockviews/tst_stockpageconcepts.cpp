#include "desktop/XTestKeyboard.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/StockPageFixture.h"
#include "stockviews/ThemeStocksDialog.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <memory>

namespace {

constexpr quint32 homeKeysym = 0xff50; // XK_Home
const QByteArray themesPath = "/theme_stocks";

/// The list of a stock's concepts as the service sends it.
RawAnswer themesAnswer(const QString &code, const QStringList &names)
{
    QJsonArray data;
    for (const QString &name : names) {
        data.append(QJsonObject{{QStringLiteral("stock_code"), code},
                                {QStringLiteral("sector_name"), name},
                                {QStringLiteral("desc"), QString()}});
    }
    return dataAnswer(data);
}

} // namespace

// Runs on a real X server with a window manager; the stocks are those of the real service.
class tst_StockPageConcepts : public QObject
{
    Q_OBJECT

    std::unique_ptr<ServiceProcess> m_service;
    QString m_session;

    /// A page that talks to the real service.
    void useRealService() const
    {
        ConfigManager::instance()->setApiServerUrl(m_service->baseUrl());
        ConfigManager::instance()->setSessionToken(m_session);
        StockApiConfig::instance()->refreshFromSettings();
        StockApiConfig::instance()->setTdxOffset(StockPageFixture::tdxOffset);
    }
    static void show(StockPageFixture &page, const QByteArray &code)
    {
        page.openInTdx(code);
        page.openPage();
        page.window->move(20, 40);
        QVERIFY(QTest::qWaitForWindowExposed(page.window.get()));
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code)));
    }
    static ThemeStocksDialog *panel(const StockPageFixture &page)
    {
        return page.page->findChild<ThemeStocksDialog *>();
    }
    static bool isOpen(const StockPageFixture &page) { return panel(page) && panel(page)->isVisible(); }
    static void clickButton(const StockPageFixture &page) { page.find<QPushButton>("themeButton")->click(); }
    static QString heading(const StockPageFixture &page)
    {
        const auto *label = panel(page)->findChild<QLabel *>(QStringLiteral("themeHeaderLabel"));
        return label->text();
    }
    static QStringList concepts(const StockPageFixture &page)
    {
        QStringList names;
        for (const QLabel *label : panel(page)->findChildren<QLabel *>(QStringLiteral("themeNameLabel")))
            names.append(label->text());
        return names;
    }

    /// Shows a stock of one concept, and the panel.
    static void openPanel(StockPageFixture &page)
    {
        page.service.answerPath(themesPath, themesAnswer(QStringLiteral("600519"), {QStringLiteral("白酒")}));
        show(page, "600519");
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
    }
    /// Goes to a stock whose answer is held back, and from it to one whose concept is shown.
    static void leaveAStockWithoutItsAnswer(StockPageFixture &page, const QByteArray &left)
    {
        page.openInTdx(left);
        page.tick();
        QTRY_COMPARE(page.service.heldCount(), 1);
        page.openInTdx("688981");
        page.tick();
        QTRY_COMPARE(page.service.heldCount(), 2);
        QVERIFY(page.service.releaseNewest(themesAnswer(QStringLiteral("688981"), {QStringLiteral("芯片")})));
        QTRY_COMPARE(concepts(page), QStringList(QStringLiteral("芯片")));
    }
    /// Answers the oldest question and waits until the page has taken notice.
    static void answerOldest(StockPageFixture &page, const RawAnswer &answer)
    {
        QSignalSpy answered(page.page->findChild<QNetworkAccessManager *>(),
                            &QNetworkAccessManager::finished);
        QVERIFY(page.service.releaseOldest(answer));
        QVERIFY(answered.wait());
    }

private slots:
    void initTestCase()
    {
        SpeechStage::install();
        qRegisterMetaType<QNetworkReply *>();
        m_service = std::make_unique<ServiceProcess>();
        QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
        m_session = m_service->openSession(QStringLiteral("desk"));
        QVERIFY(!m_session.isEmpty());
    }

    void theButtonOpensAndClosesThePanel()
    {
        StockPageFixture page;
        useRealService();
        show(page, "000661");
        QVERIFY(panel(page) == nullptr);
        clickButton(page);
        QCOMPARE(page.status(), QStringLiteral("正在查询主题信息..."));
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(page.status(), QStringLiteral("查询到 2 个主题信息"));
        QCOMPARE(panel(page)->parentWidget(), page.page);
        QCOMPARE(heading(page), QStringLiteral("长春高新 000661"));
        QCOMPARE(concepts(page), (QStringList{QStringLiteral("生物医药"), QStringLiteral("医疗器械")}));
        QVERIFY(QTest::qWaitForWindowExposed(panel(page)));
        QVERIFY(QTest::qWaitForWindowActive(page.window.get()));
        QCOMPARE(QApplication::activeWindow(), page.window.get());

        const QPointer<ThemeStocksDialog> first = panel(page);
        clickButton(page);
        QVERIFY(!isOpen(page));
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(panel(page), first.data());
    }

    void theOpenPanelFollowsTheCode()
    {
        StockPageFixture page;
        useRealService();
        show(page, "000661");
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
        page.openInTdx("600519");
        page.tick();
        QTRY_COMPARE(heading(page), QStringLiteral("贵州茅台 600519"));
        QCOMPARE(concepts(page), (QStringList{QStringLiteral("白酒"), QStringLiteral("大消费")}));
        // A fund belongs to no concept.
        page.openInTdx("510300");
        page.tick();
        QTRY_COMPARE(heading(page), QStringLiteral("510300"));
        QCOMPARE(concepts(page), QStringList());
        QCOMPARE(panel(page)->findChild<QLabel *>(QStringLiteral("themeNothingLabel"))->text(),
                 QStringLiteral("暂无相关信息"));
        QVERIFY(isOpen(page));

        // A closed one asks for nothing.
        clickButton(page);
        QVERIFY(!isOpen(page));
        m_service->clearStatistics();
        page.openInTdx("000661");
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 000661 综合信息"));
        QCOMPARE(m_service->requestCount(QStringLiteral("GET /stockhelper/theme_stocks")), 0);
    }

    void anUnknownCodeHasNoConcepts()
    {
        StockPageFixture page;
        useRealService();
        page.openInTdx("689999");
        page.openPage();
        page.switchOn();
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("689999无数据"));
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(page.status(), QStringLiteral("查询到 0 个主题信息"));
        QCOMPARE(heading(page), QStringLiteral("689999"));
        QVERIFY(panel(page)->findChild<QLabel *>(QStringLiteral("themeNothingLabel")) != nullptr);
    }

    void aServiceThatIsDownIsToldAndLeavesThePanelAsItIs()
    {
        StockPageFixture page;
        page.service.answerPath(themesPath, themesAnswer(QStringLiteral("600519"), {QStringLiteral("白酒")}));
        show(page, "600519");
        page.service.answerPath(themesPath, RawAnswer::reset());
        clickButton(page);
        QTRY_VERIFY(page.status().startsWith(QStringLiteral("查询失败: ")));
        QVERIFY(panel(page) == nullptr);
        page.service.answerPath(themesPath, themesAnswer(QStringLiteral("600519"), {QStringLiteral("白酒")}));
        clickButton(page);
        QTRY_VERIFY(isOpen(page));

        page.service.answerPath(themesPath, RawAnswer::reset());
        page.openInTdx("000661");
        page.tick();
        QTRY_VERIFY(page.status().startsWith(QStringLiteral("查询失败: ")));
        QVERIFY(isOpen(page));
        QCOMPARE(heading(page), QStringLiteral("股600519 600519"));
        QCOMPARE(concepts(page), QStringList(QStringLiteral("白酒")));
    }

    void theConceptsOfAStockThatWasLeftAreNotShownUnderTheNext()
    {
        StockPageFixture page;
        page.service.answerPath(themesPath, RawAnswer::hold());
        show(page, "600519");
        clickButton(page);
        QTRY_COMPARE(page.service.targets(themesPath).size(), 1);
        page.openInTdx("000661");
        page.tick();
        QTRY_COMPARE(page.status(), QStringLiteral("已更新 000661 综合信息"));
        // The late answer brings up a question about the stock that is on show now.
        QVERIFY(page.service.releaseOldest(themesAnswer(QStringLiteral("600519"), {QStringLiteral("白酒")})));
        QTRY_COMPARE(page.service.targets(themesPath).size(), 2);
        QVERIFY(page.service.targets(themesPath).last().endsWith(QStringLiteral("code=000661")));
        QVERIFY(panel(page) == nullptr);
        QTRY_COMPARE(page.service.heldCount(), 1);
        QVERIFY(
            page.service.releaseOldest(themesAnswer(QStringLiteral("000661"), {QStringLiteral("生物医药")})));
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(heading(page), QStringLiteral("股000661 000661"));
        QCOMPARE(concepts(page), QStringList(QStringLiteral("生物医药")));

        // Two answers that overtake each other.
        leaveAStockWithoutItsAnswer(page, "300750");
        QCOMPARE(heading(page), QStringLiteral("股688981 688981"));
        answerOldest(page, themesAnswer(QStringLiteral("300750"), {QStringLiteral("锂电池")}));
        QCOMPARE(concepts(page), QStringList(QStringLiteral("芯片")));
        QCOMPARE(page.service.targets(themesPath).size(), 4);
    }

    void noConceptsOfAStockThatWasLeftAreNoneOfTheNext()
    {
        StockPageFixture page;
        openPanel(page);
        page.service.answerPath(themesPath, RawAnswer::hold());
        leaveAStockWithoutItsAnswer(page, "002607");
        answerOldest(page, themesAnswer(QStringLiteral("002607"), {}));
        QCOMPARE(concepts(page), QStringList(QStringLiteral("芯片")));
    }

    void aPanelThatIsClosedBeforeItsAnswerComesStaysClosed()
    {
        StockPageFixture page;
        openPanel(page);
        page.service.answerPath(themesPath, RawAnswer::hold());
        page.openInTdx("000661");
        page.tick();
        QTRY_COMPARE(page.service.heldCount(), 1);
        clickButton(page);
        QVERIFY(!isOpen(page));
        QVERIFY(
            page.service.releaseOldest(themesAnswer(QStringLiteral("000661"), {QStringLiteral("生物医药")})));
        QTRY_COMPARE(concepts(page), QStringList(QStringLiteral("生物医药")));
        QCOMPARE(page.status(), QStringLiteral("查询到 1 个主题信息"));
        QVERIFY(!isOpen(page));
    }

    void theHotKeyOpensAndClosesItFromAnotherWindow()
    {
        StockPageFixture page;
        useRealService();
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("HomePage"));
        XTestKeyboard keyboard;
        const quint8 key = keyboard.keycodeOf(homeKeysym);
        QVERIFY(key != 0);
        show(page, "000661");
        QLineEdit other;
        other.setText(QStringLiteral("600519"));
        other.move(900, 700);
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        other.setFocus();
        other.setCursorPosition(3);

        keyboard.tap(key);
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(heading(page), QStringLiteral("长春高新 000661"));
        QVERIFY(QTest::qWaitForWindowExposed(panel(page)));
        // The other window has kept the focus and has not seen the key.
        QVERIFY(other.isActiveWindow());
        QVERIFY(other.hasFocus());
        QCOMPARE(other.cursorPosition(), 3);
        keyboard.tap(key);
        QTRY_VERIFY(!isOpen(page));
        keyboard.tap(key);
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(other.cursorPosition(), 3);
        QVERIFY(other.isActiveWindow());

        // With the loop off the key is the other window's again.
        page.switchOn();
        keyboard.tap(key);
        QTRY_COMPARE(other.cursorPosition(), 0);
        QVERIFY(isOpen(page));
    }

    void theHotKeyBringsItUpBesideAMinimisedMainWindow()
    {
        StockPageFixture page;
        page.service.answerPath(themesPath, themesAnswer(QStringLiteral("600519"), {QStringLiteral("白酒")}));
        ConfigManager::instance()->setThemeHotkey(QStringLiteral("HomePage"));
        XTestKeyboard keyboard;
        const quint8 key = keyboard.keycodeOf(homeKeysym);
        show(page, "600519");
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
        QVERIFY(QTest::qWaitForWindowExposed(panel(page)));
        page.window->showMinimized();
        QTRY_VERIFY(!panel(page)->windowHandle()->isExposed());
        QVERIFY(!panel(page)->isOnScreen());
        keyboard.tap(key);
        QTRY_VERIFY(panel(page)->windowHandle()->isExposed());
        QVERIFY(panel(page)->isOnScreen());
        QVERIFY(page.window->isMinimized());
        keyboard.tap(key);
        QTRY_VERIFY(!isOpen(page));
    }

    void aDraggedPanelStandsThereAtTheNextStart()
    {
        QPoint place;
        {
            StockPageFixture page;
            openPanel(page);
            QVERIFY(QTest::qWaitForWindowExposed(panel(page)));
            QWindow *window = panel(page)->windowHandle();
            QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, QPoint(60, 15));
            QTest::mouseMove(window, QPoint(200, 95));
            QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, QPoint(60, 15));
            QVERIFY(panel(page)->hasCustomPosition());
            place = ConfigManager::instance()->getThemeCustomPosition();
            QCOMPARE(panel(page)->pos(), place);
        }
        StockPageFixture page;
        ConfigManager::instance()->setThemeCustomPosition(place); // what the fixture has emptied
        openPanel(page);
        QCOMPARE(panel(page)->pos(), place);
    }

    void theOptionOfTheSettingsCountsWithTheNextList()
    {
        StockPageFixture page;
        ConfigManager::instance()->setThemePosition(0);
        openPanel(page);
        const QRect screen = QApplication::primaryScreen()->availableGeometry();
        QCOMPARE(panel(page)->x(), screen.x() + 50);
        ConfigManager::instance()->setThemePosition(2);
        page.openInTdx("000661");
        page.tick();
        QTRY_COMPARE(panel(page)->x(), screen.x() + screen.width() - 650);
    }

    void aPanelThatWasDestroyedIsMadeAnew()
    {
        StockPageFixture page;
        openPanel(page);
        delete panel(page);
        clickButton(page);
        QTRY_VERIFY(isOpen(page));
        QCOMPARE(concepts(page), QStringList(QStringLiteral("白酒")));
    }

    void itGoesWithThePage()
    {
        StockPageFixture page;
        openPanel(page);
        const QPointer<ThemeStocksDialog> open = panel(page);
        page.window.reset();
        QVERIFY(!open);
    }

    void thePageMayEndWhileThePanelIsBeingFilled()
    {
        StockPageFixture page;
        page.openPage();
        QTimer::singleShot(0, page.window.get(), [&page] { page.window.reset(); });
        ThemeStockInfo theme;
        theme.sectorName = QStringLiteral("白酒");
        QVERIFY(QMetaObject::invokeMethod(page.page, "onThemeStocksReceived",
                                          Q_ARG(QList<ThemeStockInfo>, QList<ThemeStockInfo>{theme})));
        QVERIFY(page.window == nullptr);
    }
};

LARKSPIRE_TEST_MAIN(tst_StockPageConcepts)
#include "tst_stockpageconcepts.moc"
