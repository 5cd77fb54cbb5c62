#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "news/CustomTableWidget.h"
#include "news/CustomTooltipWidget.h"
#include "news/NewsTables.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QTabWidget>
#include <QTextBrowser>
#include <QtTest>

namespace {

const QDateTime Morning(QDate(2026, 3, 2), QTime(9, 30, 0));

NewsData item(const QString &id, const QString &title, int minute, const QStringList &keywords = {})
{
    NewsData data;
    data.id = id;
    data.title = title;
    data.content = QStringLiteral("内容 ") + id;
    data.url = QStringLiteral("https://news.larkspire.example/") + id;
    data.publishTime = Morning.addSecs(minute * 60);
    data.hasKeywords = !keywords.isEmpty();
    data.matchedKeywords = keywords;
    return data;
}

const QList<NewsData> &items()
{
    static const QList<NewsData> list{
        item(QStringLiteral("c"), QStringLiteral("丙"), 3, {QStringLiteral("回购")}),
        item(QStringLiteral("b"), QStringLiteral("乙"), 2),
        item(QStringLiteral("a"), QStringLiteral("甲"), 1)};
    return list;
}

} // namespace

/// Rows, clicks and details of the four tables in a real window.
class TestLarkspireAppTables : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rowBuildersFillTheirTables_data();
    void rowBuildersFillTheirTables();
    void clickShowsTheDetails_data();
    void clickShowsTheDetails();
    void detailsFollowTheKeyboard_data();
    void detailsFollowTheKeyboard();
    void withDetailsOffTheKeyboardShowsNothing();
    void otherButtonsChooseNoRow_data();
    void otherButtonsChooseNoRow();
    void tabLeavesATable_data();
    void tabLeavesATable();
    void clickWithDetailsOffShowsATip_data();
    void clickWithDetailsOffShowsATip();
    void clickOnAnEmptyRowDoesNothing();
    void doubleClickSpeaksTheWholeTitle_data();
    void doubleClickSpeaksTheWholeTitle();
    void doubleClickInASortedTable_data();
    void doubleClickInASortedTable();
    void doubleClickWithSpeechOffIsSilent();
    void linkInTheDetailsOpensTheBrowser();
    void detailsAndRowsAfterAChangeOfTheSkin();

public slots:
    void openUrl(const QUrl &url) { m_opened.append(url); }

private:
    /// Fills the table of this name with the three items.
    void fill(const QString &name);
    CustomTableWidget *table(const QString &name) const
    {
        return m_window->findChild<CustomTableWidget *>(name);
    }
    /// Where to click on a row's title.
    static QPoint titleOf(const CustomTableWidget *table, int row)
    {
        return table->visualItemRect(table->item(row, 1)).center();
    }
    /// A whole double click on a row's title, the single click before it included.
    static void doubleClick(const CustomTableWidget *table, int row);
    /// Brings the page of the table to the front.
    void showPageOf(CustomTableWidget *table);
    void tablesAndDetails();

    std::unique_ptr<LarkspireApp> m_window;
    QList<QUrl> m_opened;
};

void TestLarkspireAppTables::init()
{
    clearSettings();
    storeNoLogin();
    ConfigManager::instance()->setShowNewsDetails(true);
    SpeechStage::instance().reset();
    SpeechStage::instance().speaksAtOnce = false;
    m_opened.clear();
    m_window = std::make_unique<LarkspireApp>();
    LarkspireAppPeer::setClock(*m_window, [] { return Morning.addDays(1); });
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestLarkspireAppTables::cleanup()
{
    m_window.reset();
    qApp->setStyleSheet(QString());
}

void TestLarkspireAppTables::fill(const QString &name)
{
    if (name == QStringLiteral("newsTableWidget")) {
        emit m_window->findChild<ApiClient *>()->newsReceived(items(), items().size());
        return;
    }
    // The lists of the other pages have no reply of their own yet: the rows are built by hand.
    table(name)->setSortingEnabled(false);
    table(name)->setRowCount(items().size());
    for (int row = 0; row < items().size(); ++row) {
        if (name == QStringLiteral("interactivePlatformTableWidget"))
            LarkspireAppPeer::fillInteractiveRow(*m_window, row, items().at(row));
        else if (name == QStringLiteral("selectedNewsTableWidget"))
            LarkspireAppPeer::fillSelectedRow(*m_window, row, items().at(row));
        else
            LarkspireAppPeer::fillSearchRow(*m_window, row, items().at(row));
    }
    table(name)->setSortingEnabled(true);
    LarkspireAppPeer::interactiveNews(*m_window) = items();
    LarkspireAppPeer::selectedNews(*m_window) = items();
    LarkspireAppPeer::searchResults(*m_window) = items();
}

void TestLarkspireAppTables::doubleClick(const CustomTableWidget *table, int row)
{
    const QPoint place = titleOf(table, row);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(), place);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(), place);
}

void TestLarkspireAppTables::showPageOf(CustomTableWidget *table)
{
    auto *tabs = m_window->findChild<QTabWidget *>(QStringLiteral("mainTabWidget"));
    auto *searchPage = m_window->findChild<QWidget *>(QStringLiteral("searchPage"));
    if (searchPage->isAncestorOf(table))
        tabs->addTab(searchPage, QStringLiteral("搜索结果"));
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->widget(i)->isAncestorOf(table))
            tabs->setCurrentIndex(i);
    }
    QTRY_VERIFY(table->isVisible() && table->viewport()->height() > 50);
}

void TestLarkspireAppTables::tablesAndDetails()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("view");
    QTest::addColumn<QString>("keywordWord");

    QTest::newRow("main") << QStringLiteral("newsTableWidget") << QStringLiteral("detailsTextEdit")
                          << QStringLiteral("关键词 回购");
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformTableWidget")
                                 << QStringLiteral("interactivePlatformDetailsTextEdit")
                                 << QStringLiteral("关键词 回购");
    QTest::newRow("selected") << QStringLiteral("selectedNewsTableWidget")
                              << QStringLiteral("selectedNewsDetailsTextEdit")
                              << QStringLiteral("自选关键词 回购");
    QTest::newRow("search") << QStringLiteral("searchResultsTableWidget")
                            << QStringLiteral("searchDetailsTextEdit") << QStringLiteral("关键词 回购");
}

void TestLarkspireAppTables::rowBuildersFillTheirTables_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<int>("height");

    const QString twoLines = QStringLiteral("03-02\n09:33");
    const QString title = QStringLiteral("丙");
    QTest::newRow("main") << QStringLiteral("newsTableWidget")
                          << QStringList{QStringLiteral("09:33:00"), title} << 0;
    QTest::newRow("interactive") << QStringLiteral("interactivePlatformTableWidget")
                                 << QStringList{twoLines, title} << 30;
    QTest::newRow("selected") << QStringLiteral("selectedNewsTableWidget")
                              << QStringList{twoLines, title, QStringLiteral("回购")} << 30;
    QTest::newRow("search") << QStringLiteral("searchResultsTableWidget")
                            << QStringList{twoLines, title, QStringLiteral("是")} << 30;
}

void TestLarkspireAppTables::rowBuildersFillTheirTables()
{
    QFETCH(QString, name);
    QFETCH(QStringList, cells);
    QFETCH(int, height);
    fill(name);
    QCOMPARE(table(name)->rowCount(), 3);
    for (int column = 0; column < cells.size(); ++column)
        QCOMPARE(table(name)->item(0, column)->text(), cells.at(column));
    QCOMPARE(table(name)->item(0, 1)->toolTip(), QStringLiteral("丙"));
    showPageOf(table(name));
    if (height > 0)
        QTRY_COMPARE(table(name)->rowHeight(0), height);
}

void TestLarkspireAppTables::clickShowsTheDetails_data()
{
    tablesAndDetails();
}

void TestLarkspireAppTables::clickShowsTheDetails()
{
    QFETCH(QString, name);
    QFETCH(QString, view);
    QFETCH(QString, keywordWord);
    fill(name);
    showPageOf(table(name));
    const auto *details = m_window->findChild<QTextBrowser *>(view);
    QTest::mouseClick(table(name)->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(),
                      titleOf(table(name), 1));
    QVERIFY(details->toPlainText().contains(QStringLiteral("乙")));
    QVERIFY(details->toPlainText().contains(QStringLiteral("内容 b")));
    QVERIFY(!details->toPlainText().contains(QStringLiteral("关键词")));
    QTest::mouseClick(table(name)->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(),
                      titleOf(table(name), 0));
    QVERIFY(details->toPlainText().contains(QStringLiteral("丙")));
    QVERIFY(details->toPlainText().contains(keywordWord));
    QVERIFY(table(name)->item(0, 0)->isSelected());
}

void TestLarkspireAppTables::detailsFollowTheKeyboard_data()
{
    tablesAndDetails();
}

void TestLarkspireAppTables::detailsFollowTheKeyboard()
{
    QFETCH(QString, name);
    QFETCH(QString, view);
    fill(name);
    showPageOf(table(name));
    const auto *details = m_window->findChild<QTextBrowser *>(view);
    QTest::mouseClick(table(name)->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(),
                      titleOf(table(name), 0));
    const auto shown = [this, &name, details](int row) {
        const NewsData item = NewsTables::newsAt(table(name), row);
        return table(name)->item(row, 0)->isSelected() && details->toPlainText().contains(item.content);
    };
    QVERIFY(shown(0));
    const QList<QPair<Qt::Key, int>> presses{{Qt::Key_Down, 1}, {Qt::Key_Down, 2},   {Qt::Key_Down, 2},
                                             {Qt::Key_Up, 1},   {Qt::Key_PageUp, 0}, {Qt::Key_PageDown, 2}};
    for (const auto &[key, row] : presses) {
        QTest::keyClick(table(name), key);
        QVERIFY2(shown(row), qPrintable(QString::number(row)));
    }
}

void TestLarkspireAppTables::otherButtonsChooseNoRow_data()
{
    QTest::addColumn<int>("mouseButton");
    QTest::newRow("right") << static_cast<int>(Qt::RightButton);
    QTest::newRow("middle") << static_cast<int>(Qt::MiddleButton);
}

void TestLarkspireAppTables::otherButtonsChooseNoRow()
{
    QFETCH(int, mouseButton);
    const auto button = static_cast<Qt::MouseButton>(mouseButton);
    auto *main = table(QStringLiteral("newsTableWidget"));
    fill(main->objectName());
    QTest::mouseClick(main->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(), titleOf(main, 0));
    const auto *details = m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"));
    const QString shown = details->toPlainText();
    QTest::mouseClick(main->viewport(), button, Qt::KeyboardModifiers(), titleOf(main, 2));
    QTest::mouseDClick(main->viewport(), button, Qt::KeyboardModifiers(), titleOf(main, 2));
    QCOMPARE(main->currentRow(), 0);
    QVERIFY(main->item(0, 0)->isSelected());
    QCOMPARE(details->toPlainText(), shown);
    QVERIFY(SpeechStage::instance().said().isEmpty());
}

void TestLarkspireAppTables::withDetailsOffTheKeyboardShowsNothing()
{
    LarkspireAppPeer::config(*m_window).showNewsDetails = false;
    auto *main = table(QStringLiteral("newsTableWidget"));
    fill(main->objectName());
    main->setCurrentCell(0, 0);
    QTest::keyClick(main, Qt::Key_Down);
    QCOMPARE(main->currentRow(), 1);
    QVERIFY(m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"))->toPlainText().isEmpty());
    QVERIFY(!main->findChild<CustomTooltipWidget *>()->isVisible());
}

void TestLarkspireAppTables::tabLeavesATable_data()
{
    tablesAndDetails();
}

void TestLarkspireAppTables::tabLeavesATable()
{
    QFETCH(QString, name);
    fill(name);
    showPageOf(table(name));
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    table(name)->setFocus();
    QVERIFY(table(name)->hasFocus());
    QTest::keyClick(table(name), Qt::Key_Tab);
    QVERIFY(!table(name)->hasFocus());
}

void TestLarkspireAppTables::clickWithDetailsOffShowsATip_data()
{
    tablesAndDetails();
}

void TestLarkspireAppTables::clickWithDetailsOffShowsATip()
{
    QFETCH(QString, name);
    QFETCH(QString, view);
    LarkspireAppPeer::config(*m_window).showNewsDetails = false;
    fill(name);
    showPageOf(table(name));
    const QPoint place = titleOf(table(name), 1);
    const QPoint global = table(name)->viewport()->mapToGlobal(place);
    QCursor::setPos(global);
    QTRY_COMPARE(QCursor::pos(), global);
    QTest::mouseClick(table(name)->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(), place);
    const auto *tip = table(name)->findChild<CustomTooltipWidget *>();
    QVERIFY(tip);
    QTRY_VERIFY(tip->isVisible());
    QCOMPARE(tip->text(), QStringLiteral("乙"));
    const int rowLeft = table(name)
                            ->viewport()
                            ->mapToGlobal(table(name)->visualItemRect(table(name)->item(1, 0)).topLeft())
                            .x();
    QCOMPARE(tip->x(), rowLeft);
    QCOMPARE(tip->y(), global.y() + 15);
    QVERIFY(m_window->findChild<QTextBrowser *>(view)->toPlainText().isEmpty());
}

void TestLarkspireAppTables::clickOnAnEmptyRowDoesNothing()
{
    auto *main = table(QStringLiteral("newsTableWidget"));
    main->setRowCount(1);
    emit main->cellClicked(0, 1);
    emit main->cellDoubleClicked(0, 1);
    emit main->cellClicked(7, 1);
    emit main->cellDoubleClicked(7, 1);
    QVERIFY(m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"))->toPlainText().isEmpty());
    QVERIFY(SpeechStage::instance().said().isEmpty());
    // The other tables go by their lists, which are empty.
    for (const QString &name :
         {QStringLiteral("interactivePlatformTableWidget"), QStringLiteral("selectedNewsTableWidget"),
          QStringLiteral("searchResultsTableWidget")}) {
        emit table(name)->cellDoubleClicked(0, 1);
        emit table(name)->cellDoubleClicked(-1, 1);
    }
    QVERIFY(SpeechStage::instance().said().isEmpty());
}

void TestLarkspireAppTables::doubleClickSpeaksTheWholeTitle_data()
{
    tablesAndDetails();
}

void TestLarkspireAppTables::doubleClickSpeaksTheWholeTitle()
{
    QFETCH(QString, name);
    fill(name);
    showPageOf(table(name));
    doubleClick(table(name), 1);
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("乙")});

    if (name == QStringLiteral("newsTableWidget")) {
        // Spoken whole, however long, while the alert of a new item cuts it.
        const QString title(300, QChar(u'涨'));
        emit m_window->findChild<ApiClient *>()->newsReceived({item(QStringLiteral("d"), title, 4)}, 1);
        doubleClick(table(name), 0);
        QCOMPARE(SpeechStage::instance().said().last(), title);
    }
}

void TestLarkspireAppTables::doubleClickInASortedTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("said");
    // Sorted upwards by time the first row shows 甲, the first item of the list is 丙.
    QTest::newRow("main speaks the row clicked") << QStringLiteral("newsTableWidget") << QStringLiteral("甲");
    QTest::newRow("interactive speaks its list's row")
        << QStringLiteral("interactivePlatformTableWidget") << QStringLiteral("丙");
    QTest::newRow("selected speaks its list's row")
        << QStringLiteral("selectedNewsTableWidget") << QStringLiteral("丙");
    QTest::newRow("search speaks its list's row")
        << QStringLiteral("searchResultsTableWidget") << QStringLiteral("丙");
}

void TestLarkspireAppTables::doubleClickInASortedTable()
{
    QFETCH(QString, name);
    QFETCH(QString, said);
    fill(name);
    showPageOf(table(name));
    table(name)->sortByColumn(0, Qt::AscendingOrder);
    QCOMPARE(table(name)->item(0, 1)->text(), QStringLiteral("甲"));
    doubleClick(table(name), 0);
    QCOMPARE(SpeechStage::instance().said(), QStringList{said});
}

void TestLarkspireAppTables::doubleClickWithSpeechOffIsSilent()
{
    const QString name = QStringLiteral("newsTableWidget");
    fill(name);
    // The window's own flag decides, whatever the manager would say.
    LarkspireAppPeer::config(*m_window).enableTts = false;
    doubleClick(table(name), 1);
    QVERIFY(SpeechStage::instance().said().isEmpty());
}

void TestLarkspireAppTables::linkInTheDetailsOpensTheBrowser()
{
    fill(QStringLiteral("newsTableWidget"));
    auto *details = m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"));
    details->moveCursor(QTextCursor::End);
    const QTextCursor link = details->document()->find(QStringLiteral("点击查看原文"));
    QVERIFY(!link.isNull());
    details->setTextCursor(link);
    details->ensureCursorVisible();
    const QRect start = details->cursorRect(link);
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    QTest::mouseClick(details->viewport(), Qt::LeftButton, Qt::KeyboardModifiers(),
                      QPoint(start.left() - 5, start.center().y()));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://news.larkspire.example/c"))});
    // The page itself stays.
    QVERIFY(details->toPlainText().contains(QStringLiteral("内容 c")));
}

void TestLarkspireAppTables::detailsAndRowsAfterAChangeOfTheSkin()
{
    const QString name = QStringLiteral("newsTableWidget");
    fill(name);
    const auto *details = m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"));
    QVERIFY(details->styleSheet().contains(QStringLiteral("background-color: white")));
    const QColor lightRow = table(name)->item(0, 1)->background().color();
    m_window->findChild<QAction *>(QStringLiteral("actionToggleTheme"))->trigger();
    // The details are shown anew, the rows keep the colours in which they were built.
    QVERIFY(details->styleSheet().contains(QStringLiteral("background-color: #2b2b2b")));
    QVERIFY(details->toPlainText().contains(QStringLiteral("丙")));
    QCOMPARE(table(name)->item(0, 1)->background().color(), lightRow);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppTables test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_tables.moc"
