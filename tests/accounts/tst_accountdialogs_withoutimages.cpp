#include "accounts/AccountDialogTest.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/UserInfoDialog.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QtTest>

using namespace AccountDialogTest;

/// A program into which no images are compiled.
class TestAccountDialogsWithoutImages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void initialStandsInForThePicture_data();
    void initialStandsInForThePicture();
    void withoutAUserNameThePictureStaysBlank();
    void missingCodeIsToldInItsPlace();
};

void TestAccountDialogsWithoutImages::initTestCase()
{
    QVERIFY(!QFile::exists(text(":/images/user_pro.png")));
    QVERIFY(!QFile::exists(text(":/images/wxqrcode.png")));
}

void TestAccountDialogsWithoutImages::initialStandsInForThePicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("initial");
    QTest::newRow("small letter") << text("demo") << text("D");
    QTest::newRow("Chinese") << text("云雀") << text("云");
    QTest::newRow("digit") << text("7up") << text("7");
    QTest::newRow("character outside the basic plane") << text("𠮷田") << text("𠮷");
}

void TestAccountDialogsWithoutImages::initialStandsInForThePicture()
{
    QFETCH(QString, name);
    QFETCH(QString, initial);
    UserInfoDialog dialog;
    dialog.onUserInfoReceived({{text("username"), name}, {text("email"), text("x@larkspire.example")}});
    QVERIFY(opens(dialog));
    auto *avatar = part<QLabel>(dialog, "avatarLabel");
    QCOMPARE(avatar->text(), initial);
    QCOMPARE(avatar->styleSheet(),
             text("border-radius: 30px; background-color: #FFD700; border: 2px solid #DAA520;"
                  " color: #8B4513; font-size: 24px; font-weight: bold;"));
    QCOMPARE(colorAt(*avatar, QPoint(30, 6)), QColor(0xff, 0xd7, 0x00));
}

void TestAccountDialogsWithoutImages::withoutAUserNameThePictureStaysBlank()
{
    UserInfoDialog dialog;
    QVERIFY(opens(dialog));
    auto *avatar = part<QLabel>(dialog, "avatarLabel");
    dialog.onUserInfoReceived({{text("username"), text("demo")}});
    QCOMPARE(avatar->text(), text("D"));
    // Nothing of a user before is left.
    dialog.onUserInfoReceived({{text("email"), text("x@larkspire.example")}});
    QVERIFY(avatar->text().isEmpty());
    QVERIFY(colorAt(*avatar, QPoint(30, 6)) != QColor(0xff, 0xd7, 0x00));
}

void TestAccountDialogsWithoutImages::missingCodeIsToldInItsPlace()
{
    for (const bool dark : {false, true}) {
        CustomerServiceDialog dialog(nullptr, dark);
        QVERIFY(opens(dialog));
        auto *code = part<QLabel>(dialog, "qrCodeLabel");
        QCOMPARE(code->text(), text("二维码加载失败"));
        QVERIFY(contrast(code->palette().color(QPalette::WindowText), colorAt(*code, QPoint(4, 4))) >= 4.5);
    }
}

LARKSPIRE_TEST_MAIN(TestAccountDialogsWithoutImages)
#include "tst_accountdialogs_withoutimages.moc"
