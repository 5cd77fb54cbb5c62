#include "settings/InputField.h"

#include "resources/LarkspireResources.h"
#include "settings/MainWindowSkin.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QImage>
#include <QStyle>
#include <QVBoxLayout>

namespace {

void useSkin(bool dark)
{
    QApplication::setPalette(dark ? MainWindowSkin::darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(dark ? MainWindowSkin::darkStyleSheet() : QString());
}

/// How far the strongest pixel of the field's inside stands off its ground, 0 to 255.
int strengthOf(InputField &field)
{
    const QImage image = field.grab(field.rect().adjusted(4, 4, -4, -4)).toImage();
    const int ground = qGray(image.pixel(image.width() - 2, 1));
    int strongest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            strongest = qMax(strongest, qAbs(qGray(image.pixel(x, y)) - ground));
    }
    return strongest;
}

} // namespace

class TestInputField : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initLarkspireResources(); }
    void cleanup() { useSkin(false); }

    void placeholderIsPalerThanTextInEverySkin_data()
    {
        QTest::addColumn<QList<bool>>("skins");
        QTest::newRow("light") << QList<bool>{false};
        QTest::newRow("dark") << QList<bool>{true};
        QTest::newRow("to dark") << QList<bool>{false, true};
        QTest::newRow("to light") << QList<bool>{true, false};
        QTest::newRow("there and back") << QList<bool>{false, true, false};
    }

    void placeholderIsPalerThanTextInEverySkin()
    {
        QFETCH(QList<bool>, skins);
        useSkin(skins.first());
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *button = new QWidget(&window);
        button->setFocusPolicy(Qt::StrongFocus);
        auto *field = new InputField(&window);
        field->setPlaceholderText(QStringLiteral("HHHHHHHH"));
        layout->addWidget(button);
        layout->addWidget(field);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        button->setFocus();
        for (const bool dark : qAsConst(skins)) {
            useSkin(dark);
            field->clear();
            const int placeholder = strengthOf(*field);
            field->setText(QStringLiteral("HHHHHHHH"));
            const int text = strengthOf(*field);
            QVERIFY2(text > 190, qPrintable(QString::number(text)));
            QVERIFY2(placeholder > 90 && placeholder < text - 50, qPrintable(QString::number(placeholder)));
        }
    }

    void sheetNamesTheColour()
    {
        InputField field;
        field.setStyleSheet(QStringLiteral("QLineEdit { color: #102030; background-color: white; }"
                                           "InputField { qproperty-placeholderColor: #605040; }"));
        field.show();
        QVERIFY(QTest::qWaitForWindowExposed(&field));
        QCOMPARE(field.placeholderColor(), QColor(0x60, 0x50, 0x40));
        QCOMPARE(field.palette().color(QPalette::PlaceholderText), QColor(0x60, 0x50, 0x40));
        QCOMPARE(field.palette().color(QPalette::Text), QColor(0x10, 0x20, 0x30));
    }
};

int main(int argc, char *argv[])
{
    IsolatedHome home;
    pauseLeakCheck();
    QApplication application(argc, argv);
    resumeLeakCheck();
    setProgramIdentity();
    QApplication::setStyle(QStringLiteral("Fusion"));
    TestInputField test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_inputfield.moc"
