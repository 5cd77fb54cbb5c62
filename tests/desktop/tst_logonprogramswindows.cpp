#include "desktop/LogonProgramsWindows.h"

#include "desktop/AutoStartManager.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QUuid>

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

    void cleanup() { QVERIFY(LogonProgramsWindows().remove(m_name)); }

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

    void anEntryThatPointsElsewhereDoesNotCount()
    {
        QVERIFY(LogonProgramsWindows().add(m_name, QStringLiteral("C:\\moved\\larkspire.exe")));
        QVERIFY(!AutoStartManager(nullptr).isAutoStartEnabled());
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

    QString stored() const { return QSettings(runKey(), QSettings::NativeFormat).value(m_name).toString(); }

    QString m_name;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestLogonProgramsWindows)
#include "tst_logonprogramswindows.moc"
