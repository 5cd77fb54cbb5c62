#include "desktop/LogonProgramsXdg.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

QString name()
{
    return QStringLiteral("Larkspire");
}

QString path()
{
    return QStringLiteral("/opt/云雀 资讯/larkspire");
}

} // namespace

class TestLogonProgramsXdg : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_folder = m_dir->filePath(QStringLiteral("config/autostart"));
        m_entry = m_folder + QStringLiteral("/Larkspire.desktop");
    }

    void thereIsNoEntryAtFirst()
    {
        QCOMPARE(LogonProgramsXdg(m_folder).program(name()), QString());
        QVERIFY(!QDir(m_folder).exists());
    }

    void anAddedProgramIsAnEntryOfItsOwnThatOthersMayRead()
    {
        QVERIFY(LogonProgramsXdg(m_folder).add(name(), path()));
        QCOMPARE(LogonProgramsXdg(m_folder).program(name()), path());
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("Larkspire.desktop")});
        QFile file(m_entry);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("[Desktop Entry]\n"
                                            "Type=Application\n"
                                            "Version=1.4\n"
                                            "Name=Larkspire\n"
                                            "Exec=\"/opt/云雀 资讯/larkspire\"\n"
                                            "Terminal=false\n"));
    }

    void theEntryBearsTheChineseNameAndTheIcon()
    {
        const LogonProgramsXdg::Appearance appearance{QStringLiteral("云雀资讯"),
                                                      QStringLiteral("example.larkspire.larkspire")};
        QVERIFY(LogonProgramsXdg(m_folder, appearance).add(name(), QStringLiteral("/usr/bin/larkspire")));
        QFile file(m_entry);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("[Desktop Entry]\n"
                                            "Type=Application\n"
                                            "Version=1.4\n"
                                            "Name=Larkspire\n"
                                            "Name[zh_CN]=云雀资讯\n"
                                            "Icon=example.larkspire.larkspire\n"
                                            "Exec=\"/usr/bin/larkspire\"\n"
                                            "Terminal=false\n"));
    }

    void addingReplacesWhatStoodThere()
    {
        write("[Desktop Entry]\nType=Application\nExec=/old\nHidden=true\n");
        QVERIFY(LogonProgramsXdg(m_folder).add(name(), path()));
        QCOMPARE(LogonProgramsXdg(m_folder).program(name()), path());
    }

    void removingTakesTheEntryAndLeavesOthers()
    {
        LogonProgramsXdg programs(m_folder);
        QVERIFY(programs.add(name(), path()));
        QVERIFY(programs.add(QStringLiteral("Other"), path()));
        QVERIFY(programs.remove(name()));
        QCOMPARE(programs.program(name()), QString());
        QCOMPARE(programs.program(QStringLiteral("Other")), path());
    }

    void removingNothingSucceeds()
    {
        LogonProgramsXdg programs(m_folder);
        QVERIFY(programs.remove(name()));
        QVERIFY(QDir().mkpath(m_folder));
        QVERIFY(programs.remove(name()));
    }

    void anEntryOfOtherHandsIsRead_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("program");
        const QString larkspire = QStringLiteral("/usr/bin/larkspire");
        const auto add = [](const char *title, const QByteArray &contents, const QString &program) {
            QTest::newRow(title) << contents << program;
        };
        add("usual", "[Desktop Entry]\nType=Application\nExec=/usr/bin/larkspire\n", larkspire);
        add("with blanks and Windows line ends", "[Desktop Entry]\r\nExec = /usr/bin/larkspire \r\n",
            larkspire);
        add("not hidden", "[Desktop Entry]\nExec=/usr/bin/larkspire\nHidden=false\n", larkspire);
        add("hidden", "[Desktop Entry]\nExec=/usr/bin/larkspire\nHidden=true\n", QString());
        add("hidden in a comment only", "[Desktop Entry]\n#Hidden=true\nExec=/usr/bin/larkspire\n",
            larkspire);
        add("hidden in another group only",
            "[Desktop Entry]\nExec=/usr/bin/larkspire\n[Desktop Action x]\nHidden=true\nExec=/x\n",
            larkspire);
        add("switched off by the desktop",
            "[Desktop Entry]\nExec=/usr/bin/larkspire\nX-GNOME-Autostart-enabled=false\n", QString());
        add("switched on by the desktop",
            "[Desktop Entry]\nExec=/usr/bin/larkspire\nX-GNOME-Autostart-enabled=true\n", larkspire);
        add("with arguments", "[Desktop Entry]\nExec=/usr/bin/larkspire --tray\n", QString());
        add("two words without quotes", "[Desktop Entry]\nExec=/opt/my programs\n", QString());
        add("without a program", "[Desktop Entry]\nType=Application\n", QString());
        add("open quote", "[Desktop Entry]\nExec=\"/usr/bin/larkspire\n", QString());
        add("before any group", "Exec=/usr/bin/larkspire\n", QString());
        add("garbage", QByteArray("\0\x01\xff[=]\n=\n[Desktop Entry", 24), QString());
        add("empty", "", QString());
    }

    void anEntryOfOtherHandsIsRead()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, program);
        write(contents);
        QCOMPARE(LogonProgramsXdg(m_folder).program(name()), program);
    }

    void anEntryThatCannotBeWrittenIsReported_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::newRow("a file in the folder's place") << QStringLiteral("folder");
        QTest::newRow("a folder in the entry's place") << QStringLiteral("entry");
    }

    void anEntryThatCannotBeWrittenIsReported()
    {
        QFETCH(QString, obstacle);
        if (obstacle == QStringLiteral("folder")) {
            QVERIFY(QDir().mkpath(QFileInfo(m_folder).path()));
            QFile file(m_folder);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else {
            QVERIFY(QDir().mkpath(m_entry + QStringLiteral("/in the way")));
        }
        LogonProgramsXdg programs(m_folder);
        QVERIFY(!programs.add(name(), path()));
        QCOMPARE(programs.program(name()), QString());
    }

    void anEntryThatCannotBeRemovedIsReported()
    {
        QVERIFY(QDir().mkpath(m_entry + QStringLiteral("/in the way")));
        QVERIFY(!LogonProgramsXdg(m_folder).remove(name()));
    }

    void aPathThatNoEntryCanHoldIsReportedAndChangesNothing()
    {
        LogonProgramsXdg programs(m_folder);
        QVERIFY(programs.add(name(), path()));
        QVERIFY(!programs.add(name(), QStringLiteral("/opt/a=b")));
        QCOMPARE(programs.program(name()), path());
    }

private:
    void write(const QByteArray &contents) const
    {
        QVERIFY(QDir().mkpath(m_folder));
        QFile file(m_entry);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(contents), qint64(contents.size()));
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_folder;
    QString m_entry;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestLogonProgramsXdg)
#include "tst_logonprogramsxdg.moc"
