#include "service/PasswordHash.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// Passwords at rest and on the wire.
class PasswordHashTest : public QObject
{
    Q_OBJECT

private slots:
    void aHashFitsItsPasswordAlone();
    void twoHashesOfOnePasswordDiffer();
    void wirePasswords_data();
    void wirePasswords();
};

void PasswordHashTest::aHashFitsItsPasswordAlone()
{
    const std::string hash = hashPassword("云雀 lark1");
    QVERIFY(QByteArray::fromStdString(hash).startsWith("$argon2id$"));
    QVERIFY(passwordFits(hash, "云雀 lark1"));
    QVERIFY(!passwordFits(hash, "云雀 lark2"));
    QVERIFY(!passwordFits(hash, ""));
    QVERIFY(!passwordFits("no hash at all", "云雀 lark1"));
}

void PasswordHashTest::twoHashesOfOnePasswordDiffer()
{
    QVERIFY(hashPassword("lark2024") != hashPassword("lark2024"));
}

void PasswordHashTest::wirePasswords_data()
{
    QTest::addColumn<QString>("encoded");
    QTest::addColumn<QString>("clear");
    QTest::newRow("ASCII") << "bGFyazIwMjQ="
                           << "lark2024";
    QTest::newRow("Chinese") << QString::fromLatin1(QByteArray("云雀1").toBase64())
                             << QStringLiteral("云雀1");
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("clear text") << QStringLiteral("lark-2024!") << QString();
    QTest::newRow("padding missing") << "bGFyazIwMjQ" << QString();
    QTest::newRow("alphabet for addresses") << "_-8=" << QString();
    QTest::newRow("no UTF-8") << QString::fromLatin1(QByteArray("\xff\xff").toBase64()) << QString();
    QTest::newRow("line end behind") << "bGFyazIwMjQ=\n" << QString();
}

void PasswordHashTest::wirePasswords()
{
    QFETCH(QString, encoded);
    QFETCH(QString, clear);
    const auto decoded = decodeWirePassword(encoded.toStdString());
    QCOMPARE(decoded.has_value(), !clear.isNull());
    QCOMPARE(QString::fromStdString(decoded.value_or("")), clear);
}

LARKSPIRE_GUILESS_TEST_MAIN(PasswordHashTest)
#include "tst_PasswordHash.moc"
