#include "desktop/LogonProgramsWindows.h"

#include "desktop/AutoStartManager.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QUuid>

#include <qt_windows.h>

/// On the real Run key of the user who runs it, under a name that nothing else has.
class TestLogonProgramsWindows : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_name = QStringLiteral("LarkspireTest-") + QUuid::createUuid().toString(QUuid::Id128);
        QCoreApplication::setApplicationName(m_name);
    }

    void cleanup()
    {
        QVERIFY(LogonProgramsWindows().remove(m_name));
        QVERIFY(LogonProgramsWindows().remove(another()));
    }

    void anEntryIsTheBarePathWithBackslashes()
    {
        AutoStartManager manager(nullptr);
        QVERIFY(!manager.isAutoStartEnabled());
        QVERIFY(manager.setAutoStart(true));
        QVERIFY(manager.isAutoStartEnabled());
        QCOMPARE(stored(), QDir::toNativeSeparators(QCoreApplication::applicationFilePath()));
        QVERIFY(stored().contains(QLatin1Char('\\')));
        QVERIFY(!stored().contains(QLatin1Char('"')));
    }

    void anEntryWithForwardSlashesCounts()
    {
        QVERIFY(LogonProgramsWindows().add(m_name, QCoreApplication::applicationFilePath()));
        QVERIFY(stored().contains(QLatin1Char('/')));
        QVERIFY(AutoStartManager(nullptr).isAutoStartEnabled());
    }

    void theEntryOfAProgramThatHasMovedDoesNotCountAndIsReplaced()
    {
        QVERIFY(LogonProgramsWindows().add(m_name, QStringLiteral("C:\\old place\\larkspire.exe")));
        AutoStartManager manager(nullptr);
        QVERIFY(!manager.isAutoStartEnabled());
        QVERIFY(manager.setAutoStart(true));
        QVERIFY(manager.isAutoStartEnabled());
        QCOMPARE(stored(), QDir::toNativeSeparators(QCoreApplication::applicationFilePath()));
    }

    void theEntryOfAProgramThatHasMovedCanBeRemoved()
    {
        QVERIFY(LogonProgramsWindows().add(m_name, QStringLiteral("C:\\old place\\larkspire.exe")));
        QVERIFY(AutoStartManager(nullptr).setAutoStart(false));
        QVERIFY(!QSettings(runKey(), QSettings::NativeFormat).contains(m_name));
    }

    void entriesOfOtherProgramsStay()
    {
        const QString program = QStringLiteral("\"C:\\other\\other.exe\" /start");
        QVERIFY(LogonProgramsWindows().add(another(), program));
        AutoStartManager manager(nullptr);
        QVERIFY(manager.setAutoStart(true));
        QVERIFY(manager.setAutoStart(false));
        QCOMPARE(stored(another()), program);
    }

    void anEntryIsOfTheTypeThatTheSystemStarts()
    {
        QVERIFY(AutoStartManager(nullptr).setAutoStart(true));
        DWORD type = 0;
        QCOMPARE(RegGetValueW(HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run",
                              reinterpret_cast<const wchar_t *>(m_name.utf16()), RRF_RT_ANY, &type, nullptr,
                              nullptr),
                 LONG(ERROR_SUCCESS));
        QCOMPARE(type, DWORD(REG_SZ));
    }

    void disablingRemovesTheValueAndSucceedsWithoutOne()
    {
        AutoStartManager manager(nullptr);
        QVERIFY(manager.setAutoStart(true));
        QVERIFY(manager.setAutoStart(false));
        QVERIFY(!QSettings(runKey(), QSettings::NativeFormat).contains(m_name));
        QVERIFY(manager.setAutoStart(false));
        QVERIFY(!manager.isAutoStartEnabled());
    }

private:
    /// The key as Windows itself names it, apart from the code under test.
    static QString runKey()
    {
        return QStringLiteral("HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run");
    }

    /// The name of a program of somebody else.
    QString another() const { return m_name + QStringLiteral("-another"); }

    QString stored() const { return stored(m_name); }
    static QString stored(const QString &name)
    {
        return QSettings(runKey(), QSettings::NativeFormat).value(name).toString();
    }

    QString m_name;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestLogonProgramsWindows)
#include "tst_logonprogramswindows.moc"
