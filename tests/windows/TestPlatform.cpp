#include "linkage/TestPlatform.h"

#include <QMap>
#include <QtTest>

#include <vector>

#include <windows.h>

namespace {

using ProcessFunction = LONG(NTAPI *)(HANDLE);

/// Calls a function of ntdll that takes a process alone; the Windows API has none to suspend one.
void callForProcess(const char *function, quint32 pid)
{
    const HANDLE process = OpenProcess(PROCESS_SUSPEND_RESUME, FALSE, pid);
    const FARPROC address = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), function);
    if (!process || !address)
        qFatal("Cannot call %s for process %u", function, pid);
    reinterpret_cast<ProcessFunction>(reinterpret_cast<void *>(address))(process);
    CloseHandle(process);
}

struct Search
{
    DWORD pid;
    HWND found;
};

BOOL CALLBACK visit(HWND window, LPARAM parameter)
{
    auto *search = reinterpret_cast<Search *>(parameter);
    DWORD pid = 0;
    GetWindowThreadProcessId(window, &pid);
    if (pid != search->pid || !IsWindowVisible(window))
        return TRUE;
    search->found = window;
    return FALSE;
}

void addKey(std::vector<INPUT> &inputs, WORD key)
{
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    inputs.push_back(input);
    input.ki.dwFlags = KEYEVENTF_KEYUP;
    inputs.push_back(input);
}

} // namespace

std::unique_ptr<PlatformOperations> TestPlatform::readingOperations()
{
    return PlatformOperations::forReading();
}

std::unique_ptr<PlatformOperations> TestPlatform::sendingOperations()
{
    return PlatformOperations::forSending();
}

bool TestPlatform::pressKeys(quint32 pid, const QStringList &keys)
{
    Search search = {pid, nullptr};
    EnumWindows(visit, reinterpret_cast<LPARAM>(&search));
    if (!search.found)
        return false;
    SetForegroundWindow(search.found);
    if (!QTest::qWaitFor([&search] { return GetForegroundWindow() == search.found; }))
        return false;
    const QMap<QString, WORD> named{{QStringLiteral("Up"), WORD(VK_UP)},
                                    {QStringLiteral("Down"), WORD(VK_DOWN)}};
    std::vector<INPUT> inputs;
    for (const QString &key : keys)
        addKey(inputs, named.value(key, WORD(key.at(0).unicode()))); // a digit is its own key
    return SendInput(UINT(inputs.size()), inputs.data(), sizeof(INPUT)) == inputs.size();
}

void TestPlatform::suspend(quint32 pid)
{
    callForProcess("NtSuspendProcess", pid);
}

void TestPlatform::resume(quint32 pid)
{
    callForProcess("NtResumeProcess", pid);
}

int TestPlatform::openHandleCount()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return int(count);
}
