#include "program/TradingProgram.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QSet>

namespace {

QByteArray memoryOf(const TradingProgram &program)
{
    const auto text = program.memoryText();
    return {text.data(), int(text.size())};
}

} // namespace

class tst_TradingProgram : public QObject
{
    Q_OBJECT

private slots:
    void sixTypedDigitsOpenAStock()
    {
        TradingProgram program(TradingProgram::Kind::Tdx);
        for (const char digit : {'3', '0', 'x', '0', '7', '5'})
            program.type(digit);
        QCOMPARE(program.typed(), std::string("30075"));
        QCOMPARE(program.code(), std::string());
        program.type('0');
        QCOMPARE(program.code(), std::string("300750"));
        QCOMPARE(program.stockName(), std::string("宁德时代"));
        QCOMPARE(program.typed(), std::string());
    }

    void theLastTypedDigitCanBeTakenBack()
    {
        TradingProgram program(TradingProgram::Kind::Tdx);
        program.eraseDigit();
        for (const char digit : {'6', '0', '0', '5', '1'})
            program.type(digit);
        program.eraseDigit();
        for (const char digit : {'3', '6'})
            program.type(digit);
        QCOMPARE(program.code(), std::string("600536"));
    }

    void theListGoesRoundInBothDirections()
    {
        TradingProgram program(TradingProgram::Kind::Ths);
        program.openNext();
        const std::string first = program.code();
        program.openPrevious();
        const std::string last = program.code();
        QVERIFY(first != last);
        program.openNext();
        QCOMPARE(program.code(), first);

        QSet<QString> seen;
        while (!seen.contains(QString::fromStdString(program.code()))) {
            QCOMPARE(program.code().size(), std::size_t(6));
            seen.insert(QString::fromStdString(program.code()));
            program.openNext();
        }
        QVERIFY(seen.size() > 10);
        QCOMPARE(program.code(), first);
    }

    void aCodeOutsideTheListIsOpenedTooAndLeadsBackIntoIt()
    {
        TradingProgram program(TradingProgram::Kind::Tdx);
        program.open("60A519");
        QCOMPARE(program.code(), std::string("60A519"));
        QCOMPARE(program.stockName(), std::string());
        program.openNext();
        QVERIFY(!program.stockName().empty());
    }

    void memoryHoldsTheCodeInTheProgramsOwnLayout_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QByteArray>("tdx");
        QTest::addColumn<QByteArray>("ths");
        const auto row = [](const char *code, const QByteArray &marker) {
            const QByteArray digits(code);
            QTest::newRow(code) << QString::fromLatin1(digits) << (digits + QByteArray(8, '\0')).left(8)
                                << (marker + digits + QByteArray(8, '\0')).left(8);
        };
        row("600519", "\x11");
        row("000001", "\x21");
        row("300750", "\x21");
        row("920002", "\x97");
        row("110059", "\x13");
        row("123456", "\x23");
        row("510300", "\x14");
        row("159915", "\x24");
        row("160001", "\x24");
        row("6005", "\x11");
        row("600519000", "\x11");
        QTest::newRow("none") << QString() << QByteArray(8, '\0') << QByteArray(8, '\0');
    }

    void memoryHoldsTheCodeInTheProgramsOwnLayout()
    {
        QFETCH(QString, code);
        QFETCH(QByteArray, tdx);
        QFETCH(QByteArray, ths);
        TradingProgram tdxProgram(TradingProgram::Kind::Tdx);
        tdxProgram.open(code.toStdString());
        QCOMPARE(memoryOf(tdxProgram), tdx);
        TradingProgram thsProgram(TradingProgram::Kind::Ths);
        thsProgram.open(code.toStdString());
        QCOMPARE(memoryOf(thsProgram), ths);
    }

    void theTitleHoldsTheProgramsWordAndTheStock()
    {
        TradingProgram tdx(TradingProgram::Kind::Tdx);
        QCOMPARE(tdx.title(), std::string("通达信金融终端(模拟)"));
        tdx.open("600519");
        QCOMPARE(tdx.title(), std::string("通达信金融终端(模拟) - 600519 贵州茅台"));
        TradingProgram ths(TradingProgram::Kind::Ths);
        ths.open("000001");
        QCOMPARE(ths.title(), std::string("同花顺(模拟) - 000001 平安银行"));
        ths.close();
        QCOMPARE(ths.title(), std::string("同花顺(模拟)"));
    }

    void theNumberOfAMessageEndsInTheCode_data()
    {
        QTest::addColumn<qlonglong>("number");
        QTest::addColumn<QString>("code");
        QTest::newRow("Shanghai") << 7600519LL << QStringLiteral("600519");
        QTest::newRow("Shenzhen") << 6000001LL << QStringLiteral("000001");
        QTest::newRow("without a market") << 830001LL << QStringLiteral("830001");
        QTest::newRow("small") << 1LL << QStringLiteral("000001");
        QTest::newRow("negative") << -1LL << QStringLiteral("");
    }

    void theNumberOfAMessageEndsInTheCode()
    {
        QFETCH(qlonglong, number);
        QFETCH(QString, code);
        QCOMPARE(QString::fromStdString(TradingProgram::codeOfNumber(number)), code);
    }

    void theBlockOfAMessageHoldsTheCodeBehindTheMarker_data()
    {
        QTest::addColumn<QByteArray>("block");
        QTest::addColumn<QString>("code");
        QTest::newRow("seven bytes") << QByteArray("\x11"
                                                   "600519")
                                     << QStringLiteral("600519");
        QTest::newRow("eight bytes") << QByteArray("\x11"
                                                   "6005199")
                                     << QStringLiteral("600519");
        QTest::newRow("a short code") << QByteArray("\x11"
                                                    "60\0\0\0\0",
                                                    7)
                                      << QStringLiteral("60");
        QTest::newRow("a marker alone") << QByteArray("\x11") << QStringLiteral("");
        QTest::newRow("nothing") << QByteArray() << QStringLiteral("");
    }

    void theBlockOfAMessageHoldsTheCodeBehindTheMarker()
    {
        QFETCH(QByteArray, block);
        QFETCH(QString, code);
        QCOMPARE(
            QString::fromStdString(TradingProgram::codeOfBlock(block.constData(), std::size_t(block.size()))),
            code);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_TradingProgram)
#include "tst_tradingprogram.moc"
