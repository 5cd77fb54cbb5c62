#include "service/AccountRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// What the service accepts as a name, an address, a password and a keyword.
class AccountRulesTest : public QObject
{
    Q_OBJECT

private slots:
    void emailAddresses_data();
    void emailAddresses();
    void userNames_data();
    void userNames();
    void passwords_data();
    void passwords();
    void keywords_data();
    void keywords();
    void charactersAreCountedAndNotBytes_data();
    void charactersAreCountedAndNotBytes();
    void aTextIsCutBetweenCharacters();
    void blanksGoFromBothEnds();
    void freeKeysAreToldByTheirShape_data();
    void freeKeysAreToldByTheirShape();
};

void AccountRulesTest::emailAddresses_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<bool>("good");
    QTest::newRow("ordinary") << "lark@larkspire.example" << true;
    QTest::newRow("signs in the name") << "a.b_c%d+e-f@x.cn" << true;
    QTest::newRow("two dots in the domain") << "a@mail.larkspire.example" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("no at") << "lark.larkspire.example" << false;
    QTest::newRow("no name") << "@larkspire.example" << false;
    QTest::newRow("two ats") << "a@b@c.example" << false;
    QTest::newRow("no dot in the domain") << "a@localhost" << false;
    QTest::newRow("top level of one letter") << "a@b.c" << false;
    QTest::newRow("top level with a digit") << "a@b.c2" << false;
    QTest::newRow("domain that begins with its only dot") << "a@.com" << false;
    QTest::newRow("blank") << "a b@c.example" << false;
    QTest::newRow("Chinese") << QStringLiteral("云雀@larkspire.example") << false;
    QTest::newRow("longer than an address can be")
        << QString(250, QLatin1Char('a')) + QLatin1String("@b.cn") << false;
}

void AccountRulesTest::emailAddresses()
{
    QFETCH(QString, email);
    QFETCH(bool, good);
    QCOMPARE(emailFault(email.toStdString()).empty(), good);
}

void AccountRulesTest::userNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("good");
    QTest::newRow("three characters") << "abc" << true;
    QTest::newRow("twenty characters") << QString(20, QLatin1Char('a')) << true;
    QTest::newRow("digits and underscore") << "a_1" << true;
    QTest::newRow("two characters") << "ab" << false;
    QTest::newRow("twenty-one characters") << QString(21, QLatin1Char('a')) << false;
    QTest::newRow("blank") << "a b" << false;
    QTest::newRow("Chinese") << QStringLiteral("云雀资讯") << false;
    QTest::newRow("kept for accounts of devices") << "auto_user_1" << false;
}

void AccountRulesTest::userNames()
{
    QFETCH(QString, name);
    QFETCH(bool, good);
    QCOMPARE(usernameFault(name.toStdString()).empty(), good);
}

void AccountRulesTest::passwords_data()
{
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<QString>("fault");
    QTest::newRow("six digits") << QByteArray("123456") << "";
    QTest::newRow("sixteen characters") << QByteArray("abcdefghijklmno1") << "";
    QTest::newRow("six Chinese characters with a digit") << QByteArray("云雀资讯好1") << "";
    QTest::newRow("five characters") << QByteArray("abc12") << QStringLiteral("密码长度不能少于6位");
    QTest::newRow("seventeen characters")
        << QByteArray("abcdefghijklmnop1") << QStringLiteral("密码长度不能超过16位");
    QTest::newRow("no digit") << QByteArray("abcdef") << QStringLiteral("密码必须包含至少一个数字");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe"
                                            "12345")
                              << QStringLiteral("密码格式不正确");
}

void AccountRulesTest::passwords()
{
    QFETCH(QByteArray, password);
    QFETCH(QString, fault);
    QCOMPARE(QString::fromStdString(passwordFault(password.toStdString())), fault);
}

void AccountRulesTest::keywords_data()
{
    QTest::addColumn<QByteArray>("keyword");
    QTest::addColumn<QString>("fault");
    QTest::newRow("Chinese") << QByteArray("人工智能") << "";
    QTest::newRow("mixed") << QByteArray("5G通信A") << "";
    QTest::newRow("first and last Chinese character") << QByteArray("\xE4\xB8\x80\xE9\xBE\xA5") << "";
    QTest::newRow("fifteen Chinese characters") << QString(15, QChar(0x4E91)).toUtf8() << "";
    QTest::newRow("sixteen Chinese characters")
        << QString(16, QChar(0x4E91)).toUtf8() << QStringLiteral("关键词长度不能超过15个字符");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("关键词不能为空");
    QTest::newRow("blank inside") << QByteArray("a b")
                                  << QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    QTest::newRow("full-width digit") << QString(QChar(0xFF11)).toUtf8()
                                      << QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    QTest::newRow("one beyond the last character")
        << QString(QChar(0x9FA6)).toUtf8()
        << QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    QTest::newRow("sign of SQL") << QByteArray("%")
                                 << QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    QTest::newRow("no UTF-8") << QByteArray("\xE4\xB8") << QStringLiteral("关键词格式不正确");
}

void AccountRulesTest::keywords()
{
    QFETCH(QByteArray, keyword);
    QFETCH(QString, fault);
    QCOMPARE(QString::fromStdString(keywordFault(keyword.toStdString())), fault);
}

void AccountRulesTest::charactersAreCountedAndNotBytes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("length");
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("ASCII") << QByteArray("abc") << 3;
    QTest::newRow("two bytes each") << QByteArray("äö") << 2;
    QTest::newRow("three bytes each") << QByteArray("云雀") << 2;
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x90\xA6") << 1;
    QTest::newRow("cut character") << QByteArray("\xE4\xBA") << -1;
    QTest::newRow("stray following byte") << QByteArray("\x80") << -1;
    QTest::newRow("overlong slash") << QByteArray("\xC0\xAF") << -1;
    QTest::newRow("half a surrogate pair") << QByteArray("\xED\xA0\x80") << -1;
    QTest::newRow("beyond the last code point") << QByteArray("\xF4\x90\x80\x80") << -1;
}

void AccountRulesTest::charactersAreCountedAndNotBytes()
{
    QFETCH(QByteArray, text);
    QFETCH(int, length);
    const auto counted = utf8Length(text.toStdString());
    QCOMPARE(counted ? static_cast<int>(*counted) : -1, length);
}

void AccountRulesTest::aTextIsCutBetweenCharacters()
{
    QCOMPARE(utf8Left("云雀资讯", 2), std::string("云雀"));
    QCOMPARE(utf8Left("ab", 5), std::string("ab"));
    QCOMPARE(utf8Left("a\xFF"
                      "b",
                      5),
             std::string("a"));
}

void AccountRulesTest::blanksGoFromBothEnds()
{
    QCOMPARE(trimmed(" \t a b \r\n"), std::string("a b"));
    QCOMPARE(trimmed(" \n "), std::string());
}

void AccountRulesTest::freeKeysAreToldByTheirShape_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("fits");
    const QString hex = QStringLiteral("0123456789abcdef0123456789abcdef");
    QTest::newRow("free key") << QLatin1String("lks-free-") + hex << true;
    QTest::newRow("too short") << QLatin1String("lks-free-") + hex.mid(1) << false;
    QTest::newRow("capital letters") << QLatin1String("lks-free-") + hex.toUpper() << false;
    QTest::newRow("other key") << QLatin1String("lks-") + hex << false;
    QTest::newRow("empty") << QString() << false;
}

void AccountRulesTest::freeKeysAreToldByTheirShape()
{
    QFETCH(QString, key);
    QFETCH(bool, fits);
    QCOMPARE(hasFreeKeyShape(key.toStdString()), fits);
}

LARKSPIRE_GUILESS_TEST_MAIN(AccountRulesTest)
#include "tst_AccountRules.moc"
