#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "desktop/AutoStartManager.h"
#include "news/CustomNotification.h"
#include "news/SpeechManager.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "settings/SkinLightness.h"
#include "settings/ThemeManager.h"
#include "support/BoxAnswer.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QScreen>
#include <QSettings>
#include <QSlider>
#include <QStandardPaths>
#include <QStyle>
#include <QStyleFactory>
#include <QToolTip>
#include <QtTest>

#include <limits>

namespace {

/// What has reached the disk, without the values that QSettings still holds.
QByteArray onDisk()
{
    QFile file(settingsFilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The tool tip on screen, null when there is none.
QLabel *shownToolTip()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget *widget : widgets) {
        if (widget->inherits("QTipLabel") && widget->isVisible())
            return qobject_cast<QLabel *>(widget);
    }
    return nullptr;
}

struct LightnessRange
{
    int darkest = 255;
    int lightest = 0;
};

/// Over the picture without its frame.
LightnessRange lightnessWithin(const QImage &picture)
{
    constexpr int frame = 2;
    LightnessRange range;
    for (int y = frame; y < picture.height() - frame; ++y) {
        for (int x = frame; x < picture.width() - frame; ++x) {
            const int lightness = picture.pixelColor(x, y).lightness();
            range.darkest = qMin(range.darkest, lightness);
            range.lightest = qMax(range.lightest, lightness);
        }
    }
    return range;
}

} // namespace

class TestLarkspireAppSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void themeToggleTwiceReturnsToTheStandardPaletteAndAnEmptySheet();
    void toolTipsAreReadableInEverySkin();
    void startFollowsTheStoredTheme_data();
    void startFollowsTheStoredTheme();

    void savingWritesEveryFieldAndTheGeometry();
    void savingWithoutRememberedPlaceLeavesTheGeometryAlone();
    void windowStoresItsSettingsWhenItGoes();
    void exactVolumeIsNotWornAwayByTheSlider();
    void storedNumbersBeyondAllBoundsLeaveAWorkingWindow_data();
    void storedNumbersBeyondAllBoundsLeaveAWorkingWindow();

    void acceptedSettingsKeepVolumeAndTopMostOfTheRunningWindow();
    void acceptedSettingsAreStoredAndApplied();
    void settingsWithoutAKeyLeaveTheClientItsKey();
    void acceptedDarkModeDressesTheProgram();
    void changedAutoStartReachesTheSystem();
    void failedAutoStartIsToldAndTakenBack_data();
    void failedAutoStartIsToldAndTakenBack();

    void speechSwitchReachesTheManager();
    void speechSwitchWithoutAManagerWarns();
};

void TestLarkspireAppSettings::init()
{
    clearSettings();
    storeNoLogin();
    SpeechStage::instance().reset();
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
}

void TestLarkspireAppSettings::cleanup()
{
    qApp->setStyleSheet(QString());
}

void TestLarkspireAppSettings::themeToggleTwiceReturnsToTheStandardPaletteAndAnEmptySheet()
{
    LarkspireApp window;
    auto *toggle = window.findChild<QAction *>(QStringLiteral("actionToggleTheme"));
    QCOMPARE(toggle->text(), QStringLiteral("换肤(浅色)"));

    toggle->trigger();
    QCOMPARE(toggle->text(), QStringLiteral("换肤(深色)"));
    QVERIFY(ConfigManager::instance()->getDarkMode());
    QVERIFY(onDisk().contains("DarkMode=true"));
    QCOMPARE(ThemeManager::instance()->currentTheme(), ThemeManager::DarkTheme);
    QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(53, 53, 53));
    QCOMPARE(QApplication::palette().color(QPalette::Link), QColor(42, 130, 218));
    QCOMPARE(qApp->styleSheet(), MainWindowSkin::darkStyleSheet());
    QVERIFY(isDarkSkin(window.palette()));

    toggle->trigger();
    QCOMPARE(toggle->text(), QStringLiteral("换肤(浅色)"));
    QVERIFY(!ConfigManager::instance()->getDarkMode());
    QVERIFY(onDisk().contains("DarkMode=false"));
    QCOMPARE(ThemeManager::instance()->currentTheme(), ThemeManager::LightTheme);
    QCOMPARE(QApplication::palette(), QApplication::style()->standardPalette());
    QVERIFY(qApp->styleSheet().isEmpty());
    QVERIFY(!isDarkSkin(window.palette()));
}

void TestLarkspireAppSettings::toolTipsAreReadableInEverySkin()
{
    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *toggle = window.findChild<QAction *>(QStringLiteral("actionToggleTheme"));
    const struct
    {
        const char *name;
        bool dark;
    } skins[] = {{"light at first", false}, {"dark", true}, {"light again", false}, {"dark again", true}};
    for (const auto &skin : skins) {
        if (LarkspireAppPeer::config(window).darkMode != skin.dark)
            toggle->trigger();
        QToolTip::showText(window.mapToGlobal(QPoint(50, 50)), QStringLiteral("连接: ████"), &window);
        QLabel *tip = shownToolTip();
        QVERIFY2(tip, skin.name);
        const QImage picture = tip->grab().toImage();
        const LightnessRange range = lightnessWithin(picture);
        QVERIFY2(range.lightest - range.darkest > 128, skin.name);
        // The ground, beside the text, goes with the skin.
        const int ground = picture.pixelColor(picture.width() - 3, picture.height() / 2).lightness();
        QVERIFY2((ground < 128) == skin.dark, skin.name);
        QToolTip::hideText();
        QTRY_VERIFY(!shownToolTip());
    }
    // The skin's palette stays as it was designed.
    QCOMPARE(QApplication::palette().color(QPalette::ToolTipBase), QColor(Qt::white));
    QCOMPARE(QApplication::palette().color(QPalette::ToolTipText), QColor(Qt::white));
}

void TestLarkspireAppSettings::startFollowsTheStoredTheme_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("dark") << true;
    QTest::newRow("light") << false;
}

void TestLarkspireAppSettings::startFollowsTheStoredTheme()
{
    QFETCH(bool, dark);
    ConfigManager::instance()->setDarkMode(dark);
    LarkspireApp window;
    QCOMPARE(isDarkSkin(window.palette()), dark);
    QCOMPARE(qApp->styleSheet().isEmpty(), !dark);
    QCOMPARE(window.findChild<QAction *>(QStringLiteral("actionToggleTheme"))->text(),
             dark ? QStringLiteral("换肤(深色)") : QStringLiteral("换肤(浅色)"));
    QVERIFY(LarkspireAppPeer::config(window).darkMode == dark);
}

void TestLarkspireAppSettings::savingWritesEveryFieldAndTheGeometry()
{
    LarkspireApp window;
    AppConfig &config = LarkspireAppPeer::config(window);
    config.serverUrl = QStringLiteral("http://127.0.0.1:9999");
    config.timeout = 20;
    config.refreshInterval = 45;
    config.enableSepakStock = false;
    config.enableNotification = false;
    config.enableSound = false;
    config.enableTts = false;
    config.ttsVolume = 0.4;
    config.enableAutoStart = true;
    config.enableTopmost = true;
    config.darkMode = true;
    config.showNewsDetails = true;
    config.notificationPosition = QStringLiteral("top_left");
    LarkspireAppPeer::saveSettings(window);
    QVERIFY(onDisk().contains("ServerUrl=http://127.0.0.1:9999"));

    const QSettings file(settingsFilePath(), QSettings::IniFormat);
    QCOMPARE(file.value(QStringLiteral("API/ServerUrl")).toString(), QStringLiteral("http://127.0.0.1:9999"));
    QCOMPARE(file.value(QStringLiteral("API/Timeout")).toInt(), 20);
    QCOMPARE(file.value(QStringLiteral("Features/RefreshInterval")).toInt(), 45);
    QCOMPARE(file.value(QStringLiteral("Features/EnableSepakStock")).toString(), QStringLiteral("false"));
    QCOMPARE(file.value(QStringLiteral("Features/EnableNotification")).toString(), QStringLiteral("false"));
    QCOMPARE(file.value(QStringLiteral("Features/EnableSound")).toString(), QStringLiteral("false"));
    QCOMPARE(file.value(QStringLiteral("Features/TTS")).toString(), QStringLiteral("false"));
    QCOMPARE(file.value(QStringLiteral("Features/TTSVolume")).toDouble(), 0.4);
    QCOMPARE(file.value(QStringLiteral("Features/EnableAutoStart")).toString(), QStringLiteral("true"));
    QCOMPARE(file.value(QStringLiteral("Features/EnableTopmost")).toString(), QStringLiteral("true"));
    QCOMPARE(file.value(QStringLiteral("Features/RememberWindowState")).toString(), QStringLiteral("true"));
    QCOMPARE(file.value(QStringLiteral("Theme/DarkMode")).toString(), QStringLiteral("true"));
    QCOMPARE(file.value(QStringLiteral("Features/ShowNewsDetails")).toString(), QStringLiteral("true"));
    QCOMPARE(file.value(QStringLiteral("Features/NotificationPosition")).toString(),
             QStringLiteral("top_left"));
    QCOMPARE(file.value(QStringLiteral("Window/Geometry")).toByteArray(), window.saveGeometry());
    config.enableAutoStart = false;
}

void TestLarkspireAppSettings::savingWithoutRememberedPlaceLeavesTheGeometryAlone()
{
    LarkspireApp window;
    LarkspireAppPeer::config(window).rememberWindowState = false;
    LarkspireAppPeer::saveSettings(window);
    QVERIFY(ConfigManager::instance()->getWindowGeometry().isEmpty());
}

void TestLarkspireAppSettings::windowStoresItsSettingsWhenItGoes()
{
    {
        LarkspireApp window;
        window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->setValue(15);
    }
    QVERIFY(onDisk().contains("TTSVolume=0.15"));
    QCOMPARE(ConfigManager::instance()->getTtsVolume(), 0.15);
    QVERIFY(!ConfigManager::instance()->getWindowGeometry().isEmpty());
}

void TestLarkspireAppSettings::exactVolumeIsNotWornAwayByTheSlider()
{
    // 0.58 times 100 is a little less than 58: the slider shows 57, as meant.
    ConfigManager::instance()->setTtsVolume(0.58);
    {
        LarkspireApp window;
        QCOMPARE(window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->value(), 57);
        QCOMPARE(window.findChild<QLabel *>(QStringLiteral("volumeValueLabel"))->text(),
                 QStringLiteral("57"));
    }
    QCOMPARE(ConfigManager::instance()->getTtsVolume(), 0.58);
}

void TestLarkspireAppSettings::storedNumbersBeyondAllBoundsLeaveAWorkingWindow_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<double>("volume");
    QTest::newRow("the largest number") << QVariant(std::numeric_limits<int>::max()) << 1.0;
    QTest::newRow("the smallest number") << QVariant(std::numeric_limits<int>::min()) << 0.0;
    QTest::newRow("a number without end") << QVariant(QStringLiteral("1e999")) << 1.0;
    QTest::newRow("not a number") << QVariant(QStringLiteral("nan")) << 0.0;
    QTest::newRow("a text") << QVariant(QStringLiteral("often")) << 0.0;
}

void TestLarkspireAppSettings::storedNumbersBeyondAllBoundsLeaveAWorkingWindow()
{
    QFETCH(QVariant, stored);
    QFETCH(double, volume);
    ConfigManager *config = ConfigManager::instance();
    const auto isNumber = [](const QVariant &value) {
        bool ok = false;
        value.toDouble(&ok);
        return ok;
    };
    // Every number that a reset writes.
    config->resetToDefaults();
    QSettings file(settingsFilePath(), QSettings::IniFormat);
    int numbers = 0;
    for (const QString &key : file.allKeys()) {
        if (!isNumber(file.value(key)))
            continue;
        file.setValue(key, stored);
        ++numbers;
    }
    QVERIFY(numbers > 10);
    config->setEnableTts(true);

    LarkspireApp window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(LarkspireAppPeer::refreshTimer(window)->interval() >= 10000);
    QCOMPARE(SpeechStage::instance().engine()->volume(), volume);
    QCOMPARE(window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->value(), qRound(volume * 100));
}

void TestLarkspireAppSettings::acceptedSettingsKeepVolumeAndTopMostOfTheRunningWindow()
{
    LarkspireApp window;
    window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->setValue(35);
    window.findChild<QCheckBox *>(QStringLiteral("topMostCheckBox"))->click();
    AppConfig edited = LarkspireAppPeer::config(window);
    edited.ttsVolume = 0.9;
    edited.enableTopmost = false;
    LarkspireAppPeer::adoptConfig(window, edited);
    QCOMPARE(LarkspireAppPeer::config(window).ttsVolume, 0.35);
    QCOMPARE(window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->value(), 35);
    QCOMPARE(SpeechStage::instance().engine()->volume(), 0.35);
    QVERIFY(LarkspireAppPeer::config(window).enableTopmost);
    QVERIFY(window.findChild<QCheckBox *>(QStringLiteral("topMostCheckBox"))->isChecked());
    QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

void TestLarkspireAppSettings::acceptedSettingsAreStoredAndApplied()
{
    ScriptedService service;
    LarkspireApp window;
    AppConfig edited = LarkspireAppPeer::config(window);
    edited.serverUrl = service.url();
    edited.apiKey = QStringLiteral("edited-key");
    edited.refreshInterval = 25;
    edited.showNewsDetails = true;
    edited.enableTts = false;
    edited.notificationPosition = QStringLiteral("top_left");
    LarkspireAppPeer::adoptConfig(window, edited);

    QVERIFY(window.isVisible());
    QCOMPARE(ConfigManager::instance()->getRefreshInterval(), 25);
    QCOMPARE(LarkspireAppPeer::refreshTimer(window)->interval(), 25000);
    QVERIFY(!window.findChild<QGroupBox *>(QStringLiteral("detailsGroupBox"))->isHidden());
    QVERIFY(!window.findChild<QCheckBox *>(QStringLiteral("ttsCheckBox"))->isChecked());
    // The connection is checked at once, at the new address and with the new key.
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("statusLabel"))->text(),
             QStringLiteral("正在连接API服务器..."));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("connectionLabel"))->text(),
             QStringLiteral("API: 连接中..."));
    QTRY_COMPARE(service.requestCount("newsapi/health"), 1);
    QCOMPARE(service.server().requests().last().header("X-API-Key"), QByteArray("edited-key"));

    auto *card = window.findChild<CustomNotification *>();
    card->showNotification(QString(), QStringLiteral("位置"), 1000);
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QTRY_COMPARE(card->pos(), area.topLeft() + QPoint(20, 20));
}

void TestLarkspireAppSettings::settingsWithoutAKeyLeaveTheClientItsKey()
{
    ScriptedService service;
    LarkspireApp window;
    window.findChild<ApiClient *>()->setApiKey(QStringLiteral("key-of-the-login"));
    AppConfig edited = LarkspireAppPeer::config(window);
    edited.serverUrl = service.url();
    edited.apiKey.clear();
    LarkspireAppPeer::adoptConfig(window, edited);
    QTRY_COMPARE(service.requestCount("newsapi/health"), 1);
    QCOMPARE(service.lastRequest("newsapi/health").header("X-API-Key"), QByteArray("key-of-the-login"));
}

void TestLarkspireAppSettings::acceptedDarkModeDressesTheProgram()
{
    LarkspireApp window;
    AppConfig edited = LarkspireAppPeer::config(window);
    edited.darkMode = true;
    LarkspireAppPeer::adoptConfig(window, edited);
    QVERIFY(isDarkSkin(QApplication::palette()));
    QVERIFY(ConfigManager::instance()->getDarkMode());
    QCOMPARE(window.findChild<QAction *>(QStringLiteral("actionToggleTheme"))->text(),
             QStringLiteral("换肤(深色)"));
}

void TestLarkspireAppSettings::changedAutoStartReachesTheSystem()
{
    LarkspireApp window;
    auto *manager = window.findChild<AutoStartManager *>();
    AppConfig edited = LarkspireAppPeer::config(window);
    QVERIFY(!edited.enableAutoStart);
    edited.enableAutoStart = true;
    LarkspireAppPeer::adoptConfig(window, edited);
    QVERIFY(manager->isAutoStartEnabled());
    QVERIFY(ConfigManager::instance()->getEnableAutoStart());
    edited.enableAutoStart = false;
    LarkspireAppPeer::adoptConfig(window, edited);
    QVERIFY(!manager->isAutoStartEnabled());
}

void TestLarkspireAppSettings::failedAutoStartIsToldAndTakenBack_data()
{
    QTest::addColumn<bool>("enabledBefore");
    QTest::addColumn<QString>("state");
    QTest::newRow("switching on") << false << QStringLiteral("已禁用");
    QTest::newRow("switching off") << true << QStringLiteral("已启用");
}

void TestLarkspireAppSettings::failedAutoStartIsToldAndTakenBack()
{
    QFETCH(bool, enabledBefore);
    QFETCH(QString, state);
    if (enabledBefore)
        QVERIFY(AutoStartManager(nullptr).setAutoStart(true));
    LarkspireApp window;
    QCOMPARE(LarkspireAppPeer::config(window).enableAutoStart, enabledBefore);
    QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/autostart"));
    const QStringList entries = folder.entryList(QDir::Files);
    QVERIFY(folder.removeRecursively());
    if (enabledBefore) {
        // A folder where the entry was: it can't be taken away like a file.
        QCOMPARE(entries.size(), 1);
        QVERIFY(folder.mkpath(entries.first()));
    } else {
        // A file where the folder of the entries belongs: nothing can be written there.
        QFile obstacle(folder.path());
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
    }

    const LogCapture log;
    const BoxAnswer box(QStringLiteral("OK"));
    AppConfig edited = LarkspireAppPeer::config(window);
    edited.enableAutoStart = !enabledBefore;
    LarkspireAppPeer::adoptConfig(window, edited);
    QVERIFY(enabledBefore ? folder.removeRecursively() : QFile::remove(folder.path()));
    QCOMPARE(log.count(QStringLiteral("Failed to update auto start setting")), 1);
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.title(), QStringLiteral("设置失败"));
    QCOMPARE(box.text(), QStringLiteral("开机自启动设置失败，可能需要管理员权限。\n当前状态：%1").arg(state));
    QCOMPARE(LarkspireAppPeer::config(window).enableAutoStart, enabledBefore);
    QCOMPARE(ConfigManager::instance()->getEnableAutoStart(), enabledBefore);
}

void TestLarkspireAppSettings::speechSwitchReachesTheManager()
{
    LarkspireApp window;
    auto *box = window.findChild<QCheckBox *>(QStringLiteral("ttsCheckBox"));
    auto *speech = window.findChild<SpeechManager *>();
    QVERIFY(box->isChecked());
    box->click();
    QVERIFY(!LarkspireAppPeer::config(window).enableTts);
    QVERIFY(!ConfigManager::instance()->getEnableTts());
    speech->speak(QStringLiteral("静音"));
    QVERIFY(SpeechStage::instance().said().isEmpty());
    box->click();
    speech->speak(QStringLiteral("出声"));
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("出声")});
}

void TestLarkspireAppSettings::speechSwitchWithoutAManagerWarns()
{
    LarkspireApp window;
    delete window.findChild<SpeechManager *>();
    const BoxAnswer box(QStringLiteral("OK"));
    window.findChild<QCheckBox *>(QStringLiteral("ttsCheckBox"))->click();
    QVERIFY(box.shown());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.title(), QStringLiteral("错误"));
    QCOMPARE(box.text(), QStringLiteral("语音管理器未初始化"));
    QVERIFY(!LarkspireAppPeer::config(window).enableTts);
    // The rest of the window goes on without it.
    window.findChild<QSlider *>(QStringLiteral("volumeSlider"))->setValue(12);
    QCOMPARE(LarkspireAppPeer::config(window).ttsVolume, 0.12);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_settings.moc"
