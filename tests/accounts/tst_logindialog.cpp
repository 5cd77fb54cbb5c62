#include "accounts/AccountDialogTest.h"
#include "accounts/LoginDialog.h"
#include "newsclient/ApiClient.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QtTest>

using namespace AccountDialogTest;

class TestLoginDialog : public QObject
{
    Q_OBJECT

private slots:
    void isAPlainModalDialog();
    void keepsTheClientItWasGiven();
    void takesTheSkinItIsTold_data();
    void takesTheSkinItIsTold();
};

void TestLoginDialog::isAPlainModalDialog()
{
    LoginDialog dialog(nullptr, false);
    QCOMPARE(dialog.windowTitle(), text("登录"));
    QVERIFY(dialog.isModal());
    QCOMPARE(dialog.minimumSize(), QSize(450, 550));
    QCOMPARE(dialog.maximumSize(), QSize(450, 550));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    WindowInput::press(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestLoginDialog::keepsTheClientItWasGiven()
{
    LoginDialog dialog(nullptr, false);
    QVERIFY(!dialog.apiClient());
    {
        ApiClient client;
        dialog.setApiClient(&client);
        QCOMPARE(dialog.apiClient(), &client);
    }
    QVERIFY(!dialog.apiClient());
}

void TestLoginDialog::takesTheSkinItIsTold_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("dark first") << true;
    QTest::newRow("light first") << false;
}

void TestLoginDialog::takesTheSkinItIsTold()
{
    QFETCH(bool, dark);
    const auto background = [](bool isDark) {
        return isDark ? QColor(0x2c, 0x2f, 0x33) : QColor(0xff, 0xff, 0xff);
    };
    LoginDialog dialog(nullptr, dark);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.isDarkTheme(), dark);
    QCOMPARE(colorAt(dialog, QPoint(5, 5)), background(dark));
    dialog.setDarkTheme(!dark);
    QCOMPARE(dialog.isDarkTheme(), !dark);
    QCOMPARE(colorAt(dialog, QPoint(5, 5)), background(!dark));
}

LARKSPIRE_TEST_MAIN(TestLoginDialog)
#include "tst_logindialog.moc"
