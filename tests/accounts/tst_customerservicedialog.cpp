#include "accounts/AccountDialogTest.h"
#include "accounts/CustomerServiceDialog.h"
#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScreen>
#include <QTextDocument>
#include <QUrl>
#include <QtTest>

using namespace AccountDialogTest;

/// Takes the place of the browser.
class Browser final : public QObject
{
    Q_OBJECT

public:
    explicit Browser(const QString &scheme) : m_scheme(scheme)
    {
        QDesktopServices::setUrlHandler(m_scheme, this, "open");
    }
    ~Browser() override { QDesktopServices::unsetUrlHandler(m_scheme); }
    Q_DISABLE_COPY_MOVE(Browser)

    const QList<QUrl> &opened() const { return m_opened; }

public slots:
    void open(const QUrl &url) { m_opened.append(url); }

private:
    QString m_scheme;
    QList<QUrl> m_opened;
};

class TestCustomerServiceDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initLarkspireResources(); }
    void init();
    void cleanup();

    void windowIsAsDrawn();
    void partsStandInTheirOrder();
    void textsAreTheGivenOnes();
    void opensInTheMiddleOfTheScreen();
    void codeIsDrawnInWholePixels();
    void tabKeyReachesTheLinkToo();
    void dialogIsLeft_data();
    void dialogIsLeft();

    void chatOpensInTheBrowserAndClosesTheDialog_data();
    void chatOpensInTheBrowserAndClosesTheDialog();
    void chatThatCannotBeOpenedIsTold();
    void linkLeadsToTheDownload_data();
    void linkLeadsToTheDownload();

    void takesTheSkinItIsTold_data();
    void takesTheSkinItIsTold();

private:
    QLabel *label(const char *name) const { return part<QLabel>(*m_dialog, name); }
    QPushButton *push(const char *name) const { return part<QPushButton>(*m_dialog, name); }
    static QString plain(const QLabel &label);

    std::unique_ptr<CustomerServiceDialog> m_dialog;
};

void TestCustomerServiceDialog::init()
{
    setSkin(false);
    m_dialog = std::make_unique<CustomerServiceDialog>(nullptr, false);
}

void TestCustomerServiceDialog::cleanup()
{
    m_dialog.reset();
    setSkin(true);
}

QString TestCustomerServiceDialog::plain(const QLabel &label)
{
    QTextDocument document;
    document.setHtml(label.text());
    return document.toPlainText();
}

void TestCustomerServiceDialog::windowIsAsDrawn()
{
    QCOMPARE(m_dialog->windowTitle(), text("客服支持"));
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(!m_dialog->isModal());
    QCOMPARE(m_dialog->layout()->objectName(), text("mainLayout"));
    QVERIFY(m_dialog->findChild<QLayout *>(text("qrCodeContainerLayout")));
    QVERIFY(m_dialog->findChild<QLayout *>(text("buttonLayout")));
    QVERIFY(opens(*m_dialog));
    // As large as what it holds.
    QCOMPARE(m_dialog->width(), 500);
    QVERIFY(m_dialog->height() >= m_dialog->layout()->minimumHeightForWidth(500));
}

void TestCustomerServiceDialog::partsStandInTheirOrder()
{
    QVERIFY(opens(*m_dialog));
    int bottom = 0;
    for (const char *name : {"titleLabel", "valuesLabel", "qrCodeTitleLabel", "qrCodeLabel",
                             "serviceTimeLabel", "weChatInstructionLabel", "weChatButton", "closeButton"}) {
        const auto *widget = part<QWidget>(*m_dialog, name);
        QVERIFY2(widget->y() >= bottom, name);
        bottom = widget->geometry().bottom();
        QVERIFY2(qAbs(widget->geometry().center().x() - m_dialog->rect().center().x()) <= 1, name);
    }
}

void TestCustomerServiceDialog::textsAreTheGivenOnes()
{
    QCOMPARE(label("titleLabel")->text(), text("云雀工坊在线客服"));
    QCOMPARE(label("titleLabel")->font().pixelSize(), 22);
    QVERIFY(label("titleLabel")->font().bold());
    QVERIFY(label("titleLabel")->alignment().testFlag(Qt::AlignHCenter));
    QCOMPARE(label("valuesLabel")->text(),
             text("云雀工坊已通过微信官方认证\n我们竭诚为顾客提供专业而卓越的服务体验！"));
    QCOMPARE(label("valuesLabel")->font().pixelSize(), 18);
    QVERIFY(label("valuesLabel")->wordWrap());
    QCOMPARE(label("qrCodeTitleLabel")->text(), text("↓请用微信扫码咨询客服↓"));
    QCOMPARE(label("qrCodeTitleLabel")->font().pixelSize(), 18);
    QVERIFY(label("qrCodeTitleLabel")->font().bold());
    QCOMPARE(plain(*label("serviceTimeLabel")), text("客服在线时间: (工作日: 8:00-22:00)"));
    QCOMPARE(label("serviceTimeLabel")->textFormat(), Qt::RichText);
    QCOMPARE(plain(*label("weChatInstructionLabel")),
             text("如果您已经安装并启动了PC版微信，请点击下面进入对话"));
    QCOMPARE(label("weChatInstructionLabel")->textFormat(), Qt::RichText);
    QVERIFY(label("weChatInstructionLabel")->openExternalLinks());
    QVERIFY(label("weChatInstructionLabel")->wordWrap());
    QCOMPARE(push("weChatButton")->text(), text("点击此处进入微信对话"));
    QCOMPARE(push("closeButton")->text(), text("关闭"));
}

void TestCustomerServiceDialog::opensInTheMiddleOfTheScreen()
{
    QVERIFY(opens(*m_dialog));
    const QPoint distance =
        m_dialog->geometry().center() - QGuiApplication::primaryScreen()->availableGeometry().center();
    // The window manager adds its frame around it.
    QVERIFY(qAbs(distance.x()) <= 5);
    QVERIFY(qAbs(distance.y()) <= 40);
}

void TestCustomerServiceDialog::codeIsDrawnInWholePixels()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(label("qrCodeLabel")->width() <= 350 && label("qrCodeLabel")->height() <= 380);
    QCOMPARE(label("qrCodeLabel")->maximumSize(), QSize(350, 380));
    const QImage shown = label("qrCodeLabel")->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(shown.devicePixelRatio(), m_dialog->devicePixelRatioF());
    // Black and white, with nothing between: no edge of a cell is blurred.
    for (int x = 0; x < shown.width(); ++x) {
        const int lightness = shown.pixelColor(x, shown.height() / 2 + 1).lightness();
        QVERIFY2(lightness < 8 || lightness > 247, qPrintable(QString::number(x)));
    }
    QCOMPARE(colorAt(*label("qrCodeLabel"), QPoint(20, 3)), QColor(Qt::white));
}

void TestCustomerServiceDialog::tabKeyReachesTheLinkToo()
{
    QVERIFY(opens(*m_dialog));
    QVERIFY(push("closeButton")->hasFocus());
    // The line of the instruction, then the link in it.
    QCOMPARE(tabWalk(*m_dialog), QStringList({text("closeButton"), text("weChatInstructionLabel"),
                                              text("weChatInstructionLabel"), text("weChatButton")}));
}

void TestCustomerServiceDialog::dialogIsLeft_data()
{
    QTest::addColumn<QString>("by");
    QTest::addColumn<int>("result");
    QTest::newRow("Enter") << text("Enter") << int(QDialog::Accepted);
    QTest::newRow("click on the button") << text("click") << int(QDialog::Accepted);
    QTest::newRow("Escape") << text("Escape") << int(QDialog::Rejected);
}

void TestCustomerServiceDialog::dialogIsLeft()
{
    QFETCH(QString, by);
    QFETCH(int, result);
    QVERIFY(opens(*m_dialog));
    if (by == text("click"))
        WindowInput::click(push("closeButton"));
    else
        WindowInput::press(m_dialog.get(), by == text("Enter") ? Qt::Key_Return : Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), result);
}

void TestCustomerServiceDialog::chatOpensInTheBrowserAndClosesTheDialog_data()
{
    QTest::addColumn<bool>("byKeyboard");
    QTest::newRow("click") << false;
    QTest::newRow("Enter on the button") << true;
}

void TestCustomerServiceDialog::chatOpensInTheBrowserAndClosesTheDialog()
{
    QFETCH(bool, byKeyboard);
    const Browser browser(text("https"));
    QVERIFY(opens(*m_dialog));
    if (byKeyboard) {
        push("weChatButton")->setFocus();
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
    } else {
        WindowInput::click(push("weChatButton"));
    }
    QCOMPARE(browser.opened().size(), 1);
    QVERIFY(browser.opened().first().host().endsWith(text("larkspire.example")));
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
}

void TestCustomerServiceDialog::chatThatCannotBeOpenedIsTold()
{
    // A desktop on which no browser can be found.
    const QByteArray path = qgetenv("PATH");
    for (const char *name : {"BROWSER", "DEFAULT_BROWSER"})
        qunsetenv(name);
    qputenv("PATH", "/nonexistent");
    const LogCapture log;
    QVERIFY(opens(*m_dialog));
    const BoxAnswer box(ok());
    WindowInput::click(push("weChatButton"));
    qputenv("PATH", path);
    QVERIFY(box.shown());
    QCOMPARE(box.title(), text("提示"));
    QCOMPARE(box.icon(), QMessageBox::Information);
    QVERIFY(box.text().contains(text("扫描")));
    QVERIFY(box.text().contains(text("云雀工坊")));
    QVERIFY(m_dialog->isVisible());
}

void TestCustomerServiceDialog::linkLeadsToTheDownload_data()
{
    QTest::addColumn<bool>("byKeyboard");
    QTest::newRow("click") << false;
    QTest::newRow("Enter on the link") << true;
}

void TestCustomerServiceDialog::linkLeadsToTheDownload()
{
    QFETCH(bool, byKeyboard);
    const Browser browser(text("https"));
    QVERIFY(opens(*m_dialog));
    QLabel *instruction = label("weChatInstructionLabel");
    if (byKeyboard) {
        WindowInput::press(m_dialog.get(), Qt::Key_Tab);
        WindowInput::press(m_dialog.get(), Qt::Key_Tab);
        QVERIFY(instruction->hasFocus());
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
    } else {
        // The link stands in the middle of the line.
        WindowInput::clickAt(instruction, QPoint(instruction->width() / 2 - 5, instruction->height() / 2));
    }
    QCOMPARE(browser.opened().size(), 1);
    QCOMPARE(browser.opened().first().scheme(), text("https"));
    QVERIFY(m_dialog->isVisible());
}

void TestCustomerServiceDialog::takesTheSkinItIsTold_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("dark first") << true;
    QTest::newRow("light first") << false;
}

void TestCustomerServiceDialog::takesTheSkinItIsTold()
{
    QFETCH(bool, dark);
    m_dialog = std::make_unique<CustomerServiceDialog>(nullptr, dark);
    QVERIFY(opens(*m_dialog));
    for (const bool isDark : {dark, !dark, dark}) {
        m_dialog->setDarkTheme(isDark);
        const QColor background = isDark ? QColor(0x2b, 0x2b, 0x2b) : QColor(0xff, 0xff, 0xff);
        const QColor accent = isDark ? QColor(0xff, 0x6b, 0x6b) : QColor(0xc6, 0x28, 0x28);
        const auto textColor = [this](const char *name) {
            return label(name)->palette().color(QPalette::WindowText);
        };
        QCOMPARE(colorAt(*m_dialog, QPoint(3, 3)), background);
        QCOMPARE(textColor("titleLabel"), isDark ? QColor(0xff, 0xff, 0xff) : QColor(0x1a, 0x1a, 0x1a));
        QCOMPARE(textColor("valuesLabel"), isDark ? QColor(0xff, 0xff, 0xff) : QColor(0x33, 0x33, 0x33));
        QCOMPARE(textColor("qrCodeTitleLabel"), accent);
        QCOMPARE(textColor("weChatInstructionLabel"),
                 isDark ? QColor(0xcc, 0xcc, 0xcc) : QColor(0x55, 0x55, 0x55));
        QCOMPARE(colorAt(*push("weChatButton"), QPoint(8, 8)), accent);
        QVERIFY(contrast(push("weChatButton")->palette().color(QPalette::ButtonText), accent) >= 4.5);
        QVERIFY(label("serviceTimeLabel")->text().contains(accent.name()));
        QVERIFY(label("weChatInstructionLabel")->text().contains(accent.name()));
        QVERIFY(label("weChatInstructionLabel")->text().contains(isDark ? text("#4fc3f7") : text("#1976d2")));
        // The code stays black on white.
        QCOMPARE(colorAt(*label("qrCodeLabel"), QPoint(20, 3)), QColor(Qt::white));
    }
}

LARKSPIRE_TEST_MAIN(TestCustomerServiceDialog)
#include "tst_customerservicedialog.moc"
