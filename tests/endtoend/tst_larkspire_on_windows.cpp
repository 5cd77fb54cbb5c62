#include "endtoend/WindowPicture.h"
#include "linkage/StandIn.h"
#include "linkage/TestPlatform.h"
#include "program/Layout.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/SoundRecorder.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QSettings>

#include <memory>

namespace {

const QString windowTitle = QStringLiteral("^云雀资讯$");

/// Runs a command to its end. @return what it printed; nothing when it failed.
QString outputOf(const QString &command, const QStringList &arguments)
{
    QProcess process;
    process.start(command, arguments);
    const bool fine =
        process.waitForFinished() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return fine ? QString::fromUtf8(process.readAllStandardOutput()).trimmed() : QString();
}

QString xdotool(const QStringList &arguments)
{
    return outputOf(QStringLiteral("xdotool"), arguments);
}

/// The program's windows that are on the screen.
QStringList windowsOnScreen()
{
    return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                    windowTitle})
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// One of them; 0 when there is none.
quint32 windowOnScreen()
{
    return windowsOnScreen().value(0).toUInt();
}

/// How strongly a pitch sounds in slices of a tenth of a second, added up: what is played may have gaps.
double strengthOfTone(const QVector<double> &samples, double pitch)
{
    constexpr int slice = SoundRecorder::rate / 10;
    double sum = 0;
    for (int from = 0; from + slice <= samples.size(); from += slice)
        sum += strengthOfPitch(samples.mid(from, slice), pitch);
    return sum;
}

QString titleInFocus()
{
    return xdotool({QStringLiteral("getactivewindow"), QStringLiteral("getwindowname")});
}

void press(const QStringList &keys)
{
    xdotool(QStringList{QStringLiteral("key")} + keys);
}

/// Where the program's settings lie in this Wine session.
QString settingsFile()
{
    const QDir users(qEnvironmentVariable("WINEPREFIX") + QStringLiteral("/drive_c/users"));
    QStringList names = users.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    names.removeAll(QStringLiteral("Public"));
    return users.filePath(names.value(0)) +
           QStringLiteral("/AppData/Roaming/Fernhollow/Larkspire/larkspire.ini");
}

/// A part of the window, a colour that has to take a share of it in each skin, and how much has to stand out.
struct Region
{
    const char *name;
    QRect place;
    QColor light;
    QColor dark;
    double leastShare;
    double leastInk;
};

const Region newsRegions[] = {
    {"menu bar", {0, 2, 750, 16}, 0xefefef, 0x353535, 0.7, 0.01},
    {"headline's ground", {10, 58, 400, 48}, 0xffffff, 0x2b2b2b, 0.7, 0.03},
    {"headline's colour", {10, 58, 400, 48}, 0x1e90ff, 0x64b5f6, 0.02, 0.03},
    {"details", {10, 110, 640, 150}, 0xffffff, 0x2b2b2b, 0.5, 0.005},
    // One row high, at the second place.
    {"row with a keyword", {300, 300, 300, 60}, 0xffffc8, 0xce5c00, 0.2, 0},
    {"rows", {60, 400, 140, 400}, 0xffffff, 0x2d2d30, 0.2, 0.05},
    {"every other row", {60, 400, 140, 400}, 0xf8f9fa, 0x353535, 0.2, 0.05},
    {"tabs", {8, 850, 340, 50}, 0xe8e8e8, 0x2b2b2b, 0.1, 0.02},
    {"controls", {10, 915, 730, 40}, 0xececec, 0x353535, 0.3, 0.01},
    {"status bar", {0, 960, 600, 18}, 0xefefef, 0x353535, 0.7, 0.01},
    {"the service's green light", {450, 955, 120, 24}, 0x008000, 0x008000, 0.01, 0.01},
};

/// The regions that do not show what they should.
QStringList wrongRegions(const WindowPicture &picture, bool dark)
{
    QStringList wrong;
    for (const Region &region : newsRegions) {
        const WindowPicture part = picture.part(region.place);
        if (part.shareOf(dark ? region.dark : region.light) < region.leastShare ||
            part.inkShare() < region.leastInk)
            wrong.append(QLatin1String(region.name));
    }
    return wrong;
}

} // namespace

/// The program out of the archive that users get, as a process of Windows, with the real service and a
/// trading program for Windows.
class TestLarkspireOnWindows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void theNewsAreOnScreen_data();
    void theNewsAreOnScreen();
    void aPieceOfNewsWithAKeywordPopsUpAndIsHeard();
    void theStockThatIsOpenInTheTradingProgramIsFollowed();
    void closedToTheTrayASecondStartBringsItBackAndItsEndStoresTheSettings();
    void theLogOffStoresTheSettings();

private:
    void start();
    bool click(const QPoint &place) const;
    void savePicture(const QString &name) const { savePicture(name, m_window); }
    void savePicture(const QString &name, quint32 window) const;
    bool askedFor(const QString &target) const;

    QTemporaryDir m_folder;
    QString m_programFile;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<QProcess> m_program;
    quint32 m_window = 0;
};

void TestLarkspireOnWindows::initTestCase()
{
    // Where users put it.
    const QString place = m_folder.filePath(QStringLiteral("云雀 资讯"));
    QVERIFY(QDir().mkpath(place));
    QProcess unpacking;
    unpacking.setWorkingDirectory(place);
    unpacking.start(QStringLiteral(CMAKE_PROGRAM), {QStringLiteral("-E"), QStringLiteral("tar"),
                                                    QStringLiteral("xf"), QStringLiteral(WINDOWS_ZIP)});
    QVERIFY(unpacking.waitForFinished());
    QCOMPARE(unpacking.exitCode(), 0);
    m_programFile = place + QStringLiteral("/" FOLDER_IN_ZIP "/larkspire.exe");
    QVERIFY(QFileInfo::exists(m_programFile));
    QVERIFY(!qEnvironmentVariableIsSet("WINEPATH"));
}

void TestLarkspireOnWindows::init()
{
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    QJsonArray items;
    // Too old to be announced; the second of the list has a keyword of the account's.
    for (int i = 0; i < 40; ++i) {
        items.append(QJsonObject{{QStringLiteral("title"), QStringLiteral("沪深两市第%1条消息").arg(i)},
                                 {QStringLiteral("content"), QStringLiteral("正文")},
                                 {QStringLiteral("age_seconds"), 4000 - 60 * i}});
    }
    items.append(QJsonObject{{QStringLiteral("title"), QStringLiteral("人工智能算力需求继续增长")},
                             {QStringLiteral("content"), QStringLiteral("正文")},
                             {QStringLiteral("age_seconds"), 900}});
    items.append(QJsonObject{{QStringLiteral("title"), QStringLiteral("多家公司披露新订单")},
                             {QStringLiteral("content"), QStringLiteral("多家上市公司披露算力服务器订单。")},
                             {QStringLiteral("age_seconds"), 600}});
    m_service->publish(items);

    QFile::remove(settingsFile());
    QSettings settings(settingsFile(), QSettings::IniFormat);
    settings.setValue(QStringLiteral("API/ServerUrl"), m_service->baseUrl());
    settings.setValue(QStringLiteral("API/Key"), ServiceProcess::demoApiKey());
    settings.setValue(QStringLiteral("Auth/LoginMethod"), 1);
    settings.setValue(QStringLiteral("Features/ShowNewsDetails"), true);
}

void TestLarkspireOnWindows::cleanup()
{
    if (QTest::currentTestFailed())
        savePicture(QStringLiteral("failed-%1").arg(QLatin1String(QTest::currentTestFunction())));
    if (m_program && m_program->state() != QProcess::NotRunning) {
        m_program->kill();
        m_program->waitForFinished();
    }
    m_program.reset();
    m_service.reset();
}

/// Starts the program and waits for its window, which comes with the login.
void TestLarkspireOnWindows::start()
{
    m_program = std::make_unique<QProcess>();
    m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    m_program->start(QStringLiteral("wine"), {m_programFile});
    QVERIFY(m_program->waitForStarted());
    // Somewhere out of the way; a pointer over the window would colour what lies under it.
    xdotool({QStringLiteral("mousemove"), QStringLiteral("1500"), QStringLiteral("1000")});
    QTRY_VERIFY_WITH_TIMEOUT((m_window = windowOnScreen()) != 0, 60000);
}

/// Clicks at a place of the window.
bool TestLarkspireOnWindows::click(const QPoint &place) const
{
    return xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QStringLiteral("--window"),
                    QString::number(m_window), QString::number(place.x()), QString::number(place.y()),
                    QStringLiteral("click"), QStringLiteral("1"), QStringLiteral("getmouselocation")}) !=
           QString();
}

void TestLarkspireOnWindows::savePicture(const QString &name, quint32 window) const
{
    QDir().mkpath(QStringLiteral(PICTURES));
    const WindowPicture picture(window);
    if (!picture.isNull() && !picture.save(QStringLiteral(PICTURES "/%1.png").arg(name)))
        qWarning("No picture could be stored under " PICTURES);
}

/// Whether a request for this target has come in.
bool TestLarkspireOnWindows::askedFor(const QString &target) const
{
    const QJsonArray requests = m_service->requests();
    return std::any_of(requests.cbegin(), requests.cend(), [&target](const QJsonValue &request) {
        return request.toObject().value(QLatin1String("target")).toString() == target;
    });
}

void TestLarkspireOnWindows::theNewsAreOnScreen_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void TestLarkspireOnWindows::theNewsAreOnScreen()
{
    QFETCH(bool, dark);
    {
        QSettings settings(settingsFile(), QSettings::IniFormat);
        settings.setValue(QStringLiteral("Theme/DarkMode"), dark);
    }
    start();
    QTRY_VERIFY_WITH_TIMEOUT(m_service->requestCount(QStringLiteral("GET /newsapi/news")) >= 1, 20000);
    QCOMPARE(WindowPicture(m_window).size(), QSize(750, 980));
    const auto wrong = [this](bool asDark) { return wrongRegions(WindowPicture(m_window), asDark); };
    QTRY_VERIFY2_WITH_TIMEOUT(wrong(dark).isEmpty(), qPrintable(wrong(dark).join(QStringLiteral(", "))),
                              20000);
    savePicture(dark ? QStringLiteral("news-dark") : QStringLiteral("news-light"));
    // The colours are the skin's own: in the other one's they would not be right.
    QVERIFY2(wrong(!dark).size() > 8, qPrintable(wrong(!dark).join(QStringLiteral(", "))));
}

void TestLarkspireOnWindows::aPieceOfNewsWithAKeywordPopsUpAndIsHeard()
{
    SoundRecorder recorder;
    QVERIFY(recorder.start());
    m_service->publish({QJsonObject{{QStringLiteral("title"), QStringLiteral("人工智能芯片集中发布")},
                                    {QStringLiteral("content"), QStringLiteral("正文")},
                                    {QStringLiteral("age_seconds"), 1}}});
    start();
    // Its own, and the card.
    QStringList windows;
    QTRY_COMPARE_WITH_TIMEOUT((windows = windowsOnScreen()).size(), 2, 20000);
    windows.removeAll(QString::number(m_window));
    const quint32 card = windows.value(0).toUInt();
    QTRY_VERIFY(WindowPicture(card).inkShare() > 0.02);
    savePicture(QStringLiteral("popup"), card);

    QVERIFY(
        waitUntil([&recorder] { return recorder.loudMs() > 1000 && recorder.silentMsAtEnd() > 100; }, 40000));
    // The chime's two tones, and not just any noise.
    const QVector<double> heard = recorder.samples();
    const double besides = strengthOfTone(heard, 1020.0);
    for (const double pitch : {880.00, 1174.66}) {
        const double strength = strengthOfTone(heard, pitch);
        QVERIFY2(strength > 5 * besides, qPrintable(QStringLiteral("%1 of %2").arg(strength).arg(besides)));
    }
}

void TestLarkspireOnWindows::theStockThatIsOpenInTheTradingProgramIsFollowed()
{
    // As the account has set it up on another machine.
    const QByteArray session = m_service
                                   ->request("POST", "/auth/verify_apikey",
                                             {{QStringLiteral("api_key"), ServiceProcess::demoApiKey()}})
                                   .object.value(QLatin1String("session_token"))
                                   .toString()
                                   .toLatin1();
    QVERIFY(m_service
                ->request("POST", "/stockhelper/config",
                          {{QStringLiteral("current_software"), QStringLiteral("tdx")},
                           {QStringLiteral("tdx_version"), QStringLiteral("V7.64")},
                           {QStringLiteral("ths_version"), QString()},
                           {QStringLiteral("tdx_offset_addr"),
                            QStringLiteral("0x") + QString::number(Layout::tdxCodeOffset, 16)},
                           {QStringLiteral("ths_offset_addr"), QString()}},
                          {{"X-Session-Token", session}})
                .success());
    const auto reading = TestPlatform::readingOperations();
    StandIn tdx(QStringLiteral(STANDIN_TDXW), {QStringLiteral("--code"), QStringLiteral("600519")},
                QStringLiteral("wine"));
    QVERIFY(tdx.isUp(*reading));
    start();
    xdotool({QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible"),
             QStringLiteral("--pid"), QString::number(tdx.pid()), QStringLiteral("--name"),
             QStringLiteral("600519"), QStringLiteral("windowmove"), QStringLiteral("--sync"),
             QStringLiteral("900"), QStringLiteral("200")});
    // Into the pages, and two on.
    QVERIFY(click({300, 600}));
    press({QStringLiteral("ctrl+Tab"), QStringLiteral("ctrl+Tab")});
    const QRect values(80, 240, 280, 220);
    const auto shown = [this, values] { return WindowPicture(m_window).part(values); };
    QTRY_VERIFY_WITH_TIMEOUT(shown().inkShare() > 0 && shown().inkShare() < 0.05, 30000);
    QVERIFY(click({50, 73}));
    QTRY_VERIFY_WITH_TIMEOUT(askedFor(QStringLiteral("/stockhelper/stock/comprehensive?code=600519")), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(shown().inkShare() > 0.2, 30000);
    savePicture(QStringLiteral("stock-600519"));

    const WindowPicture before = shown();
    tdx.orderWithoutWaiting("state");
    QVERIFY(
        TestPlatform::pressKeys(tdx.pid(), QString(QStringLiteral("3 0 0 7 5 0")).split(QLatin1Char(' '))));
    QVERIFY(tdx.waitForLine("code 300750"));
    QTRY_VERIFY_WITH_TIMEOUT(askedFor(QStringLiteral("/stockhelper/stock/comprehensive?code=300750")), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(shown() != before && shown().inkShare() > 0.2, 30000);
    savePicture(QStringLiteral("stock-300750"));
}

void TestLarkspireOnWindows::closedToTheTrayASecondStartBringsItBackAndItsEndStoresTheSettings()
{
    start();
    QVERIFY(!QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    outputOf(QStringLiteral("wmctrl"), {QStringLiteral("-c"), QStringLiteral("云雀资讯")});
    QTRY_VERIFY_WITH_TIMEOUT(windowOnScreen() == 0, 20000);
    QCOMPARE(m_program->state(), QProcess::Running);

    QProcess second;
    second.start(QStringLiteral("wine"), {m_programFile});
    QVERIFY(second.waitForFinished());
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(windowOnScreen() != 0, 20000);
    QTRY_COMPARE_WITH_TIMEOUT(titleInFocus(), QStringLiteral("云雀资讯"), 20000);

    // The menu bar's first menu, its only entry, and the first answer of its question.
    press({QStringLiteral("Alt_L"), QStringLiteral("Down"), QStringLiteral("Return")});
    QTRY_VERIFY_WITH_TIMEOUT(titleInFocus().startsWith(QStringLiteral("确认退出")), 20000);
    press({QStringLiteral("Left"), QStringLiteral("Return")});
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
}

// The last test: the Wine session is over with it.
void TestLarkspireOnWindows::theLogOffStoresTheSettings()
{
    start();
    QVERIFY(!QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    QCOMPARE(QProcess::execute(QStringLiteral("wine"),
                               {QStringLiteral("wineboot"), QStringLiteral("--end-session")}),
             0);
    QVERIFY(m_program->state() == QProcess::NotRunning || m_program->waitForFinished());
    QVERIFY(QSettings(settingsFile(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
}

LARKSPIRE_TEST_MAIN_WITH(QGuiApplication, TestLarkspireOnWindows)
#include "tst_larkspire_on_windows.moc"
