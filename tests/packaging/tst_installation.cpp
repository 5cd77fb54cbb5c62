#include "app/ProgramIdentity.h"
#include "desktop/AutoStartManager.h"
#include "settings/ProgramVersion.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QXmlStreamReader>

namespace {

const QString appId = QStringLiteral("example.larkspire.larkspire");

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// Paths of all files under a folder, relative to it and sorted.
QStringList filesUnder(const QString &folder)
{
    QStringList files;
    QDirIterator found(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (found.hasNext())
        files.append(QDir(folder).relativeFilePath(found.next()));
    files.sort();
    return files;
}

QString contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The value of a key of a desktop entry; empty without the key.
QString keyOf(const QString &path, const QString &key)
{
    const QString start = key + QLatin1Char('=');
    const QStringList lines = contentsOf(path).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(start))
            return line.mid(start.size());
    }
    return QString();
}

/// What a command prints, or an empty text and the failure when it does not end with code 0.
QByteArray outputOf(const QString &command, const QStringList &arguments, QString *failure = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(command, arguments);
    const bool ended = process.waitForFinished(60000);
    const QByteArray output = process.readAll();
    if (ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return output;
    if (failure)
        *failure =
            command + text(": ") + process.errorString() + QLatin1Char('\n') + QString::fromUtf8(output);
    return QByteArray();
}

/// The window that asks for a login, as X11 numbers it; empty while there is none.
QByteArray questionForALogin()
{
    return outputOf(text("xdotool"),
                    {text("search"), text("--onlyvisible"), text("--name"), QStringLiteral("选择登录方式")})
        .trimmed();
}

struct Release
{
    QString version;
    QString date; ///< as yyyy-MM-dd; empty while it is not released
};

bool operator==(const Release &one, const Release &other)
{
    return one.version == other.version && one.date == other.date;
}

/// The releases of the change log, the newest first: "## 2.0.1 (2026-12-01)", or "(unreleased)" there.
QList<Release> releasesOfTheChangeLog()
{
    static const QRegularExpression heading(text("^## (\\S+) \\((unreleased|[0-9-]{10})\\)$"),
                                            QRegularExpression::MultilineOption);
    QList<Release> releases;
    auto matches = heading.globalMatch(contentsOf(text(SOURCE_FOLDER "/CHANGELOG.md")));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString date = match.captured(2);
        releases.append({match.captured(1), date == text("unreleased") ? QString() : date});
    }
    return releases;
}

/// The releases of the metainfo. One that is not out yet is marked as under development; its date says when
/// it was last written about.
QList<Release> releasesOfTheMetainfo(const QString &path)
{
    QList<Release> releases;
    QXmlStreamReader xml(contentsOf(path));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("release"))
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        const bool isOut = attributes.value(text("type")) != QLatin1String("development");
        releases.append({attributes.value(text("version")).toString(),
                         isOut ? attributes.value(text("date")).toString() : QString()});
    }
    return releases;
}

} // namespace

/// What "cmake --install" puts on a machine.
class TestInstallation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void exactlyTheFilesForUsersAreThere();
    void everyoneMayReadAndOnlyTheProgramIsExecutable();
    void desktopEntryIsValidAndLeadsToTheProgram();
    void iconsHaveTheSizesOfTheirFolders();
    void metainfoIsValid();
    void metainfoAndChangeLogNameTheSameReleases();
    void newestReleaseIsTheProgramsVersion();
    void startAtLogonShowsTheNameAndIconOfTheDesktopEntry();
    void linksOfTheDocumentsLeadToInstalledPictures_data();
    void linksOfTheDocumentsLeadToInstalledPictures();
    void programStartsFromThere();
    void withoutAChineseFontTheLogSaysWhatIsMissing();

private:
    QString installed(const QString &path) const { return m_prefix.filePath(path); }
    QString desktopEntry() const { return installed(text("share/applications/%1.desktop").arg(appId)); }
    QString metainfo() const { return installed(text("share/metainfo/%1.metainfo.xml").arg(appId)); }

    QTemporaryDir m_prefix;
};

void TestInstallation::initTestCase()
{
    ProgramIdentity::apply();
    QVERIFY(m_prefix.isValid());
    QString failure;
    outputOf(text(CMAKE_PROGRAM), {text("--install"), text(BUILD_FOLDER), text("--prefix"), m_prefix.path()},
             &failure);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

void TestInstallation::exactlyTheFilesForUsersAreThere()
{
    QStringList expected{text("bin/larkspire"),
                         text("share/applications/%1.desktop").arg(appId),
                         text("share/metainfo/%1.metainfo.xml").arg(appId),
                         text("share/man/man1/larkspire.1"),
                         text("share/icons/hicolor/scalable/apps/%1.svg").arg(appId),
                         text("share/doc/larkspire/CHANGELOG.md"),
                         text("share/doc/larkspire/README.md"),
                         text("share/doc/larkspire/README.zh-CN.md"),
                         text("share/doc/larkspire/copyright"),
                         text("share/doc/larkspire/docs/service-api.md"),
                         text("share/doc/larkspire/docs/user-guide.zh-CN.md")};
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        expected += text("share/icons/hicolor/%1x%1/apps/%2.png").arg(QString::number(size), appId);
    const QStringList pictures = filesUnder(text(SOURCE_FOLDER "/docs/images"));
    for (const QString &picture : pictures)
        expected += text("share/doc/larkspire/docs/images/") + picture;
    // Where the Windows side was built as well.
    if (QFileInfo(text(BUILT_PROGRAM)).dir().exists(text("larkspire-wine-helper.exe")))
        expected += text("lib/larkspire/larkspire-wine-helper.exe");
    expected.sort();
    QCOMPARE(filesUnder(m_prefix.path()), expected);
}

void TestInstallation::everyoneMayReadAndOnlyTheProgramIsExecutable()
{
    const QStringList files = filesUnder(m_prefix.path());
    for (const QString &path : files) {
        const QFile::Permissions permissions = QFileInfo(installed(path)).permissions();
        QVERIFY2(permissions & QFile::ReadOther, qPrintable(path));
        QVERIFY2(!(permissions & (QFile::WriteGroup | QFile::WriteOther)), qPrintable(path));
        QVERIFY2(permissions.testFlag(QFile::ExeOther) == path.startsWith(text("bin/")), qPrintable(path));
    }
}

void TestInstallation::desktopEntryIsValidAndLeadsToTheProgram()
{
    QString failure;
    // Warnings stand in the output.
    QCOMPARE(outputOf(text("desktop-file-validate"), {desktopEntry()}, &failure), QByteArray());
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    QCOMPARE(keyOf(desktopEntry(), text("Exec")), text("larkspire"));
    QCOMPARE(keyOf(desktopEntry(), text("TryExec")), text("larkspire"));
    QCOMPARE(keyOf(desktopEntry(), text("Icon")), appId);
    // By it a compositor finds the entry of a window.
    QCOMPARE(QFileInfo(desktopEntry()).completeBaseName(), QGuiApplication::desktopFileName());
}

void TestInstallation::iconsHaveTheSizesOfTheirFolders()
{
    QDirIterator icons(installed(text("share/icons/hicolor")), {text("*.png")}, QDir::Files,
                       QDirIterator::Subdirectories);
    int count = 0;
    while (icons.hasNext()) {
        const QString path = icons.next();
        const int size = path.section(QLatin1Char('/'), -3, -3).section(QLatin1Char('x'), 0, 0).toInt();
        QVERIFY2(QImage(path).size() == QSize(size, size), qPrintable(path));
        ++count;
    }
    QCOMPARE(count, 9);
}

void TestInstallation::metainfoIsValid()
{
    QString failure;
    outputOf(text("appstreamcli"), {text("validate"), text("--no-net"), metainfo()}, &failure);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    const QString contents = contentsOf(metainfo());
    QVERIFY(contents.contains(text("<id>%1</id>").arg(appId)));
    QVERIFY(contents.contains(
        text("<launchable type=\"desktop-id\">%1</launchable>").arg(QFileInfo(desktopEntry()).fileName())));
}

void TestInstallation::metainfoAndChangeLogNameTheSameReleases()
{
    QCOMPARE(releasesOfTheMetainfo(metainfo()), releasesOfTheChangeLog());
}

void TestInstallation::newestReleaseIsTheProgramsVersion()
{
    QCOMPARE(releasesOfTheChangeLog().value(0).version, ProgramVersion::text());
    QCOMPARE(releasesOfTheMetainfo(metainfo()).value(0).version, ProgramVersion::text());
    QCOMPARE(QCoreApplication::applicationVersion(), ProgramVersion::text());
}

void TestInstallation::startAtLogonShowsTheNameAndIconOfTheDesktopEntry()
{
    QVERIFY(AutoStartManager(nullptr).setAutoStart(true));
    const QString entry =
        QStandardPaths::locate(QStandardPaths::GenericConfigLocation, text("autostart/Larkspire.desktop"));
    QVERIFY(!entry.isEmpty());
    for (const QString &key :
         {text("Type"), text("Name"), text("Name[zh_CN]"), text("Icon"), text("Terminal")}) {
        QVERIFY2(!keyOf(entry, key).isEmpty(), qPrintable(key));
        QCOMPARE(keyOf(entry, key), keyOf(desktopEntry(), key));
    }
    QString failure;
    QCOMPARE(outputOf(text("desktop-file-validate"), {entry}, &failure), QByteArray());
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

void TestInstallation::linksOfTheDocumentsLeadToInstalledPictures_data()
{
    QTest::addColumn<QString>("document");
    for (const char *document : {"README.md", "README.zh-CN.md", "docs/user-guide.zh-CN.md"})
        QTest::newRow(document) << text("share/doc/larkspire/") + text(document);
}

void TestInstallation::linksOfTheDocumentsLeadToInstalledPictures()
{
    QFETCH(QString, document);
    static const QRegularExpression picture(text("!\\[[^\\]]*\\]\\(([^)]+)\\)"));
    auto matches = picture.globalMatch(contentsOf(installed(document)));
    QVERIFY(matches.hasNext());
    while (matches.hasNext()) {
        const QString path = matches.next().captured(1);
        QVERIFY2(QFileInfo(installed(document)).dir().exists(path), qPrintable(path));
    }
}

void TestInstallation::programStartsFromThere()
{
    // Nobody is asked anything before a login; and if so, then nobody is there.
    QSettings(settingsFilePath(), QSettings::IniFormat)
        .setValue(text("API/ServerUrl"), text("http://127.0.0.1:1"));
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(installed(text("bin/larkspire")), QStringList());
    QVERIFY(program.waitForStarted());
    QByteArray window;
    QTRY_VERIFY_WITH_TIMEOUT(!(window = questionForALogin()).isEmpty(), 30000);
    // The class of the window tells a desktop which entry it belongs to.
    const QByteArray windowClass =
        outputOf(text("xprop"), {text("-id"), QString::fromLatin1(window), text("WM_CLASS")});
    const QByteArray named = '"' + keyOf(desktopEntry(), text("StartupWMClass")).toUtf8() + '"';
    QVERIFY2(windowClass.trimmed().endsWith(", " + named), windowClass.constData());
    program.terminate();
    QVERIFY(program.waitForFinished());
    const QByteArray log = program.readAll();
    QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0, log.constData());
    QVERIFY2(!log.contains("No Chinese font is installed"), log.constData());
}

void TestInstallation::withoutAChineseFontTheLogSaysWhatIsMissing()
{
    QFile fonts(m_prefix.filePath(text("fonts.conf")));
    QVERIFY(fonts.open(QIODevice::WriteOnly));
    fonts.write(
        "<?xml version=\"1.0\"?><fontconfig><cachedir prefix=\"xdg\">fontconfig</cachedir></fontconfig>");
    fonts.close();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(text("FONTCONFIG_FILE"), fonts.fileName());
    QProcess program;
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(installed(text("bin/larkspire")), QStringList());
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(!questionForALogin().isEmpty(), 30000);
    program.terminate();
    QVERIFY(program.waitForFinished());
    const QByteArray log = program.readAll();
    QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0, log.constData());
    QVERIFY2(log.contains("No Chinese font is installed"), log.constData());
}

LARKSPIRE_TEST_MAIN(TestInstallation)

#include "tst_installation.moc"
