#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace WireRequests;

/// The keywords of a user over the wire.
class ServiceKeywordsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aNewAccountHasThePresetKeyword();
    void anAddedKeywordIsToldWhole();
    void flagsHaveTheirUsualValues();
    void anUpdateChangesTextAndFlags();
    void anUpdateWithoutFlagsKeepsThem();
    void aRemovedKeywordIsGone();
    void badKeywordsAreRefused_data();
    void badKeywordsAreRefused();
    void aTextIsTakenOncePerUser();
    void aPresetKeywordIsSwitchedOffButNotRemoved();
    void whatIsNotThereIsRefused_data();
    void whatIsNotThereIsRefused();
    void keywordsOfOthersAreOutOfReach();
    void aListHoldsTwoHundred();

private:
    ServiceProcess::Answer request(const char *method, const QByteArray &target,
                                   const QByteArray &body = "{}") const
    {
        return m_service->request(method, target, json(body), byKey(m_key));
    }
    ServiceProcess::Answer add(const QByteArray &body) const
    {
        return request("POST", "/newsapi/keywords", body);
    }
    QJsonArray all() const
    {
        return request("GET", "/newsapi/keywords").object.value(QLatin1String("data")).toArray();
    }
    QByteArray target(int id) const { return "/newsapi/keywords/" + QByteArray::number(id); }

    std::unique_ptr<ServiceProcess> m_service;
    QString m_key;
};

void ServiceKeywordsTest::init()
{
    ServiceProcess::Settings settings = standingClock();
    settings.demoAccount = false;
    m_service = std::make_unique<ServiceProcess>(settings);
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    m_key = m_service->registerAccount(QStringLiteral("lark"), QStringLiteral("lark@larkspire.example"),
                                       QStringLiteral("lark2024"));
    QVERIFY(!m_key.isEmpty());
}

void ServiceKeywordsTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceKeywordsTest::aNewAccountHasThePresetKeyword()
{
    QCOMPARE(
        request("GET", "/newsapi/keywords").object,
        json(R"({"success":true,"data":[{"id":1,"keyword":"重大资产重组","is_active":true,"is_selected":false,
                      "created_at":"2024-08-08 10:30:00","updated_at":"2024-08-08 10:30:00"}]})"));
}

void ServiceKeywordsTest::anAddedKeywordIsToldWhole()
{
    m_service->advanceClock(60);
    const ServiceProcess::Answer answer =
        add(R"({"keyword":" 机器人 ","is_active":false,"is_selected":true})");
    QCOMPARE(answer.status, 200);
    const QJsonObject expected = json(R"({"id":2,"keyword":"机器人","is_active":false,"is_selected":true,
                                          "created_at":"2024-08-08 10:31:00","updated_at":"2024-08-08 10:31:00"})");
    QCOMPARE(answer.data(), expected);
    QCOMPARE(all().at(1).toObject(), expected);
}

void ServiceKeywordsTest::flagsHaveTheirUsualValues()
{
    const QJsonObject data = add(R"({"keyword":"机器人"})").data();
    QCOMPARE(data.value(QLatin1String("is_active")), QJsonValue(true));
    QCOMPARE(data.value(QLatin1String("is_selected")), QJsonValue(false));
}

void ServiceKeywordsTest::anUpdateChangesTextAndFlags()
{
    const int id = numberAt(add(R"({"keyword":"机器人"})").object, "data.id");
    m_service->advanceClock(60);
    const ServiceProcess::Answer answer =
        request("PUT", target(id), R"({"keyword":"人形机器人","is_active":false,"is_selected":true})");
    QCOMPARE(answer.status, 200);
    QCOMPARE(all().at(1).toObject(),
             json(R"({"id":2,"keyword":"人形机器人","is_active":false,"is_selected":true,
                                              "created_at":"2024-08-08 10:30:00","updated_at":"2024-08-08 10:31:00"})"));
    QCOMPARE(answer.data(), all().at(1).toObject());
}

void ServiceKeywordsTest::anUpdateWithoutFlagsKeepsThem()
{
    const int id =
        numberAt(add(R"({"keyword":"机器人","is_active":false,"is_selected":true})").object, "data.id");
    const QJsonObject data = request("PUT", target(id), R"({"keyword":"机器人"})").data();
    QCOMPARE(data.value(QLatin1String("is_active")), QJsonValue(false));
    QCOMPARE(data.value(QLatin1String("is_selected")), QJsonValue(true));
}

void ServiceKeywordsTest::aRemovedKeywordIsGone()
{
    const int id = numberAt(add(R"({"keyword":"机器人"})").object, "data.id");
    QVERIFY(request("DELETE", target(id)).success());
    QCOMPARE(all().size(), 1);
    // An id is not given twice, so that a late request cannot hit another keyword.
    QVERIFY(numberAt(add(R"({"keyword":"机器人"})").object, "data.id") > id);
}

void ServiceKeywordsTest::badKeywordsAreRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no keyword") << QByteArray("{}");
    QTest::newRow("empty") << QByteArray(R"({"keyword":"  "})");
    QTest::newRow("number") << QByteArray(R"({"keyword":5})");
    QTest::newRow("too long") << QByteArray(R"({"keyword":")" + QByteArray(16, 'x') + R"("})");
    QTest::newRow("blank inside") << QByteArray(R"({"keyword":"a b"})");
    QTest::newRow("SQL") << QByteArray(R"({"keyword":"x';DROP"})");
    QTest::newRow("zero character") << QByteArray(R"({"keyword":"a\u0000b"})");
    QTest::newRow("flag as a number") << QByteArray(R"({"keyword":"机器人","is_active":1})");
    QTest::newRow("flag as a word") << QByteArray(R"({"keyword":"机器人","is_selected":"true"})");
}

void ServiceKeywordsTest::badKeywordsAreRefused()
{
    QFETCH(QByteArray, body);
    const ServiceProcess::Answer added = add(body);
    QCOMPARE(added.status, 400);
    QVERIFY(!added.error().isEmpty());
    QCOMPARE(all().size(), 1);
    const int id = numberAt(add(R"({"keyword":"芯片"})").object, "data.id");
    QCOMPARE(request("PUT", target(id), body).status, 400);
    QCOMPARE(textAt(all().at(1).toObject(), "keyword"), QStringLiteral("芯片"));
}

void ServiceKeywordsTest::aTextIsTakenOncePerUser()
{
    QCOMPARE(add(R"({"keyword":"机器人"})").status, 200);
    const ServiceProcess::Answer again = add(R"({"keyword":"机器人"})");
    QCOMPARE(again.status, 400);
    QCOMPARE(again.error(), QStringLiteral("该关键词已存在"));
    const int id = numberAt(add(R"({"keyword":"芯片"})").object, "data.id");
    QCOMPARE(request("PUT", target(id), R"({"keyword":"机器人"})").status, 400);
    QCOMPARE(request("PUT", target(id), R"({"keyword":"芯片","is_selected":true})").status, 200);
}

void ServiceKeywordsTest::aPresetKeywordIsSwitchedOffButNotRemoved()
{
    const ServiceProcess::Answer removed = request("DELETE", target(1));
    QCOMPARE(removed.status, 403);
    QVERIFY2(removed.error().contains(QStringLiteral("无权限删除")), qPrintable(removed.error()));
    QCOMPARE(request("PUT", target(1), R"({"keyword":"别的"})").status, 403);
    QCOMPARE(request("PUT", target(1), R"({"keyword":"重大资产重组","is_active":false})").status, 200);
    QCOMPARE(all().at(0).toObject().value(QLatin1String("is_active")), QJsonValue(false));
}

void ServiceKeywordsTest::whatIsNotThereIsRefused_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<int>("status");
    for (const char *method : {"PUT", "DELETE"}) {
        QTest::addRow("%s unknown", method) << QByteArray(method) << QByteArray("99") << 400;
        QTest::addRow("%s word", method) << QByteArray(method) << QByteArray("abc") << 400;
        QTest::addRow("%s beyond 64 bits", method)
            << QByteArray(method) << QByteArray("99999999999999999999") << 400;
        QTest::addRow("%s SQL", method) << QByteArray(method) << QByteArray("1%20OR%201=1") << 400;
        QTest::addRow("%s nothing", method) << QByteArray(method) << QByteArray("") << 404;
    }
}

void ServiceKeywordsTest::whatIsNotThereIsRefused()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, id);
    QFETCH(int, status);
    const ServiceProcess::Answer answer =
        request(method.constData(), "/newsapi/keywords/" + id, R"({"keyword":"机器人"})");
    QCOMPARE(answer.status, status);
    if (id == "99")
        QVERIFY(answer.error().contains(QStringLiteral("NOT FOUND")));
    QCOMPARE(all().size(), 1);
}

void ServiceKeywordsTest::keywordsOfOthersAreOutOfReach()
{
    const int id = numberAt(add(R"({"keyword":"机器人"})").object, "data.id");
    const QString other = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QCOMPARE(m_service->request("DELETE", target(id), {}, byKey(other)).status, 400);
    QCOMPARE(m_service->request("PUT", target(id), json(R"({"keyword":"芯片"})"), byKey(other)).status, 400);
    QCOMPARE(
        m_service->request("POST", "/newsapi/keywords", json(R"({"keyword":"机器人"})"), byKey(other)).status,
        200);
    QCOMPARE(textAt(all().at(1).toObject(), "keyword"), QStringLiteral("机器人"));
    QCOMPARE(all().size(), 2);
}

void ServiceKeywordsTest::aListHoldsTwoHundred()
{
    for (int i = 2; i <= 200; ++i)
        QCOMPARE(add(R"({"keyword":"k)" + QByteArray::number(i) + R"("})").status, 200);
    const ServiceProcess::Answer answer = add(R"({"keyword":"toomany"})");
    QCOMPARE(answer.status, 400);
    QVERIFY(answer.error().contains(QStringLiteral("200")));
    QCOMPARE(all().size(), 200);
    // All of them together are one question to the database.
    QCOMPARE(m_service->request("GET", "/newsapi/stats", {}, byKey(m_key)).status, 200);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceKeywordsTest)
#include "tst_ServiceKeywords.moc"
