#pragma once

#include <QString>
#include <QTemporaryDir>
#include <QtTest>

/// A home of its own for one test process: HOME and the XDG directories point into a temporary folder, so a
/// test never reads or writes the settings of the person who runs it. Construct it ahead of the application
/// object; the folder goes with it. On Windows the standard paths are those that Qt keeps for tests.
class IsolatedHome
{
public:
    /// Creates the folder and sets the environment. Ends the process with a message when it cannot.
    IsolatedHome();
    Q_DISABLE_COPY_MOVE(IsolatedHome)

    /// Absolute path of the temporary home.
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};

/// Sets the identity that the program sets at start, so that standard paths come out as in the program.
void setProgramIdentity();

/// Empties the settings file of this process's home, also for a ConfigManager that is already alive:
/// QSettings objects on one path share their contents inside a process.
void clearSettings();

/// Path of the settings file of this process's home.
QString settingsFilePath();

/// For the construction of the application object: what is allocated in between counts as no leak, since Qt's
/// offscreen platform never frees its screen. Without the leak sanitizer they do nothing.
void pauseLeakCheck();
void resumeLeakCheck();

#define LARKSPIRE_TEST_MAIN_WITH(Application, TestClass)                                                     \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        IsolatedHome home;                                                                                   \
        pauseLeakCheck();                                                                                    \
        Application application(argc, argv);                                                                 \
        resumeLeakCheck();                                                                                   \
        setProgramIdentity();                                                                                \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }

/// main() of a test that needs widgets. Include <QApplication> beside it.
#define LARKSPIRE_TEST_MAIN(TestClass) LARKSPIRE_TEST_MAIN_WITH(QApplication, TestClass)

/// main() of a test without any window. Include <QCoreApplication> beside it.
#define LARKSPIRE_GUILESS_TEST_MAIN(TestClass) LARKSPIRE_TEST_MAIN_WITH(QCoreApplication, TestClass)
