#include "linkage/FakePlatform.h"
#include "linkage/StockHelperDialog.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/ScriptedStockService.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QJsonArray>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <functional>
#include <memory>

namespace {

constexpr std::uint64_t tdxBase = 0x180000000;
constexpr std::uint64_t thsBase = 0x140000000;
constexpr std::uint64_t fittingOffset = 0x3000;
const QString greenLook = QStringLiteral("color: #4CAF50; font-weight: bold;");
const QString greyLook = QStringLiteral("color: #666; font-style: italic;");

FakePlatform::Process tdx(const QByteArray &code = "600519")
{
    FakePlatform::Process process;
    process.pid = 71;
    process.name = QStringLiteral("tdxw.exe");
    process.modules = {{tdxBase, QStringLiteral("Viewthem64.dll"), false}};
    process.memory.insert(tdxBase + fittingOffset, code);
    return process;
}

FakePlatform::Process ths()
{
    FakePlatform::Process process;
    process.pid = 72;
    process.name = QStringLiteral("hexin.exe");
    process.modules = {{thsBase, QStringLiteral("hexin.exe"), false}};
    process.memory.insert(thsBase + fittingOffset, QByteArray("\x00\x00\x01\x00", 4));
    process.memory.insert(0x10000, QByteArray("\x21"
                                              "000001\0",
                                              8));
    return process;
}

QJsonObject version(const QString &name, const QString &offset)
{
    return {{QStringLiteral("name"), QStringLiteral("行情软件")},
            {QStringLiteral("version"), name},
            {QStringLiteral("offset_address"), offset},
            {QStringLiteral("description"), QString()}};
}

/// Five versions of each program, of which the third fits.
QJsonObject fiveVersions()
{
    QJsonArray tdxVersions;
    QJsonArray thsVersions;
    for (int number = 1; number <= 5; ++number) {
        const QString offset = QString::number(number) + QStringLiteral("000");
        tdxVersions.append(version(QStringLiteral("7.6%1").arg(number), offset));
        thsVersions.append(version(QStringLiteral("9.3%1").arg(number), offset));
    }
    return {{QStringLiteral("tdx"), tdxVersions}, {QStringLiteral("ths"), thsVersions}};
}

} // namespace

/// Reads every message box that comes up and presses a button of it, and sees the box of the automatic test.
class Boxes final : public QObject
{
    Q_OBJECT

public:
    Boxes()
    {
        connect(&m_watch, &QTimer::timeout, this, &Boxes::look);
        m_watch.start(0);
    }

    QStringList shown;    ///< "title: text" of each box
    QStringList progress; ///< the texts of the automatic test's box
    QMessageBox::StandardButton answer =
        QMessageBox::Yes; ///< pressed where there is one; else whatever there is
    std::function<void(const QString &)> onProgress;

private:
    void look()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            const auto *box = qobject_cast<QMessageBox *>(widget);
            if (box != nullptr && box->isVisible() && box->buttons().isEmpty() &&
                (progress.isEmpty() || progress.last() != box->text())) {
                progress.append(box->text());
                if (onProgress)
                    onProgress(box->text());
            }
        }
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible() || box->buttons().isEmpty() || box == m_last)
            return;
        m_last = box;
        shown.append(box->windowTitle() + QStringLiteral(": ") + box->text());
        QAbstractButton *button = box->button(answer);
        if (button == nullptr)
            button = box->buttons().first();
        button->click();
        m_last = nullptr;
    }

    QTimer m_watch;
    const QMessageBox *m_last = nullptr;
};

class tst_StockHelperDialog : public QObject
{
    Q_OBJECT

    std::unique_ptr<ScriptedStockService> m_service;
    std::unique_ptr<FakePlatform> m_platform;
    std::unique_ptr<Boxes> m_boxes;
    std::unique_ptr<StockHelperDialog> m_dialog;

    template <typename Kind>
    Kind *find(const char *name) const
    {
        return m_dialog->findChild<Kind *>(QString::fromLatin1(name));
    }
    QComboBox *box(const char *name) const { return find<QComboBox>(name); }
    void click(const char *name) const { find<QPushButton>(name)->click(); }
    QString currentVersion() const { return find<QLabel>("currentVersionLabel")->text(); }

    void open()
    {
        m_dialog = std::make_unique<StockHelperDialog>(*m_platform);
        m_dialog->show();
    }
    void openWithLists()
    {
        open();
        QTRY_COMPARE(box("tdxComboBox")->count(),
                     m_service->softwareList.value(QStringLiteral("tdx")).toArray().size());
        QTRY_COMPARE(m_service->targets("/stockhelper/config").size(), 1);
    }

private slots:
    void init()
    {
        clearSettings();
        m_service = std::make_unique<ScriptedStockService>();
        m_service->softwareList = fiveVersions();
        m_service->linkageConfig = {{QStringLiteral("current_software"), QStringLiteral("tdx")},
                                    {QStringLiteral("tdx_version"), QString()},
                                    {QStringLiteral("ths_version"), QString()}};
        m_platform = std::make_unique<FakePlatform>();
        m_boxes = std::make_unique<Boxes>();
        ConfigManager::instance()->setApiServerUrl(m_service->url());
        ConfigManager::instance()->setSessionToken(QStringLiteral("stored-token"));
        StockApiConfig::instance()->refreshFromSettings();
        StockApiConfig::instance()->setTdxOffset(QStringLiteral("old"));
        StockApiConfig::instance()->setThsOffset(QStringLiteral("old"));
    }

    void cleanup()
    {
        m_dialog.reset();
        m_boxes.reset();
        m_platform.reset();
        m_service.reset();
    }

    void theFormHasItsTexts()
    {
        open();
        QCOMPARE(m_dialog->windowTitle(), QStringLiteral("股票软件联动设置"));
        QCOMPARE(m_dialog->size(), QSize(450, 350));
        QVERIFY(m_dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QCOMPARE(box("tdxComboBox")->placeholderText(), QStringLiteral("请选择偏移地址"));
        QCOMPARE(box("currentSoftwareComboBox")->itemText(0), QStringLiteral("通达信"));
        QCOMPARE(box("currentSoftwareComboBox")->itemText(1), QStringLiteral("同花顺"));
        QCOMPARE(find<QPushButton>("tdxTestButton")->text(), QStringLiteral("测试"));
        QCOMPARE(find<QPushButton>("thsTestButton")->text(), QStringLiteral("测试"));
        QCOMPARE(find<QPushButton>("saveButton")->text(), QStringLiteral("保存"));
        QCOMPARE(find<QPushButton>("closeButton")->text(), QStringLiteral("关闭"));
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 未测试"));
        QCOMPARE(find<QLabel>("currentVersionLabel")->styleSheet(), greyLook);
        QStringList groups;
        for (const QGroupBox *group : m_dialog->findChildren<QGroupBox *>())
            groups.append(group->title());
        QCOMPARE(groups, (QStringList{QStringLiteral("软件配置"), QStringLiteral("当前联动软件")}));
        QStringList captions;
        for (const QLabel *label : m_dialog->findChildren<QLabel *>()) {
            if (label->buddy() != nullptr)
                captions.append(label->text() + label->buddy()->objectName());
        }
        QCOMPARE(captions,
                 (QStringList{QStringLiteral("通达信:tdxComboBox"), QStringLiteral("同花顺:thsComboBox"),
                              QStringLiteral("选择当前的联动软件:currentSoftwareComboBox")}));
    }

    void theServiceFillsTheForm()
    {
        m_service->linkageConfig = {{QStringLiteral("current_software"), QStringLiteral("ths")},
                                    {QStringLiteral("tdx_version"), QStringLiteral("7.62")},
                                    {QStringLiteral("ths_version"), QStringLiteral("9.34")}};
        open();
        QTRY_COMPARE(box("tdxComboBox")->currentText(), QStringLiteral("7.62"));
        QTRY_COMPARE(box("thsComboBox")->currentText(), QStringLiteral("9.34"));
        QTRY_COMPARE(box("currentSoftwareComboBox")->currentIndex(), 1);
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 9.34"));
        QCOMPARE(find<QLabel>("currentVersionLabel")->styleSheet(), greenLook);
        QCOMPARE(box("tdxComboBox")->count(), 5);
        QVERIFY(m_boxes->shown.isEmpty());
    }

    void aListThatComesAheadOfTheConfigurationIsChosenFromAfterwards()
    {
        m_service->answerPath("/stockhelper/config", RawAnswer::hold());
        open();
        QTRY_COMPARE(box("tdxComboBox")->count(), 5);
        QCOMPARE(box("tdxComboBox")->currentIndex(), -1);
        QTRY_COMPARE(m_service->server().heldRequests().size(), 1);
        QVERIFY(m_service->server().release(
            m_service->server().heldRequests().first(),
            RawAnswer::json({{QStringLiteral("success"), true},
                             {QStringLiteral("data"),
                              QJsonObject{{QStringLiteral("current_software"), QStringLiteral("tdx")},
                                          {QStringLiteral("tdx_version"), QStringLiteral("7.62")},
                                          {QStringLiteral("ths_version"), QString()}}}})));
        QTRY_COMPARE(box("tdxComboBox")->currentText(), QStringLiteral("7.62"));
        QCOMPARE(box("thsComboBox")->currentIndex(), -1);
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 7.62"));
    }

    void aProgramThatNobodyKnowsLeavesTheFormAlone()
    {
        m_service->linkageConfig = {{QStringLiteral("current_software"), QStringLiteral("wind")},
                                    {QStringLiteral("tdx_version"), QStringLiteral("7.62")},
                                    {QStringLiteral("ths_version"), QStringLiteral("9.34")}};
        open();
        QTRY_COMPARE(box("tdxComboBox")->currentText(), QStringLiteral("7.62"));
        QTRY_COMPARE(box("thsComboBox")->currentText(), QStringLiteral("9.34"));
        QCOMPARE(box("currentSoftwareComboBox")->currentIndex(), 0);
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 未测试"));
        QCOMPARE(find<QLabel>("currentVersionLabel")->styleSheet(), greyLook);
    }

    void withoutALoginTheDialogWarnsAndStaysOpen()
    {
        ConfigManager::instance()->setSessionToken(QString());
        open();
        QTRY_COMPARE(m_boxes->shown, QStringList{QStringLiteral(
                                         "需要登录: 请先登录云雀资讯\n\n股票分析功能需要有效的登录状态。\n"
                                         "请关闭此对话框，在主程序中登录后再打开。")});
        QVERIFY(m_dialog->isVisible());
        QCOMPARE(box("tdxComboBox")->count(), 0);
        QCOMPARE(m_service->server().requests().size(), 0);
        m_boxes->shown.clear();
        click("tdxTestButton");
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("错误: 没有可用的通达信版本")});
        m_boxes->shown.clear();
        click("thsTestButton");
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("错误: 没有可用的同花顺版本")});
    }

    void withoutALoginTheChoiceIsKeptOnThisMachine()
    {
        ConfigManager *settings = ConfigManager::instance();
        settings->setSessionToken(QString());
        settings->setTdxVersion(QStringLiteral("7.62"));
        settings->setCurrentSoftware(QStringLiteral("tdx"));
        open();
        QTRY_COMPARE(m_boxes->shown.size(), 1);
        click("saveButton"); // a version that stands in the settings counts as tested
        QTRY_VERIFY(!m_dialog->isVisible());
        QCOMPARE(m_boxes->shown.last(), QStringLiteral("保存成功: 配置已保存到服务器"));
        QCOMPARE(settings->getTdxVersion(), QStringLiteral("7.62"));
        QCOMPARE(m_service->server().requests().size(), 0);
    }

    void aProgramThatDoesNotRunIsSaidWithoutAnOfferToGoOn_data()
    {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QString>("warning");
        QTest::newRow("tdx") << QByteArray("tdxComboBox") << QByteArray("tdxTestButton")
                             << QStringLiteral(
                                    "软件未运行: 请确保通达信软件正在运行，并进入股票分时图界面。");
        QTest::newRow("ths") << QByteArray("thsComboBox") << QByteArray("thsTestButton")
                             << QStringLiteral(
                                    "软件未运行: 请确保同花顺软件正在运行，并进入股票分时图界面。");
    }

    void aProgramThatDoesNotRunIsSaidWithoutAnOfferToGoOn()
    {
        QFETCH(QByteArray, box);
        QFETCH(QByteArray, button);
        QFETCH(QString, warning);
        openWithLists();
        find<QComboBox>(box.constData())->setCurrentIndex(1);
        click(button.constData());
        QCOMPARE(m_boxes->shown, QStringList{warning});
        QVERIFY(m_boxes->progress.isEmpty());
    }

    void aVersionThatFitsIsConfirmedAndSaved()
    {
        m_platform->processes = {tdx()};
        openWithLists();
        box("currentSoftwareComboBox")->setCurrentIndex(1);
        box("tdxComboBox")->setCurrentIndex(2);
        click("tdxTestButton");
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("测试成功: 成功读取通达信股票代码: 600519")});
        QCOMPARE(box("currentSoftwareComboBox")->currentIndex(), 0);
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 7.63"));
        QCOMPARE(find<QLabel>("currentVersionLabel")->styleSheet(), greenLook);
        QCOMPARE(ConfigManager::instance()->getTdxVersion(), QStringLiteral("7.63"));
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("tdx"));
        QCOMPARE(StockApiConfig::instance()->getTdxOffset(), QStringLiteral("3000"));
        QCOMPARE(StockApiConfig::instance()->getThsOffset(), QString());
        QTRY_COMPARE(m_service->posted().size(), 1);
        QCOMPARE(m_service->posted().first(),
                 (QJsonObject{{QStringLiteral("current_software"), QStringLiteral("tdx")},
                              {QStringLiteral("tdx_version"), QStringLiteral("7.63")},
                              {QStringLiteral("ths_version"), QString()},
                              {QStringLiteral("tdx_offset_addr"), QStringLiteral("3000")},
                              {QStringLiteral("ths_offset_addr"), QString()}}));
        QCOMPARE(m_platform->openHandles().size(), 0);
    }

    void theConfirmedVersionStaysWhenTheTrialOfAnotherFails()
    {
        m_service->linkageConfig.insert(QStringLiteral("tdx_version"), QStringLiteral("7.62"));
        m_platform->processes = {tdx(), ths()};
        openWithLists();
        QTRY_COMPARE(currentVersion(), QStringLiteral("当前版本: 7.62"));
        box("tdxComboBox")->setCurrentIndex(4);
        m_boxes->answer = QMessageBox::No;
        click("tdxTestButton");
        QCOMPARE(m_boxes->shown.size(), 1);
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 7.62"));
        // The program counts as not tested any more, and yet its version is not lost.
        click("saveButton");
        QCOMPARE(m_boxes->shown.last(), QStringLiteral("保存失败: 请先测试至少一个软件版本"));
        box("thsComboBox")->setCurrentIndex(2);
        click("thsTestButton");
        QTRY_COMPARE(m_service->posted().size(), 1);
        const QJsonObject saved = m_service->posted().first();
        QCOMPARE(saved.value(QStringLiteral("tdx_version")).toString(), QStringLiteral("7.62"));
        QCOMPARE(saved.value(QStringLiteral("tdx_offset_addr")).toString(), QStringLiteral("2000"));
        QCOMPARE(saved.value(QStringLiteral("ths_version")).toString(), QStringLiteral("9.33"));
    }

    void aBoxThatIsEmptiedCountsAsNotTested_data()
    {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QString>("versionKey");
        QTest::addColumn<QString>("version");
        QTest::newRow("tdx") << QByteArray("tdxComboBox") << QStringLiteral("tdx_version")
                             << QStringLiteral("7.62");
        QTest::newRow("ths") << QByteArray("thsComboBox") << QStringLiteral("ths_version")
                             << QStringLiteral("9.32");
    }

    void aBoxThatIsEmptiedCountsAsNotTested()
    {
        QFETCH(QByteArray, box);
        QFETCH(QString, versionKey);
        QFETCH(QString, version);
        m_service->linkageConfig.insert(versionKey, version);
        openWithLists();
        auto *versions = find<QComboBox>(box.constData());
        QTRY_COMPARE(versions->currentText(), version);
        // Another choice is none of its business.
        versions->setCurrentIndex(0);
        versions->setCurrentIndex(-1);
        QCOMPARE(versions->currentText(), QString());
        click("saveButton");
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("保存失败: 请先测试至少一个软件版本")});
        QVERIFY(m_service->posted().isEmpty());
    }

    void aChoiceBeyondTheListIsAnError_data()
    {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("tdx") << QByteArray("tdxComboBox") << QByteArray("tdxTestButton");
        QTest::newRow("ths") << QByteArray("thsComboBox") << QByteArray("thsTestButton");
    }

    void aChoiceBeyondTheListIsAnError()
    {
        QFETCH(QByteArray, box);
        QFETCH(QByteArray, button);
        m_platform->processes = {tdx(), ths()};
        openWithLists();
        auto *versions = find<QComboBox>(box.constData());
        versions->addItem(QStringLiteral("nobody's"));
        versions->setCurrentIndex(5);
        click(button.constData());
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("错误: 选中的版本索引无效")});
    }

    void aVersionThatDoesNotFitOffersTheAutomaticTest()
    {
        m_platform->processes = {tdx()};
        openWithLists();
        box("tdxComboBox")->setCurrentIndex(0);
        m_boxes->answer = QMessageBox::No;
        click("tdxTestButton");
        QCOMPARE(m_boxes->shown,
                 QStringList{QStringLiteral(
                     "测试失败: 当前版本 [7.61] 测试失败（版本不匹配）。\n\n是否自动测试其他版本？")});
        QVERIFY(m_boxes->progress.isEmpty());
        m_boxes->shown.clear();
        m_boxes->answer = QMessageBox::Yes;
        click("tdxTestButton");
        QCOMPARE(m_boxes->progress.size(), 3);
        QCOMPARE(box("tdxComboBox")->currentText(), QStringLiteral("7.63"));
    }

    void theAutomaticTestFindsTheThirdOfFive_data()
    {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("versions");
        QTest::addColumn<QString>("code");
        QTest::newRow("tdx") << QByteArray("tdxComboBox") << QByteArray("tdxTestButton")
                             << QStringLiteral("通达信") << QStringLiteral("7.6") << QStringLiteral("600519");
        QTest::newRow("ths") << QByteArray("thsComboBox") << QByteArray("thsTestButton")
                             << QStringLiteral("同花顺") << QStringLiteral("9.3") << QStringLiteral("000001");
    }

    void theAutomaticTestFindsTheThirdOfFive()
    {
        QFETCH(QByteArray, box);
        QFETCH(QByteArray, button);
        QFETCH(QString, word);
        QFETCH(QString, versions);
        QFETCH(QString, code);
        m_platform->processes = {tdx(), ths()};
        openWithLists();
        // Nothing is chosen yet: the button goes straight to the automatic test.
        QCOMPARE(find<QComboBox>(box.constData())->currentIndex(), -1);
        QElapsedTimer elapsed;
        elapsed.start();
        click(button.constData());
        QVERIFY(elapsed.elapsed() >= 200); // two pauses
        QStringList progress;
        for (int number = 1; number <= 3; ++number)
            progress.append(QStringLiteral("正在自动测试 %1 版本...\n\n当前: [%2%3]\n进度: %3/5")
                                .arg(word, versions, QString::number(number)));
        QCOMPARE(m_boxes->progress, progress);
        QCOMPARE(m_boxes->shown,
                 (QStringList{QStringLiteral("测试成功: 成功读取%1股票代码: %2").arg(word, code),
                              QStringLiteral("测试成功: 找到匹配的版本：\n\n[%1]\n\n配置已自动保存。")
                                  .arg(versions + QLatin1Char('3'))}));
        QCOMPARE(find<QComboBox>(box.constData())->currentText(), versions + QLatin1Char('3'));
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: %1").arg(versions + QLatin1Char('3')));
        QTRY_COMPARE(m_service->posted().size(), 1);
    }

    void aProgramClosedBetweenTwoVersionsEndsTheAutomaticTest()
    {
        m_platform->processes = {tdx()};
        openWithLists();
        m_boxes->onProgress = [this](const QString &text) {
            if (text.contains(QStringLiteral("2/5")))
                m_platform->processes.clear();
        };
        click("tdxTestButton");
        QCOMPARE(m_boxes->progress.size(), 2);
        QCOMPARE(m_boxes->shown,
                 QStringList{QStringLiteral(
                     "软件未运行: 检测到 通达信 软件未运行或未进入股票分时图界面。\n\n请确保：\n"
                     "1. 通达信 软件正在运行\n2. 已进入股票分时图界面\n\n然后再重新测试。")});
        QVERIFY(m_service->posted().isEmpty());
    }

    void anAutomaticTestInVainSaysWhatToDo()
    {
        m_platform->processes = {tdx(" 60051")};
        openWithLists();
        click("tdxTestButton");
        QCOMPARE(m_boxes->progress.size(), 5);
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral(
                                     "测试失败: 已测试所有 5 个 通达信 版本，均未成功。\n\n可能原因：\n1. "
                                     "您的 通达信 版本不在支持列表中\n"
                                     "2. 软件界面状态不正确\n\n建议：\n- 确认已进入股票分时图界面\n- "
                                     "尝试更新到最新版本的 通达信")});
        click("saveButton");
        QCOMPARE(m_boxes->shown.last(), QStringLiteral("保存失败: 请先测试至少一个软件版本"));
        QVERIFY(m_dialog->isVisible());
    }

    void aProgramWithoutVersionsCannotBeTested()
    {
        m_service->softwareList = {{QStringLiteral("tdx"), fiveVersions().value(QStringLiteral("tdx"))}};
        openWithLists();
        click("thsTestButton");
        QCOMPARE(m_boxes->shown, QStringList{QStringLiteral("错误: 没有可用的同花顺版本")});
    }

    void savingWithOnlyThsTestedSendsNoTdxVersion()
    {
        m_platform->processes = {ths()};
        openWithLists();
        box("thsComboBox")->setCurrentIndex(2);
        click("thsTestButton");
        QTRY_COMPARE(m_service->posted().size(), 1);
        click("saveButton");
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
        QCOMPARE(m_boxes->shown.last(), QStringLiteral("保存成功: 配置已保存到服务器"));
        QTRY_COMPARE(m_service->posted().size(), 2);
        const QJsonObject saved = m_service->posted().last();
        QCOMPARE(saved.value(QStringLiteral("tdx_version")).toString(QStringLiteral("none")), QString());
        QCOMPARE(saved.value(QStringLiteral("tdx_offset_addr")).toString(QStringLiteral("none")), QString());
        QCOMPARE(saved.value(QStringLiteral("ths_version")).toString(), QStringLiteral("9.33"));
        QCOMPARE(saved.value(QStringLiteral("ths_offset_addr")).toString(), QStringLiteral("3000"));
        QCOMPARE(saved.value(QStringLiteral("current_software")).toString(), QStringLiteral("ths"));
    }

    void aVersionThatTheServiceDoesNotListIsShownAndSavedWithoutAnOffset()
    {
        m_service->linkageConfig.insert(QStringLiteral("tdx_version"), QStringLiteral("5.01"));
        openWithLists();
        QTRY_COMPARE(currentVersion(), QStringLiteral("当前版本: 5.01"));
        QCOMPARE(box("tdxComboBox")->currentIndex(), -1);
        click("saveButton");
        QTRY_COMPARE(m_service->posted().size(), 1);
        QCOMPARE(m_service->posted().first().value(QStringLiteral("tdx_version")).toString(),
                 QStringLiteral("5.01"));
        QCOMPARE(m_service->posted().first().value(QStringLiteral("tdx_offset_addr")).toString(), QString());
        QCOMPARE(StockApiConfig::instance()->getTdxOffset(), QString());
    }

    void aSaveThatTheServiceRefusesIsKeptOnThisMachine()
    {
        m_service->linkageConfig.insert(QStringLiteral("tdx_version"), QStringLiteral("7.62"));
        openWithLists();
        QTRY_COMPARE(currentVersion(), QStringLiteral("当前版本: 7.62"));
        QCOMPARE(ConfigManager::instance()->getTdxVersion(), QString());
        m_service->answerPath("/stockhelper/config",
                              RawAnswer::json({{QStringLiteral("success"), false},
                                               {QStringLiteral("error"), QStringLiteral("存不下")}}));
        click("saveButton");
        QTRY_COMPARE(ConfigManager::instance()->getTdxVersion(), QStringLiteral("7.62"));
        QVERIFY(m_boxes->shown.contains(QStringLiteral("错误: 操作失败: 存不下")));
    }

    void twoEqualErrorsWithinASecondOpenOneDialog()
    {
        m_service->answerPath(
            "/stockhelper/config",
            RawAnswer::json({{QStringLiteral("error"), QStringLiteral("同样的错误")}}, 500));
        m_service->answerPath(
            "/stockhelper/software_list",
            RawAnswer::json({{QStringLiteral("error"), QStringLiteral("同样的错误")}}, 500));
        open();
        QTRY_COMPARE(m_boxes->shown, QStringList{QStringLiteral("错误: 操作失败: 同样的错误")});
        QTRY_COMPARE(m_service->server().requests().size(), 2);
        // Another text is another matter, also within the second.
        m_service->answerPath(
            "/stockhelper/config",
            RawAnswer::json({{QStringLiteral("error"), QStringLiteral("另一个错误")}}, 500));
        m_service->answerPath(
            "/stockhelper/software_list",
            RawAnswer::json({{QStringLiteral("error"), QStringLiteral("又一个错误")}}, 500));
        StockHelperDialog second(*m_platform);
        second.show();
        QTRY_COMPARE(m_boxes->shown.size(), 3);
        QCOMPARE(m_boxes->shown.count(QStringLiteral("错误: 操作失败: 同样的错误")), 1);
    }

    void theSameErrorIsShownAgainASecondLater()
    {
        const QString error = QStringLiteral("错误: 操作失败: 服务维护中");
        for (const char *path : {"/stockhelper/config", "/stockhelper/software_list"})
            m_service->answerPath(
                path, RawAnswer::json({{QStringLiteral("error"), QStringLiteral("服务维护中")}}, 500));
        open();
        QTRY_COMPARE(m_boxes->shown, QStringList{error});
        QElapsedTimer sinceFirst;
        sinceFirst.start();
        // The failure goes on; each new dialog runs into it.
        const auto shownAgain = [this] {
            open();
            return QTest::qWaitFor([this] { return m_boxes->shown.size() > 1; }, 200);
        };
        QTRY_VERIFY(shownAgain());
        QVERIFY2(sinceFirst.elapsed() >= 500, qPrintable(QString::number(sinceFirst.elapsed())));
        QCOMPARE(m_boxes->shown, (QStringList{error, error}));
    }

    void choosingTheProgramStoresItAndShowsItsVersion()
    {
        ConfigManager::instance()->setThsVersion(QStringLiteral("9.31"));
        openWithLists();
        box("currentSoftwareComboBox")->setCurrentIndex(1);
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("ths"));
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 9.31"));
        box("currentSoftwareComboBox")->setCurrentIndex(0);
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("tdx"));
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 未测试"));
        QCOMPARE(find<QLabel>("currentVersionLabel")->styleSheet(), greyLook);
        // No choice is stored too, as the one before it.
        ConfigManager::instance()->setCurrentSoftware(QStringLiteral("ths"));
        box("currentSoftwareComboBox")->setCurrentIndex(-1);
        QCOMPARE(ConfigManager::instance()->getCurrentSoftware(), QStringLiteral("tdx"));
        QCOMPARE(currentVersion(), QStringLiteral("当前版本: 未测试"));
    }

    void closingSavesNothing()
    {
        m_service->linkageConfig.insert(QStringLiteral("tdx_version"), QStringLiteral("7.62"));
        openWithLists();
        click("closeButton");
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(m_service->posted().isEmpty());
    }
};

LARKSPIRE_TEST_MAIN(tst_StockHelperDialog)
#include "tst_stockhelperdialog.moc"
