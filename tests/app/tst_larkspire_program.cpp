#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QtTest>

/// The program itself, as a process on a display.
class TestLarkspireProgram : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void secondStartBringsTheFirstWindowBackAndEndsWithZero();
    void withoutALoginThePromptAppearsAndTheWindowStaysHidden();

private:
    void startProgram();
    /// How many windows of this title are on the screen; without one, the program's main windows.
    static int windowsOnScreen(const QString &title = QStringLiteral("^云雀资讯$"));
    static bool run(const QString &command, const QStringList &arguments, QByteArray *output = nullptr);

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
    m_program.reset();
    m_service.reset();
}

void TestLarkspireProgram::startProgram()
{
    m_program = std::make_unique<QProcess>();
    m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    m_program->start(QStringLiteral(LARKSPIRE_PROGRAM), QStringList());
    QVERIFY(m_program->waitForStarted());
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

void TestLarkspireProgram::secondStartBringsTheFirstWindowBackAndEndsWithZero()
{
    {
        QSettings settings(settingsFilePath(), QSettings::IniFormat);
        settings.setValue(QStringLiteral("API/ServerUrl"), m_service->baseUrl());
        settings.setValue(QStringLiteral("API/Key"), ServiceProcess::demoApiKey());
        settings.setValue(QStringLiteral("Auth/LoginMethod"), 1);
    }
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
