#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString contentsFolder = QStringLiteral(FOLDER_IN_ZIP "/");

/// Runs a command to its end. @return what it printed; nothing when it failed, which is said on standard
/// error.
QByteArray outputOf(const QString &command, const QStringList &arguments, const QString &folder = QString(),
                    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setWorkingDirectory(folder);
    process.setProcessEnvironment(environment);
    process.start(command, arguments);
    const bool fine = process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
                      process.exitCode() == 0;
    return fine ? process.readAllStandardOutput() : QByteArray();
}

bool unpack(const QString &archive, const QString &folder)
{
    return QProcess::execute(QStringLiteral(CMAKE_PROGRAM),
                             {QStringLiteral("-E"), QStringLiteral("chdir"), folder,
                              QStringLiteral(CMAKE_PROGRAM), QStringLiteral("-E"), QStringLiteral("tar"),
                              QStringLiteral("xf"), archive}) == 0;
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

QStringList binariesUnder(const QString &folder)
{
    return filesUnder(folder).filter(QRegularExpression(QStringLiteral("\\.(exe|dll)$")));
}

/// The libraries that a program or library names in its import table, in lower case.
QStringList importsOf(const QString &file)
{
    static const QRegularExpression import(QStringLiteral("^\\tDLL Name: (\\S+)$"),
                                           QRegularExpression::MultilineOption);
    QStringList names;
    const QByteArray table =
        outputOf(QStringLiteral("x86_64-w64-mingw32-objdump"), {QStringLiteral("-p"), file});
    auto matches = import.globalMatch(QString::fromUtf8(table));
    while (matches.hasNext())
        names.append(matches.next().captured(1).toLower());
    return names;
}

/// What every Windows since 7 has.
const QSet<QString> &librariesOfWindows()
{
    static const QSet<QString> names{
        QStringLiteral("advapi32.dll"), QStringLiteral("bcrypt.dll"),   QStringLiteral("crypt32.dll"),
        QStringLiteral("d3d11.dll"),    QStringLiteral("dnsapi.dll"),   QStringLiteral("dwmapi.dll"),
        QStringLiteral("dxgi.dll"),     QStringLiteral("gdi32.dll"),    QStringLiteral("imm32.dll"),
        QStringLiteral("iphlpapi.dll"), QStringLiteral("kernel32.dll"), QStringLiteral("mpr.dll"),
        QStringLiteral("msvcrt.dll"),   QStringLiteral("netapi32.dll"), QStringLiteral("ole32.dll"),
        QStringLiteral("oleaut32.dll"), QStringLiteral("secur32.dll"),  QStringLiteral("shell32.dll"),
        QStringLiteral("user32.dll"),   QStringLiteral("userenv.dll"),  QStringLiteral("uxtheme.dll"),
        QStringLiteral("version.dll"),  QStringLiteral("winmm.dll"),    QStringLiteral("ws2_32.dll"),
        QStringLiteral("wtsapi32.dll")};
    return names;
}

bool writeScript(const QString &path, const QByteArray &contents)
{
    QFile script(path);
    return script.open(QIODevice::WriteOnly) && script.write("#!/bin/sh\n" + contents) > 0 &&
           script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

/// What is in the archive for Windows.
class TestWindowsZip : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY(unpack(QStringLiteral(WINDOWS_ZIP), m_folder.path()));
        m_contents = m_folder.filePath(contentsFolder);
    }

    void itHoldsTheseProgramsAndLibrariesAndNoOthers()
    {
        QStringList expected{QStringLiteral("larkspire.exe"), QStringLiteral("Qt5Core.dll"),
                             QStringLiteral("Qt5Gui.dll"), QStringLiteral("Qt5Multimedia.dll"),
                             QStringLiteral("Qt5Network.dll"), QStringLiteral("Qt5TextToSpeech.dll"),
                             QStringLiteral("Qt5Widgets.dll"), QStringLiteral("libgcc_s_seh-1.dll"),
                             QStringLiteral("libstdc++-6.dll"), QStringLiteral("libwinpthread-1.dll"),
                             // The window system, the format of the icon, sound, speech.
                             QStringLiteral("platforms/qwindows.dll"),
                             QStringLiteral("imageformats/qico.dll"),
                             QStringLiteral("audio/qtaudio_windows.dll"),
                             QStringLiteral("texttospeech/qtexttospeech_sapi.dll")};
        expected.sort();
        QCOMPARE(binariesUnder(m_contents), expected);
    }

    void everyLibraryThatIsLinkedToIsThereOrWindowsOwn()
    {
        const QStringList binaries = binariesUnder(m_contents);
        for (const QString &binary : binaries) {
            const QStringList imports = importsOf(m_contents + binary);
            QVERIFY2(!imports.isEmpty(), qPrintable(binary));
            for (const QString &import : imports) {
                QVERIFY2(librariesOfWindows().contains(import) ||
                             binaries.contains(import, Qt::CaseInsensitive),
                         qPrintable(binary + QStringLiteral(" wants ") + import));
            }
        }
    }

    void everyLibraryIsLinkedTo()
    {
        QSet<QString> wanted;
        const QStringList binaries = binariesUnder(m_contents);
        for (const QString &binary : binaries) {
            const QStringList imports = importsOf(m_contents + binary);
            wanted += QSet<QString>(imports.cbegin(), imports.cend());
        }
        for (const QString &binary : binaries) {
            // Plug-ins, in folders of their own, are asked for by name.
            if (binary.endsWith(QLatin1String(".dll")) && !binary.contains(QLatin1Char('/')))
                QVERIFY2(wanted.contains(binary.toLower()), qPrintable(binary));
        }
    }

    void besidesThereAreDocumentsAndLicences()
    {
        const QRegularExpression document(
            QStringLiteral("^(README\\.zh-CN|CHANGELOG|docs/(user-guide\\.zh-CN|windows|service-api))\\.md$|"
                           "^docs/images/[^/]+\\.png$|^licenses/"));
        QStringList others = filesUnder(m_contents);
        for (const QString &binary : binariesUnder(m_contents))
            others.removeAll(binary);
        for (const QString &other : qAsConst(others))
            QVERIFY2(document.match(other).hasMatch(), qPrintable(other));
        // The terms, what exactly it is, and the text of the libraries' licence.
        for (const char *licence : {"licenses.txt", "VERSIONS.txt", "LICENSE.LGPL3"})
            QVERIFY2(others.contains(QStringLiteral("licenses/") + QLatin1String(licence)), licence);
    }

    void linksOfTheUserGuideLeadSomewhere()
    {
        QFile guide(m_contents + QStringLiteral("docs/user-guide.zh-CN.md"));
        QVERIFY(guide.open(QIODevice::ReadOnly));
        static const QRegularExpression link(QStringLiteral("\\]\\(([^)#]+)\\)"));
        auto matches = link.globalMatch(QString::fromUtf8(guide.readAll()));
        QVERIFY(matches.hasNext());
        while (matches.hasNext()) {
            const QString target = matches.next().captured(1);
            QVERIFY2(QFileInfo(guide).dir().exists(target), qPrintable(target));
        }
    }

    // The folders of MSYS2, the line ends of its objdump and its way to ask what belongs to which package.
    void theFoldersOfMsys2GiveTheSameProgramsAndLibraries()
    {
        const QTemporaryDir machine;
        const QDir root(machine.path());
        const QString qt = QStringLiteral(WINDOWS_QT);
        QVERIFY(root.mkpath(QStringLiteral("tools")) && root.mkpath(QStringLiteral("mingw/share/qt5")) &&
                root.mkpath(QStringLiteral("mingw/share/licenses/qt5-base")) &&
                root.mkpath(QStringLiteral("mingw/share/licenses/another")));
        QVERIFY(QFile::link(qt + QStringLiteral("/bin"), root.filePath(QStringLiteral("mingw/bin"))));
        QVERIFY(QFile::link(qt + QStringLiteral("/plugins"),
                            root.filePath(QStringLiteral("mingw/share/qt5/plugins"))));
        for (const char *licence : {"qt5-base/LICENSE.LGPL3", "another/LICENSE"}) {
            QVERIFY(
                QFile::copy(qt + QStringLiteral("/share/licenses/LICENSE.LGPL3"),
                            root.filePath(QStringLiteral("mingw/share/licenses/") + QLatin1String(licence))));
        }
        const QString objdump = QString::fromUtf8(outputOf(QStringLiteral("which"),
                                                           {QStringLiteral("x86_64-w64-mingw32-objdump")}))
                                    .trimmed();
        QVERIFY(!objdump.isEmpty());
        QVERIFY(writeScript(root.filePath(QStringLiteral("tools/x86_64-w64-mingw32-objdump")),
                            objdump.toUtf8() + " \"$@\" | sed 's/$/\\r/'\n"));
        QVERIFY(writeScript(root.filePath(QStringLiteral("tools/pacman")),
                            "case $1 in\n"
                            "-Qqo) shift; for file; do [ -f \"$file\" ] && echo mingw-w64-qt5-base; done ;;\n"
                            "-Q) echo \"$2 5.15\" ;;\n"
                            "-Qlq) echo /mingw/share/licenses/qt5-base/\n"
                            "      echo /mingw/share/licenses/qt5-base/LICENSE.LGPL3\n"
                            "      echo /mingw/bin/Qt5Core.dll ;;\n"
                            "esac\n"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"), root.filePath(QStringLiteral("tools:")) +
                                                       environment.value(QStringLiteral("PATH")));
        const QString archive = root.filePath(QStringLiteral("made.zip"));
        QVERIFY(!outputOf(QStringLiteral(MAKE_ZIP),
                          {m_contents + QStringLiteral("larkspire.exe"),
                           root.filePath(QStringLiteral("mingw")), archive},
                          QString(), environment)
                     .isEmpty());
        QVERIFY(unpack(archive, machine.path()));
        const QString made = root.filePath(contentsFolder);
        QCOMPARE(binariesUnder(made), binariesUnder(m_contents));
        QCOMPARE(filesUnder(made + QStringLiteral("licenses")),
                 (QStringList{QStringLiteral("VERSIONS.txt"), QStringLiteral("licenses.txt"),
                              QStringLiteral("qt5-base/LICENSE.LGPL3")}));
    }

private:
    QTemporaryDir m_folder;
    QString m_contents;
};

QTEST_GUILESS_MAIN(TestWindowsZip)
#include "tst_windows_zip.moc"
