#include "linkage/StockCodeFormat.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class tst_StockCodeFormat : public QObject
{
    Q_OBJECT

private slots:
    void eachMarketHasItsTdxPrefixAndThsMarker_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("tdx");
        QTest::addColumn<QByteArray>("ths");

        QTest::newRow("6") << QStringLiteral("600519") << QStringLiteral("7600519")
                           << QByteArray("\x11"
                                         "600519");
        QTest::newRow("68") << QStringLiteral("688981") << QStringLiteral("7688981")
                            << QByteArray("\x11"
                                          "688981");
        QTest::newRow("0") << QStringLiteral("000001") << QStringLiteral("6000001")
                           << QByteArray("\x21"
                                         "000001");
        QTest::newRow("3") << QStringLiteral("300750") << QStringLiteral("6300750")
                           << QByteArray("\x21"
                                         "300750");
        QTest::newRow("92") << QStringLiteral("920001") << QStringLiteral("4920001")
                            << QByteArray("\x97"
                                          "920001");
        QTest::newRow("9 but not 92") << QStringLiteral("900901") << QStringLiteral("4900901")
                                      << QByteArray("\x21"
                                                    "900901");
        QTest::newRow("11") << QStringLiteral("110001") << QStringLiteral("7110001")
                            << QByteArray("\x13"
                                          "110001");
        QTest::newRow("5") << QStringLiteral("510300") << QStringLiteral("7510300")
                           << QByteArray("\x14"
                                         "510300");
        QTest::newRow("12") << QStringLiteral("120001") << QStringLiteral("6120001")
                            << QByteArray("\x23"
                                          "120001");
        QTest::newRow("15") << QStringLiteral("159915") << QStringLiteral("6159915")
                            << QByteArray("\x24"
                                          "159915");
        QTest::newRow("16") << QStringLiteral("160001") << QStringLiteral("160001")
                            << QByteArray("\x24"
                                          "160001");
        QTest::newRow("8") << QStringLiteral("830001") << QStringLiteral("830001")
                           << QByteArray("\x21"
                                         "830001");
        QTest::newRow("13") << QStringLiteral("131810") << QStringLiteral("131810")
                            << QByteArray("\x21"
                                          "131810");
        QTest::newRow("2") << QStringLiteral("204001") << QStringLiteral("204001")
                           << QByteArray("\x21"
                                         "204001");
        QTest::newRow("one digit that begins two rules") << QStringLiteral("1") << QStringLiteral("1")
                                                         << QByteArray("\x21"
                                                                       "1");
        QTest::newRow("letters") << QStringLiteral("AAPL") << QStringLiteral("AAPL") << QByteArray("!AAPL");
        QTest::newRow("Latin-1") << QStringLiteral("é1") << QStringLiteral("é1")
                                 << QByteArray("\x21\xE9"
                                               "1");
        QTest::newRow("empty") << QString() << QString() << QByteArray();
    }

    void eachMarketHasItsTdxPrefixAndThsMarker()
    {
        QFETCH(QString, code);
        QFETCH(QString, tdx);
        QFETCH(QByteArray, ths);
        QCOMPARE(StockCodeFormat::formatTdxCode(code), tdx);
        QCOMPARE(StockCodeFormat::formatThsCode(code), ths);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_StockCodeFormat)
#include "tst_stockcodeformat.moc"
