#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

/// The blacklist of an account over the wire.
class ServiceBlacklistTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void onlyKnownCallersGetAnswers_data();
    void onlyKnownCallersGetAnswers();
    void aStockIsNotOnTheListAtFirst();
    void anAddedStockIsThereWithItsReason();
    void aReasonOfTheServiceNeedsNoWords_data();
    void aReasonOfTheServiceNeedsNoWords();
    void addingAgainChangesTheReason();
    void aRemovedStockIsGone();
    void theListFollowsTheAccount();
    void everyAccountHasAListOfItsOwn();
    void badEntriesAreRefused_data();
    void badEntriesAreRefused();
    void reasonsOfAllowedLengthsAreTaken_data();
    void reasonsOfAllowedLengthsAreTaken();
    void badCodesAreRefused_data();
    void badCodesAreRefused();

private:
    ServiceProcess::Answer add(const QJsonObject &body,
                               const ServiceProcess::Headers &headers = byDemoKey()) const
    {
        return m_service->request("POST", "/stockhelper/blacklist", body, headers);
    }
    ServiceProcess::Answer add(const QByteArray &body) const { return add(json(body)); }
    QJsonObject check(const QByteArray &code, const ServiceProcess::Headers &headers = byDemoKey()) const
    {
        const ServiceProcess::Answer answer =
            m_service->request("GET", "/stockhelper/blacklist/check/" + code, {}, headers);
        return answer.status == 200 && answer.success() ? answer.data() : QJsonObject();
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceBlacklistTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceBlacklistTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceBlacklistTest::onlyKnownCallersGetAnswers_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("check") << QByteArray("GET") << QByteArray("/stockhelper/blacklist/check/600519");
    QTest::newRow("add") << QByteArray("POST") << QByteArray("/stockhelper/blacklist");
    QTest::newRow("remove") << QByteArray("DELETE") << QByteArray("/stockhelper/blacklist/600519");
}

void ServiceBlacklistTest::onlyKnownCallersGetAnswers()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QCOMPARE(m_service->request(method, target).status, 401);
}

void ServiceBlacklistTest::aStockIsNotOnTheListAtFirst()
{
    QCOMPARE(check("600519"),
             json(R"({"in_blacklist":false,"stock_code":"600519","stock_name":"","reason_type":0,
                      "reason_text":"","custom_reason":"","created_at":""})"));
}

void ServiceBlacklistTest::anAddedStockIsThereWithItsReason()
{
    const ServiceProcess::Answer answer = add(
        R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":9,"custom_reason":" ST风险很大 "})");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.object, json(R"({"success":true,"message":"已添加到黑名单"})"));
    QCOMPARE(check("600519"),
             json(R"({"in_blacklist":true,"stock_code":"600519","stock_name":"贵州茅台","reason_type":9,
                      "reason_text":"自定义原因","custom_reason":"ST风险很大",
                      "created_at":"2024-08-08 10:30:00"})"));
    QCOMPARE(check("000001").value(QLatin1String("in_blacklist")), QJsonValue(false));
}

void ServiceBlacklistTest::aReasonOfTheServiceNeedsNoWords_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    const char *const texts[] = {"业绩巨亏爆雷", "题材被证伪", "股东减持",       "财务造假立案调查", "ST风险",
                                 "股票被监管",   "股性差庄股", "限售股巨额解禁", "自定义原因"};
    for (int i = 0; i < 9; ++i)
        QTest::addRow("type %d", i + 1) << i + 1 << QString::fromUtf8(texts[i]);
}

void ServiceBlacklistTest::aReasonOfTheServiceNeedsNoWords()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QVERIFY(add({{QStringLiteral("stock_code"), QStringLiteral("300750")},
                 {QStringLiteral("stock_name"), QStringLiteral("宁德时代")},
                 {QStringLiteral("reason_type"), type}})
                .success());
    const QJsonObject data = check("300750");
    QCOMPARE(textAt(data, "reason_text"), text);
    QCOMPARE(textAt(data, "custom_reason"), QString());
    QCOMPARE(numberAt(data, "reason_type"), type);
}

void ServiceBlacklistTest::addingAgainChangesTheReason()
{
    QVERIFY(add(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":3})").success());
    m_service->advanceClock(60);
    QVERIFY(
        add(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":9,"custom_reason":"涨幅过大"})")
            .success());
    QCOMPARE(textAt(check("600519"), "custom_reason"), QStringLiteral("涨幅过大"));
    QCOMPARE(textAt(check("600519"), "created_at"), QStringLiteral("2024-08-08 10:31:00"));
}

void ServiceBlacklistTest::aRemovedStockIsGone()
{
    QVERIFY(add(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":3})").success());
    const QByteArray target = "/stockhelper/blacklist/600519";
    QCOMPARE(m_service->request("DELETE", target, {}, byDemoKey()).object,
             json(R"({"success":true,"message":"已从黑名单移除"})"));
    QCOMPARE(check("600519").value(QLatin1String("in_blacklist")), QJsonValue(false));
    const ServiceProcess::Answer again = m_service->request("DELETE", target, {}, byDemoKey());
    QCOMPARE(again.status, 404);
    QCOMPARE(again.error(), QStringLiteral("该股票不在黑名单中"));
}

void ServiceBlacklistTest::theListFollowsTheAccount()
{
    QVERIFY(add(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":3})").success());
    QVERIFY(m_service->stop());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    const QString token = demoToken(*m_service, QStringLiteral("device-2"));
    QCOMPARE(textAt(check("600519", bySession(token)), "reason_text"), QStringLiteral("股东减持"));
}

void ServiceBlacklistTest::everyAccountHasAListOfItsOwn()
{
    QVERIFY(add(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":3})").success());
    const QString other = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QCOMPARE(check("600519", byKey(other)).value(QLatin1String("in_blacklist")), QJsonValue(false));
    QCOMPARE(m_service->request("DELETE", "/stockhelper/blacklist/600519", {}, byKey(other)).status, 404);
    QCOMPARE(check("600519").value(QLatin1String("in_blacklist")), QJsonValue(true));
}

void ServiceBlacklistTest::badEntriesAreRefused_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("type 0") << QByteArray("reason_type") << QJsonValue(0);
    QTest::newRow("type 10") << QByteArray("reason_type") << QJsonValue(10);
    QTest::newRow("type as text") << QByteArray("reason_type") << QJsonValue(QStringLiteral("9"));
    QTest::newRow("fraction") << QByteArray("reason_type") << QJsonValue(1.5);
    QTest::newRow("no type") << QByteArray("reason_type") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("no code") << QByteArray("stock_code") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("short code") << QByteArray("stock_code") << QJsonValue(QStringLiteral("60051"));
    QTest::newRow("code as a number") << QByteArray("stock_code") << QJsonValue(600519);
    QTest::newRow("no name") << QByteArray("stock_name") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("long name") << QByteArray("stock_name") << QJsonValue(QString(33, QChar(0x8d35)));
    QTest::newRow("2 characters") << QByteArray("custom_reason") << QJsonValue(QStringLiteral("  ab  "));
    QTest::newRow("21 characters") << QByteArray("custom_reason") << QJsonValue(QString(21, QChar(0x8d35)));
    QTest::newRow("reason as a number") << QByteArray("custom_reason") << QJsonValue(123);
}

void ServiceBlacklistTest::badEntriesAreRefused()
{
    QFETCH(QByteArray, key);
    QFETCH(QJsonValue, value);
    QJsonObject body =
        json(R"({"stock_code":"600519","stock_name":"贵州茅台","reason_type":9,"custom_reason":"涨幅过大"})");
    if (value.isUndefined())
        body.remove(QString::fromLatin1(key));
    else
        body.insert(QString::fromLatin1(key), value);
    const ServiceProcess::Answer answer = add(body);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.success());
    QVERIFY(!answer.error().isEmpty());
    QCOMPARE(check("600519").value(QLatin1String("in_blacklist")), QJsonValue(false));
}

void ServiceBlacklistTest::reasonsOfAllowedLengthsAreTaken_data()
{
    QTest::addColumn<QString>("reason");
    QTest::newRow("3 Chinese characters") << QString(3, QChar(0x8d35));
    QTest::newRow("20 Chinese characters") << QString(20, QChar(0x8d35));
    QTest::newRow("quotes and markup") << QStringLiteral("'); DROP <b>\"&");
}

void ServiceBlacklistTest::reasonsOfAllowedLengthsAreTaken()
{
    QFETCH(QString, reason);
    QVERIFY(add({{QStringLiteral("stock_code"), QStringLiteral("920982")},
                 {QStringLiteral("stock_name"), QString()},
                 {QStringLiteral("reason_type"), 9},
                 {QStringLiteral("custom_reason"), reason}})
                .success());
    QCOMPARE(textAt(check("920982"), "custom_reason"), reason);
}

void ServiceBlacklistTest::badCodesAreRefused_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<int>("status");
    QTest::newRow("short") << QByteArray("60051") << 400;
    QTest::newRow("letters") << QByteArray("60A519") << 400;
    QTest::newRow("SQL") << QByteArray("1%27OR1") << 400;
    QTest::newRow("nothing") << QByteArray("") << 404;
}

void ServiceBlacklistTest::badCodesAreRefused()
{
    QFETCH(QByteArray, code);
    QFETCH(int, status);
    QCOMPARE(m_service->request("GET", "/stockhelper/blacklist/check/" + code, {}, byDemoKey()).status,
             status);
    QCOMPARE(m_service->request("DELETE", "/stockhelper/blacklist/" + code, {}, byDemoKey()).status, status);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceBlacklistTest)
#include "tst_ServiceBlacklist.moc"
