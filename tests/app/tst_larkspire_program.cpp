#include "app/SessionManager.h"
#include "settings/ProgramVersion.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/SpeechDispatcher.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

/// The program itself, as a process on a display.
class TestLarkspireProgram : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void applicationIsSetUpWhenTheEventLoopRuns();
    void secondStartBringsTheFirstWindowBackAndEndsWithZero();
    void withoutALoginThePromptAppearsAndTheWindowStaysHidden();
    void closingTheLastWindowLeavesTheProcessAliveUntilItIsTerminated();
    void askedToEndByTheSystemItStoresTheSettings();
    void exitByTheMenuEndsWithZeroAndStoresTheSettings();
    void logOffStoresTheSettingsAndIsNotHeldUp();
    void speechThatHangsDoesNotHoldUpTheEnd_data();
    void speechThatHangsDoesNotHoldUpTheEnd();
    void aSpeechServiceThatNeverAnswersHoldsUpNeitherTheStartNorTheEnd();
    void startAtLogonFollowsTheProgramOnlyWhenItIsChosenAnew();

private:
    static void storeLogin(const QString &serverUrl);
    void startProgram(const QString &program = QStringLiteral(LARKSPIRE_PROGRAM));
    void endProgram();
    /// Toggles the box for the start at logon, by the keyboard: from the menu bar to the settings dialog, in
    /// it to the box, and Return.
    void toggleStartAtLogon();
    /// What the desktop runs at logon; empty when it runs nothing.
    static QString logonCommand();
    /// The title of the window that has the focus.
    static QString activeTitle();
    /// How many windows of this title are on the screen; without one, the program's main windows.
    static int windowsOnScreen(const QString &title = QStringLiteral("^云雀资讯$"));
    static bool run(const QString &command, const QStringList &arguments, QByteArray *output = nullptr);
    /// Presses keys one after the other until what they lead to is seen, three times at most: a window that
    /// comes to the front once more, as the main window does at a login, closes a menu that is open in it.
    static bool pressUntil(const QStringList &keys, const std::function<bool()> &seen);
    /// Ends the program by the menu bar's first menu, and in it the only entry.
    bool exitByTheMenu();

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<QProcess> m_program;
};

void TestLarkspireProgram::init()
{
    clearSettings();
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void TestLarkspireProgram::cleanup()
{
    if (m_program && m_program->state() != QProcess::NotRunning) {
        m_program->terminate();
        m_program->waitForFinished();
    }
    if (m_program)
        qInfo().noquote() << "The program's log:" << m_program->readAllStandardError();
    m_program.reset();
    m_service.reset();
}

void TestLarkspireProgram::startProgram(const QString &program)
{
    m_program = std::make_unique<QProcess>();
    m_program->setProcessChannelMode(QProcess::ForwardedOutputChannel);
    m_program->start(program, QStringList());
    QVERIFY(m_program->waitForStarted());
}

void TestLarkspireProgram::endProgram()
{
    m_program->terminate();
    QVERIFY(m_program->waitForFinished());
}

void TestLarkspireProgram::toggleStartAtLogon()
{
    const QString mainTitle = QStringLiteral("云雀资讯");
    QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), mainTitle, 20000);
    QVERIFY(pressUntil(
        {QStringLiteral("Alt_L"), QStringLiteral("Right"), QStringLiteral("Down"), QStringLiteral("Return")},
        [] { return activeTitle().startsWith(QStringLiteral("系统配置")); }));
    QStringList keys{QStringLiteral("key")};
    for (int box = 0; box < 4; ++box)
        keys.append(QStringLiteral("Tab"));
    QVERIFY(run(QStringLiteral("xdotool"),
                keys + QStringList{QStringLiteral("space"), QStringLiteral("Return")}));
    QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), mainTitle, 20000);
}

QString TestLarkspireProgram::logonCommand()
{
    QFile entry(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/autostart/Larkspire.desktop"));
    if (!entry.open(QIODevice::ReadOnly))
        return QString();
    const QStringList lines = QString::fromUtf8(entry.readAll()).split(QLatin1Char('\n'));
    const QString exec = QStringLiteral("Exec=");
    for (const QString &line : lines) {
        if (line.startsWith(exec))
            return line.mid(exec.size());
    }
    return QString();
}

bool TestLarkspireProgram::pressUntil(const QStringList &keys, const std::function<bool()> &seen)
{
    constexpr int attempts = 3;
    constexpr int attemptMs = 8000;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (!run(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} + keys))
            return false;
        if (QTest::qWaitFor(seen, attemptMs))
            return true;
    }
    return false;
}

bool TestLarkspireProgram::exitByTheMenu()
{
    // The settings are stored as the end begins.
    return pressUntil({QStringLiteral("Alt_L"), QStringLiteral("Down"), QStringLiteral("Return")}, [] {
        return QSettings(settingsFilePath(), QSettings::IniFormat)
            .contains(QStringLiteral("Window/Geometry"));
    });
}

bool TestLarkspireProgram::run(const QString &command, const QStringList &arguments, QByteArray *output)
{
    QProcess process;
    process.start(command, arguments);
    const bool finished = process.waitForFinished();
    if (output)
        *output = process.readAllStandardOutput();
    return finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

int TestLarkspireProgram::windowsOnScreen(const QString &title)
{
    QByteArray output;
    run(QStringLiteral("xdotool"),
        {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), title},
        &output);
    return output.count('\n');
}

void TestLarkspireProgram::storeLogin(const QString &serverUrl)
{
    QSettings settings(settingsFilePath(), QSettings::IniFormat);
    settings.setValue(QStringLiteral("API/ServerUrl"), serverUrl);
    settings.setValue(QStringLiteral("API/Key"), ServiceProcess::demoApiKey());
    settings.setValue(QStringLiteral("Auth/LoginMethod"), 1);
}

QString TestLarkspireProgram::activeTitle()
{
    QByteArray output;
    run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow"), QStringLiteral("getwindowname")},
        &output);
    return QString::fromUtf8(output).trimmed();
}

void TestLarkspireProgram::applicationIsSetUpWhenTheEventLoopRuns()
{
    storeLogin(m_service->baseUrl());
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("report.json"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LARKSPIRE_TEST_REPORT"), path);
    environment.insert(QStringLiteral("LARKSPIRE_TEST_SPEECH_HANGS"), QStringLiteral("never"));
    // The style is not to be the one that the surroundings ask for.
    environment.insert(QStringLiteral("QT_STYLE_OVERRIDE"), QStringLiteral("windows"));
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(LARKSPIRE_UNDER_TEST), QStringList());
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    // What the event loop returns is the program's code.
    QCOMPARE(program.exitCode(), 42);

    QFile report(path);
    QVERIFY(report.open(QIODevice::ReadOnly));
    const QJsonObject expected{
        {QStringLiteral("name"), QStringLiteral("Larkspire")},
        {QStringLiteral("display name"), QStringLiteral("云雀资讯")},
        {QStringLiteral("version"), ProgramVersion::text()},
        {QStringLiteral("organisation"), QStringLiteral("Fernhollow")},
        {QStringLiteral("domain"), QStringLiteral("larkspire.example")},
        {QStringLiteral("locale codec"), QStringLiteral("UTF-8")},
        {QStringLiteral("has its icon"), true},
        {QStringLiteral("ends with its last window"), false},
        {QStringLiteral("style"), QStringLiteral("fusion")},
    };
    QCOMPARE(QString::fromUtf8(report.readAll()), QString::fromUtf8(QJsonDocument(expected).toJson()));
}

void TestLarkspireProgram::secondStartBringsTheFirstWindowBackAndEndsWithZero()
{
    storeLogin(m_service->baseUrl());
    startProgram();
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);

    // The close button hides to the tray; the process lives on without a window.
    QVERIFY(run(QStringLiteral("wmctrl"), {QStringLiteral("-c"), QStringLiteral("云雀资讯")}));
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 0, 20000);
    QCOMPARE(m_program->state(), QProcess::Running);

    QProcess second;
    second.start(QStringLiteral(LARKSPIRE_PROGRAM), QStringList());
    QVERIFY(second.waitForFinished());
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
    QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), QStringLiteral("云雀资讯"), 20000);
    QCOMPARE(m_program->state(), QProcess::Running);
    // The identity that main sets decides where the settings lie.
    QVERIFY(QFileInfo::exists(settingsFilePath()));
    QVERIFY(m_service->requestCount(QStringLiteral("POST /auth/verify_apikey")) >= 1);
}

void TestLarkspireProgram::withoutALoginThePromptAppearsAndTheWindowStaysHidden()
{
    {
        QSettings settings(settingsFilePath(), QSettings::IniFormat);
        settings.setValue(QStringLiteral("API/ServerUrl"), m_service->baseUrl());
    }
    startProgram();
    // The choice of login methods comes a second after the start.
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(QStringLiteral("选择登录方式")), 1, 20000);
    QCOMPARE(windowsOnScreen(), 0);
    QCOMPARE(m_program->state(), QProcess::Running);
}

void TestLarkspireProgram::closingTheLastWindowLeavesTheProcessAliveUntilItIsTerminated()
{
    storeLogin(m_service->baseUrl());
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(QStringLiteral("Features/EnableNotification"), false);
    startProgram();
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
    QVERIFY(run(QStringLiteral("wmctrl"), {QStringLiteral("-c"), QStringLiteral("云雀资讯")}));
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 0, 20000);
    // Still at work without a window: the news come three seconds after the login.
    QTRY_VERIFY_WITH_TIMEOUT(m_service->requestCount(QStringLiteral("GET /newsapi/news")) >= 1, 20000);
    QCOMPARE(m_program->state(), QProcess::Running);
    m_program->terminate();
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
}

void TestLarkspireProgram::askedToEndByTheSystemItStoresTheSettings()
{
    storeLogin(m_service->baseUrl());
    startProgram();
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
    QVERIFY(!QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    m_program->terminate();
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
}

void TestLarkspireProgram::exitByTheMenuEndsWithZeroAndStoresTheSettings()
{
    storeLogin(m_service->baseUrl());
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(QStringLiteral("Features/EnableNotification"), false);
    startProgram();
    QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), QStringLiteral("云雀资讯"), 20000);
    QVERIFY(!QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    QVERIFY(exitByTheMenu());
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, 20000);
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
}

void TestLarkspireProgram::logOffStoresTheSettingsAndIsNotHeldUp()
{
    SessionManager session;
    QVERIFY(!session.address().isEmpty());
    storeLogin(m_service->baseUrl());
    qputenv("SESSION_MANAGER", session.address().toLocal8Bit());
    startProgram();
    qunsetenv("SESSION_MANAGER");
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
    QCOMPARE(session.members(), 1);
    QTRY_COMPARE(session.saved(), 1);
    {
        QSettings settings(settingsFilePath(), QSettings::IniFormat);
        settings.remove(QStringLiteral("Window/Geometry"));
    }

    session.logOff();
    QTRY_COMPARE(session.saved(), 1);
    QVERIFY(!session.cancelled());
    // Nothing is closed or hidden for it either: another program may still call the log-off off.
    QCOMPARE(windowsOnScreen(), 1);
    QVERIFY(QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    m_program->kill();
    QVERIFY(m_program->waitForFinished());
}

void TestLarkspireProgram::speechThatHangsDoesNotHoldUpTheEnd_data()
{
    QTest::addColumn<QByteArray>("hangs");
    QTest::addColumn<bool>("byTheMenu");
    QTest::addColumn<bool>("cutOff");
    QTest::newRow("not at all") << QByteArray("never") << true << false;
    QTest::newRow("when told to stop, by the menu") << QByteArray("in stop") << true << true;
    QTest::newRow("when told to stop, by the system") << QByteArray("in stop") << false << true;
    QTest::newRow("when it goes") << QByteArray("at its end") << true << true;
}

void TestLarkspireProgram::speechThatHangsDoesNotHoldUpTheEnd()
{
    QFETCH(QByteArray, hangs);
    QFETCH(bool, byTheMenu);
    QFETCH(bool, cutOff);
    storeLogin(m_service->baseUrl());
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(QStringLiteral("Features/EnableNotification"), false);
    qputenv("LARKSPIRE_TEST_SPEECH_HANGS", hangs);
    startProgram(QStringLiteral(LARKSPIRE_UNDER_TEST));
    qunsetenv("LARKSPIRE_TEST_SPEECH_HANGS");
    QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), QStringLiteral("云雀资讯"), 20000);
    QVERIFY(!QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));
    if (byTheMenu) {
        QVERIFY(exitByTheMenu());
    } else {
        m_program->terminate();
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, 20000);
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QCOMPARE(m_program->readAllStandardError().contains("The program's end hangs"), cutOff);
    QVERIFY(QSettings(settingsFilePath(), QSettings::IniFormat).contains(QStringLiteral("Window/Geometry")));

    // What it leaves behind does not stand in the way of the next start.
    startProgram();
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
}

void TestLarkspireProgram::aSpeechServiceThatNeverAnswersHoldsUpNeitherTheStartNorTheEnd()
{
    // A copy of the program that finds all of Qt's plug-ins, but of the speech the dispatcher's alone: among
    // several Qt takes another one at every start.
    const QTemporaryDir folder;
    const QString program = folder.filePath(QStringLiteral("larkspire"));
    const QDir plugins(folder.filePath(QStringLiteral("plugins")));
    const QString speech = QStringLiteral("texttospeech");
    QVERIFY(QFile::copy(QStringLiteral(LARKSPIRE_PROGRAM), program));
    QVERIFY(plugins.mkpath(speech));
    const QDir system(QLibraryInfo::location(QLibraryInfo::PluginsPath));
    const QStringList kinds = system.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &kind : kinds) {
        if (kind != speech)
            QVERIFY(QFile::link(system.filePath(kind), plugins.filePath(kind)));
    }
    const QString speechd = speech + QStringLiteral("/libqtexttospeech_speechd.so");
    QVERIFY(QFile::link(system.filePath(speechd), plugins.filePath(speechd)));
    QSettings(folder.filePath(QStringLiteral("qt.conf")), QSettings::IniFormat)
        .setValue(QStringLiteral("Paths/Plugins"), plugins.path());

    SpeechDispatcher dispatcher;
    dispatcher.holdAt("LIST SYNTHESIS_VOICES");
    qputenv("SPEECHD_ADDRESS", dispatcher.address());
    storeLogin(m_service->baseUrl());
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(QStringLiteral("Features/EnableNotification"), false);
    for (int start = 0; start < 2; ++start) {
        startProgram(program);
        QTRY_COMPARE_WITH_TIMEOUT(activeTitle(), QStringLiteral("云雀资讯"), 20000);
        QTRY_COMPARE(dispatcher.heldCount(), 1);
        QVERIFY(exitByTheMenu());
        QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, 20000);
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program->exitCode(), 0);
        QVERIFY(!m_program->readAllStandardError().contains("The program's end hangs"));
    }
    qunsetenv("SPEECHD_ADDRESS");
}

void TestLarkspireProgram::startAtLogonFollowsTheProgramOnlyWhenItIsChosenAnew()
{
    const QTemporaryDir folder;
    const QString before = folder.filePath(QStringLiteral("云雀 1"));
    const QString after = folder.filePath(QStringLiteral("云雀 2"));
    const QString name = QStringLiteral("/larkspire");
    const QString autoStart = QStringLiteral("Features/EnableAutoStart");
    QVERIFY(QDir().mkpath(before));
    QVERIFY(QFile::copy(QStringLiteral(LARKSPIRE_PROGRAM), before + name));
    storeLogin(m_service->baseUrl());
    {
        // The settings tell another tale than the system; the system is right.
        QSettings settings(settingsFilePath(), QSettings::IniFormat);
        settings.setValue(autoStart, true);
    }

    // Absent: the box is off, and toggling it makes the entry.
    startProgram(before + name);
    toggleStartAtLogon();
    QTRY_COMPARE(logonCommand(), QLatin1Char('"') + before + name + QLatin1Char('"'));
    endProgram();
    QCOMPARE(QSettings(settingsFilePath(), QSettings::IniFormat).value(autoStart).toBool(), true);

    // It points elsewhere once the program has moved: it stays as it is, and the box is off, until it is
    // toggled.
    QVERIFY(QDir().rename(before, after));
    startProgram(after + name);
    QTRY_COMPARE_WITH_TIMEOUT(windowsOnScreen(), 1, 20000);
    QCOMPARE(logonCommand(), QLatin1Char('"') + before + name + QLatin1Char('"'));
    endProgram();
    QCOMPARE(QSettings(settingsFilePath(), QSettings::IniFormat).value(autoStart).toBool(), false);
    startProgram(after + name);
    toggleStartAtLogon();
    const QString command = QLatin1Char('"') + after + name + QLatin1Char('"');
    QTRY_COMPARE(logonCommand(), command);
    endProgram();
    QCOMPARE(QSettings(settingsFilePath(), QSettings::IniFormat).value(autoStart).toBool(), true);

    // It points here: what the desktop runs is this program, the box is on, and toggling it takes the entry
    // away.
    m_program = std::make_unique<QProcess>();
    m_program->start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("exec ") + command});
    toggleStartAtLogon();
    QTRY_COMPARE(logonCommand(), QString());
    endProgram();
    QCOMPARE(QSettings(settingsFilePath(), QSettings::IniFormat).value(autoStart).toBool(), false);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    // The marker of a running copy lies in the temporary folder: copies of other people are none of this
    // test.
    qputenv("TMPDIR", home.path().toUtf8());
    QCoreApplication application(argc, argv);
    setProgramIdentity();
    TestLarkspireProgram test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspire_program.moc"
