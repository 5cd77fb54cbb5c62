#include "linkage/FakePlatform.h"
#include "linkage/ProcessUtils.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QtEndian>

namespace {

constexpr std::uint64_t tdxBase = 0x180000000;
constexpr std::uint64_t thsBase = 0x140000000;
constexpr std::uint32_t thsTextAddress = 0xFEDC0010;
const QString tdxOffset = QStringLiteral("1A20");
const QString thsOffset = QStringLiteral("1A2B3C");

FakePlatform::Process tdx(quint32 pid, const QByteArray &text = "600519")
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("TdxW.exe");
    process.path = QStringLiteral("C:\\new_tdx\\TdxW.exe");
    process.modules = {
        {0x10000, QStringLiteral("TdxW.exe"), false},
        {0x20000, QString(), false}, // its name cannot be had
        {0x30000, QStringLiteral("Viewthem64.dll.old"), false},
        {tdxBase, QStringLiteral("VIEWTHEM64.DLL"), false},
        {0x40000, QStringLiteral("Viewthem64.dll"), false},
    };
    process.memory.insert(tdxBase + 0x1A20, text);
    return process;
}

FakePlatform::Process tdx32(quint32 pid)
{
    FakePlatform::Process process = tdx(pid);
    process.is32Bit = true;
    process.modules = {{0x400000, QStringLiteral("tdxw.exe"), true},
                       {tdxBase, QStringLiteral("Viewthem.dll"), true}};
    return process;
}

QByteArray pointerWord(quint32 address)
{
    QByteArray word(sizeof(address), '\0');
    qToLittleEndian(address, word.data());
    return word;
}

FakePlatform::Process ths(quint32 pid, const QByteArray &text = QByteArray("\x11"
                                                                           "600519\0",
                                                                           8))
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("hexin.exe");
    process.path = QStringLiteral("D:\\ths\\hexin.exe");
    process.modules = {{thsBase, QStringLiteral("hexin.exe"), false},
                       {0x50000, QStringLiteral("ntdll.dll"), false}};
    process.memory.insert(thsBase + 0x1A2B3C, pointerWord(thsTextAddress));
    process.memory.insert(thsTextAddress, text);
    return process;
}

FakePlatform::Process ths32(quint32 pid)
{
    FakePlatform::Process process = ths(pid);
    process.is32Bit = true;
    process.modules = {{thsBase, QStringLiteral("HEXIN.EXE"), true}};
    return process;
}

FakePlatform::Process named(quint32 pid, const QString &name)
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = name;
    return process;
}

FakePlatform::Window window(quint32 pid, const QString &title, bool visible = true)
{
    FakePlatform::Window result;
    result.pid = pid;
    result.title = title;
    result.visible = visible;
    return result;
}

QStringList attachTdxCalls(int handle = 1)
{
    return QStringList{
        QStringLiteral("walkProcesses"),
        QStringLiteral("openProcess 10 0x410"),
        QStringLiteral("is32BitProcess h%1").arg(handle),
        QStringLiteral("listModules h%1 2 0").arg(handle),
        QStringLiteral("listModules h%1 2 40").arg(handle),
        QStringLiteral("moduleBaseName h%1 0x10000").arg(handle),
        QStringLiteral("moduleBaseName h%1 0x20000").arg(handle),
        QStringLiteral("moduleBaseName h%1 0x30000").arg(handle),
        QStringLiteral("moduleBaseName h%1 0x180000000").arg(handle),
    };
}

QStringList attachThsCalls(int handle = 1)
{
    return QStringList{
        QStringLiteral("walkProcesses"),
        QStringLiteral("openProcess 20 0x410"),
        QStringLiteral("is32BitProcess h%1").arg(handle),
        QStringLiteral("listModules h%1 2 0").arg(handle),
        QStringLiteral("listModules h%1 2 16").arg(handle),
        QStringLiteral("moduleBaseName h%1 0x140000000").arg(handle),
    };
}

const QString readTdx = QStringLiteral("readMemory h1 0x180001a20 6 counted");
const QString readThsPointer = QStringLiteral("readMemory h1 0x1401a2b3c 4 uncounted");
const QString readThsText = QStringLiteral("readMemory h1 0xfedc0010 8 counted");
const QString closeFirst = QStringLiteral("closeProcess h1");

} // namespace

class tst_ProcessUtils : public QObject
{
    Q_OBJECT

private slots:
    void aCopyRunsAsLongAsItsIdIsThatOfItsExecutable_data()
    {
        QTest::addColumn<quint32>("pid");
        QTest::addColumn<QString>("path"); // of the process that has the id; null: it does not tell
        QTest::addColumn<bool>("canBeOpened");
        QTest::addColumn<QString>("known");
        QTest::addColumn<bool>("runs");
        const QString tdx = QStringLiteral("C:\\tdx\\tdxw.exe");
        QTest::newRow("it runs") << 10U << tdx << true << tdx << true;
        QTest::newRow("it has ended") << 11U << tdx << true << tdx << false;
        QTest::newRow("it may not be opened") << 10U << tdx << false << tdx << false;
        QTest::newRow("its id is another program's")
            << 10U << QStringLiteral("C:\\notepad.exe") << true << tdx << false;
        QTest::newRow("it has ended and is still held by others") << 10U << QString() << true << tdx << false;
        QTest::newRow("nobody knows its executable") << 10U << tdx << true << QString() << true;
    }

    void aCopyRunsAsLongAsItsIdIsThatOfItsExecutable()
    {
        QFETCH(quint32, pid);
        QFETCH(QString, path);
        QFETCH(bool, canBeOpened);
        QFETCH(QString, known);
        FakePlatform platform;
        FakePlatform::Process process = tdx(pid);
        process.path = path;
        process.canBeOpened = canBeOpened;
        platform.processes = {process};
        ProcessUtils utils(platform);
        ProcessInstance copy;
        copy.pid = 10;
        copy.exePath = known;
        QTEST(utils.isRunning(copy), "runs");
        QCOMPARE(platform.openHandles().size(), 0);
        QVERIFY(platform.takeCalls().filter(QStringLiteral("walkProcesses")).isEmpty());
    }

    void anOffsetOfZeroReadsNothingAndTouchesNoProcess()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        ProcessUtils utils(platform);
        QString code = QStringLiteral("kept");
        QVERIFY(!utils.readTdxCode(code));
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("kept"));
        QCOMPARE(platform.takeCalls(), QStringList());
    }

    void anOffsetIsOneHexadecimalNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<quint32>("offset");
        QTest::newRow("digits and letters") << QStringLiteral("1A2B3C") << true << 0x1A2B3CU;
        QTest::newRow("lower case") << QStringLiteral("1a2b3c") << true << 0x1A2B3CU;
        QTest::newRow("prefix") << QStringLiteral("0x20") << true << 0x20U;
        QTest::newRow("prefix in upper case") << QStringLiteral("0X20") << true << 0x20U;
        QTest::newRow("decimal digits are hexadecimal") << QStringLiteral("10") << true << 0x10U;
        QTest::newRow("largest") << QStringLiteral("FFFFFFFF") << true << 0xFFFFFFFFU;
        QTest::newRow("zero") << QStringLiteral("0") << true << 0U;
        QTest::newRow("too large") << QStringLiteral("100000000") << false << 0U;
        QTest::newRow("no number") << QStringLiteral("zz") << false << 0U;
        QTest::newRow("a chain of two") << QStringLiteral("1A,2B") << false << 0U;
        QTest::newRow("empty") << QString() << false << 0U;
    }

    void anOffsetIsOneHexadecimalNumber()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(quint32, offset);
        FakePlatform platform;
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(QStringLiteral("77")));
        QVERIFY(utils.setThsOffset(QStringLiteral("88")));
        QCOMPARE(utils.setTdxOffset(text), valid);
        QCOMPARE(utils.setThsOffset(text), valid);
        QCOMPARE(utils.tdxOffset(), offset);
        QCOMPARE(utils.thsOffset(), offset);
    }

    void aBadOffsetEndsReadingAtOnce()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        ProcessUtils utils(platform);
        QString code;
        QVERIFY(!utils.setTdxOffset(QStringLiteral("zz")));
        QVERIFY(!utils.setThsOffset(QStringLiteral("zz")));
        QVERIFY(!utils.readTdxCode(code));
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(platform.takeCalls(), QStringList());
    }

    void readingFromTdxAttachesOnceAndThenCostsOneRead()
    {
        FakePlatform platform;
        platform.processes = {named(9, QStringLiteral("explorer.exe")), tdx(10)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("600519"));
        QCOMPARE(platform.takeCalls(), attachTdxCalls() + QStringList{readTdx});

        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(platform.takeCalls(), QStringList{readTdx});

        platform.processes[1].memory[tdxBase + 0x1A20] = "000001";
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("000001"));
        QCOMPARE(platform.takeCalls(), QStringList{readTdx});
    }

    void readingFromThsFollowsThePointerAndKeepsIt()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("600519"));
        QCOMPARE(platform.takeCalls(), attachThsCalls() + QStringList({readThsPointer, readThsText}));

        platform.processes[0].memory[thsTextAddress] = QByteArray("\x21"
                                                                  "000001\0",
                                                                  8);
        QVERIFY(utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("000001"));
        QCOMPARE(platform.takeCalls(), QStringList{readThsText});
    }

    void tdxTextsAreAcceptedOrRejected_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("code");
        QTest::newRow("six digits") << QByteArray("600519") << true << QStringLiteral("600519");
        QTest::newRow("five digits and a zero byte")
            << QByteArray("60051\0", 6) << false << QStringLiteral("60051");
        QTest::newRow("a blank and five digits") << QByteArray(" 60051") << false << QStringLiteral("60051");
        QTest::newRow("five digits and a blank") << QByteArray("60051 ") << false << QStringLiteral("60051");
        QTest::newRow("a letter within") << QByteArray("60A519") << false << QStringLiteral("60A519");
        QTest::newRow("nothing open") << QByteArray(6, '\0') << false << QString();
        QTest::newRow("a zero byte in front") << QByteArray("\0"
                                                            "60051",
                                                            6)
                                              << false << QString();
        QTest::newRow("two full-width digits") << QByteArray("６０") << false << QStringLiteral("６０");
        QTest::newRow("no UTF-8") << QByteArray("\xFF\xFE"
                                                "0519")
                                  << false << QStringLiteral("\uFFFD\uFFFD0519");
    }

    void tdxTextsAreAcceptedOrRejected()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, accepted);
        QFETCH(QString, code);
        FakePlatform platform;
        platform.processes = {tdx(10, text)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        LogCapture log;
        QString read = QStringLiteral("old");
        QCOMPARE(utils.readTdxCode(read), accepted);
        QCOMPARE(read, code);
        // A rejected text detaches and says nothing.
        QCOMPARE(platform.openHandles(), accepted ? QStringList{QStringLiteral("h1")} : QStringList());
        QCOMPARE(log.lines(), QStringList());
        // The same text once more, with the code already known, comes out the same.
        QCOMPARE(utils.readTdxCode(read), accepted);
        QCOMPARE(read, code);
    }

    void thsTextsAreAcceptedOrRejected_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("code");
        QTest::newRow("Shanghai") << QByteArray("\x11"
                                                "600519\0",
                                                8)
                                  << true << QStringLiteral("600519");
        QTest::newRow("Shenzhen") << QByteArray("\x21"
                                                "000001\0",
                                                8)
                                  << true << QStringLiteral("000001");
        QTest::newRow("Beijing, a marker that is no UTF-8") << QByteArray("\x97"
                                                                          "920001\0",
                                                                          8)
                                                            << true << QStringLiteral("920001");
        QTest::newRow("a marker that would begin a longer character") << QByteArray("\xE5"
                                                                                    "600519\0",
                                                                                    8)
                                                                      << true << QStringLiteral("600519");
        QTest::newRow("seven digits fill the buffer") << QByteArray("\x11"
                                                                    "6005190")
                                                      << true << QStringLiteral("6005190");
        QTest::newRow("no marker") << QByteArray("600519\0\0", 8) << false << QStringLiteral("00519");
        QTest::newRow("five digits") << QByteArray("\x11"
                                                   "60051\0\0",
                                                   8)
                                     << false << QStringLiteral("60051");
        QTest::newRow("blanks around six digits") << QByteArray("\x11"
                                                                "600519 ")
                                                  << true << QStringLiteral("600519");
        QTest::newRow("a letter within") << QByteArray("\x11"
                                                       "60A519\0",
                                                       8)
                                         << false << QStringLiteral("60A519");
        QTest::newRow("a zero byte for a marker") << QByteArray("\0"
                                                                "600519\0",
                                                                8)
                                                  << false << QString();
        QTest::newRow("nothing but the marker") << QByteArray("\x11\0\0\0\0\0\0\0", 8) << false << QString();
        QTest::newRow("a marker of several bytes") << QByteArray("\xC2\xA5"
                                                                 "60051\0",
                                                                 8)
                                                   << false << QStringLiteral("60051");
    }

    void thsTextsAreAcceptedOrRejected()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, accepted);
        QFETCH(QString, code);
        FakePlatform platform;
        platform.processes = {ths(20, text)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        LogCapture log;
        QString read = QStringLiteral("old");
        QCOMPARE(utils.readThsCode(read), accepted);
        QCOMPARE(read, code);
        QCOMPARE(platform.openHandles(), accepted ? QStringList{QStringLiteral("h1")} : QStringList());
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(utils.readThsCode(read), accepted);
        QCOMPARE(read, code);
    }

    void aTdxReadThatBringsTooLittleDetachesAndTheNextAttachesAfresh_data()
    {
        QTest::addColumn<QByteArray>("memory");
        QTest::addColumn<bool>("shortReadsSucceed");
        QTest::newRow("fails") << QByteArray() << false;
        QTest::newRow("fails half-way") << QByteArray("6005") << false;
        QTest::newRow("succeeds with too few bytes") << QByteArray("60051") << true;
    }

    void aTdxReadThatBringsTooLittleDetachesAndTheNextAttachesAfresh()
    {
        QFETCH(QByteArray, memory);
        QFETCH(bool, shortReadsSucceed);
        FakePlatform platform;
        platform.processes = {tdx(10, memory)};
        platform.shortReadsSucceed = shortReadsSucceed;
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        LogCapture log;
        QString code = QStringLiteral("kept");
        QVERIFY(!utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("kept"));
        QCOMPARE(platform.takeCalls(), attachTdxCalls() + QStringList({readTdx, closeFirst}));
        QCOMPARE(log.lines(), QStringList());

        platform.processes[0] = tdx(10, "300750");
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("300750"));
        QCOMPARE(platform.takeCalls(),
                 attachTdxCalls(2) + QStringList{QStringLiteral("readMemory h2 0x180001a20 6 counted")});
    }

    void aThsTextThatComesTooShortDetachesAndThePointerIsReadAgain_data()
    {
        aTdxReadThatBringsTooLittleDetachesAndTheNextAttachesAfresh_data();
    }

    void aThsTextThatComesTooShortDetachesAndThePointerIsReadAgain()
    {
        QFETCH(QByteArray, memory);
        QFETCH(bool, shortReadsSucceed);
        FakePlatform platform;
        platform.processes = {ths(20, memory)};
        platform.shortReadsSucceed = shortReadsSucceed;
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        LogCapture log;
        QString code = QStringLiteral("kept");
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("kept"));
        QCOMPARE(platform.takeCalls(),
                 attachThsCalls() + QStringList({readThsPointer, readThsText, closeFirst}));
        QCOMPARE(log.lines(), QStringList());

        platform.processes[0] = ths(20);
        QVERIFY(utils.readThsCode(code));
        QCOMPARE(platform.takeCalls(),
                 attachThsCalls(2) + QStringList({QStringLiteral("readMemory h2 0x1401a2b3c 4 uncounted"),
                                                  QStringLiteral("readMemory h2 0xfedc0010 8 counted")}));
    }

    void aThsPointerThatCannotBeReadIsLoggedWithTheErrorNumberAndDetaches()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        platform.processes[0].memory.remove(thsBase + 0x1A2B3C);
        platform.error = 299;
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        LogCapture log;
        QString code;
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(log.lines(), QStringList{QStringLiteral("ReadProcessMemory failed. Error: 299")});
        QCOMPARE(platform.takeCalls(),
                 attachThsCalls() + QStringList({readThsPointer, QStringLiteral("lastError"), closeFirst}));
    }

    void aThsPointerReadCountsAsSuccessWhateverItsCount()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        platform.processes[0].memory[thsBase + 0x1A2B3C] = pointerWord(0x5010).left(2);
        platform.processes[0].memory.insert(0x5010, QByteArray("\x11"
                                                               "600036\0",
                                                               8));
        platform.shortReadsSucceed = true;
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("600036"));
    }

    void aThsPointerOfZeroIsFollowedToAddressZeroAndDetaches()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        platform.processes[0].memory[thsBase + 0x1A2B3C] = pointerWord(0);
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        LogCapture log;
        QString code;
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(platform.takeCalls(),
                 attachThsCalls() + QStringList({readThsPointer,
                                                 QStringLiteral("readMemory h1 0x0 8 counted"), closeFirst}));
        QCOMPARE(log.lines(), QStringList());
    }

    void aThsPointerIsFourBytesWideInA64BitProcessToo()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        platform.processes[0].memory[thsBase + 0x1A2B3C] =
            pointerWord(thsTextAddress) + QByteArray("\xFF\xFF\xFF\x7F");
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readThsCode(code));
        QVERIFY(platform.takeCalls().contains(readThsText));
    }

    void aThsPointerThatWentStaleCostsOneFailedRead()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readThsCode(code));

        FakePlatform::Process moved = ths(20, QByteArray());
        moved.memory[thsBase + 0x1A2B3C] = pointerWord(0x9000);
        moved.memory.insert(0x9000, QByteArray("\x14"
                                               "510300\0",
                                               8));
        platform.processes = {moved};
        QVERIFY(!utils.readThsCode(code));
        QVERIFY(utils.readThsCode(code));
        QCOMPARE(code, QStringLiteral("510300"));
    }

    void aProgramThatWasClosedAndStartedAgainCostsOneFailedRead()
    {
        FakePlatform platform;
        platform.processes = {tdx(10)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        platform.processes = {tdx(11, "000858")};
        QVERIFY(!utils.readTdxCode(code));
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("000858"));
        QCOMPARE(platform.openHandles(), QStringList{QStringLiteral("h2")});
    }

    void aProgramThatIsNotRunningIsLookedForAtEachRead()
    {
        FakePlatform platform;
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        LogCapture log;
        QString code;
        for (int round = 0; round < 3; ++round) {
            QVERIFY(!utils.readTdxCode(code));
            QCOMPARE(platform.takeCalls(), QStringList{QStringLiteral("walkProcesses")});
        }
        QCOMPARE(log.lines(), QStringList());
    }

    void a32BitProcessIsSearchedForThe32BitModule()
    {
        FakePlatform platform;
        platform.processes = {tdx32(10), ths32(20)};
        ProcessUtils utils(platform);
        QVERIFY(utils.attachTdx(0));
        QCOMPARE(
            platform.takeCalls(),
            (QStringList{QStringLiteral("walkProcesses"), QStringLiteral("openProcess 10 0x410"),
                         QStringLiteral("is32BitProcess h1"), QStringLiteral("listModules h1 1 0"),
                         QStringLiteral("listModules h1 1 16"), QStringLiteral("moduleBaseName h1 0x400000"),
                         QStringLiteral("moduleBaseName h1 0x180000000")}));
        QVERIFY(utils.attachThs(0));
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("walkProcesses"), QStringLiteral("openProcess 20 0x410"),
                              QStringLiteral("is32BitProcess h2"), QStringLiteral("listModules h2 1 0"),
                              QStringLiteral("listModules h2 1 8"),
                              QStringLiteral("moduleBaseName h2 0x140000000")}));
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        QVERIFY(utils.readThsCode(code));
    }

    void anArchitectureThatCannotBeToldIsLoggedAndDetaches()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        platform.processes[0].is32Bit = std::nullopt;
        platform.processes[1].is32Bit = std::nullopt;
        ProcessUtils utils(platform);
        LogCapture log;
        QVERIFY(!utils.attachTdx(0));
        QCOMPARE(platform.takeCalls(), attachTdxCalls().mid(0, 3) + QStringList{closeFirst});
        QVERIFY(!utils.attachThs(0));
        QCOMPARE(platform.takeCalls(),
                 attachThsCalls(2).mid(0, 3) + QStringList{QStringLiteral("closeProcess h2")});
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("Cannot determine process architecture"),
                                           QStringLiteral("Cannot determine process architecture")}));
    }

    void aModuleThatIsNotThereIsLoggedByNameAndDetaches_data()
    {
        QTest::addColumn<bool>("is32Bit");
        QTest::addColumn<QString>("tdxModule");
        QTest::newRow("32-bit") << true << QStringLiteral("Viewthem.dll");
        QTest::newRow("64-bit") << false << QStringLiteral("Viewthem64.dll");
    }

    void aModuleThatIsNotThereIsLoggedByNameAndDetaches()
    {
        QFETCH(bool, is32Bit);
        QFETCH(QString, tdxModule);
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        for (FakePlatform::Process &process : platform.processes) {
            process.is32Bit = is32Bit;
            process.modules = {{0x1000, QStringLiteral("other.dll"), is32Bit},
                               {0x2000, QStringLiteral("hexin.exe"), !is32Bit},
                               {0x3000, QStringLiteral("Viewthem.dll"), !is32Bit},
                               {0x4000, QStringLiteral("Viewthem64.dll"), !is32Bit}};
        }
        ProcessUtils utils(platform);
        LogCapture log;
        QVERIFY(!utils.attachTdx(0));
        QVERIFY(!utils.attachThs(0));
        QCOMPARE(log.lines(), (QStringList{tdxModule + QStringLiteral(" not found in process"),
                                           QStringLiteral("hexin.exe not found in process")}));
        QCOMPARE(platform.openHandles(), QStringList());
    }

    void aModuleListThatCannotBeHadCountsAsNoModule_data()
    {
        QTest::addColumn<bool>("firstFails");
        QTest::addColumn<int>("listings");
        QTest::newRow("its size") << true << 1;
        QTest::newRow("its entries") << false << 2;
    }

    void aModuleListThatCannotBeHadCountsAsNoModule()
    {
        QFETCH(bool, firstFails);
        QFETCH(int, listings);
        FakePlatform platform;
        platform.processes = {tdx(10)};
        platform.moduleListFails = firstFails;
        platform.secondModuleListFails = true;
        ProcessUtils utils(platform);
        LogCapture log;
        QVERIFY(!utils.attachTdx(0));
        QCOMPARE(platform.takeCalls(), attachTdxCalls().mid(0, 3 + listings) + QStringList{closeFirst});
        QCOMPARE(log.lines(), QStringList{QStringLiteral("Viewthem64.dll not found in process")});
    }

    void aListOfNoModulesIsCopedWith()
    {
        FakePlatform platform;
        platform.processes = {tdx(10)};
        platform.processes[0].modules.clear();
        ProcessUtils utils(platform);
        LogCapture log;
        QVERIFY(!utils.attachTdx(0));
        QCOMPARE(log.lines().size(), 1);
    }

    void theTdxProcessIsTheChosenOneElseTheArgumentElseTheFirstOfItsName_data()
    {
        QTest::addColumn<quint32>("chosen");
        QTest::addColumn<quint32>("argument");
        QTest::addColumn<QString>("opened");
        QTest::newRow("chosen") << 12U << 11U << QStringLiteral("openProcess 12 0x410");
        QTest::newRow("argument") << 0U << 11U << QStringLiteral("openProcess 11 0x410");
        QTest::newRow("first") << 0U << 0U << QStringLiteral("openProcess 10 0x410");
    }

    void theTdxProcessIsTheChosenOneElseTheArgumentElseTheFirstOfItsName()
    {
        QFETCH(quint32, chosen);
        QFETCH(quint32, argument);
        QFETCH(QString, opened);
        FakePlatform platform;
        platform.processes = {tdx(10), tdx(11), tdx(12)};
        ProcessUtils utils(platform);
        utils.tdxPid = chosen;
        utils.thsPid = 10;
        QVERIFY(utils.attachTdx(argument));
        const QStringList calls = platform.takeCalls();
        QCOMPARE(calls.contains(QStringLiteral("walkProcesses")), chosen == 0 && argument == 0);
        QVERIFY2(calls.contains(opened), qPrintable(calls.join(QLatin1Char('\n'))));
    }

    void theChosenThsCountsOnlyWhileATdxIsChosenToo_data()
    {
        QTest::addColumn<quint32>("tdxPid");
        QTest::addColumn<quint32>("thsPid");
        QTest::addColumn<quint32>("argument");
        QTest::addColumn<QString>("opened");
        QTest::newRow("both chosen") << 10U << 22U << 0U << QStringLiteral("openProcess 22 0x410");
        QTest::newRow("both chosen, argument ignored")
            << 10U << 22U << 21U << QStringLiteral("openProcess 22 0x410");
        QTest::newRow("only Ths chosen: ignored")
            << 0U << 22U << 0U << QStringLiteral("openProcess 20 0x410");
        QTest::newRow("only Ths chosen: the argument")
            << 0U << 22U << 21U << QStringLiteral("openProcess 21 0x410");
        QTest::newRow("only Tdx chosen: the first, not the argument")
            << 10U << 0U << 21U << QStringLiteral("openProcess 20 0x410");
    }

    void theChosenThsCountsOnlyWhileATdxIsChosenToo()
    {
        QFETCH(quint32, tdxPid);
        QFETCH(quint32, thsPid);
        QFETCH(quint32, argument);
        QFETCH(QString, opened);
        FakePlatform platform;
        platform.processes = {ths(20), ths(21), ths(22)};
        ProcessUtils utils(platform);
        utils.tdxPid = tdxPid;
        utils.thsPid = thsPid;
        QVERIFY(utils.attachThs(argument));
        const QStringList calls = platform.takeCalls();
        QVERIFY2(calls.contains(opened), qPrintable(calls.join(QLatin1Char('\n'))));
    }

    void readingUsesTheChosenProcessFromTheNextAttachmentOn()
    {
        FakePlatform platform;
        platform.processes = {tdx(10, "600519"), tdx(11, "000001")};
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        utils.tdxPid = 11;
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("600519"));
        platform.processes.removeFirst();
        QVERIFY(!utils.readTdxCode(code));
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(code, QStringLiteral("000001"));
    }

    void aTdxw64IsListedAndReachedByItsIdButNotByName()
    {
        FakePlatform platform;
        FakePlatform::Process process = tdx(13);
        process.name = QStringLiteral("tdxw64.exe");
        platform.processes = {process};
        ProcessUtils utils(platform);
        QCOMPARE(utils.listTdxInstances().size(), 1);
        QVERIFY(!utils.attachTdx(0));
        QVERIFY(utils.attachTdx(13));
    }

    void aProcessThatMayNotBeOpenedIsNotAttached()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), tdx(11)};
        platform.processes[0].canBeOpened = false;
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QString code;
        QVERIFY(!utils.readTdxCode(code));
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("walkProcesses"), QStringLiteral("openProcess 10 0x410")}));
    }

    void aProcessListThatCannotBeHadAttachesAndListsNothing()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        platform.snapshotFails = true;
        ProcessUtils utils(platform);
        QVERIFY(!utils.attachTdx(0));
        QVERIFY(!utils.attachThs(0));
        QVERIFY(utils.listTdxInstances().isEmpty());
        QVERIFY(utils.listThsInstances().isEmpty());
        const QString walk = QStringLiteral("walkProcesses");
        QCOMPARE(platform.takeCalls(), (QStringList{walk, walk, walk, walk}));
    }

    void attachingAgainClosesTheHandleBefore_data()
    {
        QTest::addColumn<quint32>("argument");
        QTest::newRow("by id") << 10U;
        QTest::newRow("by name") << 0U;
    }

    void attachingAgainClosesTheHandleBefore()
    {
        QFETCH(quint32, argument);
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        ProcessUtils utils(platform);
        QVERIFY(utils.attachTdx(argument));
        platform.takeCalls();
        QVERIFY(utils.attachTdx(argument));
        QCOMPARE(platform.takeCalls().first(), closeFirst);
        QCOMPARE(platform.openHandles(), QStringList{QStringLiteral("h2")});
    }

    void theInstancesOfTdxAreListedWithPathAndTitle()
    {
        FakePlatform platform;
        FakePlatform::Process unopened = tdx(12);
        unopened.canBeOpened = false;
        FakePlatform::Process pathless = tdx(14);
        pathless.name = QStringLiteral("TDXW64.EXE");
        pathless.path = QString();
        platform.processes = {named(5, QStringLiteral("tdxw.exe.exe")), tdx(10), ths(20), unopened, pathless};
        platform.windows = {
            window(10, QString()),
            window(10, QStringLiteral("行情")),
            window(10, QStringLiteral("通达信 hidden"), false),
            window(20, QStringLiteral("通达信 of another process")),
            window(10, QStringLiteral("通达信金融终端V7.60")),
            window(10, QStringLiteral("通达信 second")),
            window(12, QStringLiteral("同花顺")),
            window(14, QStringLiteral("a 通达信")),
        };
        ProcessUtils utils(platform);
        const QList<ProcessInstance> instances = utils.listTdxInstances();
        QCOMPARE(instances.size(), 3);
        QCOMPARE(instances[0].pid, 10U);
        QCOMPARE(instances[0].exePath, QStringLiteral("C:\\new_tdx\\TdxW.exe"));
        QCOMPARE(instances[0].windowTitle, QStringLiteral("通达信金融终端V7.60"));
        QCOMPARE(instances[1].pid, 12U);
        QCOMPARE(instances[1].exePath, QString());
        QCOMPARE(instances[1].windowTitle, QString());
        QCOMPARE(instances[2].pid, 14U);
        QCOMPARE(instances[2].exePath, QString());
        QCOMPARE(instances[2].windowTitle, QStringLiteral("a 通达信"));
        QCOMPARE(platform.openHandles(), QStringList());
    }

    void theInstanceSearchAsksInAFixedOrder()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        platform.windows = {
            window(1, QStringLiteral("同花顺")),        window(20, QString()),
            window(20, QStringLiteral("通达信")),       window(20, QStringLiteral("同花顺"), false),
            window(20, QStringLiteral("同花顺远航版")), window(20, QStringLiteral("同花顺"))};
        ProcessUtils utils(platform);
        const QList<ProcessInstance> instances = utils.listThsInstances();
        QCOMPARE(instances.size(), 1);
        QCOMPARE(instances[0].windowTitle, QStringLiteral("同花顺远航版"));
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("walkProcesses"), QStringLiteral("openProcess 20 0x410"),
                              QStringLiteral("processImagePath h1"), QStringLiteral("closeProcess h1"),
                              QStringLiteral("walkWindows"), QStringLiteral("windowProcessId w1"),
                              QStringLiteral("windowProcessId w2"), QStringLiteral("windowTitle w2"),
                              QStringLiteral("windowProcessId w3"), QStringLiteral("windowTitle w3"),
                              QStringLiteral("windowProcessId w4"), QStringLiteral("windowTitle w4"),
                              QStringLiteral("isWindowVisible w4"), QStringLiteral("windowProcessId w5"),
                              QStringLiteral("windowTitle w5"), QStringLiteral("isWindowVisible w5")}));
    }

    void listingLeavesAnAttachmentAlone()
    {
        FakePlatform platform;
        platform.processes = {tdx(10)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        utils.listTdxInstances();
        QCOMPARE(platform.openHandles(), QStringList{QStringLiteral("h1")});
        platform.takeCalls();
        QVERIFY(utils.readTdxCode(code));
        QCOMPARE(platform.takeCalls(), QStringList{readTdx});
    }

    void detachingForgetsOffsetsAndHandlesButNotTheChosenInstances()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        ProcessUtils utils(platform);
        utils.tdxPid = 10;
        utils.thsPid = 20;
        QVERIFY(utils.setTdxOffset(tdxOffset));
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readTdxCode(code));
        QVERIFY(utils.readThsCode(code));
        platform.takeCalls();

        utils.detachAll();
        QCOMPARE(platform.takeCalls(),
                 (QStringList{QStringLiteral("closeProcess h1"), QStringLiteral("closeProcess h2")}));
        QCOMPARE(utils.tdxOffset(), 0U);
        QCOMPARE(utils.thsOffset(), 0U);
        QCOMPARE(utils.tdxPid, 10U);
        QCOMPARE(utils.thsPid, 20U);
        QVERIFY(!utils.readTdxCode(code));
        QVERIFY(!utils.readThsCode(code));
        QCOMPARE(platform.takeCalls(), QStringList());

        utils.detachAll();
        QCOMPARE(platform.takeCalls(), QStringList());
    }

    void afterDetachingTheThsPointerIsReadAfresh()
    {
        FakePlatform platform;
        platform.processes = {ths(20)};
        ProcessUtils utils(platform);
        QVERIFY(utils.setThsOffset(thsOffset));
        QString code;
        QVERIFY(utils.readThsCode(code));
        utils.detachAll();
        QVERIFY(utils.setThsOffset(thsOffset));
        platform.takeCalls();
        QVERIFY(utils.readThsCode(code));
        QVERIFY(platform.takeCalls().contains(QStringLiteral("readMemory h2 0x1401a2b3c 4 uncounted")));
    }

    void destructionClosesBothHandles()
    {
        FakePlatform platform;
        platform.processes = {tdx(10), ths(20)};
        {
            ProcessUtils utils(platform);
            QVERIFY(utils.attachTdx(0));
            QVERIFY(utils.attachThs(0));
            QCOMPARE(platform.openHandles().size(), 2);
        }
        QCOMPARE(platform.openHandles(), QStringList());
    }

    void aTextIsAllDigitsIfEachCharacterIsAUnicodeDigit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("allDigits");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("ASCII") << QStringLiteral("0123456789") << true;
        QTest::newRow("full width") << QStringLiteral("６００５１９") << true;
        QTest::newRow("Arabic-Indic") << QStringLiteral("٦٠٠") << true;
        QTest::newRow("Chinese numerals are letters") << QStringLiteral("六") << false;
        QTest::newRow("superscript") << QStringLiteral("6²") << false;
        QTest::newRow("blank") << QStringLiteral("6 0") << false;
        QTest::newRow("sign") << QStringLiteral("-600519") << false;
    }

    void aTextIsAllDigitsIfEachCharacterIsAUnicodeDigit()
    {
        QFETCH(QString, text);
        QFETCH(bool, allDigits);
        QCOMPARE(ProcessUtils::isAllDigits(text), allDigits);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ProcessUtils)
#include "tst_processutils.moc"
