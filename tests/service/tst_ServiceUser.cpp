#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QtTest>

using namespace WireRequests;

/// The caller's account: information, devices and their limit, binding.
class ServiceUserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theInformationIsComplete();
    void theThirdDeviceIsRefused();
    void aKnownDeviceIsAlwaysLetIn();
    void removingADeviceMakesRoomAndEndsItsSessions();
    void theLimitCanBeMovedAndSwitchedOff();
    void aKeyRegistersTheDeviceItComesFrom();
    void aKeyWithoutADeviceNeedsNoRoom();
    void devicesAreListedWithTheirTexts();
    void aDeviceIsOnlyRemovedByItsUser();
    void aDeviceWithoutAnIdGetsTheSameOneEachTime();
    void longAndBrokenDeviceTextsAreCut();
    void anAddressIsBound();
    void anAddressOfAnotherUserIsRefused();
    void aWechatIsBound();
    void aScannedCodeBindsWechat();
    void aCodeOfAnotherUserIsRefused();
    void aCodeEndsAfterFiveMinutes();
    void badBindingsAreRefused_data();
    void badBindingsAreRefused();

private:
    ServiceProcess::Answer loginOn(const QString &device) const
    {
        return login(*m_service, QStringLiteral("demo"), ServiceProcess::demoPassword(), device);
    }
    ServiceProcess::Answer post(const char *path, const QByteArray &body,
                                const ServiceProcess::Headers &headers = byDemoKey()) const
    {
        return m_service->request("POST", path, json(body), headers);
    }
    QJsonArray devices() const
    {
        return m_service->request("GET", "/user/devices", {}, byDemoKey())
            .object.value(QLatin1String("data"))
            .toArray();
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceUserTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceUserTest::cleanup()
{
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceUserTest::theInformationIsComplete()
{
    const QString token = demoToken(*m_service, QStringLiteral("d1"));
    QJsonObject expected = json(
        R"({"id":1,"username":"demo","email":"demo@larkspire.example","api_key":"lks-demo-key","device_id":"d1",
                 "max_devices":2,"device_limit_enabled":true,"wechat_id":"","created_at":"2024-08-08 10:30:00"})");
    expected.insert(QStringLiteral("session_token"), token);
    QCOMPARE(m_service->request("GET", "/user/info", {}, bySession(token)).data(), expected);
    expected.insert(QStringLiteral("session_token"), QString());
    expected.insert(QStringLiteral("device_id"), QString());
    QCOMPARE(m_service->request("GET", "/user/info", {}, byDemoKey()).data(), expected);
}

void ServiceUserTest::theThirdDeviceIsRefused()
{
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d2")).status, 200);
    const ServiceProcess::Answer answer = loginOn(QStringLiteral("d3"));
    QCOMPARE(answer.status, 403);
    QVERIFY2(answer.error().contains(QStringLiteral("设备数量已达上限（2台）")), qPrintable(answer.error()));
    QCOMPARE(devices().size(), 2);
}

void ServiceUserTest::aKnownDeviceIsAlwaysLetIn()
{
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d2")).status, 200);
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"max_devices":1})")).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d2")).status, 200);
    QCOMPARE(numberAt(loginOn(QStringLiteral("d1")).object, "data.max_devices"), 1);
}

void ServiceUserTest::removingADeviceMakesRoomAndEndsItsSessions()
{
    const QString first = demoToken(*m_service, QStringLiteral("d1"));
    const QString second = demoToken(*m_service, QStringLiteral("d2"));
    const ServiceProcess::Answer answer =
        m_service->request("DELETE", "/user/devices/d1", {}, bySession(second));
    QCOMPARE(answer.object, json(R"({"success":true,"data":{"device_id":"d1"}})"));
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(first)).status, 401);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(second)).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d3")).status, 200);
}

void ServiceUserTest::theLimitCanBeMovedAndSwitchedOff()
{
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"max_devices":1})")).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    QCOMPARE(loginOn(QStringLiteral("d2")).status, 403);
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"device_limit_enabled":false})")).status,
             200);
    for (int i = 2; i < 6; ++i)
        QCOMPARE(loginOn(QStringLiteral("d%1").arg(i)).status, 200);
    QCOMPARE(at(loginOn(QStringLiteral("d1")).object, QStringLiteral("data.device_limit_enabled")),
             QJsonValue(false));
}

void ServiceUserTest::aKeyRegistersTheDeviceItComesFrom()
{
    const auto byKeyOn = [&](const char *device) {
        return m_service->request("GET", "/newsapi/news", {},
                                  byDemoKey() + onDevice(QString::fromLatin1(device)));
    };
    QCOMPARE(byKeyOn("d1").status, 200);
    QCOMPARE(byKeyOn("d2").status, 200);
    QCOMPARE(byKeyOn("d1").status, 200);
    const ServiceProcess::Answer answer = byKeyOn("d3");
    QCOMPARE(answer.status, 403);
    QVERIFY(answer.error().contains(QStringLiteral("设备数量已达上限")));
    QCOMPARE(devices().size(), 2);
}

void ServiceUserTest::aKeyWithoutADeviceNeedsNoRoom()
{
    QCOMPARE(m_service->request("PUT", "/admin/users/demo", json(R"({"max_devices":0})")).status, 200);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byDemoKey()).status, 200);
    QCOMPARE(devices().size(), 0);
}

void ServiceUserTest::devicesAreListedWithTheirTexts()
{
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    m_service->advanceClock(60);
    QCOMPARE(loginOn(QStringLiteral("d2")).status, 200);
    QJsonObject newest = devices().at(0).toObject();
    QVERIFY(numberAt(newest, "id") > 0);
    newest.remove(QStringLiteral("id"));
    const QJsonObject expected = json(
        R"json({"device_id":"d2","device_name":"工作机 (Linux)","device_type":"desktop","os_info":"Linux",
                              "app_version":"2.0.1","ip_address":"127.0.0.1","last_login":"2024-08-08 10:31:00",
                              "is_active":true,"created_at":"2024-08-08 10:31:00"
})json");
    QCOMPARE(newest, expected);
    m_service->advanceClock(60);
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    const QJsonObject first = devices().at(0).toObject();
    QCOMPARE(textAt(first, "device_id"), QStringLiteral("d1"));
    QCOMPARE(textAt(first, "last_login"), QStringLiteral("2024-08-08 10:32:00"));
    QCOMPARE(textAt(first, "created_at"), QStringLiteral("2024-08-08 10:30:00"));
}

void ServiceUserTest::aDeviceIsOnlyRemovedByItsUser()
{
    QCOMPARE(loginOn(QStringLiteral("d1")).status, 200);
    const QString key = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QCOMPARE(m_service->request("DELETE", "/user/devices/d1", {}, byKey(key)).status, 404);
    QCOMPARE(m_service->request("DELETE", "/user/devices/none", {}, byDemoKey()).status, 404);
    QCOMPARE(devices().size(), 1);
}

void ServiceUserTest::aDeviceWithoutAnIdGetsTheSameOneEachTime()
{
    const QByteArray body =
        R"({"username":"demo","password":"bGFyazIwMjQ=","device_name":"本机","device_type":"desktop",
                                "os_info":"Linux","app_version":"2.0.1"})";
    const QString first = textAt(post("/auth/login", body, {}).object, "data.device_id");
    QVERIFY(QRegularExpression(QStringLiteral("^[0-9a-f]{32}$")).match(first).hasMatch());
    QCOMPARE(textAt(post("/auth/login", body, {}).object, "data.device_id"), first);
    QCOMPARE(devices().size(), 1);
    QCOMPARE(textAt(devices().at(0).toObject(), "device_name"), QStringLiteral("本机"));
}

void ServiceUserTest::longAndBrokenDeviceTextsAreCut()
{
    const ServiceProcess::Headers headers{{"X-Device-ID", "d1"},
                                          {"X-Device-Name", QByteArray("电脑").repeated(500)},
                                          {"X-OS-Info", "Linux\xff\xfe"}};
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byDemoKey() + headers).status, 200);
    const QJsonObject device = devices().at(0).toObject();
    QCOMPARE(textAt(device, "device_name"), QStringLiteral("电脑").repeated(64));
    QCOMPARE(textAt(device, "os_info"), QStringLiteral("Linux"));
}

void ServiceUserTest::anAddressIsBound()
{
    const QString key = textAt(
        post("/auth/get_apikey", R"({"request_type":"free_apikey"})", onDevice(QStringLiteral("d1"))).object,
        "api_key");
    const ServiceProcess::Answer answer =
        post("/user/bind_email", R"({"email":"new@larkspire.example"})", byKey(key));
    QCOMPARE(answer.object, json(R"({"success":true,"message":"邮箱绑定成功"})"));
    QCOMPARE(textAt(m_service->request("GET", "/user/info", {}, byKey(key)).object, "data.email"),
             QStringLiteral("new@larkspire.example"));
}

void ServiceUserTest::anAddressOfAnotherUserIsRefused()
{
    const QString key = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    const ServiceProcess::Answer answer =
        post("/user/bind_email", R"({"email":"DEMO@larkspire.example"})", byKey(key));
    QCOMPARE(answer.status, 400);
    QCOMPARE(answer.error(), QStringLiteral("该邮箱已被其他账号绑定"));
    QCOMPARE(post("/user/bind_email", R"({"email":"demo@larkspire.example"})").status, 200);
}

void ServiceUserTest::aWechatIsBound()
{
    QCOMPARE(post("/user/bind_wechat", R"({"wechat_id":"云雀wx"})").object,
             json(R"({"success":true,"message":"微信绑定成功"})"));
    QCOMPARE(textAt(m_service->request("GET", "/user/info", {}, byDemoKey()).object, "data.wechat_id"),
             QStringLiteral("云雀wx"));
    const QString key = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    QCOMPARE(post("/user/bind_wechat", R"({"wechat_id":"云雀wx"})", byKey(key)).status, 400);
}

void ServiceUserTest::aScannedCodeBindsWechat()
{
    const QJsonObject qr = post("/user/generate_wechat_qr", R"({"wechat_id":"wx"})").object;
    QCOMPARE(qr.value(QLatin1String("success")), QJsonValue(true));
    const QJsonObject body{{QStringLiteral("qr_token"), textAt(qr, "qr_token")}};
    QVERIFY(textAt(qr, "qr_code").contains(textAt(qr, "qr_token")));
    const auto verify = [&] {
        return m_service->request("POST", "/user/verify_wechat_qr", body, byDemoKey());
    };
    QCOMPARE(verify().object, json(R"({"success":false,"message":"等待扫码"})"));
    QCOMPARE(m_service->request("POST", "/admin/wechat/scan", body).status, 200);
    QCOMPARE(verify().object, json(R"({"success":true,"message":"微信绑定成功"})"));
    QCOMPARE(verify().status, 400);
    QCOMPARE(textAt(m_service->request("GET", "/user/info", {}, byDemoKey()).object, "data.wechat_id"),
             QStringLiteral("wx"));
}

void ServiceUserTest::aCodeOfAnotherUserIsRefused()
{
    const QString key = m_service->registerAccount(
        QStringLiteral("other"), QStringLiteral("o@larkspire.example"), QStringLiteral("lark2024"));
    const QJsonObject qr = post("/user/generate_wechat_qr", R"({"wechat_id":"wx"})").object;
    const QJsonObject body{{QStringLiteral("qr_token"), textAt(qr, "qr_token")}};
    QCOMPARE(m_service->request("POST", "/user/verify_wechat_qr", body, byKey(key)).status, 400);
    // Nor does a code for binding log anybody in.
    QCOMPARE(m_service->request("POST", "/auth/verify_wechat_login", body).status, 400);
}

void ServiceUserTest::aCodeEndsAfterFiveMinutes()
{
    const QJsonObject qr = post("/user/generate_wechat_qr", R"({"wechat_id":"wx"})").object;
    const QJsonObject body{{QStringLiteral("qr_token"), textAt(qr, "qr_token")}};
    m_service->advanceClock(299);
    QCOMPARE(m_service->request("POST", "/user/verify_wechat_qr", body, byDemoKey()).status, 200);
    m_service->advanceClock(1);
    QCOMPARE(m_service->request("POST", "/user/verify_wechat_qr", body, byDemoKey()).status, 400);
    QCOMPARE(m_service->request("POST", "/admin/wechat/scan", body).status, 404);
}

void ServiceUserTest::badBindingsAreRefused_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("address that is none")
        << QByteArray("/user/bind_email") << QByteArray(R"({"email":"lark"})");
    QTest::newRow("address missing") << QByteArray("/user/bind_email") << QByteArray("{}");
    QTest::newRow("WeChat empty") << QByteArray("/user/bind_wechat") << QByteArray(R"({"wechat_id":""})");
    QTest::newRow("WeChat as a number")
        << QByteArray("/user/bind_wechat") << QByteArray(R"({"wechat_id":1})");
    QTest::newRow("WeChat too long") << QByteArray("/user/bind_wechat")
                                     << QByteArray(R"({"wechat_id":")" + QByteArray(65, 'x') + R"("})");
    QTest::newRow("code without WeChat") << QByteArray("/user/generate_wechat_qr") << QByteArray("{}");
    QTest::newRow("unknown code") << QByteArray("/user/verify_wechat_qr")
                                  << QByteArray(R"({"qr_token":"none"})");
    QTest::newRow("code missing") << QByteArray("/user/verify_wechat_qr") << QByteArray("{}");
}

void ServiceUserTest::badBindingsAreRefused()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    const ServiceProcess::Answer answer = post(path.constData(), body);
    QCOMPARE(answer.status, 400);
    QVERIFY(!answer.error().isEmpty());
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceUserTest)
#include "tst_ServiceUser.moc"
