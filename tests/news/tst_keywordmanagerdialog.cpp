#include "news/EmptyListHint.h"
#include "news/KeywordManagerDialog.h"
#include "news/KeywordRules.h"
#include "newsclient/ApiClient.h"
#include "settings/MainWindowSkin.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"
#include "support/WaitUntil.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>

#include <sys/stat.h>

namespace {

const QString addTitle = QStringLiteral("添加关键词");
const QString editTitle = QStringLiteral("编辑关键词");
const QString exportTitle = QStringLiteral("导出关键词");
const QString importTitle = QStringLiteral("导入关键词");
const QString ok = QStringLiteral("OK");
const QString loaded = QStringLiteral("已加载 7 个关键词");
const QString preset = QStringLiteral("重大资产重组");
const QString emptyHint = QStringLiteral("您的关键词会显示在这里");
constexpr int keywordCount = 7;

QByteArray deviceId()
{
    return QByteArrayLiteral("0123456789abcdef0123456789abcdef");
}

QJsonObject keywordObject(int id, const QString &text, bool active = true, bool selected = false)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("keyword"), text},
            {QStringLiteral("is_active"), active},
            {QStringLiteral("is_selected"), selected}};
}

RawAnswer keywordList(const QJsonArray &keywords)
{
    return RawAnswer::json({{QStringLiteral("success"), true}, {QStringLiteral("data"), keywords}});
}

void useSkin(bool dark)
{
    QApplication::setPalette(dark ? MainWindowSkin::darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(dark ? MainWindowSkin::darkStyleSheet() : QString());
}

QPushButton *buttonOf(const QDialog &dialog, QDialogButtonBox::StandardButton which)
{
    return dialog.findChild<QDialogButtonBox *>()->button(which);
}

/// Chooses a file in the file dialog that opens under this title.
std::unique_ptr<DialogVisit> chooseFile(const QString &title, const QString &path)
{
    return std::make_unique<DialogVisit>(title, [path](QDialog &dialog) {
        auto *name = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        name->setFocus();
        name->setText(path);
        WindowInput::press(&dialog, Qt::Key_Return);
    });
}

} // namespace

/// The keyword manager in a real window, against the real service, used by mouse and keyboard.
class TestKeywordManagerDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();

    void looksAsItIsMeantTo();
    void firstShowLoadsTheListAndLaterOnesDoNot();
    void withoutAClientItSaysSo();
    void listThatIsNoJsonIsToldAndTheControlsComeBack();
    void firstLoadWithoutAReplyEndsAfterFifteenSeconds();
    void replyAfterTheEndOfTheDialogIsNotSeen();

    void typingShowsWhatContainsIt();
    void listThatArrivesLaterIsFilteredToo();

    void faultyTextIsRefused_data();
    void faultyTextIsRefused();
    void fifteenChineseCharactersAreTaken();
    void equalKeywordIsRefused();

    void returnInTheFieldAdds_data();
    void returnInTheFieldAdds();
    void cancelledAddAsksForNothing_data();
    void cancelledAddAsksForNothing();
    void refusedAddIsToldInTheServicesWords();
    void addedKeywordStandsInOrder();

    void editWithoutARowSaysSo();
    void editChangesTextAndFlags_data();
    void editChangesTextAndFlags();
    void onlyTheFlagsCanBeChanged();
    void editWithoutAChangeAsksForNothing();
    void faultyEditIsRefused_data();
    void faultyEditIsRefused();
    void editUnderAFilterKnowsOnlyTheRowsShown();
    void refusedEditIsToldInTheServicesWords();

    void deleteWithoutARowSaysSo();
    void deleteAsksFirstAndNoIsTheDefault_data();
    void deleteAsksFirstAndNoIsTheDefault();
    void confirmedDeleteTakesTheKeywordAway_data();
    void confirmedDeleteTakesTheKeywordAway();
    void errorInOtherLettersIsToldAsItIs_data();
    void errorInOtherLettersIsToldAsItIs();
    void refusedDeleteIsToldInPlainWords_data();
    void refusedDeleteIsToldInPlainWords();
    void deleteRepliesOfOthers();

    void exportWritesTheRowsShownInTheirOrder();
    void exportOfNothingSaysSo();
    void exportThatIsCancelledWritesNothing();
    void exportToAPlaceThatTakesNoFileSaysSo();

    void importIsNowhereToBeSeen();
    void importCountsWhatWasTakenAndWhatNot();
    void importRefusesWhatIsThereAlready();
    void importCountsWhatTheServiceRefuses();
    void importOfAFileWithoutKeywordsSaysSo();
    void unusableFileIsToldAndLosesNothing_data();
    void unusableFileIsToldAndLosesNothing();
    void cancelledImportDoesNothing();
    void longLineInAFileLeavesTheWindowAsItIs();
    void importEndsWithTheDialog();

    void busyDisablesTheButtonsAndShowsIt();
    void closesWhileBusy_data();
    void closesWhileBusy();
    void lostConnectionKeepsItBusyAndItCloses();
    void doubleClickWhileBusyDoesNothing();

    void tabGoesInReadingOrder();
    void tabIntoTheListSelectsARow();
    void labelsLeadToTheirFields();
    void textsOfTheServiceAreShownAsTheyAre();
    void nothingIsCutOffAndEverythingIsReadable_data();
    void nothingIsCutOffAndEverythingIsReadable();

private:
    template <class Kind>
    Kind *child(const char *name) const
    {
        return m_dialog->findChild<Kind *>(QLatin1String(name));
    }
    QTableWidget *table() const { return child<QTableWidget>("keywordTable"); }
    QLineEdit *field() const { return child<QLineEdit>("keywordEdit"); }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    QString status() const { return child<QLabel>("statusLabel")->text(); }
    bool busy() const { return child<QProgressBar>("progressBar")->isVisible(); }
    bool buttonsEnabled(bool enabled) const;
    QStringList texts() const;
    int rowOf(const QString &text) const;
    /// The three cells of a keyword's row.
    QStringList cells(const QString &text) const;
    void clickRow(const QString &text) const;
    /// "text active selected" of every keyword on the service.
    QStringList onTheService() const;
    /// Has the service hold its next answer back, so that what is seen meanwhile can be told.
    void holdNextAnswer() const;
    int requests(const char *label) const { return m_service->requestCount(QLatin1String(label)); }
    QString file(const QString &name) const { return m_folder->filePath(name); }
    QString write(const QString &name, const QByteArray &bytes) const;

    /// Opens a dialog whose client speaks to this address.
    void open(const QString &url);
    /// Opens a dialog on the service and waits for its list.
    void openOnTheService();
    /// Runs the import as its button would.
    void import(const QString &path);

    std::unique_ptr<ServiceProcess> m_service;
    QStringList m_keywordsAtStart; ///< of the service, as onTheService() tells them
    std::unique_ptr<ApiClient> m_client;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<KeywordManagerDialog> m_dialog;
};

void TestKeywordManagerDialog::init()
{
    clearSettings();
    useSkin(false);
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    if (!m_service) {
        m_service = std::make_unique<ServiceProcess>();
        QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
        m_keywordsAtStart = onTheService();
        QCOMPARE(m_keywordsAtStart.size(), keywordCount);
    }
    m_service->clearStatistics();
}

void TestKeywordManagerDialog::cleanup()
{
    m_dialog.reset();
    m_client.reset();
    m_service->clearFaults();
    // The next test takes the service over as long as it holds what it came with.
    if (onTheService() != m_keywordsAtStart)
        cleanupTestCase();
    useSkin(false);
}

void TestKeywordManagerDialog::cleanupTestCase()
{
    if (m_service)
        QVERIFY(m_service->stop());
    m_service.reset();
}

bool TestKeywordManagerDialog::buttonsEnabled(bool enabled) const
{
    for (const char *name : {"addButton", "editButton", "removeButton", "exportButton"}) {
        if (button(name)->isEnabled() != enabled)
            return false;
    }
    return true;
}

QStringList TestKeywordManagerDialog::texts() const
{
    QStringList list;
    for (int row = 0; row < table()->rowCount(); ++row)
        list.append(table()->item(row, 0)->text());
    return list;
}

int TestKeywordManagerDialog::rowOf(const QString &text) const
{
    return texts().indexOf(text);
}

QStringList TestKeywordManagerDialog::cells(const QString &text) const
{
    QStringList list;
    for (int column = 0; column < table()->columnCount(); ++column)
        list.append(table()->item(rowOf(text), column)->text());
    return list;
}

void TestKeywordManagerDialog::clickRow(const QString &text) const
{
    const QTableWidgetItem *item = table()->item(rowOf(text), 0);
    WindowInput::clickAt(table()->viewport(), table()->visualItemRect(item).center());
}

QStringList TestKeywordManagerDialog::onTheService() const
{
    const QJsonArray list =
        m_service
            ->request("GET", "/newsapi/keywords", {},
                      {{"X-API-Key", ServiceProcess::demoApiKey().toUtf8()}, {"X-Device-ID", deviceId()}})
            .object.value(QLatin1String("data"))
            .toArray();
    QStringList result;
    for (const QJsonValue &value : list) {
        const QJsonObject keyword = value.toObject();
        result.append(QStringLiteral("%1 %2 %3")
                          .arg(keyword.value(QLatin1String("keyword")).toString())
                          .arg(int(keyword.value(QLatin1String("is_active")).toBool()))
                          .arg(int(keyword.value(QLatin1String("is_selected")).toBool())));
    }
    return result;
}

void TestKeywordManagerDialog::holdNextAnswer() const
{
    m_service->addFault(QStringLiteral("/newsapi/keywords"), QStringLiteral("delay"),
                        {{QStringLiteral("delay_ms"), 700}, {QStringLiteral("count"), 1}});
}

QString TestKeywordManagerDialog::write(const QString &name, const QByteArray &bytes) const
{
    QFile target(file(name));
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qPrintable(target.fileName()));
    return target.fileName();
}

void TestKeywordManagerDialog::open(const QString &url)
{
    m_client = std::make_unique<ApiClient>();
    m_client->setBaseUrl(url);
    m_client->setApiKey(ServiceProcess::demoApiKey());
    m_client->setDeviceInfo(QString::fromLatin1(deviceId()), QStringLiteral("测试机"),
                            QStringLiteral("desktop"), QStringLiteral("Linux"), QStringLiteral("2.0.1"));
    m_dialog = std::make_unique<KeywordManagerDialog>(m_client.get());
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
}

void TestKeywordManagerDialog::openOnTheService()
{
    open(m_service->baseUrl());
    QVERIFY2(waitUntil([this] { return status() == loaded; }), qPrintable(status()));
    m_service->clearStatistics();
}

void TestKeywordManagerDialog::import(const QString &path)
{
    const auto choice = chooseFile(importTitle, path);
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onImportButtonClicked"));
    QVERIFY(choice->ended());
}

// What it is made of

void TestKeywordManagerDialog::looksAsItIsMeantTo()
{
    openOnTheService();
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("关键词管理"));
    QVERIFY(m_dialog->isModal());
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(m_dialog->size(), QSize(500, 500));
    QCOMPARE(field()->placeholderText(), QStringLiteral("输入或搜索关键词…"));
    QVERIFY(field()->hasFocus());
    QVERIFY(button("addButton")->isDefault());
    QCOMPARE(buttonOf(*m_dialog, QDialogButtonBox::Close)->text(), QStringLiteral("关闭"));

    QCOMPARE(table()->columnCount(), 3);
    QStringList headers;
    for (int column = 0; column < 3; ++column)
        headers.append(table()->horizontalHeaderItem(column)->text());
    QCOMPARE(headers,
             (QStringList{QStringLiteral("关键词"), QStringLiteral("状态"), QStringLiteral("自选")}));
    QCOMPARE(table()->columnWidth(0), 200);
    QCOMPARE(table()->columnWidth(1), 80);
    QVERIFY(table()->horizontalHeader()->stretchLastSection());
    QCOMPARE(table()->horizontalHeader()->length(), table()->viewport()->width());
    QCOMPARE(table()->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table()->selectionMode(), QAbstractItemView::SingleSelection);
    QVERIFY(table()->alternatingRowColors());
    QVERIFY(table()->isSortingEnabled());
}

void TestKeywordManagerDialog::firstShowLoadsTheListAndLaterOnesDoNot()
{
    holdNextAnswer();
    open(m_service->baseUrl());
    QCOMPARE(status(), QStringLiteral("正在加载关键词..."));
    QVERIFY(busy());
    QTRY_COMPARE(status(), loaded);
    QVERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
    QCOMPARE(table()->rowCount(), keywordCount);
    QCOMPARE(cells(preset), (QStringList{preset, QStringLiteral("启用"), QStringLiteral("否")}));
    QCOMPARE(cells(QStringLiteral("降准")),
             (QStringList{QStringLiteral("降准"), QStringLiteral("启用"), QStringLiteral("是")}));
    QVERIFY(table()->item(0, 0)->data(Qt::UserRole).toInt() > 0);
    // By the keyword, downwards, until the user chooses.
    QStringList sorted = texts();
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    QCOMPARE(texts(), sorted);

    m_dialog->hide();
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    QCOMPARE(requests("GET /newsapi/keywords"), 1);
    QCOMPARE(status(), loaded);
}

void TestKeywordManagerDialog::withoutAClientItSaysSo()
{
    const BoxAnswer answer(ok);
    m_dialog = std::make_unique<KeywordManagerDialog>(nullptr);
    m_dialog->show();
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(answer.text(), QStringLiteral("API客户端未初始化"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QVERIFY(!busy());
    QCOMPARE(status(), QStringLiteral("就绪"));
}

void TestKeywordManagerDialog::listThatIsNoJsonIsToldAndTheControlsComeBack()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::notJson());
    const BoxAnswer answer(ok);
    open(server.url());
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QVERIFY2(answer.text().startsWith(QStringLiteral("JSON解析错误")), qPrintable(answer.text()));
    QCOMPARE(status(), QStringLiteral("操作失败"));
    QVERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
}

void TestKeywordManagerDialog::firstLoadWithoutAReplyEndsAfterFifteenSeconds()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    const BoxAnswer answer(ok);
    open(server.url());
    auto *limit = m_dialog->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(limit->isActive());
    QVERIFY(limit->isSingleShot());
    QCOMPARE(limit->interval(), 15000);
    QVERIFY(buttonsEnabled(false));
    QVERIFY(server.waitForRequests(1));

    // The client has given its request up before, and the dialog hears nothing of that.
    const QSignalSpy lost(m_client.get(), &ApiClient::networkError);
    m_client->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->start(0);
    QTRY_COMPARE(lost.count(), 1);
    QVERIFY(busy());
    QVERIFY(!answer.shown());

    limit->start(0);
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("超时"));
    QCOMPARE(answer.text(), QStringLiteral("请求超时，请检查网络连接或稍后重试。"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QCOMPARE(status(), QStringLiteral("请求超时"));
    QVERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
}

void TestKeywordManagerDialog::replyAfterTheEndOfTheDialogIsNotSeen()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    open(server.url());
    QVERIFY(server.waitForRequests(1));
    m_dialog.reset();
    QSignalSpy received(m_client.get(), &ApiClient::keywordsReceived);
    QVERIFY(server.release(0, keywordList({keywordObject(1, preset)})));
    QTRY_COMPARE(received.count(), 1);
}

// The filter

void TestKeywordManagerDialog::typingShowsWhatContainsIt()
{
    openOnTheService();
    const auto *hint = m_dialog->findChild<EmptyListHint *>();
    QVERIFY(!hint->isVisible());
    WindowInput::type(m_dialog.get(), QStringLiteral("人"));
    QCOMPARE(texts().size(), 2);
    QVERIFY(texts().contains(QStringLiteral("人工智能")));
    QVERIFY(texts().contains(QStringLiteral("机器人")));
    WindowInput::type(m_dialog.get(), QStringLiteral("x"));
    QVERIFY(texts().isEmpty());
    QVERIFY(hint->isVisible());
    QCOMPARE(hint->text(), QStringLiteral("没有匹配的关键词，按回车键即可添加"));
    WindowInput::fill(field(), QStringLiteral("  "));
    QCOMPARE(texts().size(), keywordCount);
    QCOMPARE(requests("GET /newsapi/keywords"), 0);
}

void TestKeywordManagerDialog::listThatArrivesLaterIsFilteredToo()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    open(server.url());
    QVERIFY(server.waitForRequests(1));
    QCOMPARE(m_dialog->findChild<EmptyListHint *>()->text(), emptyHint);
    WindowInput::type(m_dialog.get(), QStringLiteral("aI "));
    QVERIFY(server.release(0, keywordList({keywordObject(1, QStringLiteral("AI算力"), false),
                                           keywordObject(2, QStringLiteral("光伏")),
                                           keywordObject(3, QStringLiteral("边缘ai"), true, true)})));
    QTRY_COMPARE(status(), QStringLiteral("已加载 3 个关键词"));
    QCOMPARE(texts(), (QStringList{QStringLiteral("边缘ai"), QStringLiteral("AI算力")}));
    QCOMPARE(cells(QStringLiteral("AI算力")).at(1), QStringLiteral("禁用"));
}

// Checks of the text

void TestKeywordManagerDialog::faultyTextIsRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    const QString tooLong = QStringLiteral("关键词长度不能超过15个字符");
    const QString foreign = QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    QTest::newRow("nothing") << QString() << QStringLiteral("关键词不能为空");
    QTest::newRow("blanks") << QStringLiteral("   ") << QStringLiteral("关键词不能为空");
    QTest::newRow("a blank inside") << QStringLiteral("固态 电池") << foreign;
    QTest::newRow("sixteen Chinese characters") << QString(16, QChar(u'光')) << tooLong;
    QTest::newRow("full-width digit") << QStringLiteral("光伏２") << foreign;
    QTest::newRow("full-width letter") << QStringLiteral("Ａ股") << foreign;
    QTest::newRow("punctuation") << QStringLiteral("涨停!") << foreign;
    QTest::newRow("just above the range") << QString(QChar(0x9FA6)) << foreign;
}

void TestKeywordManagerDialog::faultyTextIsRefused()
{
    QFETCH(QString, text);
    QFETCH(QString, message);
    openOnTheService();
    WindowInput::type(m_dialog.get(), text);
    const BoxAnswer answer(ok);
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("输入错误"));
    QCOMPARE(answer.text(), message);
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QVERIFY(!openDialog(addTitle));
    QCOMPARE(field()->text(), text);
    QCOMPARE(requests("POST /newsapi/keywords"), 0);
}

void TestKeywordManagerDialog::fifteenChineseCharactersAreTaken()
{
    openOnTheService();
    const QString text(15, QChar(u'光'));
    WindowInput::type(m_dialog.get(), text);
    const DialogVisit adding(addTitle, [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(adding.ended());
    QTRY_COMPARE(status(), QStringLiteral("关键词添加成功"));
    QVERIFY(onTheService().contains(text + QStringLiteral(" 1 0")));
}

void TestKeywordManagerDialog::equalKeywordIsRefused()
{
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral(" 降准 "));
    QCOMPARE(texts(), QStringList{QStringLiteral("降准")});
    const BoxAnswer answer(ok);
    WindowInput::click(button("addButton"));
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("重复关键词"));
    QCOMPARE(answer.text(), QStringLiteral("该关键词已存在"));
    QCOMPARE(requests("POST /newsapi/keywords"), 0);
}

// Adding

void TestKeywordManagerDialog::returnInTheFieldAdds_data()
{
    QTest::addColumn<bool>("selected");
    QTest::newRow("plain") << false;
    QTest::newRow("selected") << true;
}

void TestKeywordManagerDialog::returnInTheFieldAdds()
{
    QFETCH(bool, selected);
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral("固态电池"));
    holdNextAnswer();
    const DialogVisit adding(addTitle, [selected](QDialog &dialog) {
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.size(), QSize(400, 150));
        const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
        QCOMPARE(labels.size(), 2);
        QCOMPARE(labels.first()->styleSheet() + labels.last()->styleSheet(),
                 QStringLiteral("font-weight: bold; color: #2E8B57;"));
        auto *box = dialog.findChild<QCheckBox *>();
        QCOMPARE(box->text(), QStringLiteral("设为自选新闻关键词"));
        QVERIFY(!box->isChecked());
        QCOMPARE(buttonOf(dialog, QDialogButtonBox::Ok)->text(), QStringLiteral("确定"));
        QCOMPARE(buttonOf(dialog, QDialogButtonBox::Cancel)->text(), QStringLiteral("取消"));
        QVERIFY(box->hasFocus());
        if (selected)
            WindowInput::press(&dialog, Qt::Key_Space);
        QCOMPARE(box->isChecked(), selected);
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(adding.ended());
    QCOMPARE(status(), QStringLiteral("正在添加关键词..."));
    QVERIFY(busy());
    QVERIFY(buttonsEnabled(false));
    QTRY_COMPARE(status(), QStringLiteral("关键词添加成功"));
    QVERIFY(!busy());
    QVERIFY(field()->text().isEmpty());
    QCOMPARE(table()->rowCount(), keywordCount + 1);
    QCOMPARE(cells(QStringLiteral("固态电池")),
             (QStringList{QStringLiteral("固态电池"), QStringLiteral("启用"),
                          selected ? QStringLiteral("是") : QStringLiteral("否")}));
    QVERIFY(onTheService().contains(QStringLiteral("固态电池 1 %1").arg(int(selected))));
    QCOMPARE(requests("POST /newsapi/keywords"), 1);
}

void TestKeywordManagerDialog::cancelledAddAsksForNothing_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("Escape") << true;
    QTest::newRow("button") << false;
}

void TestKeywordManagerDialog::cancelledAddAsksForNothing()
{
    QFETCH(bool, byKey);
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral("固态电池"));
    const DialogVisit adding(addTitle, [byKey](QDialog &dialog) {
        if (byKey)
            WindowInput::press(&dialog, Qt::Key_Escape);
        else
            WindowInput::click(buttonOf(dialog, QDialogButtonBox::Cancel));
    });
    WindowInput::click(button("addButton"));
    QVERIFY(adding.ended());
    QVERIFY(!busy());
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(field()->text(), QStringLiteral("固态电池"));
    QCOMPARE(requests("POST /newsapi/keywords"), 0);
}

void TestKeywordManagerDialog::refusedAddIsToldInTheServicesWords()
{
    openOnTheService();
    m_service->addFault(QStringLiteral("/newsapi/keywords"), QStringLiteral("status"),
                        {{QStringLiteral("status"), 400},
                         {QStringLiteral("error"), QStringLiteral("关键词数量已达上限（200个）")},
                         {QStringLiteral("count"), 1}});
    WindowInput::type(m_dialog.get(), QStringLiteral("固态电池"));
    const BoxAnswer answer(ok);
    const DialogVisit adding(addTitle, [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(answer.text(), QStringLiteral("关键词数量已达上限（200个）"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QCOMPARE(status(), QStringLiteral("操作失败"));
    QVERIFY(!busy());
    QCOMPARE(field()->text(), QStringLiteral("固态电池"));
    QVERIFY(!texts().contains(QStringLiteral("固态电池")));
}

void TestKeywordManagerDialog::addedKeywordStandsInOrder()
{
    openOnTheService();
    // Upwards, by the header, as the user does.
    QHeaderView *header = table()->horizontalHeader();
    WindowInput::clickAt(header->viewport(), QPoint(20, header->height() / 2));
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    emit m_client->keywordAdded({900, QStringLiteral("A股"), true, true, {}, {}});
    QCOMPARE(texts().first(), QStringLiteral("A股"));
    QCOMPARE(cells(QStringLiteral("A股")),
             (QStringList{QStringLiteral("A股"), QStringLiteral("启用"), QStringLiteral("是")}));
    // With a filter that it does not match it is kept and not shown.
    WindowInput::type(m_dialog.get(), QStringLiteral("降准"));
    emit m_client->keywordAdded({901, QStringLiteral("B股"), true, false, {}, {}});
    QVERIFY(field()->text().isEmpty());
    QCOMPARE(texts().size(), keywordCount + 2);
}

// Editing

void TestKeywordManagerDialog::editWithoutARowSaysSo()
{
    openOnTheService();
    const BoxAnswer answer(ok);
    WindowInput::click(button("editButton"));
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("提示"));
    QCOMPARE(answer.text(), QStringLiteral("请先选择要编辑的关键词"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
}

void TestKeywordManagerDialog::editChangesTextAndFlags_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("button") << QStringLiteral("button");
    QTest::newRow("double click") << QStringLiteral("double click");
    QTest::newRow("Return in the list") << QStringLiteral("key");
}

void TestKeywordManagerDialog::editChangesTextAndFlags()
{
    QFETCH(QString, way);
    openOnTheService();
    const QString before = QStringLiteral("低空经济");
    clickRow(before);
    const DialogVisit editing(editTitle, [&before](QDialog &dialog) {
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.size(), QSize(400, 200));
        auto *text = dialog.findChild<QLineEdit *>();
        QCOMPARE(text->text(), before);
        QVERIFY(text->hasFocus());
        const QList<QCheckBox *> boxes = dialog.findChildren<QCheckBox *>();
        QCOMPARE(boxes.size(), 2);
        QCOMPARE(boxes.first()->text(), QStringLiteral("启用"));
        QVERIFY(boxes.first()->isChecked());
        QCOMPARE(boxes.last()->text(), QStringLiteral("设为自选新闻关键词"));
        QVERIFY(!boxes.last()->isChecked());
        // The whole text is marked, so that typing replaces it.
        WindowInput::type(&dialog, QStringLiteral("eVTOL"));
        for (QCheckBox *box : boxes) {
            WindowInput::press(&dialog, Qt::Key_Tab);
            QVERIFY(box->hasFocus());
            WindowInput::press(&dialog, Qt::Key_Space);
        }
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    if (way == QStringLiteral("button")) {
        WindowInput::click(button("editButton"));
    } else if (way == QStringLiteral("key")) {
        WindowInput::press(m_dialog.get(), Qt::Key_Return);
    } else {
        // Another row is the current one until then.
        clickRow(QStringLiteral("降准"));
        const QTableWidgetItem *item = table()->item(rowOf(before), 1);
        WindowInput::doubleClickAt(table()->viewport(), table()->visualItemRect(item).center());
    }
    QVERIFY(editing.ended());
    // The reply, and the list that is loaded again after it.
    QTRY_COMPARE(status(), loaded);
    QVERIFY(!busy());
    QVERIFY(!texts().contains(before));
    QCOMPARE(cells(QStringLiteral("eVTOL")),
             (QStringList{QStringLiteral("eVTOL"), QStringLiteral("禁用"), QStringLiteral("是")}));
    QVERIFY(onTheService().contains(QStringLiteral("eVTOL 0 1")));
}

void TestKeywordManagerDialog::onlyTheFlagsCanBeChanged()
{
    openOnTheService();
    clickRow(preset);
    QSignalSpy updated(m_client.get(), &ApiClient::keywordUpdated);
    QString statusAfter;
    holdNextAnswer();
    connect(m_client.get(), &ApiClient::keywordUpdated, m_dialog.get(),
            [this, &statusAfter] { statusAfter = status(); });
    const DialogVisit editing(editTitle, [](QDialog &dialog) {
        QCheckBox *active = dialog.findChildren<QCheckBox *>().first();
        WindowInput::clickAt(active, QPoint(8, active->height() / 2));
        QVERIFY(!active->isChecked());
        WindowInput::click(buttonOf(dialog, QDialogButtonBox::Ok));
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    QCOMPARE(status(), QStringLiteral("正在更新关键词..."));
    QVERIFY(busy());
    QTRY_COMPARE(updated.count(), 1);
    QCOMPARE(statusAfter, QStringLiteral("关键词更新成功"));
    QTRY_COMPARE(status(), loaded);
    QCOMPARE(cells(preset).at(1), QStringLiteral("禁用"));
    QVERIFY(onTheService().contains(preset + QStringLiteral(" 0 0")));
}

void TestKeywordManagerDialog::editWithoutAChangeAsksForNothing()
{
    openOnTheService();
    clickRow(preset);
    const DialogVisit editing(editTitle,
                              [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    QVERIFY(!busy());
    QCOMPARE(status(), loaded);
    QVERIFY(m_service->requests().isEmpty());
}

void TestKeywordManagerDialog::faultyEditIsRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");
    QTest::newRow("emptied") << QStringLiteral("  ") << QStringLiteral("错误")
                             << QStringLiteral("关键词不能为空");
    QTest::newRow("too long") << QString(16, QChar(u'光')) << QStringLiteral("输入错误")
                              << QStringLiteral("关键词长度不能超过15个字符");
    QTest::newRow("another row's") << QStringLiteral("回购") << QStringLiteral("重复关键词")
                                   << QStringLiteral("该关键词已存在");
}

void TestKeywordManagerDialog::faultyEditIsRefused()
{
    QFETCH(QString, text);
    QFETCH(QString, title);
    QFETCH(QString, message);
    openOnTheService();
    clickRow(QStringLiteral("降准"));
    std::unique_ptr<BoxAnswer> answer;
    const DialogVisit editing(editTitle, [&](QDialog &dialog) {
        WindowInput::fill(dialog.findChild<QLineEdit *>(), text);
        answer = std::make_unique<BoxAnswer>(ok);
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    QVERIFY(answer->shown());
    QCOMPARE(answer->title(), title);
    QCOMPARE(answer->text(), message);
    QVERIFY(m_service->requests().isEmpty());
    QVERIFY(texts().contains(QStringLiteral("降准")));
}

void TestKeywordManagerDialog::editUnderAFilterKnowsOnlyTheRowsShown()
{
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral("降"));
    clickRow(QStringLiteral("降准"));
    // Hidden by the filter: the dialog lets it pass, and the service has the last word.
    const BoxAnswer answer(ok);
    const DialogVisit editing(editTitle, [](QDialog &dialog) {
        WindowInput::fill(dialog.findChild<QLineEdit *>(), QStringLiteral("回购"));
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(m_service->requests().size(), 1);
    QVERIFY(m_service->requests()
                .first()
                .toObject()
                .value(QLatin1String("label"))
                .toString()
                .startsWith(QLatin1String("PUT ")));
}

void TestKeywordManagerDialog::refusedEditIsToldInTheServicesWords()
{
    openOnTheService();
    clickRow(preset);
    const BoxAnswer answer(ok);
    const DialogVisit editing(editTitle, [](QDialog &dialog) {
        WindowInput::fill(dialog.findChild<QLineEdit *>(), QStringLiteral("重组"));
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(answer.text(), QStringLiteral("无权限修改系统预设关键词，只能启用或禁用"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QVERIFY(texts().contains(preset));
    QVERIFY(!busy());
}

// Deleting

void TestKeywordManagerDialog::deleteWithoutARowSaysSo()
{
    openOnTheService();
    const BoxAnswer answer(ok);
    WindowInput::click(button("removeButton"));
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("提示"));
    QCOMPARE(answer.text(), QStringLiteral("请先选择要删除的关键词"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
}

void TestKeywordManagerDialog::deleteAsksFirstAndNoIsTheDefault_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void TestKeywordManagerDialog::deleteAsksFirstAndNoIsTheDefault()
{
    QFETCH(int, key);
    openOnTheService();
    clickRow(QStringLiteral("回购"));
    const DialogVisit question(QStringLiteral("确认删除"), [key](QDialog &dialog) {
        auto *box = qobject_cast<QMessageBox *>(&dialog);
        QVERIFY(box);
        QCOMPARE(box->text(), QStringLiteral("确定要删除关键词 \"回购\" 吗？"));
        QCOMPARE(box->button(QMessageBox::Yes)->text(), QStringLiteral("是"));
        QCOMPARE(box->button(QMessageBox::No)->text(), QStringLiteral("否"));
        QCOMPARE(box->defaultButton(), qobject_cast<QPushButton *>(box->button(QMessageBox::No)));
        WindowInput::press(&dialog, Qt::Key(key));
    });
    WindowInput::click(button("removeButton"));
    QVERIFY(question.ended());
    QVERIFY(!busy());
    QVERIFY(m_service->requests().isEmpty());
    QVERIFY(texts().contains(QStringLiteral("回购")));
}

void TestKeywordManagerDialog::confirmedDeleteTakesTheKeywordAway_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("button") << false;
    QTest::newRow("Delete in the list") << true;
}

void TestKeywordManagerDialog::confirmedDeleteTakesTheKeywordAway()
{
    QFETCH(bool, byKey);
    openOnTheService();
    clickRow(QStringLiteral("回购"));
    holdNextAnswer();
    const BoxAnswer answer(QStringLiteral("是"));
    if (byKey)
        WindowInput::press(m_dialog.get(), Qt::Key_Delete);
    else
        WindowInput::click(button("removeButton"));
    QVERIFY(answer.shown());
    QCOMPARE(status(), QStringLiteral("正在删除关键词..."));
    QVERIFY(busy());
    QTRY_COMPARE(status(), QStringLiteral("关键词删除成功"));
    QVERIFY(!busy());
    QVERIFY(!texts().contains(QStringLiteral("回购")));
    QCOMPARE(onTheService().size(), keywordCount - 1);
    // From the whole list as well: it does not come back with the next filter.
    WindowInput::fill(field(), QStringLiteral("回"));
    QVERIFY(texts().isEmpty());
}

void TestKeywordManagerDialog::errorInOtherLettersIsToldAsItIs_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("known");
    QTest::newRow("the system's own") << QStringLiteral("keyword NOT FOUND") << true;
    QTest::newRow("first letters") << QStringLiteral("keyword Not Found") << false;
    QTest::newRow("small letters") << QStringLiteral("keyword not found") << false;
}

void TestKeywordManagerDialog::errorInOtherLettersIsToldAsItIs()
{
    QFETCH(QString, words);
    QFETCH(bool, known);
    openOnTheService();
    const BoxAnswer answer(ok);
    emit m_client->errorOccurred(words);
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), known ? QStringLiteral("提示") : QStringLiteral("错误"));
    QCOMPARE(answer.text() == words, !known);
}

void TestKeywordManagerDialog::refusedDeleteIsToldInPlainWords_data()
{
    QTest::addColumn<bool>("gone");
    QTest::newRow("preset") << false;
    QTest::newRow("no longer there") << true;
}

void TestKeywordManagerDialog::refusedDeleteIsToldInPlainWords()
{
    QFETCH(bool, gone);
    openOnTheService();
    const QString text = gone ? QStringLiteral("回购") : preset;
    clickRow(text);
    if (gone) {
        const QByteArray id = QByteArray::number(table()->item(rowOf(text), 0)->data(Qt::UserRole).toInt());
        QCOMPARE(
            m_service
                ->request("DELETE", "/newsapi/keywords/" + id, {},
                          {{"X-API-Key", ServiceProcess::demoApiKey().toUtf8()}, {"X-Device-ID", deviceId()}})
                .status,
            200);
    }
    std::unique_ptr<BoxAnswer> told;
    const DialogVisit question(QStringLiteral("确认删除"), [&told](QDialog &dialog) {
        // Looks for a box only after this one has gone.
        told = std::make_unique<BoxAnswer>(ok);
        WindowInput::click(qobject_cast<QMessageBox *>(&dialog)->button(QMessageBox::Yes));
    });
    WindowInput::click(button("removeButton"));
    QVERIFY(question.ended());
    const BoxAnswer &answer = *told;
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("提示"));
    QCOMPARE(answer.text(), QStringLiteral("无法删除该关键词，可能是系统预设的关键词。\n"
                                           "您可以尝试编辑其状态来禁用该关键词。"));
    QCOMPARE(answer.icon(), QMessageBox::Information);
    QCOMPARE(status(), QStringLiteral("操作失败"));
    QVERIFY(!busy());
    QVERIFY(texts().contains(text));
}

void TestKeywordManagerDialog::deleteRepliesOfOthers()
{
    openOnTheService();
    emit m_client->keywordDeleted(0);
    QCOMPARE(status(), QStringLiteral("删除失败：无效的关键词ID"));
    emit m_client->keywordDeleted(987654);
    QCOMPARE(status(), QStringLiteral("删除操作完成"));
    QCOMPARE(table()->rowCount(), keywordCount);
    // Not among the rows, but in the list.
    const int id = table()->item(rowOf(preset), 0)->data(Qt::UserRole).toInt();
    WindowInput::type(m_dialog.get(), QStringLiteral("降准"));
    emit m_client->keywordDeleted(id);
    QCOMPARE(status(), QStringLiteral("关键词删除成功"));
    QCOMPARE(table()->rowCount(), 1);
}

// Export

void TestKeywordManagerDialog::exportWritesTheRowsShownInTheirOrder()
{
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral("人"));
    const auto choice = chooseFile(exportTitle, file(QStringLiteral("关键词 一.txt")));
    std::unique_ptr<BoxAnswer> answer = std::make_unique<BoxAnswer>(ok);
    WindowInput::click(button("exportButton"));
    QVERIFY(choice->ended());
    QVERIFY(answer->shown());
    QCOMPARE(answer->title(), QStringLiteral("成功"));
    QCOMPARE(answer->text(), QStringLiteral("关键词导出成功"));
    QCOMPARE(answer->icon(), QMessageBox::Information);
    QFile written(file(QStringLiteral("关键词 一.txt")));
    QVERIFY(written.open(QIODevice::ReadOnly | QIODevice::Text));
    QCOMPARE(texts().size(), 2);
    QCOMPARE(written.readAll(), (texts().join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
}

void TestKeywordManagerDialog::exportOfNothingSaysSo()
{
    openOnTheService();
    WindowInput::type(m_dialog.get(), QStringLiteral("zzz"));
    const BoxAnswer answer(ok);
    WindowInput::click(button("exportButton"));
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("提示"));
    QCOMPARE(answer.text(), QStringLiteral("没有关键词可以导出"));
    QCOMPARE(answer.icon(), QMessageBox::Information);
}

void TestKeywordManagerDialog::exportThatIsCancelledWritesNothing()
{
    openOnTheService();
    const DialogVisit choice(exportTitle, [](QDialog &dialog) {
        QCOMPARE(dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->text(),
                 QStringLiteral("keywords.txt"));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("exportButton"));
    QVERIFY(choice.ended());
    QVERIFY(!QApplication::activeModalWidget() || QApplication::activeModalWidget() == m_dialog.get());
    QVERIFY(!QFile::exists(QStringLiteral("keywords.txt")));
}

void TestKeywordManagerDialog::exportToAPlaceThatTakesNoFileSaysSo()
{
    openOnTheService();
    const auto choice = chooseFile(exportTitle, file(QStringLiteral("no such folder/keywords.txt")));
    const BoxAnswer answer(ok);
    WindowInput::click(button("exportButton"));
    QVERIFY(choice->ended());
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(answer.text(), QStringLiteral("无法创建文件"));
    QCOMPARE(answer.icon(), QMessageBox::Warning);
}

// Import

void TestKeywordManagerDialog::importIsNowhereToBeSeen()
{
    openOnTheService();
    QVERIFY(!m_dialog->findChild<QPushButton *>(QStringLiteral("importButton")));
    const QWidgetList widgets = QApplication::allWidgets();
    int standing = 0;
    for (const QWidget *widget : widgets) {
        const auto *candidate = qobject_cast<const QPushButton *>(widget);
        if (!candidate || candidate->text() != QStringLiteral("导入"))
            continue;
        ++standing;
        QVERIFY(!candidate->parent());
        QVERIFY(!candidate->isVisible());
    }
    QCOMPARE(standing, 1);
}

void TestKeywordManagerDialog::importCountsWhatWasTakenAndWhatNot()
{
    openOnTheService();
    const QString path = write(
        QStringLiteral("in.txt"),
        QStringLiteral("固态电池\r\n\n  量子计算  \n%1\n   \nAI\n").arg(QString(16, QChar(u'光'))).toUtf8());
    holdNextAnswer();
    import(path);
    QCOMPARE(status(), QStringLiteral("正在导入关键词 (1/4): 固态电池"));
    QVERIFY(busy());
    QVERIFY(buttonsEnabled(false));
    const BoxAnswer answer(ok);
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("导入结果"));
    QCOMPARE(answer.text(), QStringLiteral("导入完成\n成功: 3 个\n失败: 1 个"));
    QCOMPARE(answer.icon(), QMessageBox::Information);
    QVERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
    QCOMPARE(table()->rowCount(), keywordCount + 3);
    const QStringList there = onTheService();
    for (const QString &text : {QStringLiteral("固态电池"), QStringLiteral("量子计算"), QStringLiteral("AI")})
        QVERIFY(there.contains(text + QStringLiteral(" 1 0")));
    QCOMPARE(requests("POST /newsapi/keywords"), 3);
}

void TestKeywordManagerDialog::importRefusesWhatIsThereAlready()
{
    openOnTheService();
    // The filter narrows what is shown, not what is known.
    WindowInput::type(m_dialog.get(), QStringLiteral("人"));
    const BoxAnswer answer(ok);
    import(write(QStringLiteral("in.txt"), QStringLiteral("降准\n光伏\n光伏\n光 伏\n").toUtf8()));
    QTRY_VERIFY(answer.shown());
    QCOMPARE(answer.text(), QStringLiteral("导入完成\n成功: 1 个\n失败: 3 个"));
    QCOMPARE(requests("POST /newsapi/keywords"), 1);
    QCOMPARE(texts().size(), 2);
    QCOMPARE(field()->text(), QStringLiteral("人"));
}

void TestKeywordManagerDialog::importCountsWhatTheServiceRefuses()
{
    openOnTheService();
    m_service->addFault(QStringLiteral("/newsapi/keywords"), QStringLiteral("status"),
                        {{QStringLiteral("status"), 403},
                         {QStringLiteral("error"), QStringLiteral("今日已达上限")},
                         {QStringLiteral("count"), 1}});
    const BoxAnswer answer(ok);
    import(write(QStringLiteral("in.txt"), QStringLiteral("光伏\n氢能\n").toUtf8()));
    QTRY_VERIFY(answer.shown());
    // The refusal is counted and not shown.
    QCOMPARE(answer.title(), QStringLiteral("导入结果"));
    QCOMPARE(answer.text(), QStringLiteral("导入完成\n成功: 1 个\n失败: 1 个"));
    QVERIFY(!texts().contains(QStringLiteral("光伏")));
    QVERIFY(texts().contains(QStringLiteral("氢能")));
}

void TestKeywordManagerDialog::importOfAFileWithoutKeywordsSaysSo()
{
    openOnTheService();
    const BoxAnswer answer(ok);
    import(write(QStringLiteral("in.txt"), "\n  \r\n\t\n"));
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("提示"));
    QCOMPARE(answer.text(), QStringLiteral("文件中没有找到有效的关键词"));
    QCOMPARE(answer.icon(), QMessageBox::Information);
    QVERIFY(!busy());
}

void TestKeywordManagerDialog::unusableFileIsToldAndLosesNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("special");
    QTest::addColumn<QString>("message");
    const QString noText = QStringLiteral("文件不是UTF-8编码的文本，请另存为UTF-8后重试");
    const QString closed = QStringLiteral("无法打开文件");
    QTest::newRow("binary") << QByteArray("\x7f"
                                          "ELF\x02\x01\x01\0\0\0\n\xff\xfe",
                                          13)
                            << QString() << noText;
    QTest::newRow("GB18030") << QByteArray("\xB9\xE2\xB7\xFC\n") << QString() << noText;
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE\x49\x51\x0F\x4F\x0A\x00", 8) << QString() << noText;
    QTest::newRow("huge") << QByteArray(int(KeywordRules::maximumFileBytes) + 1, 'a') << QString()
                          << QStringLiteral("文件过大，关键词文件不能超过1MB");
    // It opens, and the first read fails, as on a disk that is broken.
    QTest::newRow("unreadable") << QByteArray() << QStringLiteral("/proc/self/mem") << closed;
    QTest::newRow("a pipe") << QByteArray() << QStringLiteral("pipe") << closed;
}

void TestKeywordManagerDialog::unusableFileIsToldAndLosesNothing()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, special);
    QFETCH(QString, message);
    openOnTheService();
    QString path = special;
    if (special.isEmpty()) {
        path = write(QStringLiteral("in.txt"), bytes);
    } else if (special == QStringLiteral("pipe")) {
        path = file(QStringLiteral("pipe.txt"));
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    }
    const QStringList before = onTheService();
    const QStringList shown = texts();
    m_service->clearStatistics();
    const BoxAnswer answer(ok);
    import(path);
    QVERIFY(answer.shown());
    QCOMPARE(answer.title(), QStringLiteral("错误"));
    QCOMPARE(answer.text(), message);
    QCOMPARE(answer.icon(), QMessageBox::Warning);
    QVERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
    QCOMPARE(status(), loaded);
    QCOMPARE(texts(), shown);
    QVERIFY(m_service->requests().isEmpty());
    QCOMPARE(onTheService(), before);
    if (special.isEmpty()) {
        QFile untouched(path);
        QVERIFY(untouched.open(QIODevice::ReadOnly));
        QCOMPARE(untouched.readAll(), bytes);
    }
}

void TestKeywordManagerDialog::cancelledImportDoesNothing()
{
    openOnTheService();
    const DialogVisit choice(importTitle,
                             [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Escape); });
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onImportButtonClicked"));
    QVERIFY(choice.ended());
    QVERIFY(!busy());
    QCOMPARE(status(), loaded);
    QVERIFY(m_service->requests().isEmpty());
}

void TestKeywordManagerDialog::longLineInAFileLeavesTheWindowAsItIs()
{
    openOnTheService();
    const QSize before = m_dialog->size();
    const BoxAnswer answer(ok);
    import(write(QStringLiteral("in.txt"), QByteArray(100000, 'a')));
    QVERIFY(answer.shown());
    QCOMPARE(answer.text(), QStringLiteral("导入完成\n成功: 0 个\n失败: 1 个"));
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->size(), before);
    QVERIFY(m_dialog->minimumSizeHint().width() <= before.width());
}

void TestKeywordManagerDialog::importEndsWithTheDialog()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    server.queueAnswer(keywordList({}));
    open(server.url());
    QTRY_COMPARE(status(), QStringLiteral("已加载 0 个关键词"));
    import(write(QStringLiteral("in.txt"), QStringLiteral("光伏\n氢能\n").toUtf8()));
    QVERIFY(server.waitForRequests(2));
    QVERIFY(busy());
    WindowInput::click(buttonOf(*m_dialog, QDialogButtonBox::Close));
    QVERIFY(!m_dialog->isVisible());
    m_dialog.reset();
    QSignalSpy added(m_client.get(), &ApiClient::keywordAdded);
    QVERIFY(server.release(
        1, RawAnswer::json({{QStringLiteral("success"), true},
                            {QStringLiteral("data"), keywordObject(1, QStringLiteral("光伏"))}})));
    QTRY_COMPARE(added.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(server.requests().size(), 2);
}

// Busy

void TestKeywordManagerDialog::busyDisablesTheButtonsAndShowsIt()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    open(server.url());
    QVERIFY(server.waitForRequests(1));
    QVERIFY(busy());
    const auto *bar = child<QProgressBar>("progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 0);
    QVERIFY(buttonsEnabled(false));
    QVERIFY(buttonOf(*m_dialog, QDialogButtonBox::Close)->isEnabled());
    // Return in the field presses the button, which does not answer now.
    WindowInput::type(m_dialog.get(), QStringLiteral("光伏"));
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(!openDialog(addTitle));
    QVERIFY(server.release(0, keywordList({})));
    QTRY_VERIFY(!busy());
    QVERIFY(buttonsEnabled(true));
}

void TestKeywordManagerDialog::closesWhileBusy_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("button") << QStringLiteral("button");
    QTest::newRow("Escape") << QStringLiteral("Escape");
    QTest::newRow("window") << QStringLiteral("window");
}

void TestKeywordManagerDialog::closesWhileBusy()
{
    QFETCH(QString, way);
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    open(server.url());
    QVERIFY(busy());
    if (way == QStringLiteral("button"))
        WindowInput::click(buttonOf(*m_dialog, QDialogButtonBox::Close));
    else if (way == QStringLiteral("Escape"))
        WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    else
        m_dialog->close();
    QVERIFY(!m_dialog->isVisible());
}

void TestKeywordManagerDialog::lostConnectionKeepsItBusyAndItCloses()
{
    // The dialog hears nothing of a connection that is lost under a change of the list, as meant: the window
    // behind it tells. It can still be closed.
    openOnTheService();
    m_service->addFault(QStringLiteral("/newsapi/keywords"), QStringLiteral("reset"));
    QSignalSpy lost(m_client.get(), &ApiClient::networkError);
    clickRow(QStringLiteral("回购"));
    {
        const BoxAnswer question(QStringLiteral("是"));
        WindowInput::click(button("removeButton"));
        QVERIFY(question.shown());
    }
    QTRY_COMPARE(lost.count(), 1);
    QVERIFY(busy());
    QCOMPARE(status(), QStringLiteral("正在删除关键词..."));
    QVERIFY(texts().contains(QStringLiteral("回购")));
    WindowInput::click(buttonOf(*m_dialog, QDialogButtonBox::Close));
    QVERIFY(!m_dialog->isVisible());
}

void TestKeywordManagerDialog::doubleClickWhileBusyDoesNothing()
{
    openOnTheService();
    m_service->addFault(QStringLiteral("/newsapi/keywords"), QStringLiteral("drop"));
    clickRow(QStringLiteral("回购"));
    {
        const BoxAnswer question(QStringLiteral("是"));
        WindowInput::click(button("removeButton"));
        QVERIFY(question.shown());
    }
    QVERIFY(busy());
    const QTableWidgetItem *item = table()->item(rowOf(preset), 0);
    WindowInput::doubleClickAt(table()->viewport(), table()->visualItemRect(item).center());
    QVERIFY(!openDialog(editTitle));
    QVERIFY(m_dialog->isVisible());
}

// Keyboard and looks

void TestKeywordManagerDialog::tabGoesInReadingOrder()
{
    openOnTheService();
    QStringList order;
    for (int i = 0; i < 8; ++i) {
        const QWidget *focused = m_dialog->focusWidget();
        order.append(focused == buttonOf(*m_dialog, QDialogButtonBox::Close) ? QStringLiteral("close")
                                                                             : focused->objectName());
        WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    }
    QCOMPARE(order, (QStringList{QStringLiteral("keywordEdit"), QStringLiteral("addButton"),
                                 QStringLiteral("keywordTable"), QStringLiteral("editButton"),
                                 QStringLiteral("removeButton"), QStringLiteral("exportButton"),
                                 QStringLiteral("close"), QStringLiteral("keywordEdit")}));
}

void TestKeywordManagerDialog::tabIntoTheListSelectsARow()
{
    openOnTheService();
    QVERIFY(table()->selectedItems().isEmpty());
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    WindowInput::press(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(table()->hasFocus());
    QCOMPARE(table()->currentRow(), 0);
    QCOMPARE(table()->selectedItems().size(), 3);
    WindowInput::press(m_dialog.get(), Qt::Key_Down);
    QCOMPARE(table()->currentRow(), 1);
    QVERIFY(table()->item(1, 0)->isSelected());
    const QString second = texts().at(1);
    const DialogVisit editing(editTitle, [&second](QDialog &dialog) {
        QCOMPARE(dialog.findChild<QLineEdit *>()->text(), second);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::press(m_dialog.get(), Qt::Key_Enter, Qt::KeypadModifier);
    QVERIFY(editing.ended());
    // Escape has closed the one dialog, not both.
    QVERIFY(m_dialog->isVisible());
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
}

void TestKeywordManagerDialog::labelsLeadToTheirFields()
{
    openOnTheService();
    const auto buddyOf = [](const QDialog &dialog, const QString &text) -> QWidget * {
        const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->text() == text)
                return label->buddy();
        }
        return nullptr;
    };
    QCOMPARE(buddyOf(*m_dialog, QStringLiteral("关键词:")), field());
    clickRow(preset);
    const DialogVisit editing(editTitle, [&buddyOf](QDialog &dialog) {
        QCOMPARE(buddyOf(dialog, QStringLiteral("关键词:")), dialog.findChild<QLineEdit *>());
        const QList<QCheckBox *> boxes = dialog.findChildren<QCheckBox *>();
        QCOMPARE(buddyOf(dialog, QStringLiteral("状态:")), boxes.first());
        QCOMPARE(buddyOf(dialog, QStringLiteral("自选:")), boxes.last());
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
}

void TestKeywordManagerDialog::textsOfTheServiceAreShownAsTheyAre()
{
    const QString markup = QStringLiteral("<b>粗</b> %1");
    RawHttpServer server;
    server.setAnswer(keywordList({keywordObject(1, markup)}));
    open(server.url());
    QTRY_COMPARE(texts(), QStringList{markup});
    clickRow(markup);
    const DialogVisit question(QStringLiteral("确认删除"), [&markup](QDialog &dialog) {
        const auto *box = qobject_cast<QMessageBox *>(&dialog);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QCOMPARE(box->text(), QStringLiteral("确定要删除关键词 \"") + markup + QStringLiteral("\" 吗？"));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("removeButton"));
    QVERIFY(question.ended());

    const DialogVisit told(QStringLiteral("错误"), [](QDialog &dialog) {
        // Escaped, as the box takes it for markup.
        QVERIFY(qobject_cast<QMessageBox *>(&dialog)->text().contains(QStringLiteral("&lt;b&gt;")));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    emit m_client->errorOccurred(QStringLiteral("服务说 <b>不行</b>"));
    QVERIFY(told.ended());
}

void TestKeywordManagerDialog::nothingIsCutOffAndEverythingIsReadable_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestKeywordManagerDialog::nothingIsCutOffAndEverythingIsReadable()
{
    QFETCH(bool, dark);
    useSkin(dark);
    openOnTheService();
    const auto check = [dark](QDialog &dialog) {
        const QWidgetList widgets = dialog.findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            const bool textual =
                qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QLineEdit *>(widget);
            if (!textual || !widget->isVisible())
                continue;
            const QSize wanted = widget->minimumSizeHint();
            QVERIFY2(widget->width() >= wanted.width() && widget->height() >= wanted.height(),
                     qPrintable(QLatin1String(widget->metaObject()->className()) + widget->objectName()));
        }
        // Ground and text are well apart, whatever is drawn with them.
        const QImage image = dialog.grab().toImage();
        const int ground = qGray(image.pixel(2, 2));
        QVERIFY2(dark ? ground < 100 : ground > 200, qPrintable(QString::number(ground)));
        int strongest = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                strongest = qMax(strongest, qAbs(qGray(image.pixel(x, y)) - ground));
        }
        QVERIFY2(strongest > 150, qPrintable(QString::number(strongest)));
    };
    check(*m_dialog);
    clickRow(preset);
    const DialogVisit editing(editTitle, [&check](QDialog &dialog) {
        check(dialog);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("editButton"));
    QVERIFY(editing.ended());
    WindowInput::fill(field(), QString(15, QChar(u'光')));
    const DialogVisit adding(addTitle, [&check](QDialog &dialog) {
        check(dialog);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(adding.ended());
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setQuitOnLastWindowClosed(false);
    TestKeywordManagerDialog test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_keywordmanagerdialog.moc"
