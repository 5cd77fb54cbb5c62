#include "accounts/AccountInputRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestAccountInputRules : public QObject
{
    Q_OBJECT

private slots:
    void aPasswordNeedsSixToSixteenCharactersAndADigit_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("expectedFault");
        const QString tooShort = QStringLiteral("密码长度不能少于6位");
        const QString tooLong = QStringLiteral("密码长度不能超过16位");
        const QString noDigit = QStringLiteral("密码必须包含至少一个数字");
        QTest::newRow("empty") << QString() << tooShort;
        QTest::newRow("five characters") << QStringLiteral("abc12") << tooShort;
        QTest::newRow("six characters") << QStringLiteral("abcd12") << QString();
        QTest::newRow("six digits, no letter") << QStringLiteral("123456") << QString();
        QTest::newRow("six letters, no digit") << QStringLiteral("abcdef") << noDigit;
        QTest::newRow("sixteen characters") << QStringLiteral("abcdefghijklmno1") << QString();
        QTest::newRow("seventeen characters") << QStringLiteral("abcdefghijklmnop1") << tooLong;
        QTest::newRow("seventeen letters: the length counts first")
            << QStringLiteral("abcdefghijklmnopq") << tooLong;
        QTest::newRow("Chinese with a full-width digit") << QStringLiteral("云雀云雀云７") << QString();
        QTest::newRow("blanks count as characters") << QStringLiteral("     1") << QString();
    }

    void aPasswordNeedsSixToSixteenCharactersAndADigit()
    {
        QFETCH(QString, password);
        QFETCH(QString, expectedFault);
        QString fault = QStringLiteral("left from before");
        QCOMPARE(validatePassword(password, fault), expectedFault.isEmpty());
        QCOMPARE(fault, expectedFault);
    }

    void anEmailAddressMatchesAsAWhole_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("expected");
        QTest::newRow("plain") << QStringLiteral("a@b.cn") << true;
        QTest::newRow("all the marks before the at")
            << QStringLiteral("a.b_c%d+e-f@mail.example.com") << true;
        QTest::newRow("one-letter top-level domain") << QStringLiteral("a@b.c") << false;
        QTest::newRow("no at") << QStringLiteral("a.b.cn") << false;
        QTest::newRow("two ats") << QStringLiteral("a@b@c.cn") << false;
        QTest::newRow("digits in the top-level domain") << QStringLiteral("a@b.c1") << false;
        QTest::newRow("blank behind") << QStringLiteral("a@b.cn ") << false;
        QTest::newRow("line feed behind") << QStringLiteral("a@b.cn\n") << false;
        QTest::newRow("Chinese name") << QStringLiteral("云雀@b.cn") << false;
        QTest::newRow("empty") << QString() << false;
    }

    void anEmailAddressMatchesAsAWhole()
    {
        QFETCH(QString, text);
        QFETCH(bool, expected);
        QCOMPARE(AccountInputRules::isEmailAddress(text), expected);
    }

    void aCodeIsSentToAnAddressOnly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expectedFault");
        QTest::newRow("an address") << QStringLiteral("a@b.cn") << QString();
        QTest::newRow("nothing") << QString() << QStringLiteral("请输入邮箱地址");
        QTest::newRow("no address") << QStringLiteral("a@b") << QStringLiteral("请输入正确的邮箱地址");
    }

    void aCodeIsSentToAnAddressOnly()
    {
        QFETCH(const QString, text);
        QTEST(AccountInputRules::codeAddressFault(text), "expectedFault");
    }

    void aNewUserNameHasThreeToTwentyLatinCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("expected");
        QTest::newRow("two") << QStringLiteral("ab") << false;
        QTest::newRow("three") << QStringLiteral("abc") << true;
        QTest::newRow("twenty") << QString(20, QLatin1Char('a')) << true;
        QTest::newRow("twenty-one") << QString(21, QLatin1Char('a')) << false;
        QTest::newRow("underscores alone") << QStringLiteral("___") << true;
        QTest::newRow("digits") << QStringLiteral("007") << true;
        QTest::newRow("blank inside") << QStringLiteral("a b c") << false;
        QTest::newRow("Chinese") << QStringLiteral("云雀资讯") << false;
        QTest::newRow("hyphen") << QStringLiteral("a-b-c") << false;
        QTest::newRow("line feed behind") << QStringLiteral("abc\n") << false;
    }

    void aNewUserNameHasThreeToTwentyLatinCharacters()
    {
        QFETCH(QString, text);
        QFETCH(bool, expected);
        QCOMPARE(AccountInputRules::isNewUserName(text), expected);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestAccountInputRules)
#include "tst_accountinputrules.moc"
