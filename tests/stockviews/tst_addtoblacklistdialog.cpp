#include "settings/MainWindowSkin.h"
#include "stockviews/AddToBlacklistDialog.h"
#include "support/BoxAnswer.h"
#include "support/IsolatedHome.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleFactory>
#include <QtTest>

#include <memory>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class TestAddToBlacklistDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void dialogSaysWhatItIsAbout();
    void dialogWithoutANameShowsTheCodeAlone();
    void placeholderCanBeToldFromTypedText_data();
    void placeholderCanBeToldFromTypedText();
    void typingStartsInTheReason();
    void quickReasonFillsTheFieldAndMayBeEdited();
    void firstItemFillsNothing();
    void counterFollowsTheText();
    void fieldRefusesATwentyFirstCharacter();
    void shortReasonIsRefused_data();
    void shortReasonIsRefused();
    void dialogMayGoWithTheRefusalOpen();
    void blanksAroundTheReasonAreNotPartOfIt();
    void escapeLeavesWithoutAReason();
    void tabGoesInReadingOrder();

private:
    void openDialog(const QString &name);
    template <class Kind>
    Kind *part(const char *name) const
    {
        return m_dialog->findChild<Kind *>(text(name));
    }
    QLineEdit *field() const { return part<QLineEdit>("reasonLineEdit"); }
    QComboBox *quickReasons() const { return part<QComboBox>("quickReasonComboBox"); }
    /// Chooses an item by the keyboard.
    void choose(int index);

    std::unique_ptr<AddToBlacklistDialog> m_dialog;
};

void TestAddToBlacklistDialog::init()
{
    QApplication::setStyle(QStyleFactory::create(text("Fusion")));
    openDialog(text("云雀股份"));
}

void TestAddToBlacklistDialog::cleanup()
{
    m_dialog.reset();
}

void TestAddToBlacklistDialog::openDialog(const QString &name)
{
    m_dialog = std::make_unique<AddToBlacklistDialog>(name, text("600001"));
    m_dialog->open();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
}

void TestAddToBlacklistDialog::choose(int index)
{
    quickReasons()->setFocus();
    const Qt::Key key = index > quickReasons()->currentIndex() ? Qt::Key_Down : Qt::Key_Up;
    while (quickReasons()->currentIndex() != index) {
        // Each step chooses, and a reason takes the focus away.
        quickReasons()->setFocus();
        WindowInput::press(quickReasons(), key);
    }
}

void TestAddToBlacklistDialog::dialogSaysWhatItIsAbout()
{
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->windowTitle(), text("添加到黑名单"));
    QVERIFY(m_dialog->width() >= 450);
    QCOMPARE(part<QLabel>("stockLabel")->text(), text("股票：云雀股份 (600001)"));
    QCOMPARE(part<QLabel>("stockLabel")->font().pixelSize(), 18);
    QVERIFY(part<QLabel>("stockLabel")->font().bold());
    QCOMPARE(part<QLabel>("quickReasonLabel")->text(), text("快速选择原因（可选）："));
    QCOMPARE(part<QLabel>("reasonLabel")->text(), text("加入黑名单的原因（3-20个字）："));
    QVERIFY(part<QLabel>("reasonLabel")->font().bold());
    QCOMPARE(field()->placeholderText(), text("请输入原因（最少3个字，最多20个字）..."));
    QCOMPARE(field()->maxLength(), 20);
    QCOMPARE(part<QLabel>("counterLabel")->text(), text("已输入：0 字"));
    QCOMPARE(part<QLabel>("hintLabel")->text(),
             text("💡 提示：可从上方快速选择，也可以自由编辑或完全自定义原因"));

    QStringList items;
    for (int index = 0; index < quickReasons()->count(); ++index) {
        items.append(quickReasons()->itemText(index));
        QCOMPARE(quickReasons()->itemData(index).toInt(), index);
    }
    QCOMPARE(items.join(QLatin1Char('|')),
             text("-- 选择快速填入 "
                  "--|业绩巨亏爆雷|题材被证伪|股东减持|财务造假立案调查|ST风险|股票被监管|股性差庄股|"
                  "限售股巨额解禁|涨幅过大"));

    // From top to bottom.
    int above = -1;
    for (const char *name : {"stockLabel", "quickReasonLabel", "quickReasonComboBox", "reasonLabel",
                             "reasonLineEdit", "counterLabel", "hintLabel", "confirmButton"}) {
        const int top = part<QWidget>(name)->mapTo(m_dialog.get(), QPoint()).y();
        QVERIFY2(top > above, name);
        above = top;
    }
}

void TestAddToBlacklistDialog::dialogWithoutANameShowsTheCodeAlone()
{
    openDialog(QString());
    QCOMPARE(part<QLabel>("stockLabel")->text(), text("股票：600001"));
}

void TestAddToBlacklistDialog::placeholderCanBeToldFromTypedText_data()
{
    QTest::addColumn<QString>("styleSheet");
    QTest::newRow("light skin") << QString();
    QTest::newRow("dark skin") << MainWindowSkin::darkStyleSheet();
}

void TestAddToBlacklistDialog::placeholderCanBeToldFromTypedText()
{
    QFETCH(QString, styleSheet);
    QWidget window;
    window.setStyleSheet(styleSheet);
    AddToBlacklistDialog dialog(text("云雀股份"), text("600001"), &window);
    dialog.open();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QPalette colors = dialog.findChild<QLineEdit *>(text("reasonLineEdit"))->palette();
    QVERIFY(colors.color(QPalette::PlaceholderText) != colors.color(QPalette::Text));
}

void TestAddToBlacklistDialog::typingStartsInTheReason()
{
    WindowInput::type(m_dialog.get(), text("大股东减持"));
    QCOMPARE(m_dialog->reason(), text("大股东减持"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QVERIFY(!m_dialog->isVisible());
}

void TestAddToBlacklistDialog::quickReasonFillsTheFieldAndMayBeEdited()
{
    choose(5);
    QCOMPARE(field()->text(), text("ST风险"));
    QVERIFY(field()->hasFocus());
    QCOMPARE(field()->cursorPosition(), field()->text().size());
    WindowInput::type(m_dialog.get(), text("很大"));
    QCOMPARE(m_dialog->reason(), text("ST风险很大"));
    WindowInput::click(part<QPushButton>("confirmButton"));
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->reason(), text("ST风险很大"));
}

void TestAddToBlacklistDialog::firstItemFillsNothing()
{
    choose(1);
    WindowInput::fill(field(), text("我的理由"));
    choose(0);
    QCOMPARE(field()->text(), text("我的理由"));
    QVERIFY(quickReasons()->hasFocus());
}

void TestAddToBlacklistDialog::counterFollowsTheText()
{
    const QString red = text("QLabel { color: #e74c3c; font-size: 16px; }");
    const QString green = text("QLabel { color: #27ae60; font-size: 16px; }");
    const auto *counter = part<QLabel>("counterLabel");
    QCOMPARE(counter->styleSheet(), red);
    WindowInput::type(m_dialog.get(), text("减持"));
    QCOMPARE(counter->text(), text("已输入：2 字"));
    QCOMPARE(counter->styleSheet(), red);
    WindowInput::type(m_dialog.get(), text("了"));
    QCOMPARE(counter->text(), text("已输入：3 字"));
    QCOMPARE(counter->styleSheet(), green);
    WindowInput::press(m_dialog.get(), Qt::Key_Backspace);
    QCOMPARE(counter->text(), text("已输入：2 字"));
    QCOMPARE(counter->styleSheet(), red);
}

void TestAddToBlacklistDialog::fieldRefusesATwentyFirstCharacter()
{
    const QString twenty = text("一二三四五六七八九十一二三四五六七八九十");
    WindowInput::type(m_dialog.get(), twenty);
    WindowInput::type(m_dialog.get(), text("多"));
    QCOMPARE(field()->text(), twenty);
    QCOMPARE(part<QLabel>("counterLabel")->text(), text("已输入：20 字"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->reason(), twenty);
}

void TestAddToBlacklistDialog::shortReasonIsRefused_data()
{
    QTest::addColumn<QString>("typed");

    QTest::newRow("nothing") << QString();
    QTest::newRow("two characters") << text("减持");
    QTest::newRow("two characters among six") << text("  ab  ");
    QTest::newRow("blanks") << text("      ");
}

void TestAddToBlacklistDialog::shortReasonIsRefused()
{
    QFETCH(QString, typed);
    WindowInput::type(m_dialog.get(), typed);
    const BoxAnswer answer(text("OK"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QCOMPARE(answer.title(), text("输入错误"));
    QCOMPARE(answer.text(), text("原因至少需要3个字"));
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(field()->text(), typed);
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    QTRY_VERIFY(field()->hasFocus());
}

void TestAddToBlacklistDialog::dialogMayGoWithTheRefusalOpen()
{
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
    m_dialog.reset();
    QVERIFY(!QApplication::activeModalWidget());
}

void TestAddToBlacklistDialog::blanksAroundTheReasonAreNotPartOfIt()
{
    WindowInput::type(m_dialog.get(), text("  abc "));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_dialog->reason(), text("abc"));
}

void TestAddToBlacklistDialog::escapeLeavesWithoutAReason()
{
    WindowInput::type(m_dialog.get(), text("大股东减持"));
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    QVERIFY(!m_dialog->isVisible());
}

void TestAddToBlacklistDialog::tabGoesInReadingOrder()
{
    QVERIFY(field()->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Backtab);
    QVERIFY(quickReasons()->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(field()->hasFocus());
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(qobject_cast<QPushButton *>(m_dialog->focusWidget()));
}

LARKSPIRE_TEST_MAIN(TestAddToBlacklistDialog)
#include "tst_addtoblacklistdialog.moc"
