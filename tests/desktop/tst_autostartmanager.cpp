#include "desktop/AutoStartManager.h"

#include "desktop/LogonPrograms.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QMap>

namespace {

/// A list in memory, which can be made to refuse changes.
struct FakeList
{
    QMap<QString, QString> entries;
    bool refusesChanges = false;
};

class FakeLogonPrograms final : public LogonPrograms
{
public:
    explicit FakeLogonPrograms(FakeList &list) : m_list(list) {}
    QString program(const QString &name) const override { return m_list.entries.value(name); }
    bool add(const QString &name, const QString &programPath) override
    {
        if (!m_list.refusesChanges)
            m_list.entries.insert(name, programPath);
        return !m_list.refusesChanges;
    }
    bool remove(const QString &name) override
    {
        if (!m_list.refusesChanges)
            m_list.entries.remove(name);
        return !m_list.refusesChanges;
    }

private:
    FakeList &m_list;
};

QString ownName()
{
    return QStringLiteral("Larkspire");
}

QString ownPath()
{
    return QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
}

// What a program without a name enters itself as; found out ahead of the application object, which names
// itself.
QStringList namesWithoutApplicationName;

} // namespace

class TestAutoStartManager : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_list = FakeList();
        m_manager = std::make_unique<AutoStartManager>(std::make_unique<FakeLogonPrograms>(m_list), nullptr);
    }

    void aFirstRunIsNotEnabled() { QVERIFY(!m_manager->isAutoStartEnabled()); }

    void enablingEntersThisProgramUnderItsName()
    {
        QVERIFY(m_manager->setAutoStart(true));
        QCOMPARE(m_list.entries, (QMap<QString, QString>{{ownName(), ownPath()}}));
        QVERIFY(m_manager->isAutoStartEnabled());
    }

    void disablingRemovesTheEntryAndNoOther()
    {
        m_list.entries.insert(QStringLiteral("Other"), QStringLiteral("/other"));
        QVERIFY(m_manager->setAutoStart(true));
        QVERIFY(m_manager->setAutoStart(false));
        QCOMPARE(m_list.entries.keys(), QStringList{QStringLiteral("Other")});
        QVERIFY(!m_manager->isAutoStartEnabled());
    }

    void disablingWithoutAnEntrySucceeds()
    {
        QVERIFY(m_manager->setAutoStart(false));
        QVERIFY(!m_manager->isAutoStartEnabled());
    }

    void onlyAnEntryThatPointsHereCounts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("program");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("here") << ownName() << ownPath() << true;
        QTest::newRow("here, with forward slashes")
            << ownName() << QDir::fromNativeSeparators(ownPath()) << true;
        QTest::newRow("elsewhere") << ownName() << ownPath() + QStringLiteral(".old") << false;
        QTest::newRow("here in another case") << ownName() << ownPath().toUpper() << false;
        QTest::newRow("here, with an argument") << ownName() << ownPath() + QStringLiteral(" -h") << false;
        QTest::newRow("here, in quotes")
            << ownName() << QLatin1Char('"') + ownPath() + QLatin1Char('"') << false;
        QTest::newRow("empty") << ownName() << QString() << false;
        QTest::newRow("under another name") << QStringLiteral("Other") << ownPath() << false;
    }

    void onlyAnEntryThatPointsHereCounts()
    {
        QFETCH(QString, name);
        QFETCH(QString, program);
        QFETCH(bool, enabled);
        m_list.entries.insert(name, program);
        QCOMPARE(m_manager->isAutoStartEnabled(), enabled);
    }

    void anEntryThatPointsElsewhereIsReplaced()
    {
        m_list.entries.insert(ownName(), QStringLiteral("/moved/away"));
        QVERIFY(m_manager->setAutoStart(true));
        QCOMPARE(m_list.entries.value(ownName()), ownPath());
    }

    void aRefusedChangeIsReported()
    {
        m_list.refusesChanges = true;
        QVERIFY(!m_manager->setAutoStart(true));
        QVERIFY(!m_manager->setAutoStart(false));
        QVERIFY(!m_manager->isAutoStartEnabled());
    }

    void aProgramWithoutANameHasAnEntryAllTheSame()
    {
        QCOMPARE(namesWithoutApplicationName, QStringList{QStringLiteral("LarkspireApp")});
    }

#ifndef Q_OS_WIN
    void theSystemsListIsTheAutostartFolderOfTheUser()
    {
        const QString entry = QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) +
                              QStringLiteral("/autostart/Larkspire.desktop");
        AutoStartManager manager(nullptr);
        QVERIFY(!manager.isAutoStartEnabled());
        QVERIFY(manager.setAutoStart(true));
        QVERIFY(QFile::exists(entry));
        QVERIFY(manager.isAutoStartEnabled());
        QVERIFY(manager.setAutoStart(false));
        QVERIFY(!QFile::exists(entry));
        QVERIFY(!manager.isAutoStartEnabled());
    }
#endif

private:
    FakeList m_list;
    std::unique_ptr<AutoStartManager> m_manager;
};

int main(int argc, char *argv[])
{
    IsolatedHome home;
    {
        FakeList list;
        AutoStartManager(std::make_unique<FakeLogonPrograms>(list), nullptr).setAutoStart(true);
        namesWithoutApplicationName = list.entries.keys();
    }
    QCoreApplication application(argc, argv);
    setProgramIdentity();
    TestAutoStartManager test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_autostartmanager.moc"
