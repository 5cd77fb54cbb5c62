#include "accounts/DeviceIdentity.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigDialog.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "settings/ProgramVersion.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFile>
#include <QGroupBox>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTabBar>
#include <QTabWidget>
#include <QTextDocument>
#include <QTimer>
#include <QtTest>

#include <memory>

namespace {

const QString ok = QStringLiteral("OK");
const QString yes = QStringLiteral("是");
const QString no = QStringLiteral("否");
const QString resetTitle = QStringLiteral("确认重置");
const QString timedOut = QStringLiteral("连接超时，请检查服务器地址和网络连接");
const QString key = QStringLiteral("test-key");
constexpr int serverTab = 4;

void useSkin(bool dark)
{
    QApplication::setPalette(dark ? MainWindowSkin::darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(dark ? MainWindowSkin::darkStyleSheet() : QString());
}

QVariant stored(const char *settingsKey)
{
    return QSettings(settingsFilePath(), QSettings::IniFormat).value(QLatin1String(settingsKey));
}

/// A setting as the settings file has it, with a value that no default has.
struct Row
{
    const char *widget;
    const char *settingsKey;
    QVariant value; ///< what the user enters: a number, a flag or the text of an item
    QString inFile; ///< what the file holds then
};

/// Every setting of the dialog that is entered in a widget, in the order of the tabs.
QVector<Row> rows()
{
    return {
        {"ttsCheckBox", "Features/TTS", false, QStringLiteral("false")},
        {"speakStockCheckBox", "Features/EnableSepakStock", false, QStringLiteral("false")},
        {"notificationCheckBox", "Features/EnableNotification", false, QStringLiteral("false")},
        {"soundCheckBox", "Features/EnableSound", false, QStringLiteral("false")},
        {"autoStartCheckBox", "Features/EnableAutoStart", true, QStringLiteral("true")},
        {"rememberWindowStateCheckBox", "Features/RememberWindowState", false, QStringLiteral("false")},
        {"darkModeCheckBox", "Theme/DarkMode", true, QStringLiteral("true")},
        {"showNewsDetailsCheckBox", "Features/ShowNewsDetails", true, QStringLiteral("true")},
        {"refreshIntervalSpinBox", "Features/RefreshInterval", 33, QStringLiteral("33")},
        {"notificationPositionComboBox", "Features/NotificationPosition", QStringLiteral("下1/3处"),
         QStringLiteral("bottom_one_third")},
        {"mainBoardColorComboBox", "StockAnalysis/MainBoardColor", QStringLiteral("lime"),
         QStringLiteral("lime")},
        {"gemColorComboBox", "StockAnalysis/GemColor", QStringLiteral("aqua"), QStringLiteral("aqua")},
        {"starMarketColorComboBox", "StockAnalysis/StarMarketColor", QStringLiteral("fuchsia"),
         QStringLiteral("fuchsia")},
        {"beijingExchangeColorComboBox", "StockAnalysis/BeijingExchangeColor", QStringLiteral("white"),
         QStringLiteral("white")},
        {"stockCodeNameFontSizeSpinBox", "StockAnalysis/StockCodeNameFontSize", 17, QStringLiteral("17")},
        {"basicInfoFontSizeSpinBox", "StockAnalysis/BasicInfoFontSize", 18, QStringLiteral("18")},
        {"historyStatsFontSizeSpinBox", "StockAnalysis/HistoryStatsFontSize", 19, QStringLiteral("19")},
        {"openingMarketFontSizeSpinBox", "StockAnalysis/OpeningMarketFontSize", 20, QStringLiteral("20")},
        {"limitUpDetailFontSizeSpinBox", "StockAnalysis/LimitUpDetailFontSize", 21, QStringLiteral("21")},
        {"marketTitleFontSizeSpinBox", "MarketStats/TitleFontSize", 31, QStringLiteral("31")},
        {"marketLabelFontSizeSpinBox", "MarketStats/LabelFontSize", 23, QStringLiteral("23")},
        {"marketValueFontSizeSpinBox", "MarketStats/ValueFontSize", 27, QStringLiteral("27")},
        {"marketBoardRankingFontSizeSpinBox", "MarketStats/BoardRankingFontSize", 22, QStringLiteral("22")},
        {"marketRefreshIntervalSpinBox", "MarketStats/RefreshInterval", 44, QStringLiteral("44")},
        {"themeWidthSpinBox", "ThemeDialog/Width", 777, QStringLiteral("777")},
        {"themePositionComboBox", "ThemeDialog/Position", QStringLiteral("屏幕右边"), QStringLiteral("2")},
        {"themeSummaryFontSizeSpinBox", "ThemeDialog/SummaryFontSize", 11, QStringLiteral("11")},
        {"themeNameFontSizeSpinBox", "ThemeDialog/NameFontSize", 12, QStringLiteral("12")},
        {"themeDescFontSizeSpinBox", "ThemeDialog/DescFontSize", 13, QStringLiteral("13")},
        {"themeHotkeyComboBox", "ThemeDialog/Hotkey", QStringLiteral("邮件"), QStringLiteral("LauchMail")},
        {"dynamicHotkeyComboBox", "DynamicAnalysis/Hotkey", QStringLiteral("F24"), QStringLiteral("F24")},
        {"timeoutSpinBox", "API/Timeout", 29, QStringLiteral("29")},
    };
}

QVariant valueOf(const QWidget *widget)
{
    if (const auto *box = qobject_cast<const QCheckBox *>(widget))
        return box->isChecked();
    if (const auto *box = qobject_cast<const QSpinBox *>(widget))
        return box->value();
    if (const auto *box = qobject_cast<const QComboBox *>(widget))
        return box->currentText();
    return {};
}

QMessageBox &messageBox(QDialog &dialog)
{
    auto *box = qobject_cast<QMessageBox *>(&dialog);
    if (box == nullptr)
        qFatal("not a message box: %s", qPrintable(dialog.windowTitle()));
    return *box;
}

/// The items of a box: text and data.
QStringList itemsOf(const QComboBox &box)
{
    QStringList items;
    for (int i = 0; i < box.count(); ++i)
        items.append(box.itemText(i) + QLatin1Char('=') + box.itemData(i).toString());
    return items;
}

} // namespace

/// The settings dialog in a real window, its tests against the real service and against broken ones.
class TestConfigDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void looksAsItIsMeantTo();
    void choicesAreAsTheyAreMeantTo();
    void rangesAndSuffixes_data();
    void rangesAndSuffixes();

    void showsWhatIsStored();
    void darkModeComesFromTheWindow();
    void okWritesEverySetting();
    void configHasWhatTheWidgetsShowOverDefaults();
    void cancelWritesNothing_data();
    void cancelWritesNothing();
    void shortIntervalOfAFreshFileBecomesTheMinimum();
    void unknownChoicesLeaveTheItemThatIsHeld();
    void longTimeLimitIsBroughtIntoTheBox();
    void serverAndKeyAreTrimmed();
    void faultyEntriesKeepTheDialogOpen_data();
    void faultyEntriesKeepTheDialogOpen();

    void colorsAreChosenInChinese_data();
    void colorsAreChosenInChinese();
    void cancelledColorStays();
    void previewShowsTheStockColors();

    void connectionTestReachesTheService();
    void connectionTestSendsNothingBeyondItsHeaders();
    void keyTestIdentifiesItself();
    void keyTestReachesTheService();
    void wrongKeyIsToldInTheServicesWords();
    void faultyEntriesAreNotTested_data();
    void faultyEntriesAreNotTested();
    void brokenServersAreTold_data();
    void brokenServersAreTold();
    void silentServerEndsAtTheLimit_data();
    void silentServerEndsAtTheLimit();
    void buttonsWaitForTheEndOfATest();
    void closingEndsATestWithoutAWord();
    void testsTouchNoSetting();
    void textsOfTheServiceAreShownAsTheyAre();

    void deviceIsShownAndRefreshed();

    void resetAsksFirst();
    void resetWritesTheDefaultsAndStaysOpen();
    void resetKeepsLoginHotkeysAndConcepts();
    void cancelAfterAResetKeepsIt();

    void tabGoesInReadingOrder();
    void everyFieldHasALabel();
    void nothingIsCutOff_data();
    void nothingIsCutOff();

private:
    template <class Kind>
    Kind *child(const char *name) const
    {
        return m_dialog->findChild<Kind *>(QLatin1String(name));
    }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    QPushButton *okButton() const
    {
        return m_dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    }
    void open(const AppConfig &config = {});
    /// Opens a dialog whose fields hold an address and a key, on the tab of the server.
    void openAt(const QString &url, const QString &apiKey = key);
    /// Brings the tab of a widget to the front.
    void reveal(QWidget *widget) const;
    void enter(const Row &row) const;

    std::unique_ptr<ConfigDialog> m_dialog;
};

void TestConfigDialog::init()
{
    clearSettings();
    useSkin(false);
}

void TestConfigDialog::cleanup()
{
    m_dialog.reset();
}

void TestConfigDialog::open(const AppConfig &config)
{
    m_dialog = std::make_unique<ConfigDialog>(config);
    m_dialog->show();
    m_dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
}

void TestConfigDialog::openAt(const QString &url, const QString &apiKey)
{
    ConfigManager::instance()->setApiServerUrl(url);
    ConfigManager::instance()->setApiKey(apiKey);
    open();
    child<QTabWidget>("tabWidget")->setCurrentIndex(serverTab);
}

void TestConfigDialog::reveal(QWidget *widget) const
{
    auto *tabs = child<QTabWidget>("tabWidget");
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->widget(i)->isAncestorOf(widget))
            tabs->setCurrentIndex(i);
    }
}

void TestConfigDialog::enter(const Row &row) const
{
    auto *widget = child<QWidget>(row.widget);
    QVERIFY2(widget, row.widget);
    reveal(widget);
    if (auto *box = qobject_cast<QCheckBox *>(widget)) {
        if (box->isChecked() != row.value.toBool())
            WindowInput::clickAt(box, QPoint(8, box->height() / 2));
    } else if (auto *number = qobject_cast<QSpinBox *>(widget)) {
        number->setFocus();
        number->selectAll();
        WindowInput::type(number, row.value.toString());
    } else if (auto *choice = qobject_cast<QComboBox *>(widget)) {
        choice->setFocus();
        WindowInput::press(choice, Qt::Key_Home);
        for (int i = 0; i < choice->count() && choice->currentText() != row.value.toString(); ++i)
            WindowInput::press(choice, Qt::Key_Down);
    }
    QVERIFY2(valueOf(widget) == row.value, row.widget);
}

void TestConfigDialog::looksAsItIsMeantTo()
{
    open();
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("系统配置"));
    QVERIFY(m_dialog->isModal());
    QCOMPARE(m_dialog->size(), QSize(500, 600));
    const auto *tabs = child<QTabWidget>("tabWidget");
    QStringList captions;
    for (int i = 0; i < tabs->count(); ++i)
        captions.append(tabs->tabText(i));
    QCOMPARE(captions.join(QLatin1Char(' ')),
             QStringLiteral("功能配置 股票分析设置 行情统计设置 概念对话框设置 服务器配置 设备信息"));
    QStringList groups;
    const QList<QGroupBox *> boxes = m_dialog->findChildren<QGroupBox *>();
    for (const QGroupBox *box : boxes)
        groups.append(box->title());
    for (const char16_t *title :
         {u"股票代码颜色设置", u"字体大小设置", u"刷新设置", u"外观设置", u"概念名称字体", u"描述文字字体"})
        QVERIFY2(groups.contains(QString::fromUtf16(title)), qPrintable(QString::fromUtf16(title)));
    QCOMPARE(okButton()->text(), QStringLiteral("确定"));
    QVERIFY(okButton()->isDefault());
    QCOMPARE(m_dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->text(),
             QStringLiteral("取消"));
    QCOMPARE(button("resetButton")->text(), QStringLiteral("恢复默认"));
    const QRect buttonRow = m_dialog->findChild<QDialogButtonBox *>()->geometry();
    QVERIFY(buttonRow.top() <= button("resetButton")->geometry().center().y());
    QVERIFY(buttonRow.bottom() >= button("resetButton")->geometry().center().y());
    QCOMPARE(child<QLineEdit>("apiKeyEdit")->echoMode(), QLineEdit::Password);
    QCOMPARE(child<QLineEdit>("apiKeyEdit")->placeholderText(), QStringLiteral("请输入您的API Key"));
    QVERIFY(child<QLineEdit>("serverUrlEdit")->placeholderText().contains(QStringLiteral(":8888")));
    QStringList labels;
    const QList<QLabel *> all = m_dialog->findChildren<QLabel *>();
    for (const QLabel *label : all)
        labels.append(label->text());
    for (const char16_t *text :
         {u"说明：\n• 系统通知：在系统托盘显示通知\n• 语音播报：使用系统TTS朗读新闻标题",
          u"设置行情数据自动刷新间隔，最小10秒",
          u"说明：\n• 建议先测试连接，再测试API Key\n• 超时时间建议设置为5-30秒"})
        QVERIFY2(labels.contains(QString::fromUtf16(text)), qPrintable(QString::fromUtf16(text)));
    QVERIFY(child<QCheckBox>("ttsCheckBox")->hasFocus());
}

void TestConfigDialog::choicesAreAsTheyAreMeantTo()
{
    open();
    QCOMPARE(itemsOf(*child<QComboBox>("notificationPositionComboBox")).join(QLatin1Char(' ')),
             QStringLiteral("左上角=top_left 上中=top_center 右上角=top_right 居中=center 上1/5处=one_fifth "
                            "上1/3处=one_third 下1/3处=bottom_one_third 下1/5处=bottom_one_fifth "
                            "左下角=bottom_left 下中=bottom_center 右下角=bottom_right"));
    QCOMPARE(itemsOf(*child<QComboBox>("themePositionComboBox")).join(QLatin1Char(' ')),
             QStringLiteral("屏幕左边=0 屏幕中间=1 屏幕右边=2"));
    for (const char *name : {"themeHotkeyComboBox", "dynamicHotkeyComboBox"}) {
        QCOMPARE(itemsOf(*child<QComboBox>(name)).join(QLatin1Char('|')),
                 QStringLiteral("~ (波浪号)=Tilde|Tab=Tab|Launch=Launch|主页=HomePage|搜索=Search|"
                                "邮件=LauchMail|F13=F13|F14=F14|F15=F15|F16=F16|F17=F17|F18=F18|F19=F19|"
                                "F20=F20|F21=F21|F22=F22|F23=F23|F24=F24"));
    }
    for (const char *name : {"mainBoardColorComboBox", "gemColorComboBox", "starMarketColorComboBox",
                             "beijingExchangeColorComboBox"}) {
        const auto *box = child<QComboBox>(name);
        QCOMPARE(box->count(), 20);
        for (int i = 0; i < box->count(); ++i) {
            const QImage swatch = box->itemIcon(i).pixmap(20, 20).toImage();
            QCOMPARE(swatch.size(), QSize(20, 20));
            QCOMPARE(swatch.pixelColor(10, 10), QColor(box->itemData(i).toString()));
        }
    }
}

void TestConfigDialog::rangesAndSuffixes_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QString>("suffix");
    const QString pixels = QStringLiteral(" 像素");
    const QString seconds = QStringLiteral(" 秒");
    QTest::newRow("refreshIntervalSpinBox") << 10 << 300 << seconds;
    for (const char *name :
         {"stockCodeNameFontSizeSpinBox", "basicInfoFontSizeSpinBox", "historyStatsFontSizeSpinBox",
          "openingMarketFontSizeSpinBox", "limitUpDetailFontSizeSpinBox", "marketLabelFontSizeSpinBox",
          "marketBoardRankingFontSizeSpinBox"})
        QTest::newRow(name) << 8 << 24 << pixels;
    QTest::newRow("marketTitleFontSizeSpinBox") << 10 << 32 << pixels;
    QTest::newRow("marketValueFontSizeSpinBox") << 10 << 28 << pixels;
    QTest::newRow("marketRefreshIntervalSpinBox") << 10 << 300 << seconds;
    QTest::newRow("themeWidthSpinBox") << 300 << 1800 << pixels;
    QTest::newRow("themeSummaryFontSizeSpinBox") << 10 << 30 << QString();
    QTest::newRow("themeNameFontSizeSpinBox") << 12 << 30 << QString();
    QTest::newRow("themeDescFontSizeSpinBox") << 10 << 30 << QString();
    QTest::newRow("timeoutSpinBox") << 5 << 30 << seconds;
}

void TestConfigDialog::rangesAndSuffixes()
{
    ConfigDialog dialog{AppConfig()};
    const auto *box = dialog.findChild<QSpinBox *>(QLatin1String(QTest::currentDataTag()));
    QVERIFY(box);
    QTEST(box->minimum(), "minimum");
    QTEST(box->maximum(), "maximum");
    QTEST(box->suffix(), "suffix");
}

void TestConfigDialog::showsWhatIsStored()
{
    {
        QSettings file(settingsFilePath(), QSettings::IniFormat);
        for (const Row &row : rows())
            file.setValue(QLatin1String(row.settingsKey), row.inFile);
        file.setValue(QStringLiteral("API/ServerUrl"), QStringLiteral("https://larkspire.example"));
        file.setValue(QStringLiteral("API/Key"), key);
        file.setValue(QStringLiteral("ThemeDialog/BgColor"), QStringLiteral("#010203"));
        file.setValue(QStringLiteral("ThemeDialog/DescColor"), QStringLiteral("#040506"));
    }
    AppConfig config;
    config.darkMode = true;
    open(config);
    for (const Row &row : rows())
        QVERIFY2(valueOf(child<QWidget>(row.widget)) == row.value, row.widget);
    QCOMPARE(child<QLineEdit>("serverUrlEdit")->text(), QStringLiteral("https://larkspire.example"));
    QCOMPARE(child<QLineEdit>("apiKeyEdit")->text(), key);
    QCOMPARE(child<QLabel>("themeBgColorButtonPreview")->styleSheet(),
             QStringLiteral("background-color: #010203;"));
    QCOMPARE(child<QLabel>("themeDescColorButtonPreview")->styleSheet(),
             QStringLiteral("background-color: #040506; color: white;"));
}

void TestConfigDialog::darkModeComesFromTheWindow()
{
    ConfigManager::instance()->setDarkMode(false);
    AppConfig config;
    config.darkMode = true;
    // Everything else is the store's.
    config.enableTts = false;
    config.refreshInterval = 123;
    open(config);
    QVERIFY(child<QCheckBox>("darkModeCheckBox")->isChecked());
    QVERIFY(child<QCheckBox>("ttsCheckBox")->isChecked());
    QCOMPARE(child<QSpinBox>("refreshIntervalSpinBox")->value(), 10);
}

void TestConfigDialog::okWritesEverySetting()
{
    openAt(QStringLiteral("http://127.0.0.1:9"), key);
    for (const Row &row : rows())
        enter(row);
    WindowInput::click(okButton());
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QVERIFY(!m_dialog->wasReset());
    // The file itself, as another program sees it.
    QFile file(settingsFilePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("LauchMail"));
    for (const Row &row : rows())
        QVERIFY2(stored(row.settingsKey).toString() == row.inFile, row.settingsKey);
    QCOMPARE(stored("API/ServerUrl").toString(), QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(stored("API/Key").toString(), key);
    QCOMPARE(stored("ThemeDialog/BgColor").toString(), QStringLiteral("#2c3e50"));
    QCOMPARE(stored("ThemeDialog/CardBgColor").toString(), QStringLiteral("#353535"));
    QCOMPARE(stored("ThemeDialog/NameColor").toString(), QStringLiteral("#aaff00"));
    QCOMPARE(stored("ThemeDialog/DescColor").toString(), QStringLiteral("#ffaa00"));
}

void TestConfigDialog::configHasWhatTheWidgetsShowOverDefaults()
{
    ConfigManager::instance()->setEnableTopmost(true);
    ConfigManager::instance()->setTtsVolume(0.3);
    openAt(QStringLiteral(" http://x \n"), QStringLiteral(" k "));
    for (const Row &row : rows())
        enter(row);
    const AppConfig config = m_dialog->getConfig();
    QCOMPARE(config.serverUrl, QStringLiteral("http://x"));
    QCOMPARE(config.apiKey, QStringLiteral("k"));
    QCOMPARE(config.timeout, 29);
    QCOMPARE(config.refreshInterval, 33);
    QVERIFY(!config.enableSepakStock);
    QVERIFY(!config.enableNotification);
    QVERIFY(!config.enableSound);
    QVERIFY(!config.enableTts);
    QVERIFY(config.enableAutoStart);
    QCOMPARE(config.notificationPosition, QStringLiteral("bottom_one_third"));
    QVERIFY(!config.rememberWindowState);
    QVERIFY(config.darkMode);
    QVERIFY(config.showNewsDetails);
    QCOMPARE(config.mainBoardColor, QStringLiteral("lime"));
    QCOMPARE(config.gemColor, QStringLiteral("aqua"));
    QCOMPARE(config.starMarketColor, QStringLiteral("fuchsia"));
    QCOMPARE(config.beijingExchangeColor, QStringLiteral("white"));
    QCOMPARE(config.stockCodeNameFontSize, 17);
    QCOMPARE(config.basicInfoFontSize, 18);
    QCOMPARE(config.historyStatsFontSize, 19);
    QCOMPARE(config.openingMarketFontSize, 20);
    QCOMPARE(config.limitUpDetailFontSize, 21);
    QCOMPARE(config.marketTitleFontSize, 31);
    QCOMPARE(config.marketLabelFontSize, 23);
    QCOMPARE(config.marketValueFontSize, 27);
    QCOMPARE(config.marketBoardRankingFontSize, 22);
    QCOMPARE(config.marketRefreshInterval, 44);
    QCOMPARE(config.themeBgColor, QStringLiteral("#2c3e50"));
    QCOMPARE(config.themeWidth, 777);
    QCOMPARE(config.themePosition, 2);
    QCOMPARE(config.themeCardBgColor, QStringLiteral("#353535"));
    QCOMPARE(config.themeSummaryFontSize, 11);
    QCOMPARE(config.themeNameColor, QStringLiteral("#aaff00"));
    QCOMPARE(config.themeNameFontSize, 12);
    QCOMPARE(config.themeDescColor, QStringLiteral("#ffaa00"));
    QCOMPARE(config.themeDescFontSize, 13);
    QCOMPARE(config.themeHotkey, QStringLiteral("LauchMail"));
    QCOMPARE(config.dynamicHotkey, QStringLiteral("F24"));
    // No widget has these two.
    QVERIFY(!config.enableTopmost);
    QCOMPARE(config.ttsVolume, 0.5);
}

void TestConfigDialog::cancelWritesNothing_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("button") << true;
    QTest::newRow("Escape") << false;
}

void TestConfigDialog::cancelWritesNothing()
{
    QFETCH(bool, byButton);
    openAt(QStringLiteral("http://127.0.0.1:9"));
    for (const Row &row : rows())
        enter(row);
    if (byButton)
        WindowInput::click(m_dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel));
    else
        WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    for (const Row &row : rows())
        QVERIFY2(!stored(row.settingsKey).isValid() || stored(row.settingsKey).toString() != row.inFile,
                 row.settingsKey);
}

void TestConfigDialog::shortIntervalOfAFreshFileBecomesTheMinimum()
{
    QCOMPARE(ConfigManager::instance()->getRefreshInterval(), 8);
    openAt(QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(child<QSpinBox>("refreshIntervalSpinBox")->value(), 10);
    WindowInput::press(m_dialog.get(), Qt::Key_Return);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(stored("Features/RefreshInterval").toInt(), 10);
}

void TestConfigDialog::unknownChoicesLeaveTheItemThatIsHeld()
{
    ConfigManager::instance()->setMainBoardColor(QStringLiteral("crimson"));
    ConfigManager::instance()->setGemColor(QStringLiteral("Cyan"));
    ConfigManager::instance()->setNotificationPosition(QStringLiteral("nowhere"));
    ConfigManager::instance()->setThemeHotkey(QStringLiteral("LaunchMail"));
    ConfigManager::instance()->setThemePosition(7);
    ConfigManager::instance()->setThemeNameColor(QStringLiteral("no colour"));
    openAt(QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(child<QComboBox>("mainBoardColorComboBox")->currentText(), QStringLiteral("red"));
    WindowInput::click(okButton());
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(stored("StockAnalysis/MainBoardColor").toString(), QStringLiteral("red"));
    QCOMPARE(stored("StockAnalysis/GemColor").toString(), QStringLiteral("red"));
    QCOMPARE(stored("Features/NotificationPosition").toString(), QStringLiteral("top_left"));
    QCOMPARE(stored("ThemeDialog/Hotkey").toString(), QStringLiteral("Tilde"));
    QCOMPARE(stored("ThemeDialog/Position").toInt(), 0);
    QCOMPARE(stored("ThemeDialog/NameColor").toString(), QStringLiteral("#aaff00"));
}

void TestConfigDialog::longTimeLimitIsBroughtIntoTheBox()
{
    ConfigManager::instance()->setApiTimeout(45);
    openAt(QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(child<QSpinBox>("timeoutSpinBox")->value(), 30);
    WindowInput::click(okButton());
    QCOMPARE(stored("API/Timeout").toInt(), 30);
}

void TestConfigDialog::serverAndKeyAreTrimmed()
{
    openAt(QStringLiteral("  http://127.0.0.1:9 "), QStringLiteral(" k\t"));
    WindowInput::click(okButton());
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(stored("API/ServerUrl").toString(), QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(stored("API/Key").toString(), QStringLiteral("k"));
}

void TestConfigDialog::faultyEntriesKeepTheDialogOpen_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("apiKey");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("focus");
    const QString address = QStringLiteral("serverUrlEdit");
    QTest::newRow("no address") << " " << key << QStringLiteral("API服务器地址不能为空") << address;
    QTest::newRow("another scheme") << "ftp://x" << key
                                    << QStringLiteral("API服务器地址必须以http://或https://开头") << address;
    QTest::newRow("no key") << "http://x"
                            << " " << QStringLiteral("API Key不能为空") << QStringLiteral("apiKeyEdit");
}

void TestConfigDialog::faultyEntriesKeepTheDialogOpen()
{
    QFETCH(QString, address);
    QFETCH(QString, apiKey);
    QFETCH(QString, text);
    QFETCH(QString, focus);
    openAt(address, apiKey);
    child<QTabWidget>("tabWidget")->setCurrentIndex(0);
    child<QSpinBox>("refreshIntervalSpinBox")->setValue(99);
    const BoxAnswer box(ok);
    WindowInput::click(okButton());
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.title(), QStringLiteral("配置错误"));
    QCOMPARE(box.text(), text);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(stored("Features/RefreshInterval").toInt() != 99);
    // The user stands where the fault is.
    QTRY_COMPARE(QApplication::focusWidget(), child<QWidget>(qPrintable(focus)));
}

void TestConfigDialog::colorsAreChosenInChinese_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QByteArray>("settingsKey");
    QTest::addColumn<QString>("style");
    const QString background = QStringLiteral("background-color: #123456;");
    const QString font = QStringLiteral("background-color: #123456; color: white;");
    QTest::newRow("background") << "themeBgColorButton" << QStringLiteral("选择对话框背景颜色")
                                << QByteArrayLiteral("ThemeDialog/BgColor") << background;
    QTest::newRow("card") << "themeCardBgColorButton" << QStringLiteral("选择卡片背景颜色")
                          << QByteArrayLiteral("ThemeDialog/CardBgColor") << background;
    QTest::newRow("name") << "themeNameColorButton" << QStringLiteral("选择概念名称颜色")
                          << QByteArrayLiteral("ThemeDialog/NameColor") << font;
    QTest::newRow("description") << "themeDescColorButton" << QStringLiteral("选择描述文字颜色")
                                 << QByteArrayLiteral("ThemeDialog/DescColor") << font;
}

void TestConfigDialog::colorsAreChosenInChinese()
{
    QFETCH(QString, button);
    QFETCH(QString, title);
    QFETCH(QByteArray, settingsKey);
    QFETCH(QString, style);
    openAt(QStringLiteral("http://127.0.0.1:9"));
    auto *opener = child<QPushButton>(qPrintable(button));
    reveal(opener);
    QCOMPARE(opener->text(), QStringLiteral("选择颜色"));
    const QString before = stored(settingsKey.constData()).toString();
    const DialogVisit visit(title, [](QDialog &dialog) {
        const auto *chooser = qobject_cast<QColorDialog *>(&dialog);
        QVERIFY(chooser);
        QVERIFY(chooser->testOption(QColorDialog::DontUseNativeDialog));
        QStringList captions;
        QPushButton *accept = nullptr;
        const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
        for (QPushButton *candidate : buttons) {
            captions.append(candidate->text());
            if (candidate->text() == QStringLiteral("确定"))
                accept = candidate;
        }
        captions.sort();
        QStringList wanted{QStringLiteral("取消"), QStringLiteral("确定"), QStringLiteral("拾取屏幕颜色"),
                           QStringLiteral("添加到自定义颜色")};
        wanted.sort();
        QCOMPARE(captions, wanted);
        // No caption of Qt's own is left.
        const QRegularExpression english(QStringLiteral("[a-z]{3}"));
        const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
        for (const QLabel *label : labels)
            QVERIFY2(!label->isVisible() || !label->text().contains(english), qPrintable(label->text()));
        QLineEdit *html = nullptr;
        const QList<QLineEdit *> edits = dialog.findChildren<QLineEdit *>();
        for (QLineEdit *edit : edits) {
            if (qobject_cast<QSpinBox *>(edit->parentWidget()) == nullptr)
                html = edit;
        }
        QVERIFY(html);
        WindowInput::fill(html, QStringLiteral("#123456"));
        QVERIFY(accept);
        WindowInput::click(accept);
    });
    WindowInput::click(opener);
    QVERIFY(visit.ended());
    QCOMPARE(child<QLabel>(qPrintable(button + QStringLiteral("Preview")))->styleSheet(), style);
    // Stored by OK, not before.
    QCOMPARE(stored(settingsKey.constData()).toString(), before);
    WindowInput::click(okButton());
    QCOMPARE(stored(settingsKey.constData()).toString(), QStringLiteral("#123456"));
}

void TestConfigDialog::cancelledColorStays()
{
    ConfigManager::instance()->setThemeBgColor(QStringLiteral("#0a0b0c"));
    open();
    reveal(button("themeBgColorButton"));
    const DialogVisit visit(QStringLiteral("选择对话框背景颜色"), [](QDialog &dialog) {
        const auto *chooser = qobject_cast<QColorDialog *>(&dialog);
        QCOMPARE(chooser->currentColor(), QColor(10, 11, 12));
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("themeBgColorButton"));
    QVERIFY(visit.ended());
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(m_dialog->getConfig().themeBgColor, QStringLiteral("#0a0b0c"));
}

void TestConfigDialog::previewShowsTheStockColors()
{
    open();
    enter({"gemColorComboBox", "", QStringLiteral("fuchsia"), QString()});
    const DialogVisit visit(QStringLiteral("股票代码颜色预览"), [](QDialog &dialog) {
        const struct
        {
            const char *name;
            QString text;
            QColor color;
        } samples[] = {
            {"mainBoardSampleLabel", QStringLiteral("主板 (000001 平安银行)"), QColor(255, 165, 0)},
            {"gemSampleLabel", QStringLiteral("创业板 (300001 特锐德)"), QColor(255, 0, 255)},
            {"starMarketSampleLabel", QStringLiteral("科创板 (688001 华兴源创)"), QColor(0, 0, 255)},
            // The word is drawn, not the swatch's value.
            {"beijingExchangeSampleLabel", QStringLiteral("北交所 (920001 纬达光电)"), QColor(0, 128, 0)},
        };
        for (const auto &sample : samples) {
            const auto *label = dialog.findChild<QLabel *>(QLatin1String(sample.name));
            QVERIFY2(label, sample.name);
            QCOMPARE(label->text(), sample.text);
            QVERIFY2(label->styleSheet().endsWith(
                         QStringLiteral("; font-size: 14px; font-weight: bold; padding: 5px; }")),
                     sample.name);
            QCOMPARE(label->palette().color(QPalette::WindowText), sample.color);
        }
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    WindowInput::click(button("previewColorsButton"));
    QVERIFY(visit.ended());
    QVERIFY(m_dialog->isVisible());
}

void TestConfigDialog::connectionTestReachesTheService()
{
    ServiceProcess service;
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QString version =
        service.request("GET", "/newsapi/health").object.value(QLatin1String("version")).toString();
    QVERIFY(!version.isEmpty());
    openAt(service.baseUrl(), QString());
    const BoxAnswer box(ok);
    WindowInput::click(button("testConnectionButton"));
    QTRY_VERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Information);
    QCOMPARE(box.title(), QStringLiteral("连接成功"));
    QCOMPARE(box.text(), QStringLiteral("API服务器连接成功！\n版本: ") + version);
    QTRY_COMPARE(button("testConnectionButton")->text(), QStringLiteral("测试连接"));
    QVERIFY(button("testConnectionButton")->isEnabled());
}

void TestConfigDialog::connectionTestSendsNothingBeyondItsHeaders()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::json({{QStringLiteral("status"), QStringLiteral("ok")}}));
    openAt(server.url() + QLatin1Char('/'));
    const BoxAnswer box(ok);
    WindowInput::click(button("testConnectionButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.text(), QStringLiteral("API服务器连接成功！\n版本: 未知版本"));
    QCOMPARE(server.requests().size(), 1);
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.target, QByteArray("/newsapi/health"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(request.header("User-Agent"), QByteArray("LarkspireApp/2.0"));
    const QList<QByteArray> names = request.headerNames();
    for (const QByteArray &name : names)
        QVERIFY2(!name.startsWith("X-"), name.constData());
}

void TestConfigDialog::keyTestIdentifiesItself()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::json({{QStringLiteral("success"), true}}));
    openAt(server.url(), QStringLiteral(" 钥匙 "));
    const BoxAnswer box(ok);
    WindowInput::click(button("testApiKeyButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("验证成功"));
    QCOMPARE(box.text(), QStringLiteral("API Key验证成功！\nAPI Key验证成功"));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.target, QByteArray("/newsapi/test"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(request.header("User-Agent"), QByteArray("LarkspireApp/2.0"));
    QCOMPARE(request.header("X-API-Key"), QByteArray("钥匙"));
    QCOMPARE(request.header("X-Device-ID"), DeviceIdentity::deviceId().toUtf8());
    QCOMPARE(request.header("X-Device-Name"), DeviceIdentity::deviceName().toUtf8());
    QCOMPARE(request.header("X-Device-Type"), DeviceIdentity::deviceType().toUtf8());
    QCOMPARE(request.header("X-OS-Info"), DeviceIdentity::osInfo().toUtf8());
    QCOMPARE(request.header("X-App-Version"), ProgramVersion::text().toUtf8());
    QVERIFY(!request.hasHeader("X-Session-Token"));
}

void TestConfigDialog::keyTestReachesTheService()
{
    ServiceProcess service;
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    openAt(service.baseUrl(), ServiceProcess::demoApiKey());
    const BoxAnswer box(ok);
    WindowInput::click(button("testApiKeyButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Information);
    QCOMPARE(box.title(), QStringLiteral("验证成功"));
    QVERIFY(box.text().startsWith(QStringLiteral("API Key验证成功！\n")));
    QVERIFY(button("testApiKeyButton")->isEnabled());
}

void TestConfigDialog::wrongKeyIsToldInTheServicesWords()
{
    ServiceProcess service;
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const ServiceProcess::Answer refusal =
        service.request("GET", "/newsapi/test", {}, {{"X-API-Key", "wrong"}, {"X-Device-ID", "d"}});
    QCOMPARE(refusal.status, 401);
    openAt(service.baseUrl(), QStringLiteral("wrong"));
    const BoxAnswer box(ok);
    WindowInput::click(button("testApiKeyButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.title(), QStringLiteral("验证失败"));
    QVERIFY(!refusal.error().isEmpty());
    QCOMPARE(box.text(), refusal.error());
    QCOMPARE(button("testApiKeyButton")->text(), QStringLiteral("测试API Key"));
}

void TestConfigDialog::faultyEntriesAreNotTested_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("apiKey");
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QByteArray connection("testConnectionButton");
    const QByteArray keyTest("testApiKeyButton");
    const QString fault = QStringLiteral("配置错误");
    QTest::newRow("no address") << " " << key << connection << fault << QStringLiteral("请填写API服务器地址");
    QTest::newRow("another scheme") << "ftp://x" << key << connection << fault
                                    << QStringLiteral("API服务器地址必须以http://或https://开头");
    QTest::newRow("no host") << "http://" << key << connection << QStringLiteral("连接失败")
                             << QStringLiteral("网络错误: 地址中没有有效的服务器名称");
    QTest::newRow("key, no address") << " " << key << keyTest << fault
                                     << QStringLiteral("请先输入API服务器地址");
    QTest::newRow("key, no key") << "http://x"
                                 << " " << keyTest << fault << QStringLiteral("请先输入API Key");
    QTest::newRow("key, another scheme") << "ftp://x" << key << keyTest << QStringLiteral("验证失败")
                                         << QStringLiteral("网络错误: 地址必须以http://或https://开头");
    QTest::newRow("key, no host") << "https://" << key << keyTest << QStringLiteral("验证失败")
                                  << QStringLiteral("网络错误: 地址中没有有效的服务器名称");
}

void TestConfigDialog::faultyEntriesAreNotTested()
{
    QFETCH(QString, address);
    QFETCH(QString, apiKey);
    QFETCH(QByteArray, button);
    openAt(address, apiKey);
    auto *tested = child<QPushButton>(button.constData());
    const QString caption = tested->text();
    const BoxAnswer box(ok);
    WindowInput::click(tested);
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QTEST(box.title(), "title");
    QTEST(box.text(), "text");
    QVERIFY(tested->isEnabled());
    QCOMPARE(tested->text(), caption);
}

void TestConfigDialog::brokenServersAreTold_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<QString>("connectionText");
    QTest::addColumn<QString>("keyText");
    const QString network = QStringLiteral("网络错误: ");
    const QString parse = QStringLiteral("API响应解析失败: illegal value");
    QTest::newRow("garbage") << 0 << network << network;
    QTest::newRow("not JSON") << 1 << parse << parse;
    QTest::newRow("closed") << 2 << network << network;
    QTest::newRow("truncated") << 3 << network << network;
    QTest::newRow("refused") << 4 << network << network;
    QTest::newRow("500") << 5 << network << network;
    QTest::newRow("401 without a body") << 6 << network << QStringLiteral("认证失败");
    QTest::newRow("403 without a body") << 7 << network << QStringLiteral("禁止访问");
    QTest::newRow("empty body") << 8 << parse << parse;
}

void TestConfigDialog::brokenServersAreTold()
{
    QFETCH(int, fault);
    RawHttpServer server;
    const QByteArray body(R"({"status":"ok","success":true})");
    const RawAnswer answers[] = {
        RawAnswer::garbage(),       RawAnswer::notJson(),     RawAnswer::closeBeforeHeaders(),
        RawAnswer::truncated(body), RawAnswer::hang(),        RawAnswer::notJson(500),
        RawAnswer::body("", 401),   RawAnswer::body("", 403), RawAnswer::body(""),
    };
    server.setAnswer(answers[fault]);
    if (fault == 4)
        server.refuseConnections();
    openAt(server.url());
    for (const char *name : {"testConnectionButton", "testApiKeyButton"}) {
        const bool connection = name == QByteArray("testConnectionButton");
        const QString caption = button(name)->text();
        const BoxAnswer box(ok);
        WindowInput::click(button(name));
        QVERIFY2(box.shown(), name);
        QCOMPARE(box.icon(), QMessageBox::Warning);
        QCOMPARE(box.title(), connection ? QStringLiteral("连接失败") : QStringLiteral("验证失败"));
        QFETCH(QString, connectionText);
        QFETCH(QString, keyText);
        const QString wanted = connection ? connectionText : keyText;
        // The network's own words follow.
        if (wanted.endsWith(QStringLiteral(": ")))
            QVERIFY2(box.text().startsWith(wanted) && box.text().size() > wanted.size(),
                     qPrintable(box.text()));
        else
            QCOMPARE(box.text(), wanted);
        QVERIFY(button(name)->isEnabled());
        QCOMPARE(button(name)->text(), caption);
    }
}

void TestConfigDialog::silentServerEndsAtTheLimit_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QString>("busyText");
    QTest::addColumn<bool>("drips");
    QTest::newRow("connection") << QByteArrayLiteral("testConnectionButton") << QStringLiteral("连接中...")
                                << false;
    QTest::newRow("key") << QByteArrayLiteral("testApiKeyButton") << QStringLiteral("测试中...") << false;
    QTest::newRow("dripping") << QByteArrayLiteral("testConnectionButton") << QStringLiteral("连接中...")
                              << true;
}

void TestConfigDialog::silentServerEndsAtTheLimit()
{
    QFETCH(QByteArray, button);
    QFETCH(QString, busyText);
    QFETCH(bool, drips);
    // It is the limit in the box that counts, and not the one that is stored.
    constexpr int limitSeconds = 1;
    RawHttpServer server;
    server.setAnswer(drips ? RawAnswer::drip(QByteArray(1000, ' '), 1, 100) : RawAnswer::hang());
    ConfigManager::instance()->setApiTimeout(5);
    openAt(server.url());
    auto *limit = child<QSpinBox>("timeoutSpinBox");
    limit->setMinimum(limitSeconds);
    limit->setValue(limitSeconds);
    auto *tested = child<QPushButton>(button.constData());
    const QString caption = tested->text();
    // Meanwhile the program goes on, and the button says what is under way.
    QString seenText;
    bool seenEnabled = true;
    connect(&server, &RawHttpServer::requestReceived, tested, [&] {
        seenText = tested->text();
        seenEnabled = tested->isEnabled();
    });
    QElapsedTimer clock;
    clock.start();
    qint64 elapsedMs = 0;
    QString textAtTheBox;
    bool enabledAtTheBox = false;
    const DialogVisit box(button == "testApiKeyButton" ? QStringLiteral("验证失败")
                                                       : QStringLiteral("连接失败"),
                          [&](QDialog &dialog) {
                              elapsedMs = clock.elapsed();
                              textAtTheBox = tested->text();
                              enabledAtTheBox = tested->isEnabled();
                              QCOMPARE(messageBox(dialog).text(), timedOut);
                              WindowInput::press(&dialog, Qt::Key_Return);
                          });
    WindowInput::click(tested);
    QVERIFY(box.ended());
    QCOMPARE(seenText, busyText);
    QVERIFY(!seenEnabled);
    QVERIFY2(elapsedMs >= limitSeconds * 1000 - 50 && elapsedMs < limitSeconds * 1000 + 3000,
             qPrintable(QString::number(elapsedMs)));
    QCOMPARE(textAtTheBox, caption);
    QVERIFY(enabledAtTheBox);
    QTRY_COMPARE(QApplication::focusWidget(), tested);
}

void TestConfigDialog::buttonsWaitForTheEndOfATest()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    openAt(server.url());
    bool bothWaited = false;
    connect(&server, &RawHttpServer::requestReceived, m_dialog.get(), [&](int number) {
        bothWaited = !button("testConnectionButton")->isEnabled() && !button("testApiKeyButton")->isEnabled();
        QTimer::singleShot(0, &server, [&server, number] {
            server.release(number, RawAnswer::json({{QStringLiteral("status"), QStringLiteral("ok")}}));
        });
    });
    const BoxAnswer box(ok);
    WindowInput::click(button("testConnectionButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.title(), QStringLiteral("连接成功"));
    QVERIFY(bothWaited);
    QVERIFY(button("testConnectionButton")->isEnabled());
    QVERIFY(button("testApiKeyButton")->isEnabled());
}

void TestConfigDialog::closingEndsATestWithoutAWord()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    openAt(server.url());
    connect(&server, &RawHttpServer::requestReceived, m_dialog.get(), &QDialog::reject);
    const BoxAnswer box(ok);
    QElapsedTimer clock;
    clock.start();
    WindowInput::click(button("testConnectionButton"));
    QVERIFY2(clock.elapsed() < 4000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(!box.shown());
}

void TestConfigDialog::testsTouchNoSetting()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::json({{QStringLiteral("status"), QStringLiteral("ok")}}));
    openAt(QStringLiteral("http://127.0.0.1:9"));
    WindowInput::fill(child<QLineEdit>("serverUrlEdit"), server.url());
    WindowInput::fill(child<QLineEdit>("apiKeyEdit"), QStringLiteral("other-key"));
    for (const char *name : {"testConnectionButton", "testApiKeyButton"}) {
        const BoxAnswer box(ok);
        WindowInput::click(button(name));
        QVERIFY2(box.shown(), name);
    }
    QCOMPARE(server.requests().size(), 2);
    QCOMPARE(server.requests().last().header("X-API-Key"), QByteArray("other-key"));
    QCOMPARE(ConfigManager::instance()->getApiServerUrl(), QStringLiteral("http://127.0.0.1:9"));
    QCOMPARE(ConfigManager::instance()->getApiKey(), key);
}

void TestConfigDialog::textsOfTheServiceAreShownAsTheyAre()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::json({{QStringLiteral("error"), QStringLiteral("<b>粗</b>")}}, 401));
    openAt(server.url());
    const DialogVisit box(QStringLiteral("验证失败"), [](QDialog &dialog) {
        QTextDocument shown;
        shown.setHtml(messageBox(dialog).text());
        QCOMPARE(shown.toPlainText(), QStringLiteral("<b>粗</b>"));
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::click(button("testApiKeyButton"));
    QVERIFY(box.ended());
}

void TestConfigDialog::deviceIsShownAndRefreshed()
{
    for (const bool dark : {false, true}) {
        useSkin(dark);
        open();
        reveal(button("refreshDeviceInfoButton"));
        const struct
        {
            const char *name;
            QString text;
        } labels[] = {{"deviceIdLabel", DeviceIdentity::deviceId()},
                      {"deviceNameLabel", DeviceIdentity::deviceName()},
                      {"deviceTypeLabel", DeviceIdentity::deviceType()},
                      {"osInfoLabel", DeviceIdentity::osInfo()}};
        for (const auto &label : labels) {
            QCOMPARE(child<QLabel>(label.name)->text(), label.text);
            QCOMPARE(child<QLabel>(label.name)->styleSheet(),
                     dark ? QStringLiteral("QLabel { background-color: #2b2b2b; color: white; padding: 5px; "
                                           "border: 1px solid #555555; }")
                          : QStringLiteral("QLabel { background-color: #f0f0f0; color: black; padding: 5px; "
                                           "border: 1px solid #ccc; }"));
            child<QLabel>(label.name)->clear();
        }
        const BoxAnswer box(ok);
        WindowInput::click(button("refreshDeviceInfoButton"));
        QVERIFY(box.shown());
        QCOMPARE(box.icon(), QMessageBox::Information);
        QCOMPARE(box.title(), QStringLiteral("设备信息"));
        QCOMPARE(box.text(), QStringLiteral("设备信息已刷新"));
        for (const auto &label : labels)
            QCOMPARE(child<QLabel>(label.name)->text(), label.text);
    }
}

void TestConfigDialog::resetAsksFirst()
{
    ConfigManager::instance()->setRefreshInterval(77);
    open();
    const BoxAnswer box(no);
    WindowInput::click(button("resetButton"));
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Question);
    QCOMPARE(box.title(), resetTitle);
    QCOMPARE(box.text(), QStringLiteral("确定要恢复所有配置到默认值吗？"));
    QStringList buttons = box.buttons();
    buttons.sort();
    QCOMPARE(buttons, (QStringList{no, yes}));
    QCOMPARE(box.defaultButton(), no);
    QVERIFY(!m_dialog->wasReset());
    QCOMPARE(ConfigManager::instance()->getRefreshInterval(), 77);
    QCOMPARE(child<QSpinBox>("refreshIntervalSpinBox")->value(), 77);
}

void TestConfigDialog::resetWritesTheDefaultsAndStaysOpen()
{
    openAt(QStringLiteral("http://127.0.0.1:9"));
    for (const Row &row : rows())
        enter(row);
    const BoxAnswer question(yes);
    const DialogVisit done(QStringLiteral("重置完成"), [](QDialog &dialog) {
        QCOMPARE(messageBox(dialog).text(), QStringLiteral("所有配置已恢复到默认值"));
        QCOMPARE(messageBox(dialog).icon(), QMessageBox::Information);
        WindowInput::press(&dialog, Qt::Key_Return);
    });
    WindowInput::click(button("resetButton"));
    QVERIFY(done.ended());
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_dialog->wasReset());

    const AppConfig shown = m_dialog->getConfig();
    const AppConfig defaults;
    QCOMPARE(shown.serverUrl, defaults.serverUrl);
    QVERIFY(shown.apiKey.isEmpty());
    QCOMPARE(shown.timeout, 10);
    QCOMPARE(shown.refreshInterval, 60);
    QVERIFY(shown.enableTts && shown.enableSepakStock && shown.enableNotification && shown.enableSound);
    QVERIFY(!shown.enableAutoStart && !shown.darkMode && !shown.showNewsDetails);
    QVERIFY(shown.rememberWindowState);
    QCOMPARE(shown.notificationPosition, QStringLiteral("bottom_right"));
    QCOMPARE(shown.mainBoardColor, QStringLiteral("red"));
    QCOMPARE(shown.gemColor, QStringLiteral("cyan"));
    QCOMPARE(shown.starMarketColor, QStringLiteral("blue"));
    QCOMPARE(shown.beijingExchangeColor, QStringLiteral("green"));
    // The file has the same.
    const struct
    {
        const char *settingsKey;
        QString value;
    } written[] = {{"Features/RefreshInterval", QStringLiteral("60")},
                   {"Features/EnableAutoStart", QStringLiteral("false")},
                   {"Features/RememberWindowState", QStringLiteral("true")},
                   {"API/Timeout", QStringLiteral("10")},
                   {"API/Key", QString()},
                   {"API/ServerUrl", defaults.serverUrl},
                   {"StockAnalysis/MainBoardColor", QStringLiteral("red")},
                   {"StockAnalysis/StockCodeNameFontSize", QStringLiteral("16")},
                   {"StockAnalysis/BasicInfoFontSize", QStringLiteral("14")},
                   {"StockAnalysis/HistoryStatsFontSize", QStringLiteral("12")},
                   {"StockAnalysis/OpeningMarketFontSize", QStringLiteral("12")},
                   {"StockAnalysis/LimitUpDetailFontSize", QStringLiteral("12")},
                   {"MarketStats/TitleFontSize", QStringLiteral("16")},
                   {"MarketStats/LabelFontSize", QStringLiteral("12")},
                   {"MarketStats/ValueFontSize", QStringLiteral("14")},
                   {"MarketStats/BoardRankingFontSize", QStringLiteral("12")},
                   {"MarketStats/RefreshInterval", QStringLiteral("20")}};
    for (const auto &row : written)
        QVERIFY2(stored(row.settingsKey).toString() == row.value, row.settingsKey);
    // What the tab of the concepts shows is left as it stands, and saved with the rest.
    QCOMPARE(shown.themeWidth, 777);
    QCOMPARE(stored("ThemeDialog/Width").toInt(), 777);
    QCOMPARE(stored("ThemeDialog/Hotkey").toString(), QStringLiteral("LauchMail"));
    QCOMPARE(stored("DynamicAnalysis/Hotkey").toString(), QStringLiteral("F24"));
}

void TestConfigDialog::resetKeepsLoginHotkeysAndConcepts()
{
    ConfigManager::instance()->setSessionToken(QStringLiteral("token"));
    ConfigManager::instance()->setAuthUsername(QStringLiteral("demo"));
    ConfigManager::instance()->setThemeHotkey(QStringLiteral("F19"));
    ConfigManager::instance()->setThemeWidth(500);
    ConfigManager::instance()->setStockLinkageMode(2);
    open();
    const BoxAnswer question(yes);
    const DialogVisit done(QStringLiteral("重置完成"),
                           [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    WindowInput::click(button("resetButton"));
    QVERIFY(done.ended());
    QCOMPARE(stored("Auth/SessionToken").toString(), QStringLiteral("token"));
    QCOMPARE(stored("Auth/Username").toString(), QStringLiteral("demo"));
    QCOMPARE(stored("ThemeDialog/Hotkey").toString(), QStringLiteral("F19"));
    QCOMPARE(stored("ThemeDialog/Width").toInt(), 500);
    QCOMPARE(stored("StockAnalysis/LinkageMode").toInt(), 2);
}

void TestConfigDialog::cancelAfterAResetKeepsIt()
{
    ConfigManager::instance()->setRefreshInterval(77);
    open();
    const BoxAnswer question(yes);
    const DialogVisit done(QStringLiteral("重置完成"),
                           [](QDialog &dialog) { WindowInput::press(&dialog, Qt::Key_Return); });
    WindowInput::click(button("resetButton"));
    QVERIFY(done.ended());
    WindowInput::press(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    QVERIFY(m_dialog->wasReset());
    QCOMPARE(stored("Features/RefreshInterval").toInt(), 60);
}

void TestConfigDialog::tabGoesInReadingOrder()
{
    open();
    auto *tabs = child<QTabWidget>("tabWidget");
    for (int index = 0; index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        tabs->tabBar()->setFocus();
        QPoint last(-1, -1);
        int stops = 0;
        // Down the page, row by row; then the row of the buttons.
        do {
            WindowInput::press(m_dialog.get(), Qt::Key_Tab);
            const QWidget *stop = QApplication::focusWidget();
            QVERIFY(stop);
            if (stop == tabs->tabBar())
                break;
            const QPoint place = stop->mapTo(m_dialog.get(), stop->rect().center());
            const bool onward =
                place.y() > last.y() + 4 || (qAbs(place.y() - last.y()) <= 4 && place.x() > last.x());
            QVERIFY2(onward, qPrintable(QStringLiteral("tab %1: %2").arg(index).arg(stop->objectName())));
            QVERIFY(stop->visibleRegion().boundingRect().contains(stop->rect().center()));
            last = place;
            ++stops;
        } while (stops < 30);
        QCOMPARE(QApplication::focusWidget(), tabs->tabBar());
        const int fieldsOfTheTabs[] = {10, 10, 5, 11, 5, 1};
        QCOMPARE(stops, fieldsOfTheTabs[index] + 3);
    }
}

void TestConfigDialog::everyFieldHasALabel()
{
    open();
    QHash<const QWidget *, QString> captions;
    const QList<QLabel *> labels = m_dialog->findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        if (label->buddy() != nullptr)
            captions.insert(label->buddy(), label->text());
    }
    const struct
    {
        const char *name;
        QString caption;
    } fields[] = {
        {"refreshIntervalSpinBox", QStringLiteral("刷新间隔:")},
        {"notificationPositionComboBox", QStringLiteral("通知显示位置:")},
        {"mainBoardColorComboBox", QStringLiteral("主板 (00和60开头):")},
        {"gemColorComboBox", QStringLiteral("创业板 (30开头):")},
        {"starMarketColorComboBox", QStringLiteral("科创板 (68开头):")},
        {"beijingExchangeColorComboBox", QStringLiteral("北交所 (92开头):")},
        {"stockCodeNameFontSizeSpinBox", QStringLiteral("股票名称字体大小:")},
        {"basicInfoFontSizeSpinBox", QStringLiteral("基本信息字体大小:")},
        {"historyStatsFontSizeSpinBox", QStringLiteral("历史统计字体大小:")},
        {"openingMarketFontSizeSpinBox", QStringLiteral("开盘行情字体大小:")},
        {"limitUpDetailFontSizeSpinBox", QStringLiteral("涨停详情字体大小:")},
        {"marketTitleFontSizeSpinBox", QStringLiteral("标题字体大小:")},
        {"marketLabelFontSizeSpinBox", QStringLiteral("标签字体大小:")},
        {"marketValueFontSizeSpinBox", QStringLiteral("数值字体大小:")},
        {"marketBoardRankingFontSizeSpinBox", QStringLiteral("连板排名字体大小:")},
        {"marketRefreshIntervalSpinBox", QStringLiteral("数据刷新间隔:")},
        {"themeBgColorButton", QStringLiteral("背景颜色:")},
        {"themeCardBgColorButton", QStringLiteral("卡片背景颜色:")},
        {"themeWidthSpinBox", QStringLiteral("对话框宽度:")},
        {"themePositionComboBox", QStringLiteral("默认显示位置:")},
        {"themeSummaryFontSizeSpinBox", QStringLiteral("概念标签字体:")},
        {"themeNameColorButton", QStringLiteral("字体颜色:")},
        {"themeNameFontSizeSpinBox", QStringLiteral("字体大小:")},
        {"themeDescColorButton", QStringLiteral("字体颜色:")},
        {"themeDescFontSizeSpinBox", QStringLiteral("字体大小:")},
        {"themeHotkeyComboBox", QStringLiteral("概念题材快捷键:")},
        {"dynamicHotkeyComboBox", QStringLiteral("异动解析快捷键:")},
        {"serverUrlEdit", QStringLiteral("API服务器地址:")},
        {"apiKeyEdit", QStringLiteral("API Key:")},
        {"timeoutSpinBox", QStringLiteral("请求超时时间:")},
        {"deviceIdLabel", QStringLiteral("设备ID:")},
        {"deviceNameLabel", QStringLiteral("设备名称:")},
        {"deviceTypeLabel", QStringLiteral("设备类型:")},
        {"osInfoLabel", QStringLiteral("操作系统:")},
    };
    for (const auto &field : fields)
        QVERIFY2(captions.value(child<QWidget>(field.name)) == field.caption, field.name);
    const struct
    {
        const char *name;
        QString text;
    } boxes[] = {
        {"ttsCheckBox", QStringLiteral("启用语音播报功能")},
        {"speakStockCheckBox", QStringLiteral("语音播报 股票名称")},
        {"notificationCheckBox", QStringLiteral("启用系统通知")},
        {"soundCheckBox", QStringLiteral("启用提示音")},
        {"autoStartCheckBox", QStringLiteral("开机自动启动")},
        {"rememberWindowStateCheckBox", QStringLiteral("记住窗口位置和大小")},
        {"darkModeCheckBox", QStringLiteral("深色模式")},
        {"showNewsDetailsCheckBox", QStringLiteral("显示新闻详情")},
    };
    for (const auto &box : boxes)
        QVERIFY2(child<QCheckBox>(box.name)->text() == box.text, box.name);
}

void TestConfigDialog::nothingIsCutOff_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestConfigDialog::nothingIsCutOff()
{
    QFETCH(bool, dark);
    useSkin(dark);
    open();
    auto *tabs = child<QTabWidget>("tabWidget");
    QCOMPARE(m_dialog->size(), QSize(500, 600));
    // All captions side by side, none behind an arrow.
    QVERIFY(tabs->tabBar()->sizeHint().width() <= tabs->tabBar()->width());
    QVERIFY(tabs->tabBar()->tabRect(tabs->count() - 1).right() <= tabs->tabBar()->width());
    for (int index = 0; index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        int edge = -1;
        const QList<QWidget *> widgets = tabs->currentWidget()->findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            const bool textual =
                qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QComboBox *>(widget) ||
                qobject_cast<const QSpinBox *>(widget) || qobject_cast<const QLabel *>(widget);
            if (!textual || !widget->isVisible())
                continue;
            const auto *label = qobject_cast<const QLabel *>(widget);
            const int height = label != nullptr && label->wordWrap() ? label->heightForWidth(label->width())
                                                                     : widget->minimumSizeHint().height();
            QVERIFY2(widget->width() >= widget->minimumSizeHint().width() && widget->height() >= height,
                     qPrintable(QLatin1String(widget->metaObject()->className()) + widget->objectName()));
            // The numbers of a tab stand on one edge.
            if (qobject_cast<const QSpinBox *>(widget) != nullptr) {
                const int left = widget->mapTo(m_dialog.get(), QPoint()).x();
                QVERIFY2(edge == -1 || edge == left, qPrintable(widget->objectName()));
                edge = left;
            }
        }
    }
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    initLarkspireResources();
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setQuitOnLastWindowClosed(false);
    TestConfigDialog test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_configdialog.moc"
