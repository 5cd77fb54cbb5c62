#include "settings/PasswordScrambling.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestPasswordScrambling : public QObject
{
    Q_OBJECT

private slots:
    void theStoredTextIsTheXorWithTheHashInBase64_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("deviceId");
        QTest::addColumn<QString>("stored");
        // Worked out apart from this code, in another language.
        QTest::newRow("one letter") << QStringLiteral("a") << QStringLiteral("d") << QStringLiteral("eQ==");
        QTest::newRow("plain") << QStringLiteral("secret")
                               << QStringLiteral("3f1c07ab3f1c07ab3f1c07ab3f1c07ab")
                               << QStringLiteral("vC6IH6CR");
        QTest::newRow("longer than the key")
            << QStringLiteral("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJ") << QStringLiteral("WORK-PC")
            << QStringLiteral("NOMIANrcHg9YQsKj5G24FSZppY7lf3W+MNsJUk3eF7BzqkNJr6trfCU95InOQw==");
        QTest::newRow("not ASCII") << QStringLiteral("密码🔑ß") << QStringLiteral("设备")
                                   << QStringLiteral("BP/i4QU8f52xanHk");
    }

    void theStoredTextIsTheXorWithTheHashInBase64()
    {
        QFETCH(QString, password);
        QFETCH(QString, deviceId);
        QFETCH(QString, stored);
        QCOMPARE(PasswordScrambling::scrambled(password, deviceId), stored);
        QCOMPARE(PasswordScrambling::unscrambled(stored, deviceId), password);
    }

    void anEmptyArgumentYieldsAnEmptyText()
    {
        QCOMPARE(PasswordScrambling::scrambled(QString(), QStringLiteral("device")), QString());
        QCOMPARE(PasswordScrambling::scrambled(QStringLiteral("secret"), QString()), QString());
        QCOMPARE(PasswordScrambling::unscrambled(QString(), QStringLiteral("device")), QString());
        QCOMPARE(PasswordScrambling::unscrambled(QStringLiteral("c2VjcmV0"), QString()), QString());
    }

    void anotherDeviceIdYieldsGarbage()
    {
        const QString stored = PasswordScrambling::scrambled(QStringLiteral("secret"), QStringLiteral("one"));
        QVERIFY(PasswordScrambling::unscrambled(stored, QStringLiteral("two")) != QStringLiteral("secret"));
    }

    void textThatIsNoBase64DoesNoHarm()
    {
        PasswordScrambling::unscrambled(QStringLiteral("云雀 !!! \x01"), QStringLiteral("device"));
        QCOMPARE(PasswordScrambling::unscrambled(QStringLiteral("!!!"), QStringLiteral("device")), QString());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestPasswordScrambling)
#include "tst_passwordscrambling.moc"
