#include "linkage/linux/ProcFiles.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), std::size_t(bytes.size())};
}

} // namespace

class tst_ProcFiles : public QObject
{
    Q_OBJECT

private slots:
    void onlyMappingsOfAFilesStartAreKeptInOrder()
    {
        const auto files = ProcFiles::filesMappedFromTheirStart(
            "140000000-140001000 r--p 00000000 fe:00 14893515                   /opt/tdx/TdxW.exe\n"
            "140001000-140007000 r-xp 00001000 fe:00 14893515                   /opt/tdx/TdxW.exe\n"
            "7f0000000000-7f0000001000 rw-p 00000000 00:00 0 \n"
            "7f0000002000-7f0000003000 r--p 00000000 fe:00 77                   /opt/my programs/View "
            "them.dll\n"
            "7ffd00000000-7ffd00021000 rw-p 00000000 00:00 0                    [stack]\n"
            "7ffd00030000-7ffd00031000 r-xp 00000000 00:00 0                    [vdso]\n");
        QCOMPARE(files.size(), std::size_t(2));
        QCOMPARE(files[0].address, std::uint64_t(0x140000000));
        QCOMPARE(toQString(files[0].path), QStringLiteral("/opt/tdx/TdxW.exe"));
        QCOMPARE(files[1].address, std::uint64_t(0x7f0000002000));
        QCOMPARE(toQString(files[1].path), QStringLiteral("/opt/my programs/View them.dll"));
    }

    void thePathOfAMappingIsDecoded_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << QByteArray("/a/b.dll") << QStringLiteral("/a/b.dll");
        QTest::newRow("blanks") << QByteArray("/a b/  c.dll") << QStringLiteral("/a b/  c.dll");
        QTest::newRow("a newline") << QByteArray("/a\\012b/c.dll") << QStringLiteral("/a\nb/c.dll");
        QTest::newRow("two newlines") << QByteArray("/\\012\\012") << QStringLiteral("/\n\n");
        QTest::newRow("another backslash") << QByteArray("/a\\b\\01") << QStringLiteral("/a\\b\\01");
        QTest::newRow("deleted") << QByteArray("/a/b.dll (deleted)") << QStringLiteral("/a/b.dll");
        QTest::newRow("Chinese") << QByteArray("/home/用户/通达信/b.dll")
                                 << QStringLiteral("/home/用户/通达信/b.dll");
    }

    void thePathOfAMappingIsDecoded()
    {
        QFETCH(QByteArray, written);
        QFETCH(QString, path);
        const QByteArray line = "1000-2000 r--p 00000000 fe:00 5    " + written;
        const auto files = ProcFiles::filesMappedFromTheirStart(view(line));
        QCOMPARE(files.size(), std::size_t(1));
        QCOMPARE(toQString(files[0].path), path);
    }

    void linesThatCannotBeUnderstoodAreLeftOut_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("blank") << QByteArray("   ");
        QTest::newRow("words") << QByteArray("what is this");
        QTest::newRow("no path") << QByteArray("1000-2000 r--p 00000000 fe:00 5");
        QTest::newRow("no address") << QByteArray("- r--p 00000000 fe:00 5 /a");
        QTest::newRow("address too long") << QByteArray("10000000000000000-2 r--p 00000000 fe:00 5 /a");
        QTest::newRow("no offset") << QByteArray("1000-2000 r--p");
        QTest::newRow("another offset") << QByteArray("1000-2000 r--p 00000200 fe:00 5 /a");
    }

    void linesThatCannotBeUnderstoodAreLeftOut()
    {
        QFETCH(QByteArray, line);
        QVERIFY(ProcFiles::filesMappedFromTheirStart(view(line)).empty());
        const QByteArray between = line + "\n3000-4000 r--p 00000000 fe:00 6 /b\n" + line;
        QCOMPARE(ProcFiles::filesMappedFromTheirStart(view(between)).size(), std::size_t(1));
    }

    void theFileNameStandsBehindTheLastSeparatorOfEitherKind_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QString>("name");
        QTest::newRow("native") << QByteArray("/opt/tdx/tdxw.exe") << QStringLiteral("tdxw.exe");
        QTest::newRow("Windows") << QByteArray("C:\\new_tdx\\TdxW.exe") << QStringLiteral("TdxW.exe");
        QTest::newRow("mixed") << QByteArray("/mnt/c\\x\\y/z.exe") << QStringLiteral("z.exe");
        QTest::newRow("neither") << QByteArray("hexin.exe") << QStringLiteral("hexin.exe");
        QTest::newRow("a folder") << QByteArray("/opt/") << QString();
        QTest::newRow("empty") << QByteArray() << QString();
    }

    void theFileNameStandsBehindTheLastSeparatorOfEitherKind()
    {
        QFETCH(QByteArray, path);
        QFETCH(QString, name);
        QCOMPARE(toQString(ProcFiles::fileName(view(path))), name.isNull() ? QStringLiteral("") : name);
    }

    void theProgramsNameIsTheFirstWordOfItsCommandLine_data()
    {
        QTest::addColumn<QByteArray>("commandLine");
        QTest::addColumn<QByteArray>("comm");
        QTest::addColumn<QByteArray>("executable");
        QTest::addColumn<QString>("name");
        QTest::newRow("under Wine") << QByteArray("C:\\new_tdx\\TdxW.exe\0\0\0\0", 23)
                                    << QByteArray("TdxW.exe") << QByteArray("/usr/lib/wine/wine64-preloader")
                                    << QStringLiteral("TdxW.exe");
        QTest::newRow("native") << QByteArray("./hexin.exe\0--timer\0", 20) << QByteArray("hexin.exe")
                                << QByteArray("/opt/hexin.exe") << QStringLiteral("hexin.exe");
        QTest::newRow("a file name as an argument")
            << QByteArray("less\0/opt/tdxw.exe\0", 19) << QByteArray("less") << QByteArray("/usr/bin/less")
            << QStringLiteral("less");
        QTest::newRow("a thread's name does not count")
            << QByteArray("C:\\hexin.exe\0", 13) << QByteArray("renderer")
            << QByteArray("/usr/lib/wine/wine64") << QStringLiteral("hexin.exe");
        QTest::newRow("no command line") << QByteArray() << QByteArray("tdxw.exe") << QByteArray("/usr/bin/x")
                                         << QStringLiteral("tdxw.exe");
        QTest::newRow("an empty first word") << QByteArray("\0-x\0", 4) << QByteArray("tdxw.exe")
                                             << QByteArray("/x") << QStringLiteral("tdxw.exe");
        QTest::newRow("a cut name is completed")
            << QByteArray() << QByteArray("tdxw-trading-te") << QByteArray("/opt/tdxw-trading-terminal.exe")
            << QStringLiteral("tdxw-trading-terminal.exe");
        QTest::newRow("cut inside a character")
            << QByteArray() << QByteArray("a通达信行情.exe").left(15) << QByteArray("/opt/a通达信行情.exe")
            << QStringLiteral("a通达信行情.exe");
        QTest::newRow("15 bytes, but of another program")
            << QByteArray() << QByteArray("kworker/u8:1-ev") << QByteArray()
            << QStringLiteral("kworker/u8:1-ev");
        QTest::newRow("nothing known") << QByteArray() << QByteArray() << QByteArray() << QStringLiteral("");
    }

    void theProgramsNameIsTheFirstWordOfItsCommandLine()
    {
        QFETCH(QByteArray, commandLine);
        QFETCH(QByteArray, comm);
        QFETCH(QByteArray, executable);
        QFETCH(QString, name);
        QCOMPARE(toQString(ProcFiles::programName(view(commandLine), view(comm), view(executable))), name);
    }

    void theStateAndStartOfAProcessAreFoundBehindAnyName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("plain") << QByteArray("bash");
        QTest::newRow("blanks") << QByteArray("my program");
        QTest::newRow("brackets") << QByteArray("a) Z 1 (b");
    }

    void theStateAndStartOfAProcessAreFoundBehindAnyName()
    {
        QFETCH(QByteArray, name);
        const QByteArray running =
            "4711 (" + name + ") S 1 4711 4711 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 987654321 1000 200\n";
        const QByteArray ended =
            "4711 (" + name + ") Z 1 4711 4711 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 55 0 0\n";
        QCOMPARE(ProcFiles::startTime(view(running)).value_or(0), std::uint64_t(987654321));
        QCOMPARE(ProcFiles::startTime(view(ended)).value_or(0), std::uint64_t(55));
        QVERIFY(!ProcFiles::hasEnded(view(running)));
        QVERIFY(ProcFiles::hasEnded(view(ended)));
    }

    void aStatFileThatIsCutGivesNoStart()
    {
        QVERIFY(!ProcFiles::startTime(""));
        QVERIFY(!ProcFiles::startTime("4711 (bash"));
        QVERIFY(!ProcFiles::startTime("4711 (bash) S 1 2"));
        QVERIFY(!ProcFiles::hasEnded(""));
    }

    void theEffectiveUserIsTheSecondNumberOfItsLine()
    {
        QCOMPARE(ProcFiles::effectiveUser("Name:\tUid:\nUid:\t1000\t1001\t1002\t1003\nGid:\t5\t6\t7\t8\n")
                     .value_or(0),
                 1001U);
        QVERIFY(!ProcFiles::effectiveUser("Name:\tbash\n"));
        QVERIFY(!ProcFiles::effectiveUser(""));
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ProcFiles)
#include "tst_procfiles.moc"
