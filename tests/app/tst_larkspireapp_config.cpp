#include "accounts/AuthManager.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "desktop/AutoStartManager.h"
#include "desktop/XTestKeyboard.h"
#include "news/CustomNotification.h"
#include "news/SoundReminder.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/AppConfig.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/LimitUpPopup.h"
#include "stockviews/MarketStatisticsWidget.h"
#include "stockviews/ScriptedStockService.h"
#include "stockviews/StockAnalysisWidget.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/WindowInput.h"
#include "support/speechplugin/SpeechStage.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCursor>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGroupBox>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMultiHash>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSlider>
#include <QSoundEffect>
#include <QSpinBox>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

const QString settingsTitle = QStringLiteral("系统配置");

QVariant stored(const QString &settingsKey)
{
    return QSettings(settingsFilePath(), QSettings::IniFormat).value(settingsKey);
}

template <class Kind>
Kind *in(QDialog &dialog, const char *name)
{
    return dialog.findChild<Kind *>(QLatin1String(name));
}

/// Which settings each test has changed so far.
QMultiHash<QString, QString> changedByTests;

void note(const char *name)
{
    changedByTests.insert(QLatin1String(QTest::currentTestFunction()), QLatin1String(name));
}

void toggle(QDialog &dialog, const char *name)
{
    note(name);
    in<QCheckBox>(dialog, name)->click();
}

void number(QDialog &dialog, const char *name, int value)
{
    note(name);
    in<QSpinBox>(dialog, name)->setValue(value);
}

/// Into a field of the tab for the server.
void write(QDialog &dialog, const char *name, const QString &text)
{
    note(name);
    in<QTabWidget>(dialog, "tabWidget")->setCurrentIndex(4);
    WindowInput::fill(in<QLineEdit>(dialog, name), text);
}

void choose(QDialog &dialog, const char *name, const QString &text)
{
    note(name);
    auto *box = in<QComboBox>(dialog, name);
    box->setCurrentIndex(box->findText(text));
}

/// By the colour dialog of this title, which the button opens.
void pick(QDialog &dialog, const char *name, const QString &title, const QColor &color)
{
    note(name);
    const DialogVisit visit(title, [&color](QDialog &palette) {
        qobject_cast<QColorDialog *>(&palette)->setCurrentColor(color);
        palette.accept();
    });
    in<QTabWidget>(dialog, "tabWidget")->setCurrentIndex(3);
    WindowInput::click(in<QPushButton>(dialog, name));
    QVERIFY(visit.ended());
}

void pressOk(QDialog &dialog)
{
    WindowInput::click(dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok));
}

/// A setting of the dialog and the test that changes it there and looks at what the user sees then.
struct Held
{
    const char *widget;
    const char *test;
};

/// In the order of the tabs.
constexpr Held everySetting[] = {
    {"ttsCheckBox", "speechIsLive"},
    {"speakStockCheckBox", "spokenStockNameIsLive"},
    {"notificationCheckBox", "notificationsAreLive"},
    {"soundCheckBox", "soundIsLive"},
    {"autoStartCheckBox", "autoStartIsLive"},
    {"rememberWindowStateCheckBox", "rememberedPlaceIsLive"},
    {"darkModeCheckBox", "darkModeIsLive"},
    {"showNewsDetailsCheckBox", "newsDetailsAreLive"},
    {"refreshIntervalSpinBox", "refreshIntervalIsLive"},
    {"notificationPositionComboBox", "notificationPositionIsLive"},
    {"mainBoardColorComboBox", "colorsOfTheBoardsAreLive"},
    {"gemColorComboBox", "colorsOfTheBoardsAreLive"},
    {"starMarketColorComboBox", "colorsOfTheBoardsAreLive"},
    {"beijingExchangeColorComboBox", "colorsOfTheBoardsAreLive"},
    {"stockCodeNameFontSizeSpinBox", "sizesOfTheStockPageAreLive"},
    {"basicInfoFontSizeSpinBox", "sizesOfTheStockPageAreLive"},
    {"historyStatsFontSizeSpinBox", "sizesOfTheStockPageAreLive"},
    {"openingMarketFontSizeSpinBox", "sizesOfTheStockPageAreLive"},
    {"limitUpDetailFontSizeSpinBox", "sizeOfTheLimitUpDetailIsLive"},
    {"marketTitleFontSizeSpinBox", "sizesOfTheMarketPageAreLive"},
    {"marketLabelFontSizeSpinBox", "sizesOfTheMarketPageAreLive"},
    {"marketValueFontSizeSpinBox", "sizesOfTheMarketPageAreLive"},
    {"marketBoardRankingFontSizeSpinBox", "sizesOfTheMarketPageAreLive"},
    {"marketRefreshIntervalSpinBox", "marketIntervalIsLive"},
    {"themeBgColorButton", "colorsOfTheConceptPanelAreLive"},
    {"themeCardBgColorButton", "colorsOfTheConceptPanelAreLive"},
    {"themeWidthSpinBox", "sizesOfTheConceptPanelAreLive"},
    {"themePositionComboBox", "placeOfTheConceptPanelIsLive"},
    {"themeSummaryFontSizeSpinBox", "sizesOfTheConceptPanelAreLive"},
    {"themeNameColorButton", "colorsOfTheConceptPanelAreLive"},
    {"themeNameFontSizeSpinBox", "sizesOfTheConceptPanelAreLive"},
    {"themeDescColorButton", "colorsOfTheConceptPanelAreLive"},
    {"themeDescFontSizeSpinBox", "sizesOfTheConceptPanelAreLive"},
    {"themeHotkeyComboBox", "hotKeysAreLive"},
    {"dynamicHotkeyComboBox", "hotKeysAreLive"},
    {"serverUrlEdit", "serverAndKeyAreLive"},
    {"apiKeyEdit", "serverAndKeyAreLive"},
    {"timeoutSpinBox", "timeLimitIsLive"},
};

/// Whether enough of the picture is painted in this colour for it to be that of a text.
bool isWrittenIn(const QImage &picture, const QColor &color)
{
    int pixels = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            pixels += picture.pixelColor(x, y) == color ? 1 : 0;
    }
    return pixels > 20;
}

/// The file that starts a program of this name at logon.
QString logonEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/Larkspire.desktop");
}

} // namespace

/// The settings dialog as the user of the main window meets it: what is changed there shows at once.
class TestLarkspireAppConfig : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();

    void opensFromTheMenuAndFromTheTray_data();
    void opensFromTheMenuAndFromTheTray();
    void secondCallBringsTheOpenDialogToTheFront();

    void everySettingIsHeldByATest();
    void speechIsLive();
    void spokenStockNameIsLive();
    void notificationsAreLive();
    void soundIsLive();
    void autoStartIsLive();
    void rememberedPlaceIsLive();
    void darkModeIsLive();
    void newsDetailsAreLive();
    void refreshIntervalIsLive();
    void notificationPositionIsLive();
    void serverAndKeyAreLive();
    void timeLimitIsLive();
    void sizesOfTheStockPageAreLive_data();
    void sizesOfTheStockPageAreLive();
    void colorsOfTheBoardsAreLive_data();
    void colorsOfTheBoardsAreLive();
    void sizeOfTheLimitUpDetailIsLive();
    void sizesOfTheMarketPageAreLive_data();
    void sizesOfTheMarketPageAreLive();
    void marketIntervalIsLive();
    void marketPageFollowsToAnotherServer();
    void stockPageFollowsToAnotherServer();
    void stockPageAsksTheOtherServerAnew();
    void settingsThatPagesReadAreStored_data();
    void settingsThatPagesReadAreStored();
    void colorsOfTheConceptPanelAreLive_data();
    void colorsOfTheConceptPanelAreLive();
    void sizesOfTheConceptPanelAreLive_data();
    void sizesOfTheConceptPanelAreLive();
    void placeOfTheConceptPanelIsLive();
    void hotKeysAreLive_data();
    void hotKeysAreLive();
    void volumeAndTopMostStayAsTheyAre();
    void windowInTheTrayShowsItself();

    void cancelChangesNothing();
    void resetAndOkDressesTheProgram();
    void resetThatIsCancelledSurvivesTheEndOfTheProgram();

    void autoStartBoxTellsWhatTheSystemDoes_data();
    void autoStartBoxTellsWhatTheSystemDoes();
    void refusedAutoStartIsToldAndTakenBack();

private:
    /// Changes settings in the dialog and presses OK.
    void change(const std::function<void(QDialog &)> &edit);
    template <class Kind>
    Kind *child(const char *name) const
    {
        return m_window->findChild<Kind *>(QLatin1String(name));
    }
    /// Empties the offsets of the trading programs, so that the stock page asks for them.
    static void forgetOffsets();
    StockAnalysisWidget *stockPage() const { return m_window->findChild<StockAnalysisWidget *>(); }
    /// The stock page, in front, shows this stock.
    void showStock(const QString &code, const QString &name);
    /// Its concept panel; null when it has not come.
    QDialog *openConcepts();
    /// A news item with a keyword arrives.
    void announce(const QString &id);
    CustomNotification *card() const { return m_window->findChild<CustomNotification *>(); }
    QString sound() const
    {
        return m_window->findChild<SoundReminder *>()->findChild<QSoundEffect *>()->source().toString();
    }
    static QStringList said() { return SpeechStage::instance().said(); }

    std::unique_ptr<ScriptedService> m_service;
    std::unique_ptr<LarkspireApp> m_window;
};

void TestLarkspireAppConfig::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    SpeechStage::instance().speaksAtOnce = false;
    m_service = std::make_unique<ScriptedService>();
    storeSession(m_service->url());
    ConfigManager::instance()->setApiKey(QStringLiteral("old-key"));
    // It lives on from one test to the next.
    StockApiConfig::instance()->refreshFromSettings();
    StockApiConfig::instance()->setTdxOffset(QString());
    m_window = std::make_unique<LarkspireApp>();
    QTRY_VERIFY(m_window->findChild<AuthManager *>()->isAuthenticated());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestLarkspireAppConfig::cleanup()
{
    m_window.reset();
    m_service.reset();
    QFile::remove(logonEntryPath());
    qApp->setStyleSheet(QString());
}

void TestLarkspireAppConfig::change(const std::function<void(QDialog &)> &edit)
{
    const DialogVisit visit(settingsTitle, [&edit](QDialog &dialog) {
        edit(dialog);
        pressOk(dialog);
    });
    child<QAction>("actionConfig")->trigger();
    QVERIFY(visit.ended());
}

void TestLarkspireAppConfig::forgetOffsets()
{
    StockApiConfig::instance()->setTdxOffset(QString());
    StockApiConfig::instance()->setThsOffset(QString());
}

void TestLarkspireAppConfig::announce(const QString &id)
{
    m_service->news = {
        newsObject(id, QStringLiteral("快讯") + id, QDateTime::currentDateTime(), {QStringLiteral("回购")})};
    QSignalSpy received(m_window->findChild<ApiClient *>(), &ApiClient::newsReceived);
    child<QPushButton>("refreshButton")->click();
    QVERIFY(received.wait());
}

void TestLarkspireAppConfig::opensFromTheMenuAndFromTheTray_data()
{
    QTest::addColumn<bool>("tray");
    QTest::newRow("menu") << false;
    QTest::newRow("tray") << true;
}

void TestLarkspireAppConfig::opensFromTheMenuAndFromTheTray()
{
    QFETCH(bool, tray);
    bool inFrontOfTheWindow = false;
    const DialogVisit visit(settingsTitle, [&](QDialog &dialog) {
        inFrontOfTheWindow = dialog.frameGeometry().intersects(m_window->frameGeometry());
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    auto *opener = child<QAction>("actionConfig");
    if (tray) {
        const QList<QAction *> actions = LarkspireAppPeer::trayMenu(*m_window)->actions();
        for (QAction *action : actions) {
            if (action->text() == QStringLiteral("设置"))
                opener = action;
        }
    }
    QVERIFY(opener->isEnabled());
    opener->trigger();
    QVERIFY(visit.ended());
    QVERIFY(inFrontOfTheWindow);
}

void TestLarkspireAppConfig::secondCallBringsTheOpenDialogToTheFront()
{
    int dialogs = 0;
    const DialogVisit visit(settingsTitle, [&](QDialog &dialog) {
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onConfigButtonClicked"));
        const QWidgetList widgets = QApplication::topLevelWidgets();
        for (const QWidget *widget : widgets)
            dialogs += widget->windowTitle() == settingsTitle ? 1 : 0;
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    child<QAction>("actionConfig")->trigger();
    QVERIFY(visit.ended());
    QCOMPARE(dialogs, 1);
}

void TestLarkspireAppConfig::showStock(const QString &code, const QString &name)
{
    m_service->data.insert("/stock/comprehensive", stockRecord(code, name, QStringLiteral("2024-06-12")));
    child<QTabWidget>("mainTabWidget")->setCurrentWidget(child<QWidget>("stockAnalysisPage"));
    stockPage()->findChild<StockApiClient *>()->getComprehensiveInfo(code);
    QTRY_VERIFY(child<QLabel>("companyNameLabel")->text().contains(code));
    QVERIFY(child<QLabel>("companyNameLabel")->isVisible());
}

QDialog *TestLarkspireAppConfig::openConcepts()
{
    const QString code = QStringLiteral("600519");
    m_service->data.insert("/theme_stocks",
                           QJsonArray{QJsonObject{
                               {QStringLiteral("stock_code"), code},
                               {QStringLiteral("sector_name"), QStringLiteral("白酒")},
                               {QStringLiteral("desc"), QStringLiteral("白酒的生产与销售，高端白酒")},
                           }});
    showStock(code, QStringLiteral("贵州茅台"));
    child<QPushButton>("themeButton")->click();
    const QString title = QStringLiteral("概念题材");
    return QTest::qWaitFor([&title] { return openDialog(title) != nullptr; }) ? openDialog(title) : nullptr;
}

void TestLarkspireAppConfig::everySettingIsHeldByATest()
{
    QStringList held;
    for (const Held &setting : everySetting) {
        held.append(QLatin1String(setting.widget));
        QVERIFY2(metaObject()->indexOfMethod((QByteArray(setting.test) + "()").constData()) >= 0,
                 setting.test);
    }
    const DialogVisit visit(settingsTitle, [&held](QDialog &dialog) {
        QStringList found;
        const QList<QWidget *> widgets = in<QTabWidget>(dialog, "tabWidget")->findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            const QString name = widget->objectName();
            const bool edits =
                qobject_cast<const QCheckBox *>(widget) || qobject_cast<const QAbstractSpinBox *>(widget) ||
                qobject_cast<const QComboBox *>(widget) ||
                (qobject_cast<const QLineEdit *>(widget) &&
                 !qobject_cast<const QAbstractSpinBox *>(widget->parentWidget())) ||
                (qobject_cast<const QPushButton *>(widget) && name.endsWith(QStringLiteral("ColorButton")));
            if (edits)
                found.append(name);
        }
        held.sort();
        found.sort();
        QCOMPARE(found, held);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    child<QAction>("actionConfig")->trigger();
    QVERIFY(visit.ended());
}

void TestLarkspireAppConfig::cleanupTestCase()
{
    // Of the tests that have run, each has changed what it is said to hold.
    for (const Held &setting : everySetting) {
        const QString test = QLatin1String(setting.test);
        QVERIFY2(!changedByTests.contains(test) ||
                     changedByTests.contains(test, QLatin1String(setting.widget)),
                 setting.widget);
    }
}

void TestLarkspireAppConfig::spokenStockNameIsLive()
{
    showStock(QStringLiteral("600519"), QStringLiteral("贵州茅台"));
    QCOMPARE(said(), QStringList{QStringLiteral("贵州茅台")});
    change([](QDialog &dialog) { toggle(dialog, "speakStockCheckBox"); });
    showStock(QStringLiteral("300750"), QStringLiteral("宁德时代"));
    QCOMPARE(said().size(), 1);
    change([](QDialog &dialog) { toggle(dialog, "speakStockCheckBox"); });
    showStock(QStringLiteral("688981"), QStringLiteral("中芯国际"));
    QCOMPARE(said().last(), QStringLiteral("中芯国际"));
    QCOMPARE(said().size(), 2);
}

void TestLarkspireAppConfig::speechIsLive()
{
    announce(QStringLiteral("1"));
    QCOMPARE(said().size(), 1);
    change([](QDialog &dialog) { toggle(dialog, "ttsCheckBox"); });
    QVERIFY(!child<QCheckBox>("ttsCheckBox")->isChecked());
    announce(QStringLiteral("2"));
    QCOMPARE(said().size(), 1);
    change([](QDialog &dialog) { toggle(dialog, "ttsCheckBox"); });
    QVERIFY(child<QCheckBox>("ttsCheckBox")->isChecked());
    announce(QStringLiteral("3"));
    QTRY_COMPARE(said().size(), 2);
}

void TestLarkspireAppConfig::notificationsAreLive()
{
    change([](QDialog &dialog) { toggle(dialog, "notificationCheckBox"); });
    announce(QStringLiteral("1"));
    QVERIFY(!card()->isVisible());
    // Without notifications closing closes; with them it leads to the tray.
    QVERIFY(m_window->close());
    m_window->show();
    change([](QDialog &dialog) { toggle(dialog, "notificationCheckBox"); });
    announce(QStringLiteral("2"));
    QTRY_VERIFY(card()->isVisible());
    QVERIFY(!m_window->close());
    QVERIFY(!m_window->isVisible());
}

void TestLarkspireAppConfig::soundIsLive()
{
    change([](QDialog &dialog) { toggle(dialog, "soundCheckBox"); });
    announce(QStringLiteral("1"));
    QVERIFY(sound().isEmpty());
    change([](QDialog &dialog) { toggle(dialog, "soundCheckBox"); });
    announce(QStringLiteral("2"));
    QTRY_VERIFY(sound().endsWith(QStringLiteral("tip.wav")));
}

void TestLarkspireAppConfig::autoStartIsLive()
{
    QVERIFY(!QFile::exists(logonEntryPath()));
    change([](QDialog &dialog) { toggle(dialog, "autoStartCheckBox"); });
    QVERIFY(AutoStartManager(nullptr).isAutoStartEnabled());
    QCOMPARE(stored(QStringLiteral("Features/EnableAutoStart")).toBool(), true);
    change([](QDialog &dialog) { toggle(dialog, "autoStartCheckBox"); });
    QVERIFY(!QFile::exists(logonEntryPath()));
    QCOMPARE(stored(QStringLiteral("Features/EnableAutoStart")).toBool(), false);
}

void TestLarkspireAppConfig::rememberedPlaceIsLive()
{
    change([](QDialog &dialog) { toggle(dialog, "rememberWindowStateCheckBox"); });
    const QSize before = ConfigManager::instance()->getWindowSize();
    m_window->resize(901, 702);
    QTRY_COMPARE(m_window->size(), QSize(901, 702));
    QCOMPARE(ConfigManager::instance()->getWindowSize(), before);
    change([](QDialog &dialog) { toggle(dialog, "rememberWindowStateCheckBox"); });
    m_window->resize(903, 704);
    QTRY_COMPARE(ConfigManager::instance()->getWindowSize(), QSize(903, 704));
}

void TestLarkspireAppConfig::darkModeIsLive()
{
    change([](QDialog &dialog) { toggle(dialog, "darkModeCheckBox"); });
    QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(53, 53, 53));
    QCOMPARE(qApp->styleSheet(), MainWindowSkin::darkStyleSheet());
    QCOMPARE(child<QAction>("actionToggleTheme")->text(), QStringLiteral("换肤(深色)"));
    QVERIFY(m_window->grab().toImage().pixelColor(5, m_window->height() - 5).lightness() < 128);
    // The dialog of the next time shows it and wears it.
    change([](QDialog &dialog) {
        QVERIFY(in<QCheckBox>(dialog, "darkModeCheckBox")->isChecked());
        QVERIFY(dialog.grab().toImage().pixelColor(2, 2).lightness() < 128);
        toggle(dialog, "darkModeCheckBox");
    });
    QVERIFY(qApp->styleSheet().isEmpty());
    QVERIFY(m_window->grab().toImage().pixelColor(5, m_window->height() - 5).lightness() > 128);
}

void TestLarkspireAppConfig::newsDetailsAreLive()
{
    QVERIFY(!child<QGroupBox>("detailsGroupBox")->isVisible());
    change([](QDialog &dialog) { toggle(dialog, "showNewsDetailsCheckBox"); });
    QVERIFY(child<QGroupBox>("detailsGroupBox")->isVisible());
    change([](QDialog &dialog) { toggle(dialog, "showNewsDetailsCheckBox"); });
    QVERIFY(!child<QGroupBox>("detailsGroupBox")->isVisible());
}

void TestLarkspireAppConfig::refreshIntervalIsLive()
{
    announce(QStringLiteral("1"));
    QTimer *timer = LarkspireAppPeer::refreshTimer(*m_window);
    QVERIFY(timer->isActive());
    change([](QDialog &dialog) { number(dialog, "refreshIntervalSpinBox", 37); });
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 37000);
}

void TestLarkspireAppConfig::notificationPositionIsLive()
{
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    change([](QDialog &dialog) { choose(dialog, "notificationPositionComboBox", QStringLiteral("左上角")); });
    announce(QStringLiteral("1"));
    QTRY_VERIFY(card()->isVisible());
    QTRY_COMPARE(card()->pos(), area.topLeft() + QPoint(20, 20));
    change([](QDialog &dialog) { choose(dialog, "notificationPositionComboBox", QStringLiteral("居中")); });
    announce(QStringLiteral("2"));
    QTRY_VERIFY((card()->geometry().center() - area.center()).manhattanLength() <= 2);
}

void TestLarkspireAppConfig::serverAndKeyAreLive()
{
    // A user without a session, whose requests carry the key.
    m_window->findChild<ApiClient *>()->setSessionToken(QString());
    ScriptedService other;
    change([&other](QDialog &dialog) {
        write(dialog, "serverUrlEdit", other.url());
        write(dialog, "apiKeyEdit", QStringLiteral("new-key"));
    });
    // The connection is checked at once, over there.
    QCOMPARE(child<QLabel>("statusLabel")->text(), QStringLiteral("正在连接API服务器..."));
    QTRY_COMPARE(other.requestCount("newsapi/health"), 1);
    QCOMPARE(other.server().requests().last().header("X-API-Key"), QByteArray("new-key"));
    QCOMPARE(stored(QStringLiteral("API/ServerUrl")).toString(), other.url());
    QCOMPARE(stored(QStringLiteral("API/Key")).toString(), QStringLiteral("new-key"));
}

void TestLarkspireAppConfig::timeLimitIsLive()
{
    m_service->server().setHandler({});
    m_service->server().setAnswer(RawAnswer::hang());
    QElapsedTimer clock;
    QSignalSpy failed(m_window->findChild<ApiClient *>(), &ApiClient::networkError);
    change([](QDialog &dialog) { number(dialog, "timeoutSpinBox", 5); });
    clock.start();
    QVERIFY(failed.wait(8000));
    QVERIFY2(clock.elapsed() > 4500, qPrintable(QString::number(clock.elapsed())));
}

void TestLarkspireAppConfig::sizesOfTheStockPageAreLive_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("label");
    QTest::newRow("name") << "stockCodeNameFontSizeSpinBox"
                          << "companyNameLabel";
    QTest::newRow("basic information") << "basicInfoFontSizeSpinBox"
                                       << "regionLabel";
    QTest::newRow("history") << "historyStatsFontSizeSpinBox"
                             << "recentLimitUpValueLabel";
    QTest::newRow("opening") << "openingMarketFontSizeSpinBox"
                             << "ma5StatusLabel";
}

void TestLarkspireAppConfig::sizesOfTheStockPageAreLive()
{
    QFETCH(QString, box);
    QFETCH(QString, label);
    child<QTabWidget>("mainTabWidget")->setCurrentWidget(child<QWidget>("stockAnalysisPage"));
    const auto *shown = child<QLabel>(qPrintable(label));
    QVERIFY(shown->isVisible());
    const auto resized = [&](int points) {
        change([&](QDialog &dialog) { number(dialog, qPrintable(box), points); });
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return shown->height();
    };
    const int small = resized(8);
    const int large = resized(24);
    QVERIFY2(large >= small + 10, qPrintable(QStringLiteral("%1 and %2").arg(small).arg(large)));
    QCOMPARE(resized(8), small);
}

void TestLarkspireAppConfig::colorsOfTheBoardsAreLive_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("code");
    QTest::newRow("main board") << "mainBoardColorComboBox"
                                << "600519";
    QTest::newRow("growth board") << "gemColorComboBox"
                                  << "300750";
    QTest::newRow("star market") << "starMarketColorComboBox"
                                 << "688981";
    QTest::newRow("Beijing exchange") << "beijingExchangeColorComboBox"
                                      << "920001";
}

void TestLarkspireAppConfig::colorsOfTheBoardsAreLive()
{
    QFETCH(QString, box);
    QFETCH(QString, code);
    showStock(code, QStringLiteral("样本股份"));
    const QColor chosen(QStringLiteral("fuchsia"));
    const auto name = [this] { return child<QLabel>("companyNameLabel")->grab().toImage(); };
    QVERIFY(!isWrittenIn(name(), chosen));
    change([&box](QDialog &dialog) { choose(dialog, qPrintable(box), QStringLiteral("fuchsia")); });
    QVERIFY(isWrittenIn(name(), chosen));
    change([&box](QDialog &dialog) { choose(dialog, qPrintable(box), QStringLiteral("navy")); });
    QVERIFY(isWrittenIn(name(), QColor(QStringLiteral("navy"))));
}

void TestLarkspireAppConfig::sizeOfTheLimitUpDetailIsLive()
{
    const QString code = QStringLiteral("600519");
    const QString name = QStringLiteral("贵州茅台");
    QCursor::setPos(5, 5);
    m_service->data.insert("/limit_up_stock", limitUpDetail(code, name, QStringLiteral("2024-05-30")));
    showStock(code, name);
    m_window->move(300, 100);
    const auto *label = child<QLabel>("recentLimitUpValueLabel");
    const auto *popup = stockPage()->findChild<LimitUpPopup *>();
    const auto heightAt = [&](int points) {
        change([&](QDialog &dialog) { number(dialog, "limitUpDetailFontSizeSpinBox", points); });
        QCursor::setPos(label->mapToGlobal(label->rect().center()));
        const bool shown = QTest::qWaitFor([popup] { return popup->isVisible(); });
        const int height = popup->height();
        QCursor::setPos(5, 5);
        const bool gone = QTest::qWaitFor([popup] { return !popup->isVisible(); });
        return shown && gone ? height : 0;
    };
    const int small = heightAt(8);
    QVERIFY(small > 0);
    const int large = heightAt(24);
    QVERIFY2(large > small * 3 / 2, qPrintable(QStringLiteral("%1 and %2").arg(small).arg(large)));
    QCOMPARE(heightAt(8), small);
}

void TestLarkspireAppConfig::sizesOfTheMarketPageAreLive_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("widget");
    QTest::newRow("titles") << "marketTitleFontSizeSpinBox"
                            << "boardRankingTitleLabel";
    QTest::newRow("captions") << "marketLabelFontSizeSpinBox"
                              << "riseCountLabel";
    QTest::newRow("values") << "marketValueFontSizeSpinBox"
                            << "riseCountValue";
    QTest::newRow("ranking") << "marketBoardRankingFontSizeSpinBox"
                             << "boardRankingTable";
}

void TestLarkspireAppConfig::sizesOfTheMarketPageAreLive()
{
    QFETCH(QString, box);
    QFETCH(QString, widget);
    auto *page = m_window->findChild<MarketStatisticsWidget *>();
    const auto *shown = page->findChild<QWidget *>(widget);
    QVERIFY(shown);
    for (const int points : {11, 23}) {
        change([&](QDialog &dialog) { number(dialog, qPrintable(box), points); });
        QCOMPARE(shown->font().pointSize(), points);
    }
}

void TestLarkspireAppConfig::marketIntervalIsLive()
{
    change([](QDialog &dialog) { number(dialog, "marketRefreshIntervalSpinBox", 55); });
    QList<int> intervals;
    const QList<QTimer *> timers = m_window->findChild<MarketStatisticsWidget *>()->findChildren<QTimer *>();
    for (const QTimer *timer : timers) {
        if (timer->isActive())
            intervals.append(timer->interval());
    }
    QVERIFY(intervals.contains(55000));
}

void TestLarkspireAppConfig::marketPageFollowsToAnotherServer()
{
    ScriptedService other;
    change([&other](QDialog &dialog) { write(dialog, "serverUrlEdit", other.url()); });
    child<QTabWidget>("mainTabWidget")->setCurrentWidget(child<QWidget>("marketStatisticsPage"));
    QTRY_VERIFY(other.requestCount("market/statistics") > 0);
}

void TestLarkspireAppConfig::stockPageFollowsToAnotherServer()
{
    ScriptedService other;
    change([&other](QDialog &dialog) { write(dialog, "serverUrlEdit", other.url()); });
    forgetOffsets();
    auto *page = m_window->findChild<StockAnalysisWidget *>();
    auto *autoRefresh = page->findChild<QCheckBox *>(QStringLiteral("autoRefreshCheckBox"));
    autoRefresh->click();
    QTRY_VERIFY(page->isMonitoring());
    QCOMPARE(other.requestCount("stockhelper/config"), 1);
    autoRefresh->click();
}

void TestLarkspireAppConfig::stockPageAsksTheOtherServerAnew()
{
    forgetOffsets();
    m_service->server().setHandler({});
    m_service->server().setAnswer(RawAnswer::hang());
    auto *page = m_window->findChild<StockAnalysisWidget *>();
    auto *autoRefresh = page->findChild<QCheckBox *>(QStringLiteral("autoRefreshCheckBox"));
    const int before = m_service->requestCount("stockhelper/config");
    autoRefresh->click();
    QTRY_VERIFY(m_service->requestCount("stockhelper/config") > before);
    QVERIFY(!page->isMonitoring());
    ScriptedService other;
    ConfigManager::instance()->setApiServerUrl(other.url());
    StockApiConfig::instance()->refreshFromSettings();
    StockApiConfig::instance()->setTdxOffset(QString());
    StockApiConfig::instance()->setThsOffset(QString());
    page->useConfiguredService();
    QTRY_VERIFY(page->isMonitoring());
    QCOMPARE(other.requestCount("stockhelper/config"), 1);
    autoRefresh->click();
}

void TestLarkspireAppConfig::settingsThatPagesReadAreStored_data()
{
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("settingsKey");
    QTest::addColumn<QString>("value");
    const struct
    {
        const char *widget;
        const char *entry;
        const char *settingsKey;
        const char *value;
    } rows[] = {
        {"speakStockCheckBox", "", "Features/EnableSepakStock", "false"},
        {"mainBoardColorComboBox", "navy", "StockAnalysis/MainBoardColor", "navy"},
        {"gemColorComboBox", "teal", "StockAnalysis/GemColor", "teal"},
        {"starMarketColorComboBox", "pink", "StockAnalysis/StarMarketColor", "pink"},
        {"beijingExchangeColorComboBox", "lime", "StockAnalysis/BeijingExchangeColor", "lime"},
        {"stockCodeNameFontSizeSpinBox", "23", "StockAnalysis/StockCodeNameFontSize", "23"},
        {"basicInfoFontSizeSpinBox", "22", "StockAnalysis/BasicInfoFontSize", "22"},
        {"historyStatsFontSizeSpinBox", "21", "StockAnalysis/HistoryStatsFontSize", "21"},
        {"openingMarketFontSizeSpinBox", "20", "StockAnalysis/OpeningMarketFontSize", "20"},
        {"limitUpDetailFontSizeSpinBox", "19", "StockAnalysis/LimitUpDetailFontSize", "19"},
        {"marketTitleFontSizeSpinBox", "30", "MarketStats/TitleFontSize", "30"},
        {"marketLabelFontSizeSpinBox", "9", "MarketStats/LabelFontSize", "9"},
        {"marketValueFontSizeSpinBox", "11", "MarketStats/ValueFontSize", "11"},
        {"marketBoardRankingFontSizeSpinBox", "13", "MarketStats/BoardRankingFontSize", "13"},
        {"marketRefreshIntervalSpinBox", "55", "MarketStats/RefreshInterval", "55"},
        {"themeWidthSpinBox", "1234", "ThemeDialog/Width", "1234"},
        {"themePositionComboBox", "屏幕左边", "ThemeDialog/Position", "0"},
        {"themeSummaryFontSizeSpinBox", "21", "ThemeDialog/SummaryFontSize", "21"},
        {"themeNameFontSizeSpinBox", "22", "ThemeDialog/NameFontSize", "22"},
        {"themeDescFontSizeSpinBox", "23", "ThemeDialog/DescFontSize", "23"},
        {"themeHotkeyComboBox", "F20", "ThemeDialog/Hotkey", "F20"},
        {"dynamicHotkeyComboBox", "~ (波浪号)", "DynamicAnalysis/Hotkey", "Tilde"},
    };
    for (const auto &row : rows) {
        QTest::newRow(row.widget) << QString::fromUtf8(row.widget) << QString::fromUtf8(row.entry)
                                  << QString::fromUtf8(row.settingsKey) << QString::fromUtf8(row.value);
    }
}

void TestLarkspireAppConfig::settingsThatPagesReadAreStored()
{
    QFETCH(QString, widget);
    QFETCH(QString, entry);
    QFETCH(QString, settingsKey);
    QFETCH(QString, value);
    QVERIFY(stored(settingsKey).toString() != value);
    change([&](QDialog &dialog) {
        auto *edited = dialog.findChild<QWidget *>(widget);
        if (qobject_cast<QCheckBox *>(edited))
            toggle(dialog, qPrintable(widget));
        else if (qobject_cast<QSpinBox *>(edited))
            number(dialog, qPrintable(widget), entry.toInt());
        else
            choose(dialog, qPrintable(widget), entry);
    });
    QCOMPARE(stored(settingsKey).toString(), value);
    // The window writes its own settings at its end, and takes nothing of these back.
    m_window.reset();
    QCOMPARE(stored(settingsKey).toString(), value);
}

void TestLarkspireAppConfig::colorsOfTheConceptPanelAreLive_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("title");
    QTest::newRow("ground") << "themeBgColorButton" << QStringLiteral("选择对话框背景颜色");
    QTest::newRow("cards") << "themeCardBgColorButton" << QStringLiteral("选择卡片背景颜色");
    QTest::newRow("names") << "themeNameColorButton" << QStringLiteral("选择概念名称颜色");
    QTest::newRow("descriptions") << "themeDescColorButton" << QStringLiteral("选择描述文字颜色");
}

void TestLarkspireAppConfig::colorsOfTheConceptPanelAreLive()
{
    QFETCH(QString, button);
    QFETCH(QString, title);
    QDialog *panel = openConcepts();
    QVERIFY(panel);
    const QColor chosen(0x12, 0x34, 0xa6);
    QVERIFY(!isWrittenIn(panel->grab().toImage(), chosen));
    change([&](QDialog &dialog) { pick(dialog, qPrintable(button), title, chosen); });
    QTRY_VERIFY(isWrittenIn(panel->grab().toImage(), chosen));
}

void TestLarkspireAppConfig::sizesOfTheConceptPanelAreLive_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("size");
    QTest::newRow("width") << "themeWidthSpinBox"
                           << "" << 777;
    QTest::newRow("labels") << "themeSummaryFontSizeSpinBox"
                            << "themeChip" << 29;
    QTest::newRow("names") << "themeNameFontSizeSpinBox"
                           << "themeNameLabel" << 13;
    QTest::newRow("descriptions") << "themeDescFontSizeSpinBox"
                                  << "themeDescLabel" << 11;
}

void TestLarkspireAppConfig::sizesOfTheConceptPanelAreLive()
{
    QFETCH(QString, box);
    QFETCH(QString, label);
    QFETCH(int, size);
    const QDialog *panel = openConcepts();
    QVERIFY(panel);
    const auto shown = [&] {
        if (label.isEmpty())
            return panel->width();
        const auto *text = panel->findChild<QWidget *>(label);
        return text ? text->font().pixelSize() : 0;
    };
    QVERIFY(shown() > 0 && shown() != size);
    change([&](QDialog &dialog) { number(dialog, qPrintable(box), size); });
    QTRY_COMPARE(shown(), size);
}

void TestLarkspireAppConfig::placeOfTheConceptPanelIsLive()
{
    const QDialog *panel = openConcepts();
    QVERIFY(panel);
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const auto centre = [panel] { return panel->geometry().center().x(); };
    QTRY_VERIFY(qAbs(centre() - area.center().x()) < 10);
    change([](QDialog &dialog) { choose(dialog, "themePositionComboBox", QStringLiteral("屏幕左边")); });
    QTRY_VERIFY(centre() < area.center().x() - 100);
    change([](QDialog &dialog) { choose(dialog, "themePositionComboBox", QStringLiteral("屏幕右边")); });
    QTRY_VERIFY(centre() > area.center().x() + 100);
}

void TestLarkspireAppConfig::hotKeysAreLive_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QString>("other");
    const QString concepts = QStringLiteral("概念题材");
    const QString analysis = QStringLiteral("异动解析");
    QTest::newRow("concepts") << "themeHotkeyComboBox" << concepts << analysis;
    QTest::newRow("analysis of the move") << "dynamicHotkeyComboBox" << analysis << concepts;
}

void TestLarkspireAppConfig::hotKeysAreLive()
{
    QFETCH(QString, box);
    QFETCH(QString, panel);
    QFETCH(QString, other);
    constexpr quint32 homeKeysym = 0xff50;
    m_service->data.insert("/theme_stocks", QJsonArray());
    m_service->data.insert("/dynamic_analysis", QJsonArray());
    showStock(QStringLiteral("600519"), QStringLiteral("贵州茅台"));
    auto *autoRefresh = child<QCheckBox>("autoRefreshCheckBox");
    forgetOffsets();
    autoRefresh->click();
    QTRY_VERIFY(stockPage()->isMonitoring());
    XTestKeyboard keyboard;
    const quint8 key = keyboard.keycodeOf(homeKeysym);
    QVERIFY(!keyboard.isTaken(key, 0));
    change([&box](QDialog &dialog) { choose(dialog, qPrintable(box), QStringLiteral("主页")); });
    keyboard.tap(key);
    QTRY_VERIFY(openDialog(panel));
    QVERIFY(!openDialog(other));
    keyboard.tap(key);
    QTRY_VERIFY(!openDialog(panel));
    autoRefresh->click();
    QTRY_VERIFY(!keyboard.isTaken(key, 0));
}

void TestLarkspireAppConfig::volumeAndTopMostStayAsTheyAre()
{
    child<QSlider>("volumeSlider")->setValue(23);
    child<QCheckBox>("topMostCheckBox")->click();
    QTRY_VERIFY(m_window->isVisible());
    change([](QDialog &dialog) { number(dialog, "refreshIntervalSpinBox", 21); });
    QCOMPARE(child<QSlider>("volumeSlider")->value(), 23);
    QVERIFY(child<QCheckBox>("topMostCheckBox")->isChecked());
    QVERIFY(m_window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(stored(QStringLiteral("Features/TTSVolume")).toDouble(), 0.23);
    QCOMPARE(stored(QStringLiteral("Features/EnableTopmost")).toBool(), true);
}

void TestLarkspireAppConfig::windowInTheTrayShowsItself()
{
    m_window->hide();
    change([](QDialog &dialog) { number(dialog, "refreshIntervalSpinBox", 21); });
    QVERIFY(m_window->isVisible());
}

void TestLarkspireAppConfig::cancelChangesNothing()
{
    const DialogVisit visit(settingsTitle, [](QDialog &dialog) {
        toggle(dialog, "darkModeCheckBox");
        toggle(dialog, "ttsCheckBox");
        number(dialog, "refreshIntervalSpinBox", 99);
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    const int interval = LarkspireAppPeer::refreshTimer(*m_window)->interval();
    child<QAction>("actionConfig")->trigger();
    QVERIFY(visit.ended());
    QVERIFY(qApp->styleSheet().isEmpty());
    QVERIFY(child<QCheckBox>("ttsCheckBox")->isChecked());
    QCOMPARE(LarkspireAppPeer::refreshTimer(*m_window)->interval(), interval);
    QCOMPARE(m_service->requestCount("newsapi/health"), 0);
    m_window.reset();
    QVERIFY(stored(QStringLiteral("Features/RefreshInterval")).toInt() != 99);
    QCOMPARE(stored(QStringLiteral("Theme/DarkMode")).toBool(), false);
}

void TestLarkspireAppConfig::resetAndOkDressesTheProgram()
{
    change([](QDialog &dialog) {
        toggle(dialog, "darkModeCheckBox");
        toggle(dialog, "autoStartCheckBox");
        toggle(dialog, "showNewsDetailsCheckBox");
        number(dialog, "refreshIntervalSpinBox", 20);
    });
    QVERIFY(QFile::exists(logonEntryPath()));
    change([this](QDialog &dialog) {
        const BoxAnswer question(QStringLiteral("是"));
        const DialogVisit done(QStringLiteral("重置完成"),
                               [](QDialog &box) { WindowInput::press(&box, Qt::Key_Return); });
        WindowInput::click(in<QPushButton>(dialog, "resetButton"));
        QVERIFY(done.ended());
        write(dialog, "serverUrlEdit", m_service->url());
        write(dialog, "apiKeyEdit", QStringLiteral("k"));
    });
    QVERIFY(qApp->styleSheet().isEmpty());
    QVERIFY(!child<QGroupBox>("detailsGroupBox")->isVisible());
    QVERIFY(!QFile::exists(logonEntryPath()));
    QCOMPARE(LarkspireAppPeer::refreshTimer(*m_window)->interval(), 60000);
    QVERIFY(m_window->findChild<AuthManager *>()->isAuthenticated());
}

void TestLarkspireAppConfig::resetThatIsCancelledSurvivesTheEndOfTheProgram()
{
    change([](QDialog &dialog) {
        toggle(dialog, "darkModeCheckBox");
        toggle(dialog, "ttsCheckBox");
        toggle(dialog, "showNewsDetailsCheckBox");
        number(dialog, "refreshIntervalSpinBox", 20);
        choose(dialog, "notificationPositionComboBox", QStringLiteral("左上角"));
    });
    child<QSlider>("volumeSlider")->setValue(23);
    child<QCheckBox>("topMostCheckBox")->click();
    const DialogVisit visit(settingsTitle, [](QDialog &dialog) {
        const BoxAnswer question(QStringLiteral("是"));
        const DialogVisit done(QStringLiteral("重置完成"),
                               [](QDialog &box) { WindowInput::press(&box, Qt::Key_Return); });
        WindowInput::click(in<QPushButton>(dialog, "resetButton"));
        QVERIFY(done.ended());
        WindowInput::press(&dialog, Qt::Key_Escape);
    });
    child<QAction>("actionConfig")->trigger();
    QVERIFY(visit.ended());
    // The running program follows.
    QVERIFY(m_window->isVisible());
    QVERIFY(qApp->styleSheet().isEmpty());
    QCOMPARE(child<QAction>("actionToggleTheme")->text(), QStringLiteral("换肤(浅色)"));
    QVERIFY(child<QCheckBox>("ttsCheckBox")->isChecked());
    QVERIFY(!child<QGroupBox>("detailsGroupBox")->isVisible());
    QVERIFY(!child<QCheckBox>("topMostCheckBox")->isChecked());
    QVERIFY(!m_window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(child<QSlider>("volumeSlider")->value(), 90);
    QCOMPARE(LarkspireAppPeer::refreshTimer(*m_window)->interval(), 60000);
    m_window.reset();
    QCOMPARE(stored(QStringLiteral("Features/RefreshInterval")).toInt(), 60);
    QCOMPARE(stored(QStringLiteral("Features/TTS")).toBool(), true);
    QCOMPARE(stored(QStringLiteral("Features/TTSVolume")).toDouble(), 0.9);
    QCOMPARE(stored(QStringLiteral("Features/EnableTopmost")).toBool(), false);
    QCOMPARE(stored(QStringLiteral("Features/ShowNewsDetails")).toBool(), false);
    QCOMPARE(stored(QStringLiteral("Features/NotificationPosition")).toString(),
             QStringLiteral("bottom_right"));
    QCOMPARE(stored(QStringLiteral("Theme/DarkMode")).toBool(), false);
    QCOMPARE(stored(QStringLiteral("API/ServerUrl")).toString(), AppConfig().serverUrl);
}

void TestLarkspireAppConfig::autoStartBoxTellsWhatTheSystemDoes_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<bool>("checked");
    const QString here = QCoreApplication::applicationFilePath();
    QTest::newRow("starts this program") << here << false << true;
    QTest::newRow("starts a program elsewhere, as after a move")
        << QStringLiteral("/old/larkspire") << true << false;
    QTest::newRow("starts nothing") << QString() << true << false;
}

void TestLarkspireAppConfig::autoStartBoxTellsWhatTheSystemDoes()
{
    QFETCH(QString, program);
    QFETCH(bool, mirrored);
    QFETCH(bool, checked);
    ConfigManager::instance()->setEnableAutoStart(mirrored);
    QByteArray entry;
    if (!program.isEmpty()) {
        QVERIFY(QDir().mkpath(QFileInfo(logonEntryPath()).path()));
        QFile file(logonEntryPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        entry = "[Desktop Entry]\nType=Application\nName=Larkspire\nExec=\"" + program.toUtf8() + "\"\n";
        file.write(entry);
    }
    change([checked](QDialog &dialog) {
        QCOMPARE(in<QCheckBox>(dialog, "autoStartCheckBox")->isChecked(), checked);
    });
    // An OK for something else leaves the system's list as it is.
    QFile file(logonEntryPath());
    QCOMPARE(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), entry);
    QCOMPARE(stored(QStringLiteral("Features/EnableAutoStart")).toBool(), checked);
}

void TestLarkspireAppConfig::refusedAutoStartIsToldAndTakenBack()
{
    // A file where the folder of the entries belongs.
    const QString folder = QFileInfo(logonEntryPath()).path();
    QVERIFY(!QDir(folder).exists() || QDir(folder).removeRecursively());
    QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
    QFile obstacle(folder);
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();
    bool told = false;
    const DialogVisit warning(QStringLiteral("设置失败"), [&told](QDialog &box) {
        told = true;
        WindowInput::press(&box, Qt::Key_Return);
    });
    change([](QDialog &dialog) { toggle(dialog, "autoStartCheckBox"); });
    QVERIFY(obstacle.remove());
    QVERIFY(told);
    QCOMPARE(stored(QStringLiteral("Features/EnableAutoStart")).toBool(), false);
    QVERIFY(!LarkspireAppPeer::config(*m_window).enableAutoStart);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppConfig test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_config.moc"
