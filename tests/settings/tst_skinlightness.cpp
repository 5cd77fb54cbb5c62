#include "settings/SkinLightness.h"

#include "settings/MainWindowSkin.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

#include <memory>

class TestSkinLightness : public QObject
{
    Q_OBJECT

private slots:
    void aSkinIsDarkBelowTheMiddleOfLightness_data()
    {
        QTest::addColumn<QColor>("window");
        QTest::addColumn<bool>("dark");
        QTest::newRow("black") << QColor(Qt::black) << true;
        QTest::newRow("dark skin's grey") << QColor(53, 53, 53) << true;
        QTest::newRow("just below") << QColor(127, 127, 127) << true;
        QTest::newRow("the middle") << QColor(128, 128, 128) << false;
        QTest::newRow("red of lightness 127") << QColor(254, 0, 0) << true;
        QTest::newRow("red of lightness 128") << QColor(255, 0, 0) << false;
        QTest::newRow("white") << QColor(Qt::white) << false;
    }

    void aSkinIsDarkBelowTheMiddleOfLightness()
    {
        QFETCH(QColor, window);
        QFETCH(bool, dark);
        QPalette palette(Qt::gray);
        palette.setColor(QPalette::Window, window);
        QCOMPARE(isDarkSkin(palette), dark);
    }

    void theProgramsTwoSkinsAreToldApart()
    {
        QVERIFY(isDarkSkin(MainWindowSkin::darkPalette()));
        const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
        QVERIFY(!isDarkSkin(fusion->standardPalette()));
    }
};

LARKSPIRE_TEST_MAIN(TestSkinLightness)
#include "tst_skinlightness.moc"
