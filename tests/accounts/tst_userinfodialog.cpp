#include "accounts/AccountDialogTest.h"
#include "accounts/AuthManager.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/UserInfoDialog.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace AccountDialogTest;

class TestUserInfoDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initLarkspireResources(); }
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void cardIsAsDrawn();
    void dialogIsLeft_data();
    void dialogIsLeft();
    void tabKeyGoesRound();

    void showsWhoLoggedInWithoutAskingTheService_data();
    void showsWhoLoggedInWithoutAskingTheService();
    void cardIsEmptyUntilTheReplyArrives();
    void withoutAnySourceItSaysSo();
    void managerThatIsGoneIsNoManager();
    void onlyTheLatestClientIsHeard();
    void bindingsHaveNoPlaceHere();
    void pictureIsRoundAndSharp();
    void longAddressIsNotCutOff_data();
    void longAddressIsNotCutOff();
    void textIsShownAsItStands();

    void supportOpensAndTheCardCloses();
    void withoutSupportItSaysSo();
    void followsTheSkin();

private:
    QLabel *line() const { return part<QLabel>(*m_dialog, "emailLabel"); }
    QLabel *avatar() const { return part<QLabel>(*m_dialog, "avatarLabel"); }
    /// Logs a user in by a key, at a scripted server.
    void logIn(AuthManager &manager, const QString &name, const QString &email);

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UserInfoDialog> m_dialog;
};

void TestUserInfoDialog::init()
{
    clearSettings();
    setSkin(false);
    m_server = std::make_unique<RawHttpServer>();
    ConfigManager::instance()->setApiServerUrl(m_server->url());
    m_dialog = std::make_unique<UserInfoDialog>();
}

void TestUserInfoDialog::cleanup()
{
    m_dialog.reset();
    m_server.reset();
    setSkin(true);
}

void TestUserInfoDialog::logIn(AuthManager &manager, const QString &name, const QString &email)
{
    m_server->setAnswer(RawAnswer::json({{text("success"), true},
                                         {text("api_key"), text("lks-key")},
                                         {text("user_id"), 7},
                                         {text("username"), name},
                                         {text("email"), email}}));
    manager.loadStoredCredentials();
    QSignalSpy finished(&manager, &AuthManager::loginFinished);
    QVERIFY(manager.verifyApiKey(text("lks-key")));
    QVERIFY(finished.wait());
    QVERIFY(manager.isAuthenticated());
    m_server->clear();
}

// What stands where

void TestUserInfoDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("用户信息"));
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    const auto *tabs = m_dialog->findChild<QTabWidget *>();
    QCOMPARE(tabs->count(), 1);
    QCOMPARE(tabs->widget(0)->objectName(), text("userInfoTab"));
    QVERIFY(opens(*m_dialog));
    const auto *close = part<QPushButton>(*m_dialog, "closeButton");
    QVERIFY(close->y() > tabs->geometry().bottom());
}

void TestUserInfoDialog::cardIsAsDrawn()
{
    QVERIFY(opens(*m_dialog));
    auto *card = part<QFrame>(*m_dialog, "userInfoCard");
    QVERIFY(part<QWidget>(*m_dialog, "userInfoTab")->isAncestorOf(card));
    QVERIFY(card->height() >= 120);
    QCOMPARE(card->layout()->contentsMargins(), QMargins(20, 20, 20, 20));
    // From cornsilk at the top to moccasin at the bottom, in rounded corners.
    const QColor top = colorAt(*card, QPoint(card->width() / 2, 1));
    const QColor bottom = colorAt(*card, QPoint(card->width() / 2, card->height() - 2));
    QVERIFY(qAbs(top.blue() - 0xdc) <= 3 && qAbs(top.green() - 0xf8) <= 3);
    QVERIFY(qAbs(bottom.blue() - 0xb5) <= 3 && qAbs(bottom.green() - 0xe4) <= 3);
    QVERIFY(colorAt(*card, QPoint(0, 0)) != top);
    QVERIFY(card->isAncestorOf(avatar()));
    QVERIFY(avatar()->width() >= 60 && avatar()->height() >= 60);
    QVERIFY(avatar()->alignment().testFlag(Qt::AlignCenter));
    QVERIFY(card->isAncestorOf(line()));
    QCOMPARE(line()->palette().color(QPalette::WindowText), QColor(0x8b, 0x45, 0x13));
    QCOMPARE(line()->font().pixelSize(), 18);
    QVERIFY(line()->font().bold());
    QVERIFY(avatar()->geometry().right() < line()->geometry().left());
}

void TestUserInfoDialog::dialogIsLeft_data()
{
    QTest::addColumn<QString>("by");
    QTest::addColumn<int>("result");
    QTest::newRow("Enter") << text("Enter") << int(QDialog::Accepted);
    QTest::newRow("click on the button") << text("click") << int(QDialog::Accepted);
    QTest::newRow("Escape") << text("Escape") << int(QDialog::Rejected);
}

void TestUserInfoDialog::dialogIsLeft()
{
    QFETCH(QString, by);
    QFETCH(int, result);
    QVERIFY(opens(*m_dialog));
    QVERIFY(part<QPushButton>(*m_dialog, "closeButton")->hasFocus());
    if (by == text("click"))
        WindowInput::click(part<QPushButton>(*m_dialog, "closeButton"));
    else
        WindowInput::press(m_dialog.get(), by == text("Enter") ? Qt::Key_Return : Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), result);
}

void TestUserInfoDialog::tabKeyGoesRound()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(tabWalk(*m_dialog), QStringList({text("closeButton"), text("qt_tabwidget_tabbar")}));
}

// Who it shows

void TestUserInfoDialog::showsWhoLoggedInWithoutAskingTheService_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("shown");
    QTest::newRow("e-mail, not the name")
        << text("demo") << text("demo@larkspire.example") << text("demo@larkspire.example");
    QTest::newRow("name alone") << text("demo") << QString() << text("demo");
    QTest::newRow("name made up for a device") << text("auto_user_3f2a") << QString() << text("--");
    QTest::newRow("made-up name with an e-mail")
        << text("auto_user_3f2a") << text("demo@larkspire.example") << text("demo@larkspire.example");
    QTest::newRow("nothing") << QString() << QString() << QString();
}

void TestUserInfoDialog::showsWhoLoggedInWithoutAskingTheService()
{
    QFETCH(QString, name);
    QFETCH(QString, email);
    QFETCH(QString, shown);
    AuthManager manager;
    logIn(manager, name, email);
    ApiClient client;
    client.setBaseUrl(m_server->url());
    m_dialog->setApiClient(&client);
    m_dialog->setAuthManager(&manager);
    m_dialog->onRefreshUserInfoClicked();
    QVERIFY(opens(*m_dialog));
    QCOMPARE(line()->text(), shown);
    QVERIFY(!avatar()->pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(m_server->requests().isEmpty());
}

void TestUserInfoDialog::cardIsEmptyUntilTheReplyArrives()
{
    ApiClient client;
    client.setBaseUrl(m_server->url());
    m_dialog->setApiClient(&client);
    m_dialog->onUserInfoReceived({{text("email"), text("former@larkspire.example")}});
    QCOMPARE(line()->text(), text("former@larkspire.example"));
    m_server->setAnswer(RawAnswer::hold());
    m_dialog->onRefreshUserInfoClicked();
    QCOMPARE(line()->text(), QString());
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().first().method, QByteArray("GET"));
    QCOMPARE(m_server->requests().first().path(), QByteArray("/user/info"));
    QCOMPARE(line()->text(), QString());
    QVERIFY(m_server->release(
        m_server->heldRequests().first(),
        RawAnswer::json({{text("success"), true},
                         {text("data"), QJsonObject{{text("username"), text("demo")},
                                                    {text("email"), text("demo@larkspire.example")}}}})));
    QTRY_COMPARE(line()->text(), text("demo@larkspire.example"));
}

void TestUserInfoDialog::withoutAnySourceItSaysSo()
{
    QVERIFY(opens(*m_dialog));
    const BoxAnswer box(ok());
    m_dialog->onRefreshUserInfoClicked();
    QCOMPARE(told(box), QStringList({text("错误"), text("无法获取用户信息")}));
    QCOMPARE(box.icon(), QMessageBox::Critical);
}

void TestUserInfoDialog::managerThatIsGoneIsNoManager()
{
    {
        AuthManager manager;
        m_dialog->setAuthManager(&manager);
    }
    QVERIFY(opens(*m_dialog));
    const BoxAnswer box(ok());
    m_dialog->onRefreshUserInfoClicked();
    QCOMPARE(told(box), QStringList({text("错误"), text("无法获取用户信息")}));
}

void TestUserInfoDialog::onlyTheLatestClientIsHeard()
{
    ApiClient former;
    ApiClient latest;
    m_dialog->setApiClient(&former);
    m_dialog->setApiClient(&latest);
    m_dialog->setApiClient(&latest);
    emit former.userInfoReceived({{text("username"), text("former")}});
    QCOMPARE(line()->text(), QString());
    emit latest.userInfoReceived({{text("username"), text("latest")}});
    QCOMPARE(line()->text(), text("latest"));
    m_dialog->setApiClient(nullptr);
    emit latest.userInfoReceived({{text("username"), text("former")}});
    QCOMPARE(line()->text(), text("latest"));
}

void TestUserInfoDialog::bindingsHaveNoPlaceHere()
{
    ApiClient client;
    m_dialog->setApiClient(&client);
    m_dialog->onUserInfoReceived({{text("username"), text("demo")}});
    QVERIFY(opens(*m_dialog));
    emit client.bindWechatResponse(true, text("绑定成功"));
    emit client.bindEmailResponse(false, text("绑定失败"));
    for (const char *slot : {"onBindWechatClicked", "onBindEmailClicked", "onGenerateWechatQrClicked",
                             "onVerifyWechatQrClicked", "onVerifyEmailCodeClicked"})
        QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), slot));
    QVERIFY(m_dialog->isVisible());
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(line()->text(), text("demo"));
    QVERIFY(m_server->requests().isEmpty());
}

void TestUserInfoDialog::pictureIsRoundAndSharp()
{
    m_dialog->onUserInfoReceived({{text("username"), text("demo")}});
    const QPixmap picture = avatar()->pixmap(Qt::ReturnByValue);
    const qreal ratio = m_dialog->devicePixelRatioF();
    QCOMPARE(picture.size(), QSize(60, 60) * ratio);
    QCOMPARE(picture.devicePixelRatio(), ratio);
    const QImage image = picture.toImage();
    QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
    QCOMPARE(image.pixelColor(image.width() - 1, image.height() - 1).alpha(), 0);
    QCOMPARE(image.pixelColor(image.rect().center()).alpha(), 255);
    QCOMPARE(avatar()->styleSheet(), text("border-radius: 30px; border: 2px solid #FFD700;"));
    // The ring is as round as the picture.
    QVERIFY(opens(*m_dialog));
    QCOMPARE(avatar()->size(), QSize(60, 60));
}

void TestUserInfoDialog::longAddressIsNotCutOff_data()
{
    QTest::addColumn<bool>("shownBefore");
    QTest::newRow("opened with it") << false;
    QTest::newRow("open when it comes") << true;
}

void TestUserInfoDialog::longAddressIsNotCutOff()
{
    QFETCH(bool, shownBefore);
    const QString address = text("a.very.long.address.of.a.trader.who.likes.long.names@")
                                .append(text("research.").repeated(10))
                                .append(text("larkspire.example"));
    m_dialog->onUserInfoReceived({{text("email"), text("short@larkspire.example")}});
    QVERIFY(opens(*m_dialog));
    const int width = m_dialog->width();
    if (!shownBefore)
        m_dialog->hide();
    m_dialog->onUserInfoReceived({{text("email"), address}});
    if (!shownBefore)
        QVERIFY(opens(*m_dialog));
    QCOMPARE(line()->text(), address);
    const auto needed = [this] {
        return line()
            ->fontMetrics()
            .boundingRect(QRect(0, 0, line()->width(), 100000), Qt::TextWrapAnywhere, line()->text())
            .height();
    };
    QVERIFY(needed() > 4 * line()->fontMetrics().lineSpacing());
    QTRY_VERIFY(line()->height() >= needed());
    const auto *card = part<QFrame>(*m_dialog, "userInfoCard");
    QVERIFY(card->rect().contains(line()->geometry()));
    QCOMPARE(m_dialog->width(), width);
}

void TestUserInfoDialog::textIsShownAsItStands()
{
    m_dialog->onUserInfoReceived({{text("username"), text("<b>demo</b>")}});
    QCOMPARE(line()->text(), text("<b>demo</b>"));
    QCOMPARE(line()->textFormat(), Qt::PlainText);
}

// Support

void TestUserInfoDialog::supportOpensAndTheCardCloses()
{
    CustomerServiceDialog support(nullptr, false);
    m_dialog->setCustomerServiceDialog(&support);
    QVERIFY(opens(*m_dialog));
    m_dialog->onContactCustomerServiceClicked();
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(support.isVisible());
    QVERIFY(QTest::qWaitForWindowActive(&support));
}

void TestUserInfoDialog::withoutSupportItSaysSo()
{
    QVERIFY(opens(*m_dialog));
    const BoxAnswer box(ok());
    m_dialog->onContactCustomerServiceClicked();
    QCOMPARE(told(box), QStringList({text("错误"), text("客服未设置")}));
    QCOMPARE(box.icon(), QMessageBox::Critical);
    QVERIFY(m_dialog->isVisible());
}

void TestUserInfoDialog::followsTheSkin()
{
    m_dialog->onUserInfoReceived({{text("username"), text("demo")}});
    QVERIFY(opens(*m_dialog));
    for (const bool dark : {false, true, false}) {
        setSkin(dark);
        const QColor background = colorAt(*m_dialog, QPoint(3, 3));
        QCOMPARE(background.lightness() < 128, dark);
        // The card keeps its own colours and can be read in both.
        QCOMPARE(line()->palette().color(QPalette::WindowText), QColor(0x8b, 0x45, 0x13));
        QVERIFY(contrast(QColor(0x8b, 0x45, 0x13), QColor(0xff, 0xe4, 0xb5)) >= 4.5);
    }
}

LARKSPIRE_TEST_MAIN(TestUserInfoDialog)
#include "tst_userinfodialog.moc"
