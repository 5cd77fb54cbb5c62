#include "stockviews/StockPageRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

using namespace StockPageRules;

class tst_StockPageRules : public QObject
{
    Q_OBJECT

private slots:
    void aCodeIsSentOnlyByTheModeThatNamesItsSource_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("software");
        QTest::addColumn<QString>("target");
        const QString tdx = QStringLiteral("tdx");
        const QString ths = QStringLiteral("ths");
        QTest::newRow("none, tdx") << 0 << tdx << QString();
        QTest::newRow("none, ths") << 0 << ths << QString();
        QTest::newRow("tdx to ths, tdx") << 1 << tdx << ths;
        QTest::newRow("tdx to ths, ths") << 1 << ths << QString();
        QTest::newRow("ths to tdx, tdx") << 2 << tdx << QString();
        QTest::newRow("ths to tdx, ths") << 2 << ths << tdx;
        QTest::newRow("tdx to tdx, tdx") << 3 << tdx << tdx;
        QTest::newRow("tdx to tdx, ths") << 3 << ths << QString();
        QTest::newRow("below the modes") << -1 << tdx << QString();
        QTest::newRow("above the modes") << 4 << tdx << QString();
        QTest::newRow("unknown program") << 1 << QStringLiteral("TDX") << QString();
    }

    void aCodeIsSentOnlyByTheModeThatNamesItsSource()
    {
        QFETCH(int, mode);
        QFETCH(QString, software);
        QTEST(linkageTarget(mode, software), "target");
    }

    void everyModeHasItsWords()
    {
        QCOMPARE(linkageModeText(0), QStringLiteral("不联动"));
        QCOMPARE(linkageModeText(1), QStringLiteral("通➜同 (通达信 ➜ 同花顺)"));
        QCOMPARE(linkageModeText(2), QStringLiteral("同➜通 (同花顺 ➜ 通达信)"));
        QCOMPARE(linkageModeText(3), QStringLiteral("通➜通 (通达信 ➜ 其他通达信)"));
        QCOMPARE(linkageModeText(4), QStringLiteral("未知模式"));
        QCOMPARE(linkageModeText(-1), QStringLiteral("未知模式"));
    }

    void theButtonsNameTheProgram()
    {
        QCOMPARE(switchButtonText(QStringLiteral("tdx")), QStringLiteral("通"));
        QCOMPARE(switchButtonToolTip(QStringLiteral("tdx")),
                 QStringLiteral("当前: 通达信\n点击切换到同花顺并开启自动刷新"));
        QCOMPARE(switchButtonText(QStringLiteral("ths")), QStringLiteral("同"));
        QCOMPARE(switchButtonToolTip(QStringLiteral("ths")),
                 QStringLiteral("当前: 同花顺\n点击切换到通达信并开启自动刷新"));
        QCOMPARE(switchButtonText(QStringLiteral("wind")), QStringLiteral("切"));
        QCOMPARE(switchButtonToolTip(QStringLiteral("wind")),
                 QStringLiteral("点击切换联动软件并开启自动刷新"));
        QCOMPARE(softwareWord(QStringLiteral("tdx")), QStringLiteral("通达信"));
        QCOMPARE(softwareWord(QStringLiteral("ths")), QStringLiteral("同花顺"));
        QCOMPARE(softwareWord(QString()), QString());
        QCOMPARE(otherSoftware(QStringLiteral("tdx")), QStringLiteral("ths"));
        QCOMPARE(otherSoftware(QStringLiteral("ths")), QStringLiteral("tdx"));
    }

    void aCopyIsNamedByTheBestThatIsKnown_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("software");
        QTest::addColumn<QString>("text");
        const QString tdx = QStringLiteral("tdx");
        QTest::newRow("title") << QStringLiteral("C:\\new_tdx\\tdxw.exe") << QStringLiteral("通达信V7") << tdx
                               << QStringLiteral("通达信V7 (PID:42)");
        QTest::newRow("folder of Windows") << QStringLiteral("C:\\zd\\new_tdx\\tdxw.exe") << QString() << tdx
                                           << QStringLiteral("new_tdx (PID:42)");
        QTest::newRow("folder") << QStringLiteral("/opt/行情/tdxw.exe") << QString() << tdx
                                << QStringLiteral("行情 (PID:42)");
        QTest::newRow("nothing, tdx") << QString() << QString() << tdx << QStringLiteral("通达信 (PID:42)");
        QTest::newRow("nothing, ths")
            << QString() << QString() << QStringLiteral("ths") << QStringLiteral("同花顺 (PID:42)");
        QTest::newRow("a path without a folder")
            << QStringLiteral("tdxw.exe") << QString() << tdx << QStringLiteral("通达信 (PID:42)");
        QTest::newRow("a title with a placeholder")
            << QString() << QStringLiteral("%1通达信") << tdx << QStringLiteral("%1通达信 (PID:42)");
    }

    void aCopyIsNamedByTheBestThatIsKnown()
    {
        QFETCH(QString, path);
        QFETCH(QString, title);
        QFETCH(QString, software);
        QTEST(instanceText({42, path, title}, software), "text");
    }

    void aStockIsToldByItsFirstDigits_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("isStock");
        for (const char *stock :
             {"600519", "688981", "000001", "002594", "300750", "301236", "398001", "920001"})
            QTest::newRow(stock) << QString::fromLatin1(stock) << true;
        for (const char *other : {"399001", "399006", "510300", "159915", "110059", "123456", "880001",
                                  "900901", "930001", "830799", ""})
            QTest::newRow(*other != '\0' ? other : "empty") << QString::fromLatin1(other) << false;
    }

    void aStockIsToldByItsFirstDigits()
    {
        QFETCH(QString, code);
        QTEST(isStockCode(code), "isStock");
    }

    void everyHotKeyNameHasItsKey_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("key");
        for (int number = 13; number <= 24; ++number)
            QTest::addRow("F%d", number) << QStringLiteral("F%1").arg(number) << Qt::Key_F1 + number - 1;
        QTest::newRow("Tab") << QStringLiteral("Tab") << int(Qt::Key_Tab);
        QTest::newRow("Tilde") << QStringLiteral("Tilde") << 126;
        QTest::newRow("HomePage") << QStringLiteral("HomePage") << int(Qt::Key_Home);
        QTest::newRow("Search") << QStringLiteral("Search") << int(Qt::Key_Search);
        QTest::newRow("mail, as spelt") << QStringLiteral("LauchMail") << int(Qt::Key_LaunchMail);
        QTest::newRow("mail, spelt otherwise") << QStringLiteral("LaunchMail") << int(Qt::Key_Tab);
        QTest::newRow("Launch") << QStringLiteral("Launch") << int(Qt::Key_Launch0);
        QTest::newRow("empty") << QString() << int(Qt::Key_Tab);
        QTest::newRow("F12") << QStringLiteral("F12") << int(Qt::Key_Tab);
        QTest::newRow("F25") << QStringLiteral("F25") << int(Qt::Key_Tab);
        QTest::newRow("small letter") << QStringLiteral("f13") << int(Qt::Key_Tab);
    }

    void everyHotKeyNameHasItsKey()
    {
        QFETCH(QString, name);
        QTEST(int(hotkey(name)), "key");
    }

    void aFailedQuerySaysWhatIsMeant_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("requestType");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("clears");
        const QString detail = QStringLiteral("limitUpDetailInfo");
        const QString code = QStringLiteral("600519");
        QTest::newRow("no detail") << QStringLiteral("RECORD NOT FOUND") << detail << code
                                   << QStringLiteral("涨停详情查询: 查无记录") << false;
        QTest::newRow("detail fails")
            << QStringLiteral("无数据") << detail << code << QStringLiteral("涨停详情查询: 无数据") << false;
        QTest::newRow("detail, 50 characters")
            << QString(50, u'错') << detail << code << QStringLiteral("涨停详情查询: ") + QString(50, u'错')
            << false;
        QTest::newRow("detail, 51 characters")
            << QString(51, u'错') << detail << code
            << QStringLiteral("涨停详情查询: ") + QString(50, u'错') + QStringLiteral("...") << false;
        QTest::newRow("not found") << QStringLiteral("NOT FOUND: 600519") << QString() << code
                                   << QStringLiteral("600519无数据") << true;
        QTest::newRow("no data, no code")
            << QStringLiteral("暂无数据") << QString() << QString() << QStringLiteral("该股票无数据") << true;
        QTest::newRow("a fund") << QStringLiteral("不支持ETF") << QStringLiteral("comprehensiveInfo") << code
                                << QStringLiteral("600519无数据") << true;
        QTest::newRow("small letters") << QStringLiteral("not found") << QString() << code
                                       << QStringLiteral("查询失败: not found") << false;
        QTest::newRow("100 characters") << QString(100, u'错') << QString() << code
                                        << QStringLiteral("查询失败: ") + QString(100, u'错') << false;
        QTest::newRow("101 characters")
            << QString(101, u'错') << QString() << code
            << QStringLiteral("查询失败: ") + QString(100, u'错') + QStringLiteral("...") << false;
    }

    void aFailedQuerySaysWhatIsMeant()
    {
        QFETCH(QString, error);
        QFETCH(QString, requestType);
        QFETCH(QString, code);
        const QueryFailure failure = queryFailure(error, requestType, code);
        QTEST(failure.status, "status");
        QTEST(failure.clearsDisplay, "clears");
    }

    void theEdgesAreTheOuterBand_data()
    {
        QTest::addColumn<QPoint>("point");
        QTest::addColumn<int>("edges");
        QTest::newRow("middle") << QPoint(150, 275) << 0;
        QTest::newRow("left, last") << QPoint(8, 275) << 2;
        QTest::newRow("left, past") << QPoint(9, 275) << 0;
        QTest::newRow("right, first") << QPoint(292, 275) << 4;
        QTest::newRow("right, ahead") << QPoint(291, 275) << 0;
        QTest::newRow("top, last") << QPoint(150, 8) << 1;
        QTest::newRow("top, past") << QPoint(150, 9) << 0;
        QTest::newRow("bottom, first") << QPoint(150, 542) << 8;
        QTest::newRow("bottom, ahead") << QPoint(150, 541) << 0;
        QTest::newRow("top left") << QPoint(0, 0) << 3;
        QTest::newRow("bottom right") << QPoint(299, 549) << 12;
    }

    void theEdgesAreTheOuterBand()
    {
        QFETCH(QPoint, point);
        QTEST(edgesAt(point, QSize(300, 550)), "edges");
    }

    void anEdgeFollowsThePointer()
    {
        const QRect start(100, 200, 300, 550);
        QCOMPARE(resized(start, TopEdge | LeftEdge, QPoint(-10, 20)), QRect(90, 220, 310, 530));
        QCOMPARE(resized(start, RightEdge, QPoint(-10, 20)), QRect(100, 200, 290, 550));
        QCOMPARE(resized(start, BottomEdge, QPoint(-10, 20)), QRect(100, 200, 300, 570));
        QCOMPARE(resized(start, NoEdge, QPoint(-10, 20)), start);
    }

    void thePopupStaysOnTheScreen_data()
    {
        QTest::addColumn<QRect>("label");
        QTest::addColumn<QPoint>("place");
        QTest::newRow("right of the label") << QRect(100, 100, 80, 20) << QPoint(190, 100);
        QTest::newRow("just fits at the right") << QRect(510, 100, 80, 20) << QPoint(600, 100);
        QTest::newRow("left of the label") << QRect(511, 100, 80, 20) << QPoint(101, 100);
        QTest::newRow("just fits at the bottom") << QRect(100, 500, 80, 20) << QPoint(190, 500);
        QTest::newRow("up from the bottom") << QRect(100, 501, 80, 20) << QPoint(190, 490);
        QTest::newRow("in the corner") << QRect(900, 700, 80, 20) << QPoint(490, 490);
    }

    void thePopupStaysOnTheScreen()
    {
        QFETCH(QRect, label);
        QTEST(popupPosition(label, QSize(400, 300), QRect(0, 0, 1000, 800)), "place");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_StockPageRules)
#include "tst_stockpagerules.moc"
