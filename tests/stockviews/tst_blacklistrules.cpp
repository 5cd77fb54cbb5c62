#include "stockviews/BlacklistRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

StockRenderSettings settings()
{
    StockRenderSettings settings;
    settings.mainBoardColor = text("main-color");
    settings.gemColor = text("gem-color");
    settings.stockCodeNameFontSize = 15;
    return settings;
}

const QString badge =
    text("<span style='background-color: #e74c3c; color: white; padding: 2px 6px; border-radius: 3px; "
         "font-size: 13pt; font-weight: bold; margin-right: 5px;'>⚠️黑名单</span>");

} // namespace

class TestBlacklistRules : public QObject
{
    Q_OBJECT

private slots:
    void quickReasonsKeepTheirOrder();
    void reasonHasThreeToTwentyCharacters_data();
    void reasonHasThreeToTwentyCharacters();
    void quickReasonsAreGoodReasons();
    void counterIsGreenFromThreeCharactersOn_data();
    void counterIsGreenFromThreeCharactersOn();
    void ownReasonIsShownAheadOfTheServices_data();
    void ownReasonIsShownAheadOfTheServices();
    void questionNamesTheStockAndTheReason();
    void listedNameCarriesTheBadge_data();
    void listedNameCarriesTheBadge();
    void unlistedNameIsTheLinkAlone_data();
    void unlistedNameIsTheLinkAlone();
    void buttonTellsTheState();
    void toolTipShowsTheReasonAsItIs_data();
    void toolTipShowsTheReasonAsItIs();
    void statusStylesDiffer();
};

void TestBlacklistRules::quickReasonsKeepTheirOrder()
{
    QCOMPARE(BlacklistRules::quickReasons().join(QLatin1Char(' ')),
             text("业绩巨亏爆雷 题材被证伪 股东减持 财务造假立案调查 ST风险 股票被监管 股性差庄股 "
                  "限售股巨额解禁 涨幅过大"));
    QCOMPARE(BlacklistRules::ReasonType, 9);
}

void TestBlacklistRules::reasonHasThreeToTwentyCharacters_data()
{
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("problem");

    QTest::newRow("empty") << QString() << text("原因至少需要3个字");
    QTest::newRow("two") << text("减持") << text("原因至少需要3个字");
    QTest::newRow("three") << text("大减持") << QString();
    QTest::newRow("twenty") << QString(20, QChar(0x51CF)) << QString();
    QTest::newRow("twenty-one") << QString(21, QChar(0x51CF)) << text("原因最多20个字");
}

void TestBlacklistRules::reasonHasThreeToTwentyCharacters()
{
    QFETCH(QString, reason);
    QTEST(BlacklistRules::reasonProblem(reason), "problem");
}

void TestBlacklistRules::quickReasonsAreGoodReasons()
{
    const QStringList reasons = BlacklistRules::quickReasons();
    QCOMPARE(reasons.size(), 9);
    for (const QString &reason : reasons)
        QCOMPARE(BlacklistRules::reasonProblem(reason), QString());
}

void TestBlacklistRules::counterIsGreenFromThreeCharactersOn_data()
{
    QTest::addColumn<int>("typed");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("style");

    const QString red = text("QLabel { color: #e74c3c; font-size: 16px; }");
    const QString green = text("QLabel { color: #27ae60; font-size: 16px; }");
    QTest::newRow("0") << 0 << text("已输入：0 字") << red;
    QTest::newRow("2") << 2 << text("已输入：2 字") << red;
    QTest::newRow("3") << 3 << text("已输入：3 字") << green;
    QTest::newRow("20") << 20 << text("已输入：20 字") << green;
}

void TestBlacklistRules::counterIsGreenFromThreeCharactersOn()
{
    QFETCH(int, typed);
    QTEST(BlacklistRules::counterText(typed), "line");
    QTEST(BlacklistRules::counterStyle(typed), "style");
}

void TestBlacklistRules::ownReasonIsShownAheadOfTheServices_data()
{
    QTest::addColumn<QJsonObject>("check");
    QTest::addColumn<QString>("reason");

    const QString own = text("custom_reason");
    const QString service = text("reason_text");
    QTest::newRow("both") << QJsonObject{{own, text("我的理由")}, {service, text("其他")}}
                          << text("我的理由");
    QTest::newRow("the service's alone") << QJsonObject{{service, text("股东减持")}} << text("股东减持");
    QTest::newRow("an empty one of the user")
        << QJsonObject{{own, QString()}, {service, text("股东减持")}} << text("股东减持");
    QTest::newRow("null of the user")
        << QJsonObject{{own, QJsonValue::Null}, {service, text("股东减持")}} << text("股东减持");
    QTest::newRow("none") << QJsonObject() << QString();
}

void TestBlacklistRules::ownReasonIsShownAheadOfTheServices()
{
    QFETCH(QJsonObject, check);
    QTEST(BlacklistRules::shownReason(check), "reason");
}

void TestBlacklistRules::questionNamesTheStockAndTheReason()
{
    QCOMPARE(BlacklistRules::removalQuestion(text("云雀股份"), text("600001"), text("股东减持")),
             text("股票 云雀股份(600001) 已在黑名单中\n\n原因：股东减持\n\n是否要从黑名单中移除？"));
    QCOMPARE(BlacklistRules::removalQuestion(QString(), text("600001"), text("%1 %2")),
             text("股票 600001 已在黑名单中\n\n原因：%1 %2\n\n是否要从黑名单中移除？"));
    QCOMPARE(BlacklistRules::stockText(text("399001"), text("399001")), text("399001"));
    QCOMPARE(BlacklistRules::dialogHeading(text("云雀股份"), text("600001")),
             text("股票：云雀股份 (600001)"));
    QCOMPARE(BlacklistRules::dialogHeading(QString(), text("600001")), text("股票：600001"));
    QCOMPARE(BlacklistRules::dialogHeading(text("399001"), text("399001")), text("股票：399001"));
}

void TestBlacklistRules::listedNameCarriesTheBadge_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("html");

    QTest::newRow("name and code")
        << text("云雀股份") << text("600001")
        << text("<a href=\"search:云雀股份\" style=\"color: main-color; text-decoration: none; font-weight: "
                "bold; font-size: 15pt;\">云雀股份</a>") +
               badge + text(" 600001");
    QTest::newRow("code alone") << QString() << text("300001")
                                << text(
                                       "<a href=\"search:300001\" style=\"color: gem-color; text-decoration: "
                                       "none; font-weight: bold; font-size: 15pt;\">300001</a>") +
                                       badge;
    QTest::newRow("what is no stock") << text("300001") << text("300001")
                                      << text("<a href=\"search:300001\" style=\"color: gem-color; "
                                              "text-decoration: none; font-weight: bold; font-size: "
                                              "15pt;\">300001</a>") +
                                             badge;
    QTest::newRow("signs of HTML and of formats")
        << text("<b>%1&\"") << text("600001")
        << text("<a href=\"search:&lt;b&gt;%1&amp;&quot;\" style=\"color: main-color; text-decoration: none; "
                "font-weight: bold; font-size: 15pt;\">&lt;b&gt;%1&amp;&quot;</a>") +
               badge + text(" 600001");
}

void TestBlacklistRules::listedNameCarriesTheBadge()
{
    QFETCH(QString, name);
    QFETCH(QString, code);
    const LabelContent content = BlacklistRules::listedName(name, code, text("股东减持"), settings());
    QTEST(content.text, "html");
    QCOMPARE(content.style.value_or(text("kept")), QString());
    QCOMPARE(content.toolTip, text("已在黑名单中：股东减持"));
}

void TestBlacklistRules::unlistedNameIsTheLinkAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("html");

    const QString link = text("<a href=\"search:%1\" style=\"color: main-color; text-decoration: none; "
                              "font-weight: bold; font-size: 15pt;\">%2</a>");
    QTest::newRow("name and code") << text("云雀股份") << text("600001")
                                   << link.arg(text("云雀股份"), text("云雀股份 600001"));
    QTest::newRow("code alone") << QString() << text("600001") << link.arg(text("600001"), text("600001"));
    QTest::newRow("what is no stock")
        << text("600001") << text("600001") << link.arg(text("600001"), text("600001"));
}

void TestBlacklistRules::unlistedNameIsTheLinkAlone()
{
    QFETCH(QString, name);
    QFETCH(QString, code);
    const LabelContent content = BlacklistRules::unlistedName(name, code, settings());
    QTEST(content.text, "html");
    QCOMPARE(content.style.value_or(text("kept")), QString());
    QCOMPARE(content.toolTip, QString());
}

void TestBlacklistRules::buttonTellsTheState()
{
    const LabelContent listed = BlacklistRules::listedButton(text("股东减持"));
    QCOMPARE(listed.text, text("移"));
    QVERIFY(listed.style->contains(text("color: #e74c3c")));
    QCOMPARE(listed.toolTip, text("已在黑名单中：股东减持"));
    const LabelContent unlisted = BlacklistRules::unlistedButton();
    QCOMPARE(unlisted.text, text("黑"));
    QVERIFY(!unlisted.style->contains(text("color")));
    QCOMPARE(unlisted.toolTip, text("黑名单管理"));
}

void TestBlacklistRules::toolTipShowsTheReasonAsItIs_data()
{
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("toolTip");

    QTest::newRow("none") << QString() << text("已在黑名单中");
    QTest::newRow("words") << text("A&B 减持") << text("已在黑名单中：A&B 减持");
    QTest::newRow("what looks like HTML") << text("<b>减持</b>") << text("已在黑名单中：<b>减持</b>");
}

void TestBlacklistRules::toolTipShowsTheReasonAsItIs()
{
    QFETCH(QString, reason);
    QTEST(BlacklistRules::listedButton(reason).toolTip, "toolTip");
}

void TestBlacklistRules::statusStylesDiffer()
{
    QCOMPARE(BlacklistRules::failureStyle(), text("QLabel { color: #e74c3c; font-weight: bold; }"));
    QCOMPARE(BlacklistRules::progressStyle(), text("QLabel { color: #3498db; font-weight: bold; }"));
    QCOMPARE(BlacklistRules::successStyle(), text("QLabel { color: #27ae60; font-weight: bold; }"));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestBlacklistRules)
#include "tst_blacklistrules.moc"
