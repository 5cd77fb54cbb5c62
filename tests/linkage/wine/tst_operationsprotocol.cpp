#include "linkage/wine/OperationsProtocol.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class tst_OperationsProtocol : public QObject
{
    Q_OBJECT

private slots:
    void aTextIsOneWordAndComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("plain") << QStringLiteral("hexin.exe") << QByteArray("=hexin.exe");
        QTest::newRow("Chinese") << QStringLiteral("同花顺") << QByteArray("=%540c%82b1%987a");
        QTest::newRow("blank") << QStringLiteral("a b") << QByteArray("=a%0020b");
        QTest::newRow("a class") << QStringLiteral("Afx:00400000:b-1_") << QByteArray("=Afx:00400000:b-1_");
        QTest::newRow("the signs of the form itself") << QStringLiteral("%=") << QByteArray("=%0025%003d");
        QTest::newRow("a newline") << QStringLiteral("\n") << QByteArray("=%000a");
        QTest::newRow("beyond 16 bits") << QStringLiteral("📈") << QByteArray("=%d83d%dcc8");
        QTest::newRow("half a pair") << QString(QChar(0xD83D)) << QByteArray("=%d83d");
        QTest::newRow("empty") << QStringLiteral("") << QByteArray("=");
    }

    void aTextIsOneWordAndComesBackAsItWas()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, word);
        const std::string made = OperationsProtocol::textWord(text.toStdU16String());
        QCOMPARE(QByteArray::fromStdString(made), word);
        const auto back = OperationsProtocol::text(made);
        QVERIFY(back);
        QCOMPARE(QString::fromStdU16String(*back), text);
    }

    void bytesAreOneWordAndComeBackAsTheyWere()
    {
        std::string bytes;
        for (int value = 0; value < 256; ++value)
            bytes += char(value);
        const std::string word = OperationsProtocol::bytesWord(bytes);
        QCOMPARE(word.substr(0, 9), std::string("=00010203"));
        QCOMPARE(word.size(), std::size_t(1 + 2 * 256));
        QCOMPARE(OperationsProtocol::bytes(word).value_or(std::string()), bytes);
        QCOMPARE(OperationsProtocol::bytes("=").value_or("x"), std::string());
    }

    void whatIsNoTextOrBytesIsRefused_data()
    {
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("nothing") << QByteArray("");
        QTest::newRow("no beginning") << QByteArray("hexin.exe");
        QTest::newRow("an escape that is cut") << QByteArray("=%54");
        QTest::newRow("an escape of no digits") << QByteArray("=%zzzz");
        QTest::newRow("an escape with a sign") << QByteArray("=%-001");
        QTest::newRow("a character that had to be escaped") << QByteArray("=a=b");
        QTest::newRow("bytes above ASCII") << QByteArray("=\xE5\x90\x8C");
    }

    void whatIsNoTextOrBytesIsRefused()
    {
        QFETCH(QByteArray, word);
        QVERIFY(!OperationsProtocol::text({word.constData(), std::size_t(word.size())}));
        QVERIFY(!OperationsProtocol::bytes({word.constData(), std::size_t(word.size())}));
    }

    void bytesOfAnOddNumberOfDigitsAreRefused() { QVERIFY(!OperationsProtocol::bytes("=123")); }

    void aNumberIsDecimalAndFits_data()
    {
        QTest::addColumn<QByteArray>("word");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<quint64>("number");
        QTest::newRow("zero") << QByteArray("0") << true << quint64(0);
        QTest::newRow("largest") << QByteArray("18446744073709551615") << true << ~quint64(0);
        QTest::newRow("too large") << QByteArray("18446744073709551616") << false << quint64(0);
        QTest::newRow("negative") << QByteArray("-1") << false << quint64(0);
        QTest::newRow("hexadecimal") << QByteArray("0x10") << false << quint64(0);
        QTest::newRow("followed by more") << QByteArray("10a") << false << quint64(0);
        QTest::newRow("nothing") << QByteArray("") << false << quint64(0);
    }

    void aNumberIsDecimalAndFits()
    {
        QFETCH(QByteArray, word);
        QFETCH(bool, valid);
        QFETCH(quint64, number);
        const auto parsed = OperationsProtocol::number({word.constData(), std::size_t(word.size())});
        QCOMPARE(parsed.has_value(), valid);
        QCOMPARE(quint64(parsed.value_or(0)), number);
    }

    void aLineFallsIntoWordsWhateverItsBlanks()
    {
        const auto words = OperationsProtocol::words("  send 1   2\r\n");
        QCOMPARE(words.size(), std::size_t(3));
        QCOMPARE(std::string(words[0]), std::string("send"));
        QCOMPARE(std::string(words[2]), std::string("2"));
        QVERIFY(OperationsProtocol::words("").empty());
        QVERIFY(OperationsProtocol::words(" \r\n").empty());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_OperationsProtocol)
#include "tst_operationsprotocol.moc"
