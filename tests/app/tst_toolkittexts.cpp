#include "app/ToolkitTexts.h"
#include "support/IsolatedHome.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSpinBox>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <memory>

namespace {

/// What a reader sees of an action: without the key behind the tab.
QStringList actionTexts(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *action : menu->actions()) {
        if (!action->isSeparator())
            texts.append(action->text().section(QLatin1Char('\t'), 0, 0));
    }
    return texts;
}

/// Two Latin letters side by side make a word; one alone names a key.
QStringList withLatinWords(const QStringList &texts)
{
    return texts.filter(QRegularExpression(QStringLiteral("[A-Za-z]{2}")));
}

/// The texts of the menu that a widget opens on a right click.
QStringList contextMenuTexts(QWidget *widget)
{
    QStringList texts;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, widget, [&texts] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            texts = actionTexts(menu);
            menu->close();
        }
    });
    watch.start(10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(2, 2), widget->mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(widget, &event);
    return texts;
}

} // namespace

class TestToolkitTexts : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void buttonsOfBoxesAreChinese();
    void theButtonOfAnInformationIsNamedInChinese();
    void theMenuOfALineEditIsChinese();
    void theMenuOfATextWithALinkIsChinese();
    void theMenuOfANumberBoxIsChinese();
    void theMenuOfAScrollBarIsChinese_data();
    void theMenuOfAScrollBarIsChinese();
    void theFileDialogIsChinese();
    void textsOfOthersStayAsTheyAre_data();
    void textsOfOthersStayAsTheyAre();

private:
    std::unique_ptr<ToolkitTexts> m_texts;
};

void TestToolkitTexts::init()
{
    m_texts = std::make_unique<ToolkitTexts>();
    QVERIFY(QCoreApplication::installTranslator(m_texts.get()));
}

void TestToolkitTexts::cleanup()
{
    m_texts.reset();
}

void TestToolkitTexts::buttonsOfBoxesAreChinese()
{
    QDialogButtonBox box;
    QStringList texts;
    for (uint kind = QDialogButtonBox::FirstButton; kind <= QDialogButtonBox::LastButton; kind <<= 1U)
        texts.append(box.addButton(static_cast<QDialogButtonBox::StandardButton>(kind))->text());
    QCOMPARE(texts.size(), 18);
    QCOMPARE(withLatinWords(texts), QStringList());
}

void TestToolkitTexts::theButtonOfAnInformationIsNamedInChinese()
{
    const QMessageBox box(QMessageBox::Information, QString(), QString(),
                          QMessageBox::Ok | QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.button(QMessageBox::Ok)->text(), QStringLiteral("确定"));
    QCOMPARE(box.button(QMessageBox::Yes)->text(), QStringLiteral("是(&Y)"));
    QCOMPARE(box.button(QMessageBox::No)->text(), QStringLiteral("否(&N)"));
}

void TestToolkitTexts::theMenuOfALineEditIsChinese()
{
    QLineEdit edit;
    const std::unique_ptr<QMenu> menu(edit.createStandardContextMenu());
    QCOMPARE(actionTexts(menu.get()),
             QStringList({QStringLiteral("撤销(&U)"), QStringLiteral("重做(&R)"), QStringLiteral("剪切(&T)"),
                          QStringLiteral("复制(&C)"), QStringLiteral("粘贴(&P)"), QStringLiteral("删除"),
                          QStringLiteral("全选")}));
}

void TestToolkitTexts::theMenuOfATextWithALinkIsChinese()
{
    QTextBrowser browser;
    browser.setHtml(QStringLiteral("<a href='https://news.larkspire.example/'>原文</a>"));
    const std::unique_ptr<QMenu> menu(browser.createStandardContextMenu(QPoint(10, 10)));
    const QStringList texts = actionTexts(menu.get());
    QVERIFY(texts.contains(QStringLiteral("复制链接地址(&L)")));
    QCOMPARE(withLatinWords(texts), QStringList());
}

void TestToolkitTexts::theMenuOfANumberBoxIsChinese()
{
    QSpinBox box;
    const QStringList texts = contextMenuTexts(&box);
    QVERIFY(texts.contains(QStringLiteral("增加(&S)")));
    QVERIFY(texts.contains(QStringLiteral("全选(&S)")));
    QCOMPARE(withLatinWords(texts), QStringList());
}

void TestToolkitTexts::theMenuOfAScrollBarIsChinese_data()
{
    QTest::addColumn<Qt::Orientation>("orientation");
    QTest::addColumn<QString>("last");
    QTest::newRow("upright") << Qt::Vertical << QStringLiteral("向下滚动");
    QTest::newRow("lying") << Qt::Horizontal << QStringLiteral("向右滚动");
}

void TestToolkitTexts::theMenuOfAScrollBarIsChinese()
{
    QFETCH(Qt::Orientation, orientation);
    QFETCH(QString, last);
    QScrollBar bar(orientation);
    const QStringList texts = contextMenuTexts(&bar);
    QCOMPARE(texts.value(texts.size() - 1), last);
    QCOMPARE(withLatinWords(texts), QStringList());
}

void TestToolkitTexts::theFileDialogIsChinese()
{
    QFileDialog dialog(nullptr, QStringLiteral("导出关键词"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilter(QStringLiteral("文本文件 (*)"));

    QStringList texts;
    for (const QPushButton *button : dialog.findChildren<QPushButton *>())
        texts.append(button->text());
    for (const QToolButton *button : dialog.findChildren<QToolButton *>())
        texts.append(button->toolTip());
    for (const char *name : {"lookInLabel", "fileNameLabel", "fileTypeLabel"})
        texts.append(dialog.findChild<QLabel *>(QLatin1String(name))->text());
    const auto *files = dialog.findChild<QTreeView *>(QStringLiteral("treeView"));
    QVERIFY(files != nullptr);
    for (int column = 0; column < files->model()->columnCount(); ++column)
        texts.append(files->model()->headerData(column, Qt::Horizontal).toString());
    QVERIFY(texts.contains(QStringLiteral("保存(&S)")));
    QVERIFY(texts.contains(QStringLiteral("文件名(&N):")));
    QVERIFY(texts.contains(QStringLiteral("修改时间")));
    QCOMPARE(withLatinWords(texts), QStringList());
}

void TestToolkitTexts::textsOfOthersStayAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QByteArray>("source");
    // Status texts are chosen by these words.
    QTest::newRow("network error") << QByteArray("QAbstractSocket") << QByteArray("Connection refused");
    QTest::newRow("unknown text") << QByteArray("QLineEdit") << QByteArray("Nothing of Qt's");
    QTest::newRow("empty") << QByteArray("QLineEdit") << QByteArray("");
}

void TestToolkitTexts::textsOfOthersStayAsTheyAre()
{
    QFETCH(QByteArray, context);
    QFETCH(QByteArray, source);
    QCOMPARE(QCoreApplication::translate(context.constData(), source.constData()), QString::fromUtf8(source));
}

LARKSPIRE_TEST_MAIN(TestToolkitTexts)
#include "tst_toolkittexts.moc"
