#include "accounts/AuthTypes.h"
#include "app/UserRecord.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QtTest>

class TestUserRecord : public QObject
{
    Q_OBJECT

private slots:
    void nobodyGivesAnEmptyRecord();
    void aLoginFillsEveryKey();
    void captionPrefersTheAddress_data();
    void captionPrefersTheAddress();
};

void TestUserRecord::nobodyGivesAnEmptyRecord()
{
    QVERIFY(UserRecord::fromLogin(AuthUserInfo()).isEmpty());
}

void TestUserRecord::aLoginFillsEveryKey()
{
    AuthUserInfo user;
    user.userId = 7;
    user.username = QStringLiteral("云雀");
    user.email = QStringLiteral("lark@larkspire.example");
    user.apiKey = QStringLiteral("key");
    user.sessionToken = QStringLiteral("token");
    user.deviceId = QStringLiteral("device");
    user.maxDevices = 3;
    user.deviceLimitEnabled = false;

    const QJsonObject expected{
        {QStringLiteral("id"), 7},
        {QStringLiteral("username"), QStringLiteral("云雀")},
        {QStringLiteral("email"), QStringLiteral("lark@larkspire.example")},
        {QStringLiteral("api_key"), QStringLiteral("key")},
        {QStringLiteral("session_token"), QStringLiteral("token")},
        {QStringLiteral("device_id"), QStringLiteral("device")},
        {QStringLiteral("max_devices"), 3},
        {QStringLiteral("device_limit_enabled"), false},
    };
    QCOMPARE(UserRecord::fromLogin(user), expected);
}

void TestUserRecord::captionPrefersTheAddress_data()
{
    QTest::addColumn<QJsonObject>("userInfo");
    QTest::addColumn<QString>("caption");

    const QString username = QStringLiteral("username");
    const QString email = QStringLiteral("email");
    QTest::newRow("nobody") << QJsonObject() << QStringLiteral("未登录");
    QTest::newRow("both") << QJsonObject{{username, QStringLiteral("云雀")},
                                         {email, QStringLiteral("a@b.cn")}}
                          << QStringLiteral("a@b.cn");
    QTest::newRow("only a name") << QJsonObject{{username, QStringLiteral("云雀")}, {email, QString()}}
                                 << QStringLiteral("云雀");
    QTest::newRow("neither") << QJsonObject{{QStringLiteral("id"), 7}} << QStringLiteral("已登录");
}

void TestUserRecord::captionPrefersTheAddress()
{
    QFETCH(QJsonObject, userInfo);
    QTEST(UserRecord::caption(userInfo), "caption");
}

LARKSPIRE_GUILESS_TEST_MAIN(TestUserRecord)
#include "tst_userrecord.moc"
