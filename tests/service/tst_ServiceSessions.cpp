#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

namespace {

constexpr qint64 hour = 3600;

} // namespace

/// Sessions: how they identify, expire and roll.
class ServiceSessionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void nobodyIsRefused_data();
    void nobodyIsRefused();
    void aSessionCountsAheadOfAKey();
    void aSessionEndsAfterADay();
    void aYoungSessionDoesNotRoll();
    void anOldSessionRollsOnAnyReply_data();
    void anOldSessionRollsOnAnyReply();
    void rollingGivesTheSameTokenAgain();
    void bothTokensAreGoodUntilTheirOwnEnd();
    void theUserInformationNamesTheFreshToken();
    void aKeyOpensASessionOnTheTestPath();
    void validationTellsWhoseSessionItIs();
    void validationRollsAnOldSession();
    void validationRefuses_data();
    void validationRefuses();

private:
    ServiceProcess::Answer get(const char *path, const QString &token) const
    {
        return m_service->request("GET", path, {}, bySession(token));
    }
    ServiceProcess::Answer validate(const QString &token) const
    {
        return m_service->request("POST", "/auth/session/validate",
                                  {{QStringLiteral("session_token"), token}});
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceSessionsTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceSessionsTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceSessionsTest::nobodyIsRefused_data()
{
    QTest::addColumn<ServiceProcess::Headers>("headers");
    QTest::newRow("nothing") << ServiceProcess::Headers();
    QTest::newRow("device alone") << onDevice(QStringLiteral("d1"));
    QTest::newRow("unknown key") << byKey(QStringLiteral("none"));
    QTest::newRow("unknown session") << bySession(QStringLiteral("none"));
    QTest::newRow("SQL as a key") << byKey(QStringLiteral("' OR '1'='1"));
    QTest::newRow("SQL as a session") << bySession(QStringLiteral("' OR '1'='1"));
    QTest::newRow("empty headers") << byKey(QString()) + bySession(QString());
}

void ServiceSessionsTest::nobodyIsRefused()
{
    QFETCH(ServiceProcess::Headers, headers);
    for (const char *path : {"/newsapi/news", "/newsapi/news/latest", "/newsapi/keywords", "/newsapi/stats",
                             "/newsapi/test", "/user/info", "/user/devices"}) {
        const ServiceProcess::Answer answer = m_service->request("GET", path, {}, headers);
        QCOMPARE(answer.status, 401);
        QVERIFY(!answer.success());
        QVERIFY(!answer.error().isEmpty());
    }
}

void ServiceSessionsTest::aSessionCountsAheadOfAKey()
{
    const QString token = demoToken(*m_service);
    QCOMPARE(
        m_service->request("GET", "/user/info", {}, bySession(token) + byKey(QStringLiteral("none"))).status,
        200);
    QCOMPARE(
        m_service->request("GET", "/user/info", {}, bySession(QStringLiteral("none")) + byDemoKey()).status,
        401);
}

void ServiceSessionsTest::aSessionEndsAfterADay()
{
    const QString token = demoToken(*m_service);
    m_service->advanceClock(24 * hour - 1);
    QCOMPARE(get("/newsapi/news", token).status, 200);
    m_service->advanceClock(1);
    const ServiceProcess::Answer answer = get("/newsapi/news", token);
    QCOMPARE(answer.status, 401);
    QCOMPARE(answer.error(), QStringLiteral("会话已过期，请重新登录"));
}

void ServiceSessionsTest::aYoungSessionDoesNotRoll()
{
    const QString token = demoToken(*m_service);
    m_service->advanceClock(12 * hour - 1);
    QVERIFY(!get("/newsapi/news", token).object.contains(QStringLiteral("session_token")));
}

void ServiceSessionsTest::anOldSessionRollsOnAnyReply_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto row = [](const char *method, const char *path, const char *body, int status = 200) {
        QTest::addRow("%s %s %d", method, path, status)
            << QByteArray(method) << QByteArray(path) << QByteArray(body) << status;
    };
    row("GET", "/newsapi/news", "{}");
    row("GET", "/newsapi/keywords", "{}");
    row("GET", "/newsapi/stats", "{}");
    row("GET", "/newsapi/test", "{}");
    row("GET", "/user/devices", "{}");
    row("POST", "/newsapi/keywords", R"({"keyword":"黄金"})");
    row("POST", "/user/bind_wechat", R"({"wechat_id":"wx"})");
    row("POST", "/newsapi/keywords", R"({"keyword":"!"})", 400);
    row("POST", "/newsapi/keywords", "[]", 400);
    row("DELETE", "/user/devices/nowhere", "{}", 404);
}

void ServiceSessionsTest::anOldSessionRollsOnAnyReply()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    const QString token = demoToken(*m_service);
    m_service->advanceClock(12 * hour);
    const ServiceProcess::Answer answer = m_service->send(method, path, body, bySession(token));
    QCOMPARE(answer.status, status);
    const QString fresh = textAt(answer.object, "session_token");
    QVERIFY(!fresh.isEmpty() && fresh != token);
    QCOMPARE(get("/newsapi/news", fresh).status, 200);
    QVERIFY(!get("/newsapi/news", fresh).object.contains(QStringLiteral("session_token")));
}

void ServiceSessionsTest::rollingGivesTheSameTokenAgain()
{
    const QString token = demoToken(*m_service);
    m_service->advanceClock(12 * hour);
    const QString fresh = textAt(get("/newsapi/news", token).object, "session_token");
    m_service->advanceClock(hour);
    QCOMPARE(textAt(get("/newsapi/keywords", token).object, "session_token"), fresh);
}

void ServiceSessionsTest::bothTokensAreGoodUntilTheirOwnEnd()
{
    const QString token = demoToken(*m_service);
    m_service->advanceClock(12 * hour);
    const QString fresh = textAt(get("/newsapi/news", token).object, "session_token");
    m_service->advanceClock(12 * hour - 1);
    QCOMPARE(get("/newsapi/news", token).status, 200);
    QCOMPARE(get("/newsapi/news", fresh).status, 200);
    m_service->advanceClock(1);
    QCOMPARE(get("/newsapi/news", token).status, 401);
    const ServiceProcess::Answer rolledAgain = get("/newsapi/news", fresh);
    QCOMPARE(rolledAgain.status, 200);
    QVERIFY(!textAt(rolledAgain.object, "session_token").isEmpty());
    m_service->advanceClock(12 * hour);
    QCOMPARE(get("/newsapi/news", fresh).status, 401);
    QCOMPARE(get("/newsapi/news", textAt(rolledAgain.object, "session_token")).status, 200);
}

void ServiceSessionsTest::theUserInformationNamesTheFreshToken()
{
    const QString token = demoToken(*m_service);
    QCOMPARE(textAt(get("/user/info", token).object, "data.session_token"), token);
    m_service->advanceClock(12 * hour);
    const QJsonObject reply = get("/user/info", token).object;
    QVERIFY(!textAt(reply, "session_token").isEmpty());
    QCOMPARE(textAt(reply, "data.session_token"), textAt(reply, "session_token"));
}

void ServiceSessionsTest::aKeyOpensASessionOnTheTestPath()
{
    const ServiceProcess::Answer answer =
        m_service->request("GET", "/newsapi/test", {}, byDemoKey() + onDevice(QStringLiteral("d1")));
    QVERIFY(answer.success());
    QVERIFY(!textAt(answer.object, "message").isEmpty());
    const QString token = textAt(answer.object, "session_token");
    QCOMPARE(get("/newsapi/news", token).status, 200);
    QVERIFY(!get("/newsapi/test", token).object.contains(QStringLiteral("session_token")));
    QVERIFY(!m_service->request("GET", "/newsapi/test", {}, byDemoKey())
                 .object.contains(QStringLiteral("session_token")));
}

void ServiceSessionsTest::validationTellsWhoseSessionItIs()
{
    const QString token = demoToken(*m_service, QStringLiteral("d1"));
    const QJsonObject expected =
        json(R"({"success":true,"data":{"user_id":1,"username":"demo","device_id":"d1"}})");
    QCOMPARE(validate(token).object, expected);
    // The header does where the body says nothing.
    QCOMPARE(m_service->request("POST", "/auth/session/validate", {}, bySession(token)).object, expected);
}

void ServiceSessionsTest::validationRollsAnOldSession()
{
    const QString token = demoToken(*m_service);
    m_service->advanceClock(12 * hour);
    const QString fresh = textAt(validate(token).object, "session_token");
    QVERIFY(!fresh.isEmpty() && fresh != token);
    QCOMPARE(get("/newsapi/news", fresh).status, 200);
}

void ServiceSessionsTest::validationRefuses_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    // Status 200: the desktop takes anything else for a broken line.
    QTest::newRow("unknown") << QByteArray(R"({"session_token":"none"})") << 200;
    QTest::newRow("missing") << QByteArray("{}") << 400;
    QTest::newRow("empty") << QByteArray(R"({"session_token":""})") << 400;
    QTest::newRow("number") << QByteArray(R"({"session_token":1})") << 400;
}

void ServiceSessionsTest::validationRefuses()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    const ServiceProcess::Answer answer = m_service->request("POST", "/auth/session/validate", json(body));
    QCOMPARE(answer.status, status);
    QVERIFY(!answer.success());
    QVERIFY(!answer.error().isEmpty());
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceSessionsTest)
#include "tst_ServiceSessions.moc"
