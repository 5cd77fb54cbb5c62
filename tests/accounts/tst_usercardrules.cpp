#include "accounts/UserCardRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestUserCardRules : public QObject
{
    Q_OBJECT

private slots:
    void theCardShowsTheEmailBeforeTheName_data()
    {
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("username");
        QTest::addColumn<QString>("expectedLine");
        QTest::addColumn<QString>("expectedLetter");
        QTest::newRow("both") << QStringLiteral("a@b.cn") << QStringLiteral("lark")
                              << QStringLiteral("a@b.cn") << QStringLiteral("L");
        QTest::newRow("no e-mail") << QString() << QStringLiteral("lark") << QStringLiteral("lark")
                                   << QStringLiteral("L");
        QTest::newRow("a name made up for a device")
            << QString() << QStringLiteral("auto_user_3f1c") << QStringLiteral("--") << QStringLiteral("A");
        QTest::newRow("a name that only holds the mark")
            << QString() << QStringLiteral("my_auto_user_1") << QStringLiteral("my_auto_user_1")
            << QStringLiteral("M");
        QTest::newRow("a made-up name with an e-mail")
            << QStringLiteral("a@b.cn") << QStringLiteral("auto_user_3f1c") << QStringLiteral("a@b.cn")
            << QStringLiteral("A");
        QTest::newRow("Chinese name")
            << QString() << QStringLiteral("云雀") << QStringLiteral("云雀") << QStringLiteral("云");
        QTest::newRow("a name that begins outside the basic plane")
            << QString() << QStringLiteral("𠮷田") << QStringLiteral("𠮷田") << QStringLiteral("𠮷");
        QTest::newRow("nothing") << QString() << QString() << QString() << QString();
    }

    void theCardShowsTheEmailBeforeTheName()
    {
        QFETCH(QString, email);
        QFETCH(QString, username);
        const QJsonObject user{{QStringLiteral("email"), email}, {QStringLiteral("username"), username}};
        QTEST(UserCardRules::cardLine(user), "expectedLine");
        QTEST(UserCardRules::initialLetter(user), "expectedLetter");
    }

    void theObjectHoldsWhatTheLoginReported()
    {
        AuthUserInfo user;
        user.userId = 7;
        user.username = QStringLiteral("lark");
        user.email = QStringLiteral("a@b.cn");
        user.apiKey = QStringLiteral("key");
        user.sessionToken = QStringLiteral("token");
        user.deviceId = QStringLiteral("device");
        user.maxDevices = 5;
        user.deviceLimitEnabled = false;
        const QJsonObject expected{
            {QStringLiteral("id"), 7},
            {QStringLiteral("username"), QStringLiteral("lark")},
            {QStringLiteral("email"), QStringLiteral("a@b.cn")},
            {QStringLiteral("api_key"), QStringLiteral("key")},
            {QStringLiteral("session_token"), QStringLiteral("token")},
            {QStringLiteral("device_id"), QStringLiteral("device")},
            {QStringLiteral("max_devices"), 5},
            {QStringLiteral("device_limit_enabled"), false},
        };
        QCOMPARE(UserCardRules::userInfoObject(user), expected);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestUserCardRules)
#include "tst_usercardrules.moc"
