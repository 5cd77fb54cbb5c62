#include "stockviews/TextPlate.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

const QColor lightPage(0xEF, 0xEF, 0xEF);
const QColor darkPage(0x35, 0x35, 0x35);

} // namespace

class tst_TextPlate : public QObject
{
    Q_OBJECT

private slots:
    void theContrastIsThatOfAccessiblePages_data()
    {
        QTest::addColumn<QColor>("one");
        QTest::addColumn<QColor>("other");
        QTest::addColumn<double>("expected");
        QTest::newRow("black and white") << QColor(Qt::black) << QColor(Qt::white) << 21.0;
        QTest::newRow("white and black") << QColor(Qt::white) << QColor(Qt::black) << 21.0;
        QTest::newRow("equal") << QColor(Qt::red) << QColor(Qt::red) << 1.0;
        QTest::newRow("grey on white") << QColor(0x77, 0x77, 0x77) << QColor(Qt::white) << 4.48;
        QTest::newRow("red on white") << QColor(Qt::red) << QColor(Qt::white) << 4.0;
        QTest::newRow("blue on white") << QColor(Qt::blue) << QColor(Qt::white) << 8.59;
    }

    void theContrastIsThatOfAccessiblePages()
    {
        QFETCH(QColor, one);
        QFETCH(QColor, other);
        QFETCH(double, expected);
        QVERIFY(qAbs(TextPlate::contrast(one, other) - expected) < 0.01);
    }

    void aPlateLiesWhereTheColourIsHardToTell_data()
    {
        QTest::addColumn<QString>("color");
        QTest::addColumn<bool>("onLight");
        QTest::addColumn<bool>("onDark");
        QTest::newRow("main board") << QStringLiteral("orange") << true << false;
        QTest::newRow("growth board") << QStringLiteral("cyan") << true << false;
        QTest::newRow("star market") << QStringLiteral("blue") << false << true;
        QTest::newRow("Beijing exchange, and a falling value") << QStringLiteral("green") << false << true;
        QTest::newRow("a rising value") << QStringLiteral("red") << false << true;
        QTest::newRow("black") << QStringLiteral("black") << false << true;
        QTest::newRow("white") << QStringLiteral("white") << true << false;
        QTest::newRow("no colour") << QStringLiteral("nobody's") << false << false;
    }

    void aPlateLiesWhereTheColourIsHardToTell()
    {
        QFETCH(QString, color);
        QFETCH(bool, onLight);
        QFETCH(bool, onDark);
        const QColor text(color);
        for (const QColor &page : {lightPage, darkPage}) {
            const QColor plate = TextPlate::plateFor(text, page);
            QCOMPARE(plate.isValid(), page == lightPage ? onLight : onDark);
            if (!plate.isValid())
                continue;
            QVERIFY(TextPlate::contrast(text, plate) > 3.2);
            QVERIFY(TextPlate::contrast(plate, page) > 3); // it is seen as one
        }
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_TextPlate)
#include "tst_textplate.moc"
