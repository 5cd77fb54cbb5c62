#include "stockviews/DynamicAnalysisDialog.h"

#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockServiceSettings.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QTextBrowser>
#include <QTextEdit>
#include <QtTest>

#include <memory>

namespace {

const QString code = QStringLiteral("600519");
const QString name = QStringLiteral("贵州茅台");
const QString entryTitle = QStringLiteral("录入异动信息");
const QString ok = QStringLiteral("OK");

void allowManualEdit()
{
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(QStringLiteral("DynamicAnalysis/EnableManualEdit"), true);
}

QString longText(int points)
{
    QString text = QStringLiteral("公司原因：\n");
    for (int number = 0; number < points; ++number)
        text += QStringLiteral("%1、公司产品进入新的应用领域，相关订单保持增长，产线稼动率维持在高位。\n")
                    .arg(number % 9 + 1);
    return text;
}

template <typename Kind>
Kind *part(const QWidget &window, const char *objectName)
{
    return window.findChild<Kind *>(QString::fromLatin1(objectName));
}

QJsonObject saved()
{
    return {{QStringLiteral("success"), true}, {QStringLiteral("message"), QStringLiteral("保存成功")}};
}

} // namespace

class tst_DynamicAnalysisDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theFormIsThatOfAPanel();
    void anAnalysisIsShownInItsSections();
    void aStockWithoutAnAnalysisSaysSo();
    void theLookFollowsTheSettings();
    void changedSettingsShowAtOnce();

    void itIsAsHighAsItsText();
    void aLongTextStopsShortOfTheScreen();
    void aVeryLongTextIsShown();
    void theHeightIsThereFromTheStart();
    void itStandsInTheMiddleUntilItIsPlaced_data();
    void itStandsInTheMiddleUntilItIsPlaced();
    void aDraggedPanelComesBackToItsPlace();
    void aPlaceOutsideTheScreenIsPulledBack();
    void closingHidesIt();

    void theBarIsThereForStocksWithoutAnAnalysis_data();
    void theBarIsThereForStocksWithoutAnAnalysis();
    void theLinkOpensTheEntry();
    void otherLinksDoNothing_data();
    void otherLinksDoNothing();
    void withoutACodeNothingCanBeEntered();

    void theEntryAsksForTitleAndText();
    void pastingTakesTheTextAndItsTitle_data();
    void pastingTakesTheTextAndItsTitle();
    void whatIsMissingIsSaid();
    void cancellingSendsNothing();

    void aSavedAnalysisIsShownAtOnce();
    void theDayIsThatOfThePublishedAnalysis_data();
    void theDayIsThatOfThePublishedAnalysis();
    void aFailureIsSaidAndChangesNothing_data();
    void aFailureIsSaidAndChangesNothing();
    void aServiceThatIsDownIsSaid();
    void theEntryStaysWithItsStock();
    void thePanelMayGoWithEverythingOpen_data();
    void thePanelMayGoWithEverythingOpen();

private:
    void open();
    void show(const QString &title, const QString &content, const QString &publishTime = {})
    {
        m_panel->setAnalysis(code, name, QStringLiteral("2024-08-08"), title, publishTime, content,
                             QStringLiteral("https://news.larkspire.example/1"));
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel));
    }
    QTextBrowser *browser() const { return part<QTextBrowser>(*m_panel, "analysisBrowser"); }
    int textHeight() const { return qCeil(browser()->document()->size().height()); }
    QRect screen() const { return m_page->screen()->availableGeometry(); }
    /// Enters title and text as the user does, and confirms. True when the dialog has closed.
    bool enter(const QString &title, const QString &content)
    {
        const DialogVisit visit(entryTitle, [&](QDialog &dialog) {
            part<QLineEdit>(dialog, "titleLineEdit")->setText(title);
            part<QTextEdit>(dialog, "contentTextEdit")->setPlainText(content);
            WindowInput::click(part<QPushButton>(dialog, "confirmButton"));
        });
        QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
        return QTest::qWaitFor([&] { return visit.ended(); });
    }
    bool clientGone() const
    {
        return QTest::qWaitFor([this] { return m_panel->findChildren<StockApiClient *>().isEmpty(); });
    }

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<QWidget> m_page;
    DynamicAnalysisDialog *m_panel = nullptr;
};

void tst_DynamicAnalysisDialog::init()
{
    clearSettings();
    m_server = std::make_unique<RawHttpServer>();
    useStockService(m_server->url(), QStringLiteral("token"));
    open();
}

void tst_DynamicAnalysisDialog::cleanup()
{
    m_page.reset();
    m_server.reset();
}

void tst_DynamicAnalysisDialog::open()
{
    m_page = std::make_unique<QWidget>();
    m_page->resize(300, 200);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    m_panel = new DynamicAnalysisDialog(m_page.get(), [] { return QDate(2024, 8, 12); });
}

// --- what it shows -----------------------------------------------------------------------------------------

void tst_DynamicAnalysisDialog::theFormIsThatOfAPanel()
{
    QCOMPARE(m_panel->windowTitle(), QStringLiteral("异动解析"));
    const Qt::WindowFlags flags = m_panel->windowFlags();
    QVERIFY(flags.testFlag(Qt::FramelessWindowHint));
    QVERIFY(flags.testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Tool);
    QCOMPARE(m_panel->layout()->contentsMargins(), QMargins(1, 1, 1, 1));
    const auto *title = part<QLabel>(*m_panel, "titleLabel");
    QCOMPARE(title->text(), QStringLiteral("异动解析"));
    QCOMPARE(title->styleSheet(),
             QStringLiteral("QLabel { font-size: 16px; font-weight: bold; color: white; }"));
    QCOMPARE(part<QWidget>(*m_panel, "titleBar")->height(), 30);
    QCOMPARE(part<QPushButton>(*m_panel, "closeButton")->size(), QSize(30, 30));
    QVERIFY(!browser()->openLinks());
    QVERIFY(!browser()->openExternalLinks());
    QVERIFY(part<QWidget>(*m_panel, "manualBar")->isHidden());
}

void tst_DynamicAnalysisDialog::anAnalysisIsShownInItsSections()
{
    show(QStringLiteral("个股异动解析：贵州茅台"),
         QStringLiteral("今日走势：上涨。异动原因揭秘：行业原因：政策利好。1、内容一2、内容二后市分析：看好"),
         QStringLiteral("Thu, 08 Aug 2024 10:30:00 +0800"));
    QStringList lines;
    for (const QString &line : browser()->toPlainText().split(QLatin1Char('\n'))) {
        if (!line.trimmed().isEmpty())
            lines.append(line);
    }
    QCOMPARE(lines, QStringList({QStringLiteral("贵州茅台 600519"), QStringLiteral("贵州茅台"),
                                 QStringLiteral("发布时间：2024-08-08 10:30"),
                                 QStringLiteral("今日走势：上涨。"), QStringLiteral("异动原因揭秘："),
                                 QStringLiteral("行业原因："), QStringLiteral("政策利好。"),
                                 QStringLiteral("1、内容一"), QStringLiteral("2、内容二")}));
    QCOMPARE(m_panel->analysis().sourceUrl, QStringLiteral("https://news.larkspire.example/1"));
    QCOMPARE(m_panel->analysis().tradeDate, QStringLiteral("2024-08-08"));
    // The next one takes its place.
    show(QStringLiteral("提价"), QString());
    QVERIFY(!browser()->toPlainText().contains(QStringLiteral("政策利好")));
}

void tst_DynamicAnalysisDialog::aStockWithoutAnAnalysisSaysSo()
{
    show(QString(), QString());
    QCOMPARE(browser()->toPlainText(), QStringLiteral("贵州茅台 600519\n暂无异动信息"));
}

void tst_DynamicAnalysisDialog::theLookFollowsTheSettings()
{
    ConfigManager *settings = ConfigManager::instance();
    show(QStringLiteral("题"), QStringLiteral("文"));
    QCOMPARE(m_panel->width(), 600);
    QVERIFY(m_panel->styleSheet().contains(QStringLiteral("background-color: #2c3e50")));
    QVERIFY(m_panel->styleSheet().contains(QStringLiteral("1px solid #34495e")));
    QCOMPARE(browser()->styleSheet(),
             QStringLiteral("QTextBrowser {   background-color: #2c3e50;   border: none;"
                            "   color: #ffaa00;   font-size: 24px;}"));
    settings->setThemeBgColor(QStringLiteral("#102030"));
    settings->setThemeDescColor(QStringLiteral("#eeeeee"));
    settings->setThemeDescFontSize(14);
    settings->setThemeWidth(380);
    show(QStringLiteral("题"), QStringLiteral("文"));
    QCOMPARE(m_panel->width(), 380);
    QCOMPARE(part<QWidget>(*m_panel, "titleBar")->styleSheet(),
             QStringLiteral("QWidget { background-color: #102030; }"));
    QCOMPARE(browser()->styleSheet(),
             QStringLiteral("QTextBrowser {   background-color: #102030;   border: none;"
                            "   color: #eeeeee;   font-size: 14px;}"));
}

void tst_DynamicAnalysisDialog::changedSettingsShowAtOnce()
{
    show(QStringLiteral("题"), longText(3));
    const int before = m_panel->height();
    ConfigManager::instance()->setThemeDescFontSize(12);
    ConfigManager::instance()->setThemeNameFontSize(12);
    m_panel->reloadSettings();
    QVERIFY(m_panel->height() < before);
    QVERIFY(browser()->toPlainText().contains(QStringLiteral("公司原因：")));
}

// --- size and place ----------------------------------------------------------------------------------------

void tst_DynamicAnalysisDialog::itIsAsHighAsItsText()
{
    for (const int points : {1, 8, 2, 0}) {
        show(QStringLiteral("题"), longText(points));
        // Text, a little room, the title bar and the line around.
        QTRY_COMPARE(m_panel->height(), textHeight() + 8 + 30 + 2);
        QVERIFY(!browser()->verticalScrollBar()->isVisible());
        QCOMPARE(browser()->viewport()->width(), 598);
        QVERIFY(browser()->viewport()->height() >= textHeight());
    }
}

void tst_DynamicAnalysisDialog::aLongTextStopsShortOfTheScreen()
{
    show(QStringLiteral("题"), longText(80));
    QTRY_COMPARE(m_panel->height(), screen().height() - 40);
    QVERIFY(browser()->verticalScrollBar()->isVisible());
    QVERIFY(browser()->verticalScrollBar()->maximum() > 0);
    // Nothing stands behind the bar.
    QTRY_COMPARE(qRound(browser()->document()->textWidth()), browser()->viewport()->width());
    QCOMPARE(browser()->viewport()->width(), 598 - browser()->verticalScrollBar()->width());
    QCOMPARE(browser()->horizontalScrollBar()->maximum(), 0);
    QTRY_VERIFY(screen().contains(m_panel->geometry()));
    // From the top, and the same with the next one.
    QCOMPARE(browser()->verticalScrollBar()->value(), 0);
    browser()->verticalScrollBar()->setValue(200);
    show(QStringLiteral("题"), longText(90));
    QCOMPARE(browser()->verticalScrollBar()->value(), 0);
    show(QStringLiteral("题"), QStringLiteral("短"));
    QTRY_COMPARE(m_panel->height(), textHeight() + 8 + 30 + 2);
    QVERIFY(!browser()->verticalScrollBar()->isVisible());
}

void tst_DynamicAnalysisDialog::aVeryLongTextIsShown()
{
    const QString text = longText(1700);
    QVERIFY(text.toUtf8().size() > 160 * 1024);
    QElapsedTimer watch;
    watch.start();
    show(QStringLiteral("题"), text);
    QTRY_COMPARE(m_panel->height(), screen().height() - 40);
    QVERIFY2(watch.elapsed() < 8000, qPrintable(QString::number(watch.elapsed())));
    QCOMPARE(browser()->toPlainText().count(QStringLiteral("相关订单")), 1700);
}

void tst_DynamicAnalysisDialog::theHeightIsThereFromTheStart()
{
    m_panel->setAnalysis(code, name, QString(), QStringLiteral("题"), QString(), longText(5), QString());
    const QRect before(m_panel->pos(), m_panel->size());
    m_panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_panel));
    QTRY_COMPARE(m_panel->geometry(), QRect(m_panel->pos(), before.size()));
    QCoreApplication::processEvents();
    QCOMPARE(m_panel->height(), textHeight() + 8 + 30 + 2);
    QCOMPARE(m_panel->size(), before.size());
}

void tst_DynamicAnalysisDialog::itStandsInTheMiddleUntilItIsPlaced_data()
{
    QTest::addColumn<QPoint>("stored");
    QTest::addColumn<bool>("placed");
    QTest::newRow("nothing stored") << QPoint(-1, -1) << false;
    QTest::newRow("zero") << QPoint(0, 0) << false;
    QTest::newRow("one below zero") << QPoint(200, -5) << false;
    QTest::newRow("top edge") << QPoint(120, 0) << true;
    QTest::newRow("anywhere") << QPoint(70, 90) << true;
}

void tst_DynamicAnalysisDialog::itStandsInTheMiddleUntilItIsPlaced()
{
    QFETCH(const QPoint, stored);
    QFETCH(const bool, placed);
    ConfigManager::instance()->setDynamicCustomPosition(stored);
    open();
    QCOMPARE(m_panel->hasCustomPosition(), placed);
    show(QStringLiteral("题"), longText(2));
    if (placed) {
        QTRY_COMPARE(m_panel->pos(), stored);
        return;
    }
    QTRY_VERIFY((m_panel->geometry().center() - screen().center()).manhattanLength() <= 2);
    // It stays in the middle when its height changes.
    show(QStringLiteral("题"), longText(6));
    QTRY_VERIFY((m_panel->geometry().center() - screen().center()).manhattanLength() <= 2);
}

void tst_DynamicAnalysisDialog::aDraggedPanelComesBackToItsPlace()
{
    show(QStringLiteral("题"), longText(2));
    const QPoint start = m_panel->pos();
    const QPoint grip(60, 15);
    QWindow *window = m_panel->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, grip);
    QTest::mouseMove(window, grip + QPoint(-40, -25));
    QTRY_COMPARE(m_panel->pos(), start + QPoint(-40, -25));
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, grip);
    const QPoint place = m_panel->pos();
    QCOMPARE(ConfigManager::instance()->getDynamicCustomPosition(), place);
    // The concept panel has a memory of its own.
    QCOMPARE(ConfigManager::instance()->getThemeCustomPosition(), QPoint(-1, -1));
    show(QStringLiteral("题"), longText(4));
    QTRY_COMPARE(m_panel->pos(), place);

    // The next start.
    open();
    show(QStringLiteral("题"), longText(1));
    QTRY_COMPARE(m_panel->pos(), place);
}

void tst_DynamicAnalysisDialog::aPlaceOutsideTheScreenIsPulledBack()
{
    ConfigManager::instance()->setDynamicCustomPosition(QPoint(9000, 9000));
    open();
    show(QStringLiteral("题"), longText(2));
    QTRY_COMPARE(m_panel->geometry().bottomRight(), screen().bottomRight());
    // A panel that grows stays whole on the screen.
    show(QStringLiteral("题"), longText(5));
    QTRY_COMPARE(m_panel->geometry().bottomRight(), screen().bottomRight());
}

void tst_DynamicAnalysisDialog::closingHidesIt()
{
    show(QStringLiteral("题"), longText(2));
    const QPointer<DynamicAnalysisDialog> panel(m_panel);
    WindowInput::click(part<QPushButton>(*m_panel, "closeButton"));
    QVERIFY(!m_panel->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(panel);
}

// --- ways into the entry -----------------------------------------------------------------------------------

void tst_DynamicAnalysisDialog::theBarIsThereForStocksWithoutAnAnalysis_data()
{
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("content");
    QTest::addColumn<bool>("there");
    const QString word = QStringLiteral("提价");
    QTest::newRow("nothing, not allowed") << false << QString() << QString() << false;
    QTest::newRow("nothing, allowed") << true << QString() << QString() << true;
    QTest::newRow("title, allowed") << true << word << QString() << false;
    QTest::newRow("text, allowed") << true << QString() << word << false;
    QTest::newRow("both, not allowed") << false << word << word << false;
}

void tst_DynamicAnalysisDialog::theBarIsThereForStocksWithoutAnAnalysis()
{
    QFETCH(const bool, allowed);
    QFETCH(const QString, title);
    QFETCH(const QString, content);
    QFETCH(const bool, there);
    if (allowed)
        allowManualEdit();
    show(title, content);
    auto *bar = part<QWidget>(*m_panel, "manualBar");
    QCOMPARE(bar->isVisible(), there);
    QCOMPARE(browser()->toPlainText().contains(QStringLiteral("修改")), allowed);
    QCOMPARE(bar->findChild<QLabel *>()->text(), QStringLiteral("可手动录入/修改异动信息"));
    QCOMPARE(bar->findChild<QLabel *>()->styleSheet(),
             QStringLiteral("QLabel { color: #2ecc71; font-size: 13px; }"));
    QCOMPARE(part<QPushButton>(*m_panel, "manualInputButton")->text(), entryTitle);
    // The text keeps its room.
    QVERIFY(browser()->viewport()->height() >= textHeight());
    QVERIFY(!browser()->verticalScrollBar()->isVisible());
    if (!there)
        return;
    const DialogVisit visit(entryTitle, [](QDialog &dialog) { dialog.reject(); });
    WindowInput::click(part<QPushButton>(*m_panel, "manualInputButton"));
    QTRY_VERIFY(visit.ended());
}

void tst_DynamicAnalysisDialog::theLinkOpensTheEntry()
{
    allowManualEdit();
    show(QStringLiteral("提价"), QStringLiteral("公司原因：提价"));
    QTextCursor link = browser()->document()->find(QStringLiteral("修改"));
    QVERIFY(!link.isNull());
    link.setPosition(link.selectionStart() + 1);
    const DialogVisit visit(entryTitle, [](QDialog &dialog) {
        QCOMPARE(part<QLineEdit>(dialog, "titleLineEdit")->text(), QStringLiteral("提价"));
        dialog.reject();
    });
    WindowInput::clickAt(browser()->viewport(), browser()->cursorRect(link).center());
    QTRY_VERIFY(visit.ended());
    QVERIFY(m_panel->isVisible());
    QVERIFY(browser()->toPlainText().contains(QStringLiteral("提价")));
}

void tst_DynamicAnalysisDialog::otherLinksDoNothing_data()
{
    QTest::addColumn<QUrl>("link");
    QTest::newRow("web") << QUrl(QStringLiteral("https://news.larkspire.example/"));
    QTest::newRow("another path") << QUrl(QStringLiteral("manual:delete"));
    QTest::newRow("another scheme") << QUrl(QStringLiteral("auto:edit"));
    QTest::newRow("nothing") << QUrl();
}

void tst_DynamicAnalysisDialog::otherLinksDoNothing()
{
    QFETCH(const QUrl, link);
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    const int windows = QApplication::topLevelWidgets().size();
    QMetaObject::invokeMethod(m_panel, "onAnchorClicked", Q_ARG(QUrl, link));
    QCoreApplication::processEvents();
    QCOMPARE(QApplication::topLevelWidgets().size(), windows);
    QVERIFY(browser()->toPlainText().contains(QStringLiteral("正文")));
}

void tst_DynamicAnalysisDialog::withoutACodeNothingCanBeEntered()
{
    m_panel->setAnalysis(QString(), QString(), QString(), QString(), QString(), QString(), QString());
    m_panel->show();
    const BoxAnswer box(ok);
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.text(), QStringLiteral("当前股票代码为空，无法录入异动信息"));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(!openDialog(entryTitle));
}

// --- the entry ---------------------------------------------------------------------------------------------

void tst_DynamicAnalysisDialog::theEntryAsksForTitleAndText()
{
    show(QStringLiteral("  个股异动解析：提价 "), QStringLiteral("正文"));
    const DialogVisit visit(entryTitle, [this](QDialog &dialog) {
        QVERIFY(dialog.isModal());
        QStringList captions;
        for (const QLabel *label : dialog.findChildren<QLabel *>())
            captions.append(label->text());
        QCOMPARE(captions, QStringList({QStringLiteral("标题:"), QStringLiteral("异动解析内容:")}));
        QCOMPARE(part<QLineEdit>(dialog, "titleLineEdit")->text(), QStringLiteral("个股异动解析：提价"));
        QVERIFY(part<QLineEdit>(dialog, "titleLineEdit")->hasFocus());
        QVERIFY(part<QTextEdit>(dialog, "contentTextEdit")->height() >= 200);
        QCOMPARE(part<QPushButton>(dialog, "pasteButton")->text(), QStringLiteral("从剪贴板粘贴"));
        QCOMPARE(part<QPushButton>(dialog, "confirmButton")->text(), QStringLiteral("确定"));
        QCOMPARE(part<QPushButton>(dialog, "cancelButton")->text(), QStringLiteral("取消"));
        QCOMPARE(dialog.maximumHeight(), m_page->screen()->geometry().height() - 80);
        dialog.reject();
    });
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY(visit.ended());
}

void tst_DynamicAnalysisDialog::pastingTakesTheTextAndItsTitle_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("content");
    const QString before = QStringLiteral("旧标题");
    const QString headed = QStringLiteral("时间：今天\n个股异动解析：机器人+AI\n1、要点");
    QTest::newRow("with the head") << headed << QStringLiteral("机器人+AI") << headed;
    QTest::newRow("without it") << QStringLiteral("\n大涨\n正文") << QStringLiteral("大涨")
                                << QStringLiteral("\n大涨\n正文");
    QTest::newRow("blanks alone") << QStringLiteral(" \n ") << before << QStringLiteral(" \n ");
    QTest::newRow("nothing") << QString() << before << QStringLiteral("旧正文");
}

void tst_DynamicAnalysisDialog::pastingTakesTheTextAndItsTitle()
{
    QFETCH(const QString, clipboard);
    QFETCH(const QString, title);
    QFETCH(const QString, content);
    show(QStringLiteral("旧标题"), QStringLiteral("正文"));
    QApplication::clipboard()->setText(clipboard);
    const DialogVisit visit(entryTitle, [&](QDialog &dialog) {
        part<QTextEdit>(dialog, "contentTextEdit")->setPlainText(QStringLiteral("旧正文"));
        WindowInput::click(part<QPushButton>(dialog, "pasteButton"));
        QCOMPARE(part<QLineEdit>(dialog, "titleLineEdit")->text(), title);
        QCOMPARE(part<QTextEdit>(dialog, "contentTextEdit")->toPlainText(), content);
        dialog.reject();
    });
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY(visit.ended());
}

void tst_DynamicAnalysisDialog::whatIsMissingIsSaid()
{
    show(QString(), QString());
    const DialogVisit visit(entryTitle, [this](QDialog &dialog) {
        auto *title = part<QLineEdit>(dialog, "titleLineEdit");
        auto *content = part<QTextEdit>(dialog, "contentTextEdit");
        auto *confirm = part<QPushButton>(dialog, "confirmButton");
        content->setPlainText(QStringLiteral("正文"));
        {
            const BoxAnswer box(ok);
            WindowInput::click(confirm);
            QTRY_VERIFY(box.shown());
            QCOMPARE(box.text(), QStringLiteral("标题不能为空"));
        }
        QVERIFY(dialog.isVisible());
        QTRY_VERIFY(dialog.isActiveWindow());
        QCOMPARE(content->toPlainText(), QStringLiteral("正文"));
        QTRY_VERIFY(title->hasFocus());
        title->setText(QStringLiteral("提价"));
        content->setPlainText(QStringLiteral(" \n"));
        {
            const BoxAnswer box(ok);
            WindowInput::click(confirm);
            QTRY_VERIFY(box.shown());
            QCOMPARE(box.text(), QStringLiteral("内容不能为空"));
        }
        QVERIFY(dialog.isVisible());
        QTRY_VERIFY(content->hasFocus());
        QCOMPARE(title->text(), QStringLiteral("提价"));
        QVERIFY(m_server->requests().isEmpty());
        dialog.reject();
    });
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY_WITH_TIMEOUT(visit.ended(), 20000);
}

void tst_DynamicAnalysisDialog::cancellingSendsNothing()
{
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    const DialogVisit visit(entryTitle, [](QDialog &dialog) {
        part<QTextEdit>(dialog, "contentTextEdit")->setPlainText(QStringLiteral("新的"));
        WindowInput::click(part<QPushButton>(dialog, "cancelButton"));
    });
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY(visit.ended());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!openDialog(entryTitle));
    QCOMPARE(m_panel->analysis().content, QStringLiteral("正文"));
    // The first request is the one of the next entry.
    m_server->queueAnswer(RawAnswer::json(saved()));
    QVERIFY(enter(QStringLiteral("另一个"), QStringLiteral("正文二")));
    QVERIFY(m_server->waitForRequests(1));
    QCOMPARE(m_server->requests().size(), 1);
    QVERIFY(clientGone());
}

// --- saving ------------------------------------------------------------------------------------------------

void tst_DynamicAnalysisDialog::aSavedAnalysisIsShownAtOnce()
{
    allowManualEdit();
    show(QString(), QString());
    QVERIFY(part<QWidget>(*m_panel, "manualBar")->isVisible());
    m_server->queueAnswer(RawAnswer::json(saved()));
    QVERIFY(enter(QStringLiteral(" 渠道提价 "), QStringLiteral("公司原因：1、提价<5%\n后市分析：略")));
    QVERIFY(m_server->waitForRequests(1));
    const RawRequest request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, QByteArray("/newsapi/dynamic_analysis/save"));
    QCOMPARE(request.header("X-Session-Token"), QByteArray("token"));
    const QJsonObject expected{
        {QStringLiteral("stock_code"), code},
        {QStringLiteral("stock_name"), name},
        {QStringLiteral("trade_date"), QStringLiteral("2024-08-12")},
        {QStringLiteral("title"), QStringLiteral("渠道提价")},
        {QStringLiteral("publish_time"), QString()},
        {QStringLiteral("content"), QStringLiteral("公司原因：1、提价<5%\n后市分析：略")},
        {QStringLiteral("source_url"), QStringLiteral("manual")}};
    QCOMPARE(QJsonDocument::fromJson(request.body).object(), expected);
    QTRY_VERIFY(browser()->toPlainText().contains(QStringLiteral("1、提价<5%")));
    QVERIFY(browser()->toPlainText().contains(QStringLiteral("渠道提价")));
    QVERIFY(!browser()->toPlainText().contains(QStringLiteral("发布时间")));
    QVERIFY(!part<QWidget>(*m_panel, "manualBar")->isVisible());
    QCOMPARE(m_panel->analysis().sourceUrl, QStringLiteral("manual"));
    QCOMPARE(m_panel->analysis().publishTime, QString());
    QVERIFY(clientGone());
}

void tst_DynamicAnalysisDialog::theDayIsThatOfThePublishedAnalysis_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("day");
    QTest::newRow("mail form") << QStringLiteral("Thu, 08 Aug 2024 10:30:00 +0800")
                               << QStringLiteral("2024-08-08");
    QTest::newRow("plain") << QStringLiteral("2024-08-07 15:00:00") << QStringLiteral("2024-08-07");
    QTest::newRow("unreadable") << QStringLiteral("昨天") << QStringLiteral("2024-08-12");
}

void tst_DynamicAnalysisDialog::theDayIsThatOfThePublishedAnalysis()
{
    QFETCH(const QString, time);
    show(QStringLiteral("提价"), QStringLiteral("正文"), time);
    m_server->queueAnswer(RawAnswer::json(saved()));
    QVERIFY(enter(QStringLiteral("提价二"), QStringLiteral("正文二")));
    QVERIFY(m_server->waitForRequests(1));
    const QJsonObject body = QJsonDocument::fromJson(m_server->requests().first().body).object();
    QTEST(body.value(QLatin1String("trade_date")).toString(), "day");
    QTRY_COMPARE(m_panel->analysis().title, QStringLiteral("提价二"));
}

void tst_DynamicAnalysisDialog::aFailureIsSaidAndChangesNothing_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");
    QTest::newRow("refused") << QByteArray(R"({"success":false,"error":"内容过长"})") << 200
                             << QStringLiteral("内容过长");
    QTest::newRow("refused without a word")
        << QByteArray(R"({"success":false})") << 200 << QStringLiteral("保存失败");
    QTest::newRow("bad request") << QByteArray(R"({"success":false,"error":"标题不能为空"})") << 400
                                 << QStringLiteral("标题不能为空");
    QTest::newRow("logged out") << QByteArray(R"({"error":"会话已过期"})") << 401
                                << QStringLiteral("会话已过期");
    QTest::newRow("broken service") << QByteArray(R"({"message":"内部错误"})") << 500
                                    << QStringLiteral("内部错误");
    QTest::newRow("no JSON") << QByteArray("<html>") << 200 << QStringLiteral("JSON解析错误: ");
}

void tst_DynamicAnalysisDialog::aFailureIsSaidAndChangesNothing()
{
    QFETCH(const QByteArray, body);
    QFETCH(const int, status);
    QFETCH(const QString, text);
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    m_server->queueAnswer(RawAnswer::body(body, status));
    const BoxAnswer box(ok);
    QVERIFY(enter(QStringLiteral("提价二"), QStringLiteral("正文二")));
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("错误"));
    QVERIFY2(box.text().startsWith(text), qPrintable(box.text()));
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QVERIFY(clientGone());
    QCOMPARE(m_panel->analysis().title, QStringLiteral("提价"));
    QVERIFY(browser()->toPlainText().contains(QStringLiteral("正文")));
    QVERIFY(!QApplication::activeModalWidget()); // said once
}

void tst_DynamicAnalysisDialog::aServiceThatIsDownIsSaid()
{
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    m_server->refuseConnections();
    const BoxAnswer box(ok);
    QVERIFY(enter(QStringLiteral("提价二"), QStringLiteral("正文二")));
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("错误"));
    QVERIFY2(box.text().startsWith(QStringLiteral("网络错误 [1]: ")), qPrintable(box.text()));
    QVERIFY(clientGone());
}

void tst_DynamicAnalysisDialog::theEntryStaysWithItsStock()
{
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    m_server->queueAnswer(RawAnswer::json(saved()));
    const DialogVisit visit(entryTitle, [this](QDialog &dialog) {
        // The page goes on to the next stock meanwhile.
        m_panel->setAnalysis(QStringLiteral("300001"), QStringLiteral("云雀股份"), QString(),
                             QStringLiteral("机器人"), QString(), QStringLiteral("别的"), QString());
        part<QTextEdit>(dialog, "contentTextEdit")->setPlainText(QStringLiteral("茅台的"));
        WindowInput::click(part<QPushButton>(dialog, "confirmButton"));
    });
    QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
    QTRY_VERIFY(visit.ended());
    QVERIFY(m_server->waitForRequests(1));
    const QJsonObject body = QJsonDocument::fromJson(m_server->requests().first().body).object();
    QCOMPARE(body.value(QLatin1String("stock_code")).toString(), code);
    QCOMPARE(body.value(QLatin1String("stock_name")).toString(), name);
    QVERIFY(clientGone());
    QCOMPARE(m_panel->analysis().stockCode, QStringLiteral("300001"));
    QCOMPARE(m_panel->analysis().content, QStringLiteral("别的"));
}

void tst_DynamicAnalysisDialog::thePanelMayGoWithEverythingOpen_data()
{
    QTest::addColumn<QString>("open");
    QTest::newRow("the entry") << QStringLiteral("entry");
    QTest::newRow("a box over the entry") << QStringLiteral("box");
    QTest::newRow("the box of a failure") << QStringLiteral("failure");
    QTest::newRow("a save under way") << QStringLiteral("save");
}

void tst_DynamicAnalysisDialog::thePanelMayGoWithEverythingOpen()
{
    QFETCH(const QString, open);
    show(QStringLiteral("提价"), QStringLiteral("正文"));
    m_server->setAnswer(open == QLatin1String("save")
                            ? RawAnswer::hold()
                            : RawAnswer::json({{QStringLiteral("success"), false}}));
    if (open == QLatin1String("save") || open == QLatin1String("failure")) {
        QVERIFY(enter(QStringLiteral("提价二"), QStringLiteral("正文二")));
        QVERIFY(m_server->waitForRequests(1));
    } else {
        QMetaObject::invokeMethod(m_panel, "onManualInputClicked");
        QTRY_VERIFY(openDialog(entryTitle));
    }
    if (open == QLatin1String("failure")) {
        QTRY_VERIFY(openDialog(QStringLiteral("错误")));
    } else if (open == QLatin1String("box")) {
        part<QTextEdit>(*openDialog(entryTitle), "contentTextEdit")->clear();
        WindowInput::click(part<QPushButton>(*openDialog(entryTitle), "confirmButton"));
        QTRY_VERIFY(qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
    }
    const QPointer<DynamicAnalysisDialog> panel(m_panel);
    m_page.reset();
    QVERIFY(!panel);
    QCoreApplication::processEvents();
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!openDialog(entryTitle));
}

LARKSPIRE_TEST_MAIN(tst_DynamicAnalysisDialog)
#include "tst_dynamicanalysisdialog.moc"
