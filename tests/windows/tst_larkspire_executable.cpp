#include <QCoreApplication>
#include <QtTest>

#include <array>
#include <memory>
#include <type_traits>

#include <qt_windows.h>

namespace {

/// The program file, opened for its resources only: nothing of it is run.
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, decltype(&FreeLibrary)>;

Module openedProgram()
{
    const std::wstring path = QStringLiteral(LARKSPIRE_PROGRAM).toStdWString();
    return {LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE),
            &FreeLibrary};
}

QByteArray contents(HMODULE module, const wchar_t *name, const wchar_t *type)
{
    const HRSRC found = FindResourceW(module, name, type);
    const HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    if (loaded == nullptr)
        return {};
    return {static_cast<const char *>(LockResource(loaded)), int(SizeofResource(module, found))};
}

int number(const QByteArray &bytes, int place, int size)
{
    int value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | uchar(bytes.at(place + i));
    return value;
}

} // namespace

/// What Windows reads in larkspire.exe before it runs a line of it.
class TestLarkspireExecutable : public QObject
{
    Q_OBJECT

private slots:
    void itIsAWindowProgramForX64()
    {
        QFile file(QStringLiteral(LARKSPIRE_PROGRAM));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray start = file.read(4096);
        const int header = number(start, 0x3c, 4);
        QCOMPARE(start.mid(header, 4), QByteArray("PE\0\0", 4));
        QCOMPARE(number(start, header + 4, 2), IMAGE_FILE_MACHINE_AMD64);
        // As a console program it would open a console window.
        QCOMPARE(number(start, header + 24 + 68, 2), IMAGE_SUBSYSTEM_WINDOWS_GUI);
    }

    void itsIconHasEverySize()
    {
        const Module program = openedProgram();
        QVERIFY(program != nullptr);
        const QByteArray group = contents(program.get(), L"IDI_ICON1", MAKEINTRESOURCEW(14)); // RT_GROUP_ICON
        QVERIFY(group.size() > 6);
        QList<int> sizes;
        for (int i = 0; i < number(group, 4, 2); ++i) {
            const int entry = 6 + 14 * i;
            // 0 stands for 256.
            sizes.append(number(group, entry, 1) == 0 ? 256 : number(group, entry, 1));
            const int id = number(group, entry + 12, 2);
            QCOMPARE(contents(program.get(), MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(3)).size(), // RT_ICON
                     number(group, entry + 8, 4));
        }
        std::sort(sizes.begin(), sizes.end());
        QCOMPARE(sizes, (QList<int>{16, 20, 24, 32, 40, 48, 64, 128, 256}));
    }

    void itsVersionIsTheProjects()
    {
        const std::wstring path = QStringLiteral(LARKSPIRE_PROGRAM).toStdWString();
        QByteArray info(int(GetFileVersionInfoSizeW(path.c_str(), nullptr)), '\0');
        QVERIFY(!info.isEmpty());
        QVERIFY(GetFileVersionInfoW(path.c_str(), 0, DWORD(info.size()), info.data()));
        VS_FIXEDFILEINFO *fixed = nullptr;
        UINT size = 0;
        QVERIFY(VerQueryValueW(info.data(), L"\\", reinterpret_cast<void **>(&fixed), &size));
        const QString version = QStringLiteral("%1.%2.%3")
                                    .arg(HIWORD(fixed->dwFileVersionMS))
                                    .arg(LOWORD(fixed->dwFileVersionMS))
                                    .arg(HIWORD(fixed->dwFileVersionLS));
        QCOMPARE(version, QStringLiteral(LARKSPIRE_PROJECT_VERSION));
        const std::array<std::pair<const wchar_t *, QString>, 4> texts = {{
            {L"\\StringFileInfo\\080404b0\\ProductName", QStringLiteral("云雀资讯")},
            {L"\\StringFileInfo\\080404b0\\FileDescription", QStringLiteral("云雀资讯")},
            {L"\\StringFileInfo\\080404b0\\CompanyName", QStringLiteral("Fernhollow 云雀工坊")},
            {L"\\StringFileInfo\\080404b0\\ProductVersion", version},
        }};
        for (const auto &[place, text] : texts) {
            wchar_t *value = nullptr;
            QVERIFY(VerQueryValueW(info.data(), place, reinterpret_cast<void **>(&value), &size));
            QCOMPARE(QString::fromWCharArray(value), text);
        }
    }

    void itsManifestAsksForWhatTheProgramNeeds_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("the rights of whoever starts it")
            << QByteArray("<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>");
        QTest::newRow("awareness of each monitor's resolution")
            << QByteArray("SMI/2016/WindowsSettings\">PerMonitor</dpiAwareness>");
        QTest::newRow("the same for older systems")
            << QByteArray("SMI/2005/WindowsSettings\">true/pm</dpiAware>");
        QTest::newRow("UTF-8") << QByteArray("SMI/2019/WindowsSettings\">UTF-8</activeCodePage>");
        QTest::newRow("common controls 6")
            << QByteArray("name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"");
        QTest::newRow("its version") << QByteArray(
            "name=\"Fernhollow.Larkspire\" version=\"" LARKSPIRE_PROJECT_VERSION ".0\"");
    }

    void itsManifestAsksForWhatTheProgramNeeds()
    {
        QFETCH(QByteArray, line);
        const Module program = openedProgram();
        QVERIFY(program != nullptr);
        // RT_MANIFEST, under the number that counts for a program
        QVERIFY(contents(program.get(), MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24)).contains(line));
    }

    void theSystemTakesItsManifest()
    {
        // A manifest with a fault in it keeps a program from starting at all.
        const std::wstring path = QStringLiteral(LARKSPIRE_PROGRAM).toStdWString();
        ACTCTXW request = {};
        request.cbSize = sizeof(request);
        request.lpSource = path.c_str();
        request.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
        request.lpResourceName = MAKEINTRESOURCEW(1);
        const HANDLE context = CreateActCtxW(&request);
        QVERIFY2(context != INVALID_HANDLE_VALUE, qPrintable(QString::number(GetLastError())));
        ReleaseActCtx(context);
    }
};

QTEST_GUILESS_MAIN(TestLarkspireExecutable)
#include "tst_larkspire_executable.moc"
