#include "accounts/AccountDialogTest.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/EnhancedLoginDialog.h"
#include "accounts/LoginMethodDialog.h"
#include "accounts/RegisterDialog.h"
#include "accounts/ResetPasswordDialog.h"
#include "accounts/UserInfoDialog.h"
#include "app/FontSubstitution.h"
#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOptionButton>
#include <QStyleOptionFrame>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QtTest>

using namespace AccountDialogTest;

namespace {

QString described(const QWidget &widget, const QString &shown)
{
    return QStringLiteral("%1 \"%2\" in %3x%4")
        .arg(QString::fromLatin1(widget.metaObject()->className()), shown)
        .arg(widget.width())
        .arg(widget.height());
}

bool labelFits(const QLabel &label)
{
    if (label.hasScaledContents())
        return true; // a picture that takes the room there is
    const QSize room = label.size();
    if (label.wordWrap())
        return room.height() >= label.heightForWidth(room.width());
    const QSize needed = label.minimumSizeHint();
    return room.width() >= needed.width() && room.height() >= needed.height();
}

bool captionFits(const QPushButton &button, const QString &caption)
{
    QStyleOptionButton option;
    option.initFrom(&button);
    option.text = caption;
    const QRect room = button.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &button);
    const QSize needed = button.fontMetrics().size(Qt::TextShowMnemonic, caption);
    return room.width() >= needed.width() && room.height() >= button.fontMetrics().ascent();
}

bool placeholderFits(const QLineEdit &field)
{
    constexpr int marginOfAField = 2; // on either side, inside the frame of every line edit
    QStyleOptionFrame option;
    option.initFrom(&field);
    const QRect room = field.style()->subElementRect(QStyle::SE_LineEditContents, &option, &field);
    return room.width() - 2 * marginOfAField >=
               field.fontMetrics().horizontalAdvance(field.placeholderText()) &&
           room.height() >= field.fontMetrics().height();
}

bool tabsFit(const QTabBar &tabs)
{
    for (int i = 0; i < tabs.count(); ++i) {
        if (!tabs.rect().contains(tabs.tabRect(i)) ||
            tabs.tabRect(i).width() < tabs.fontMetrics().horizontalAdvance(tabs.tabText(i)))
            return false;
    }
    return true;
}

/// The captions that a button has beside the one that it shows now.
QStringList captionsOf(const QPushButton &button)
{
    static const QHash<QString, QStringList> others{
        {QStringLiteral("sendCodeButton"), {QStringLiteral("发送中..."), QStringLiteral("重新发送(60)")}},
        {QStringLiteral("loginButton"), {QStringLiteral("登录中...")}},
        {QStringLiteral("freeUserButton"), {QStringLiteral("登录中...")}},
        {QStringLiteral("apiKeyVerifyButton"), {QStringLiteral("验证中...")}},
        {QStringLiteral("registerButton"), {QStringLiteral("注册中...")}},
    };
    return QStringList{button.text()} + others.value(button.objectName());
}

/// What is cut off or sticks out in a window that is on the screen.
QStringList faults(const QWidget &window)
{
    QStringList found;
    const QList<QWidget *> widgets = window.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (!widget->isVisible())
            continue;
        const QWidget *around = widget->parentWidget();
        if (!around->rect().contains(widget->geometry()) && !qobject_cast<const QTabBar *>(around))
            found.append(described(*widget, QStringLiteral("sticks out")));
        if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            if (!labelFits(*label))
                found.append(described(*label, label->text()));
        } else if (const auto *button = qobject_cast<const QPushButton *>(widget)) {
            const QStringList captions = captionsOf(*button);
            for (const QString &caption : captions) {
                if (!captionFits(*button, caption))
                    found.append(described(*button, caption));
            }
        } else if (const auto *field = qobject_cast<const QLineEdit *>(widget)) {
            if (!placeholderFits(*field))
                found.append(described(*field, field->placeholderText()));
        } else if (const auto *tabs = qobject_cast<const QTabBar *>(widget)) {
            if (!tabsFit(*tabs))
                found.append(described(*tabs, QStringLiteral("tabs")));
        } else if (const auto *notes = qobject_cast<const QTextEdit *>(widget)) {
            if (notes->verticalScrollBar()->maximum() > 0)
                found.append(described(*notes, QStringLiteral("scrolls")));
        }
    }
    return found;
}

} // namespace

/// Every text of every account dialog has the room that it takes, in both skins, at the scale factor of this
/// run and with the fonts of the program.
class TestAccountDialogsFit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
};

void TestAccountDialogsFit::initTestCase()
{
    initLarkspireResources();
    QApplication::setStyle(QStyleFactory::create(text("Fusion")));
    FontSubstitution::apply();
    const qreal factor = qEnvironmentVariable("QT_SCALE_FACTOR", text("1")).toDouble();
    QCOMPARE(qApp->devicePixelRatio(), factor);
}

void TestAccountDialogsFit::nothingIsCutOff_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestAccountDialogsFit::nothingIsCutOff()
{
    QFETCH(bool, dark);
    setSkin(dark);
    {
        LoginMethodDialog dialog;
        QVERIFY(opens(dialog));
        QCOMPARE(faults(dialog).join(QLatin1Char('\n')), QString());
    }
    EnhancedLoginDialog login;
    QVERIFY(opens(login));
    for (const int tab : {0, 1, 2}) {
        login.setLoginMethod(tab);
        QCOMPARE(faults(login).join(QLatin1Char('\n')), QString());
    }
    {
        RegisterDialog dialog(&login);
        QVERIFY(opens(dialog));
        QCOMPARE(faults(dialog).join(QLatin1Char('\n')), QString());
    }
    {
        ResetPasswordDialog dialog(&login);
        QVERIFY(opens(dialog));
        QCOMPARE(faults(dialog).join(QLatin1Char('\n')), QString());
    }
    {
        CustomerServiceDialog dialog(&login, dark);
        QVERIFY(opens(dialog));
        QCOMPARE(faults(dialog).join(QLatin1Char('\n')), QString());
    }
    login.hide();
    UserInfoDialog card;
    card.onUserInfoReceived({{text("email"), text("demo@larkspire.example")}});
    QVERIFY(opens(card));
    QCOMPARE(faults(card).join(QLatin1Char('\n')), QString());
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    pauseLeakCheck();
    QApplication application(argc, argv);
    resumeLeakCheck();
    setProgramIdentity();
    TestAccountDialogsFit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_accountdialogs_fit.moc"
