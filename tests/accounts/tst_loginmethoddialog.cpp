#include "accounts/AccountDialogTest.h"
#include "accounts/LoginMethodDialog.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QButtonGroup>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QtTest>

using namespace AccountDialogTest;

class TestLoginMethodDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void cardsShowTheThreeMethods_data();
    void cardsShowTheThreeMethods();
    void nextWithoutTouchingACardTakesTheFirstMethod();
    void clickAnywhereOnACardChoosesItsMethod_data();
    void clickAnywhereOnACardChoosesItsMethod();
    void arrowKeysChooseAndEnterGoesOn();
    void tabKeyGoesInReadingOrder();
    void dialogIsLeftWithoutAChoice_data();
    void dialogIsLeftWithoutAChoice();
    void choiceIsKeptAndNotStored();
    void enterGoesOnAlsoAfterACancelledVisit();
    void followsTheSkin();

private:
    std::unique_ptr<LoginMethodDialog> m_dialog;
};

void TestLoginMethodDialog::init()
{
    clearSettings();
    setSkin(false);
    m_dialog = std::make_unique<LoginMethodDialog>();
}

void TestLoginMethodDialog::cleanup()
{
    m_dialog.reset();
    setSkin(true);
}

void TestLoginMethodDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("选择登录方式"));
    const Qt::WindowFlags flags = m_dialog->windowFlags();
    for (const Qt::WindowType flag :
         {Qt::Dialog, Qt::WindowTitleHint, Qt::WindowCloseButtonHint, Qt::WindowStaysOnTopHint})
        QCOMPARE(flags & flag, Qt::WindowFlags(flag));
    QVERIFY(!flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->minimumSize(), QSize(500, 700));
    QCOMPARE(m_dialog->maximumSize(), QSize(500, 700));
    const auto *layout = qobject_cast<QVBoxLayout *>(m_dialog->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(40, 30, 40, 30));
    QCOMPARE(layout->spacing(), 20);

    const auto *heading = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
    QCOMPARE(heading->text(), text("欢迎使用云雀资讯"));
    QCOMPARE(heading->font().family(), text("Microsoft YaHei"));
    QCOMPARE(heading->font().pointSize(), 18);
    QVERIFY(heading->font().bold());
    QVERIFY(heading->alignment().testFlag(Qt::AlignHCenter));
    const auto *line = qobject_cast<QLabel *>(layout->itemAt(1)->widget());
    QCOMPARE(line->text(), text("请选择您的登录方式"));
    QCOMPARE(line->font().pointSize(), 12);
    QVERIFY(line->alignment().testFlag(Qt::AlignHCenter));
    QVERIFY(m_dialog->findChild<QGroupBox *>());

    QVERIFY(opens(*m_dialog));
    for (const QString &caption : {text("下一步"), text("取消")}) {
        const QAbstractButton *candidate = button(*m_dialog, caption);
        QVERIFY(candidate);
        QCOMPARE(candidate->size(), QSize(120, 45));
        QCOMPARE(candidate->font().pointSize(), 16);
        QVERIFY(candidate->font().bold());
    }
}

void TestLoginMethodDialog::cardsShowTheThreeMethods_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QString>("description");
    QTest::newRow("e-mail") << 0 << text("邮箱登录") << text("👤")
                            << text("使用邮箱和密码登录，支持注册新用户");
    QTest::newRow("key") << 1 << text("API Key 登录") << text("🔑") << text("使用已有的API Key，快速登录");
    QTest::newRow("free") << 2 << text("免费用户") << text("🆓") << QString();
}

void TestLoginMethodDialog::cardsShowTheThreeMethods()
{
    QFETCH(int, id);
    QFETCH(QString, title);
    QFETCH(QString, icon);
    QFETCH(QString, description);
    auto *group = m_dialog->findChild<QButtonGroup *>();
    QCOMPARE(group->buttons().size(), 3);
    QVERIFY(opens(*m_dialog));
    auto *card = qobject_cast<QRadioButton *>(group->button(id));
    QVERIFY(card);
    QCOMPARE(card->size(), QSize(400, 60));
    QCOMPARE(card->property("method").toInt(), id);
    QCOMPARE(card->accessibleName(), title);
    const QList<QLabel *> labels = card->findChildren<QLabel *>();
    QCOMPARE(labels.size(), 3);
    QCOMPARE(labels.at(0)->text(), icon);
    QCOMPARE(labels.at(0)->size(), QSize(30, 30));
    QCOMPARE(labels.at(0)->font().pixelSize(), 24);
    QCOMPARE(labels.at(1)->text(), title);
    if (description.isEmpty())
        QVERIFY(!labels.at(2)->text().isEmpty() && !labels.at(2)->text().contains(QLatin1Char('\n')));
    else
        QCOMPARE(labels.at(2)->text(), description);
    QCOMPARE(card->accessibleDescription(), labels.at(2)->text());
}

void TestLoginMethodDialog::nextWithoutTouchingACardTakesTheFirstMethod()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(m_dialog->findChild<QButtonGroup *>()->button(0)->isChecked());
    QVERIFY(m_dialog->findChild<QButtonGroup *>()->button(0)->hasFocus());
    QAbstractButton *next = button(*m_dialog, text("下一步"));
    QVERIFY(next->isEnabled());
    WindowInput::click(next);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->selectedMethod(), 0);
}

void TestLoginMethodDialog::clickAnywhereOnACardChoosesItsMethod_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("on the indicator") << 1 << QPoint(20, 30);
    QTest::newRow("on the icon") << 2 << QPoint(56, 30);
    QTest::newRow("on the title") << 1 << QPoint(110, 20);
    QTest::newRow("on the description") << 2 << QPoint(150, 42);
    QTest::newRow("in the corner") << 1 << QPoint(395, 5);
}

void TestLoginMethodDialog::clickAnywhereOnACardChoosesItsMethod()
{
    QFETCH(int, id);
    QFETCH(QPoint, place);
    QVERIFY(opens(*m_dialog));
    QAbstractButton *card = m_dialog->findChild<QButtonGroup *>()->button(id);
    WindowInput::clickAt(card, place);
    QVERIFY(card->isChecked());
    QCOMPARE(m_dialog->selectedMethod(), id);
    QVERIFY(button(*m_dialog, text("下一步"))->isEnabled());
    QVERIFY(m_dialog->isVisible());
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->selectedMethod(), id);
}

void TestLoginMethodDialog::arrowKeysChooseAndEnterGoesOn()
{
    QVERIFY(opens(*m_dialog));
    WindowInput::press(m_dialog.get(), Qt::Key_Down);
    QCOMPARE(m_dialog->selectedMethod(), 1);
    WindowInput::press(m_dialog.get(), Qt::Key_Down);
    QCOMPARE(m_dialog->selectedMethod(), 2);
    WindowInput::press(m_dialog.get(), Qt::Key_Up);
    QCOMPARE(m_dialog->selectedMethod(), 1);
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->selectedMethod(), 1);
}

void TestLoginMethodDialog::tabKeyGoesInReadingOrder()
{
    QVERIFY(opens(*m_dialog));
    QCOMPARE(tabWalk(*m_dialog), QStringList({text("邮箱登录"), text("下一步"), text("取消")}));
    QCOMPARE(tabWalk(*m_dialog, true), QStringList({text("邮箱登录"), text("取消"), text("下一步")}));
}

void TestLoginMethodDialog::dialogIsLeftWithoutAChoice_data()
{
    QTest::addColumn<QString>("by");
    QTest::newRow("Escape") << text("Escape");
    QTest::newRow("click on the button") << text("click");
    QTest::newRow("Enter on the button") << text("Enter");
    QTest::newRow("the window's own cross") << text("close");
}

void TestLoginMethodDialog::dialogIsLeftWithoutAChoice()
{
    QFETCH(QString, by);
    QVERIFY(opens(*m_dialog));
    m_dialog->setResult(QDialog::Accepted);
    if (by == text("Escape")) {
        WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    } else if (by == text("click")) {
        WindowInput::click(button(*m_dialog, text("取消")));
    } else if (by == text("Enter")) {
        WindowInput::press(m_dialog.get(), Qt::Key_Tab);
        WindowInput::press(m_dialog.get(), Qt::Key_Tab);
        QVERIFY(button(*m_dialog, text("取消"))->hasFocus());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
    } else {
        m_dialog->close();
    }
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
}

void TestLoginMethodDialog::choiceIsKeptAndNotStored()
{
    QVERIFY(opens(*m_dialog));
    WindowInput::click(m_dialog->findChild<QButtonGroup *>()->button(2));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(ConfigManager::instance()->getLoginMethod(), 0);
    QVERIFY(opens(*m_dialog));
    QVERIFY(m_dialog->findChild<QButtonGroup *>()->button(2)->isChecked());
    QCOMPARE(m_dialog->selectedMethod(), 2);
}

void TestLoginMethodDialog::enterGoesOnAlsoAfterACancelledVisit()
{
    QVERIFY(opens(*m_dialog));
    const QList<QPushButton *> buttons = m_dialog->findChildren<QPushButton *>();
    const auto cancel = std::find_if(buttons.begin(), buttons.end(), [](const QPushButton *button) {
        return button->text() == text("取消");
    });
    QVERIFY(cancel != buttons.end());
    QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    WindowInput::click(*cancel);
    QCOMPARE(rejected.count(), 1);
    QVERIFY(opens(*m_dialog));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(rejected.count(), 1);
}

void TestLoginMethodDialog::followsTheSkin()
{
    QVERIFY(opens(*m_dialog));
    const auto *heading = qobject_cast<QLabel *>(m_dialog->layout()->itemAt(0)->widget());
    const auto textColor = [heading] { return heading->palette().color(QPalette::WindowText); };
    QAbstractButton *card = m_dialog->findChild<QButtonGroup *>()->button(1);
    auto *group = m_dialog->findChild<QGroupBox *>();
    QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), QColor(0xff, 0xff, 0xff));
    QCOMPARE(colorAt(*group, QPoint(30, group->height() - 10)), QColor(0xf8, 0xf9, 0xfa));
    QCOMPARE(textColor(), QColor(0x2c, 0x3e, 0x50));
    setSkin(true);
    QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), QColor(0x2c, 0x2f, 0x33));
    QCOMPARE(colorAt(*group, QPoint(30, group->height() - 10)), QColor(0x36, 0x39, 0x3f));
    QCOMPARE(textColor(), QColor(0xdc, 0xdd, 0xde));
    const QColor description = card->findChildren<QLabel *>().at(2)->palette().color(QPalette::WindowText);
    QVERIFY(contrast(description, colorAt(*card, QPoint(390, 30))) >= 4.5);
    setSkin(false);
    QCOMPARE(colorAt(*m_dialog, QPoint(5, 5)), QColor(0xff, 0xff, 0xff));
}

LARKSPIRE_TEST_MAIN(TestLoginMethodDialog)
#include "tst_loginmethoddialog.moc"
