#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <memory>

namespace {

QString t(const char *text)
{
    return QString::fromUtf8(text);
}

QJsonObject defaults()
{
    return {
        {t("serverUrl"), t("http://127.0.0.1:8888")},
        {t("timeout"), 10},
        {t("username"), QString()},
        {t("lastLoginTime"), QString()},
        {t("refreshInterval"), 8},
        {t("enableSound"), true},
        {t("volume"), 0.9},
        {t("width"), 750},
        {t("x"), 100},
        {t("geometry"), QString()},
        {t("mainBoardColor"), t("orange")},
    };
}

QJsonObject with(std::initializer_list<std::pair<QString, QJsonValue>> changes)
{
    QJsonObject values = defaults();
    for (const auto &change : changes)
        values.insert(change.first, change.second);
    return values;
}

QByteArray text(const QJsonObject &values)
{
    return QJsonDocument(values).toJson(QJsonDocument::Compact);
}

/// What a real start saw; ok is false when it did not come to its regular end.
struct Start
{
    bool ok = false;
    QJsonObject seen;
    QString trouble;
};

} // namespace

/// Each case is a start of its own: a process whose data folder holds the prepared file.
class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        // Other users may look into the folder, so that rights are the file's own matter.
        QVERIFY(QFile::setPermissions(m_home->path(), open(m_home->path())));
        m_data = m_home->filePath(t("data"));
        m_folder = m_data + t("/Fernhollow/Larkspire");
        m_file = m_folder + t("/larkspire.ini");
    }

    void cleanup()
    {
        for (const QString &path : {m_data, m_folder, m_file}) {
            if (QFile::exists(path))
                QFile::setPermissions(path, open(path));
        }
        m_home.reset();
    }

    void aStartWithoutAnyFolderReadsDefaultsAndWritesNothing()
    {
        const Start start = started({});
        QVERIFY2(start.ok, qPrintable(start.trouble));
        QCOMPARE(text(start.seen), text(defaults()));
        QVERIFY(QDir(m_folder).exists());
        QVERIFY(!QFile::exists(m_file));
    }

    void whatOneStartStoresTheNextOneReads()
    {
        QVERIFY(started({t("--username"), t("云雀 ; # = \"用户\"")}).ok);
        const Start next = started({});
        QVERIFY2(next.ok, qPrintable(next.trouble));
        QCOMPARE(text(next.seen), text(with({{t("username"), t("云雀 ; # = \"用户\"")}})));
    }

    void aStartSurvivesItsFileAndCanStoreAgain_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QJsonObject>("seen");
        const auto add = [](const char *name, const QByteArray &contents, const QJsonObject &seen) {
            QTest::newRow(name) << contents << seen;
        };
        const QByteArray plain("[Auth]\nUsername=云雀\n[Features]\nRefreshInterval=12\n");
        const QJsonObject plainSeen = with({{t("username"), t("云雀")}, {t("refreshInterval"), 12}});
        add("a good file", plain, plainSeen);
        add("a good file with a byte order mark", "\xEF\xBB\xBF" + plain, plainSeen);
        add("a good file with Windows line ends", QByteArray(plain).replace("\n", "\r\n"), plainSeen);
        add("an empty file", "", defaults());
        add("a file cut off in a value", "[Features]\nRefreshInterval=12\n[Auth]\nUserna",
            with({{t("refreshInterval"), 12}}));
        add("lines that are no settings",
            "hello\n=\n==\n[]\n[\n]\n\x01\x02\n[Features]\nRefreshInterval=12\n",
            with({{t("refreshInterval"), 12}}));
        add("a section that is not closed", "[Features\nRefreshInterval=12\n",
            with({{t("refreshInterval"), 12}}));
        add("zero bytes", QByteArray(4096, '\0'), defaults());
        add("a picture", QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\0", 20) + QByteArray(2000, '\xfe'),
            defaults());
        add("a huge line",
            "[Auth]\nUsername=" + QByteArray(2000000, 'x') + "\n[Features]\nRefreshInterval=12\n",
            with({{t("username"), QString(2000000, QLatin1Char('x'))}, {t("refreshInterval"), 12}}));
        add("texts for numbers and flags",
            "[API]\nTimeout=soon\n[Features]\nRefreshInterval=often\nEnableSound=perhaps\nTTSVolume=loud\n",
            with({{t("refreshInterval"), 0}, {t("enableSound"), true}, {t("volume"), 0.0}}));
        add("numbers beyond all bounds",
            "[API]\nTimeout=99999999999999999999\n[Features]\nRefreshInterval=-"
            "99999999999999999999\nTTSVolume="
            "1e999\n",
            with({{t("refreshInterval"), 0}, {t("volume"), QJsonValue()}}));
        add("types that are no types",
            "[Window]\nSize=@Size(a b)\nPosition=@Point(1)\nGeometry=@ByteArray(\n"
            "[Auth]\nLastLoginTime=@DateTime(\\0\\0\\0)\nUsername=@Nonsense(1)\n",
            with({{t("username"), t("@Nonsense(1)")},
                  {t("width"), 0},
                  {t("x"), 0},
                  {t("geometry"), QString::fromLatin1(QByteArray("@ByteArray(").toHex())}}));
        add("a stored object that lies about its length",
            "[Auth]\nLastLoginTime=@Variant(\\0\\0\\0\\x9\\xff\\xff\\xff\\xf0)\n"
            "[Window]\nGeometry=@Variant(\\0\\0\\0\\f\\0\\x7f\\xff\\xff\\xff\\x1)\n",
            defaults());
        add("GBK", "[Auth]\nUsername=\xD4\xC6\xC8\xB8\n[Features]\nRefreshInterval=12\n",
            with({{t("refreshInterval"), 12}, {t("username"), QString::fromUtf8("\xD4\xC6\xC8\xB8")}}));
        const QString utf16 = QString::fromUtf8(plain);
        add("UTF-16",
            QByteArray("\xFF\xFE") +
                QByteArray(reinterpret_cast<const char *>(utf16.utf16()), utf16.size() * 2),
            defaults());
    }

    void aStartSurvivesItsFileAndCanStoreAgain()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QJsonObject, seen);
        QVERIFY(QDir().mkpath(m_folder));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(contents), qint64(contents.size()));
        file.close();
        const Start start = started({});
        QVERIFY2(start.ok, qPrintable(start.trouble));
        QCOMPARE(text(start.seen), text(seen));
        QVERIFY(started({t("--username"), t("next")}).ok);
        const Start next = started({});
        QVERIFY2(next.ok, qPrintable(next.trouble));
        QCOMPARE(next.seen.value(t("username")).toString(), t("next"));
    }

    void aFileThatCantBeReadOrWrittenLeavesAStoreInMemory_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::newRow("no right to read the file") << t("unreadable file");
        QTest::newRow("no right to write the file and its folder") << t("read-only");
        QTest::newRow("no right to enter the folder") << t("closed folder");
        QTest::newRow("a folder in the file's place") << t("folder");
        QTest::newRow("a file in the folder's place") << t("file");
    }

    void aFileThatCantBeReadOrWrittenLeavesAStoreInMemory()
    {
        QFETCH(QString, obstacle);
        QJsonObject seen = defaults();
        QStringList arguments{t("--username"), t("in memory")};
        if (obstacle == t("file")) {
            QVERIFY(QDir().mkpath(m_data));
            QVERIFY(written(m_data + t("/Fernhollow"), "in the way"));
        } else if (obstacle == t("folder")) {
            QVERIFY(QDir().mkpath(m_file));
        } else {
            QVERIFY(QDir().mkpath(m_folder));
            QVERIFY(written(m_file, "[Features]\nRefreshInterval=12\n"));
            arguments.append(t("--without-rights"));
            if (obstacle == t("unreadable file")) {
                QVERIFY(QFile::setPermissions(m_file, {}));
            } else if (obstacle == t("read-only")) {
                QVERIFY(QFile::setPermissions(m_file, readable()));
                QVERIFY(QFile::setPermissions(m_folder, readable() | executable()));
                seen.insert(t("refreshInterval"), 12);
            } else {
                QVERIFY(QFile::setPermissions(m_folder, {}));
            }
        }
        seen.insert(t("username"), t("in memory"));
        const Start start = started(arguments);
        QVERIFY2(start.ok, qPrintable(start.trouble));
        QCOMPARE(text(start.seen), text(seen));
        cleanupRights();
        const Start next = started({});
        QVERIFY2(next.ok, qPrintable(next.trouble));
        QCOMPARE(next.seen.value(t("username")).toString(), QString());
    }

    void aLockLeftBehindDoesNotHoldUpAStart_data()
    {
        QTest::addColumn<bool>("ofAnotherMachine");
        QTest::newRow("by a copy that was killed while it wrote") << false;
        QTest::newRow("long ago, on a machine of another name") << true;
    }

    void aLockLeftBehindDoesNotHoldUpAStart()
    {
        QFETCH(bool, ofAnotherMachine);
        const QString lock = m_file + t(".lock");
        if (ofAnotherMachine) {
            QVERIFY(QDir().mkpath(m_folder));
            QVERIFY(written(lock, "1\ninit\nanother-machine\n"));
            QFile file(lock);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFile::FileModificationTime));
        } else {
            QVERIFY(!started({t("--die-with-lock")}).ok);
        }
        QVERIFY(QFile::exists(lock));
        QVERIFY(started({t("--username"), t("stored")}).ok);
        QVERIFY(!QFile::exists(lock));
        QCOMPARE(started({}).seen.value(t("username")).toString(), t("stored"));
    }

private:
    static QFile::Permissions readable() { return QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther; }
    static QFile::Permissions executable() { return QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther; }
    static QFile::Permissions open(const QString &path)
    {
        const QFile::Permissions writable = QFile::WriteOwner;
        return readable() | writable | (QFileInfo(path).isDir() ? executable() : QFile::Permissions());
    }

    static bool written(const QString &path, const QByteArray &contents)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
    }

    void cleanupRights() const
    {
        for (const QString &path : {m_folder, m_file}) {
            if (QFile::exists(path))
                QFile::setPermissions(path, open(path));
        }
    }

    Start started(const QStringList &arguments) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(t("XDG_DATA_HOME"), m_data);
        process.setProcessEnvironment(environment);
        process.start(t(SETTINGS_START_PROBE), arguments);
        Start start;
        const bool ended = process.waitForFinished(30000);
        start.trouble = process.errorString() + QString::fromUtf8(process.readAllStandardError());
        start.seen = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
        start.ok = ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 &&
                   !start.seen.isEmpty();
        return start;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    QString m_data;
    QString m_folder;
    QString m_file;
};

LARKSPIRE_GUILESS_TEST_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
