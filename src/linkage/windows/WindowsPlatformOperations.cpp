#include "linkage/windows/WindowsPlatformOperations.h"

#include <array>
#include <cwchar>
#include <exception>

#include <windows.h>

// Beyond windows.h
#include <psapi.h>
#include <tlhelp32.h>

static_assert(sizeof(HMODULE) == sizeof(std::uint64_t), "a module list has entries of 8 bytes");
static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows writes UTF-16");

namespace {

constexpr DWORD pathLength = 260;
constexpr DWORD moduleNameLength = 260;
constexpr int windowTextLength = 256;

// A handle is the system's own value. NOLINTBEGIN(performance-no-int-to-ptr)
HANDLE toSystem(ProcessHandle process)
{
    return reinterpret_cast<HANDLE>(process);
}

HWND toSystem(WindowHandle window)
{
    return reinterpret_cast<HWND>(window);
}

void *toPointer(std::uint64_t address)
{
    return reinterpret_cast<void *>(address);
}
// NOLINTEND(performance-no-int-to-ptr)

std::u16string toText(const wchar_t *text, std::size_t length)
{
    return {reinterpret_cast<const char16_t *>(text), length};
}

struct WindowWalk
{
    const std::function<bool(WindowHandle)> &visit;
    std::exception_ptr exception;
};

/// An exception must not pass through the system's own frames; it is kept for walkWindows().
BOOL CALLBACK visitWindow(HWND window, LPARAM parameter) noexcept
{
    auto &walk = *reinterpret_cast<WindowWalk *>(parameter); // NOLINT(performance-no-int-to-ptr)
    try {
        return walk.visit(WindowHandle(reinterpret_cast<std::uintptr_t>(window))) ? TRUE : FALSE;
    } catch (...) {
        walk.exception = std::current_exception();
        return FALSE;
    }
}

/// A snapshot of all processes, closed at the end of its life.
class ProcessSnapshot final
{
public:
    ProcessSnapshot() : m_handle(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0)) {}
    ~ProcessSnapshot()
    {
        if (isValid())
            CloseHandle(m_handle);
    }
    ProcessSnapshot(const ProcessSnapshot &) = delete;
    ProcessSnapshot &operator=(const ProcessSnapshot &) = delete;

    bool isValid() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE handle() const { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace

std::unique_ptr<PlatformOperations> PlatformOperations::forReading()
{
    return std::make_unique<WindowsPlatformOperations>();
}

std::unique_ptr<PlatformOperations> PlatformOperations::forSending()
{
    return std::make_unique<WindowsPlatformOperations>();
}

bool WindowsPlatformOperations::walkProcesses(const std::function<bool(const ProcessEntry &)> &visit)
{
    const ProcessSnapshot snapshot;
    if (!snapshot.isValid())
        return false;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.handle(), &entry); more;
         more = Process32NextW(snapshot.handle(), &entry)) {
        const std::u16string_view name(reinterpret_cast<const char16_t *>(entry.szExeFile),
                                       std::wcslen(entry.szExeFile));
        if (!visit({entry.th32ProcessID, name}))
            break;
    }
    return true;
}

ProcessHandle WindowsPlatformOperations::openProcess(std::uint32_t pid, ProcessAccess access)
{
    return ProcessHandle(reinterpret_cast<std::uintptr_t>(OpenProcess(DWORD(access), FALSE, pid)));
}

void WindowsPlatformOperations::closeProcess(ProcessHandle process)
{
    CloseHandle(toSystem(process));
}

std::optional<std::u16string> WindowsPlatformOperations::processImagePath(ProcessHandle process)
{
    // Windows has no path for a process that has ended, though others still hold it; Wine would give one.
    DWORD exitCode = STILL_ACTIVE;
    if (GetExitCodeProcess(toSystem(process), &exitCode) && exitCode != STILL_ACTIVE)
        return std::nullopt;
    std::array<wchar_t, pathLength> path = {};
    DWORD length = pathLength;
    if (!QueryFullProcessImageNameW(toSystem(process), 0, path.data(), &length))
        return std::nullopt;
    return toText(path.data(), length);
}

std::optional<bool> WindowsPlatformOperations::is32BitProcess(ProcessHandle process)
{
    BOOL isWow64 = FALSE;
    if (!IsWow64Process(toSystem(process), &isWow64))
        return std::nullopt;
    return isWow64 != FALSE;
}

bool WindowsPlatformOperations::listModules(ProcessHandle process, ModuleFilter filter,
                                            std::uint64_t *modules, std::uint32_t roomBytes,
                                            std::uint32_t &neededBytes)
{
    DWORD needed = 0;
    if (!K32EnumProcessModulesEx(toSystem(process), reinterpret_cast<HMODULE *>(modules), roomBytes, &needed,
                                 DWORD(filter)))
        return false;
    neededBytes = needed;
    return true;
}

std::optional<std::string> WindowsPlatformOperations::moduleBaseName(ProcessHandle process,
                                                                     std::uint64_t module)
{
    std::array<char, moduleNameLength> name = {};
    const DWORD length = K32GetModuleBaseNameA(toSystem(process), static_cast<HMODULE>(toPointer(module)),
                                               name.data(), moduleNameLength);
    if (length == 0)
        return std::nullopt;
    return std::string(name.data(), length);
}

bool WindowsPlatformOperations::readMemory(ProcessHandle process, std::uint64_t address, void *buffer,
                                           std::size_t size, std::size_t *bytesRead)
{
    SIZE_T count = 0;
    const BOOL success =
        ReadProcessMemory(toSystem(process), toPointer(address), buffer, size, bytesRead ? &count : nullptr);
    if (bytesRead)
        *bytesRead = count;
    return success != FALSE;
}

std::uint64_t WindowsPlatformOperations::allocateMemory(ProcessHandle process, std::size_t size)
{
    return reinterpret_cast<std::uintptr_t>(
        VirtualAllocEx(toSystem(process), nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
}

bool WindowsPlatformOperations::writeMemory(ProcessHandle process, std::uint64_t address, const void *data,
                                            std::size_t size, std::size_t &bytesWritten)
{
    SIZE_T count = 0;
    const BOOL success = WriteProcessMemory(toSystem(process), toPointer(address), data, size, &count);
    bytesWritten = count;
    return success != FALSE;
}

void WindowsPlatformOperations::releaseMemory(ProcessHandle process, std::uint64_t address)
{
    VirtualFreeEx(toSystem(process), toPointer(address), 0, MEM_RELEASE);
}

void WindowsPlatformOperations::walkWindows(const std::function<bool(WindowHandle)> &visit)
{
    WindowWalk walk = {visit, nullptr};
    EnumWindows(visitWindow, reinterpret_cast<LPARAM>(&walk));
    if (walk.exception)
        std::rethrow_exception(walk.exception);
}

std::uint32_t WindowsPlatformOperations::windowProcessId(WindowHandle window)
{
    DWORD pid = 0;
    GetWindowThreadProcessId(toSystem(window), &pid);
    return pid;
}

std::u16string WindowsPlatformOperations::windowTitle(WindowHandle window)
{
    std::array<wchar_t, windowTextLength> title = {};
    const int length = GetWindowTextW(toSystem(window), title.data(), windowTextLength);
    return toText(title.data(), std::size_t(length));
}

std::u16string WindowsPlatformOperations::windowClassName(WindowHandle window)
{
    std::array<wchar_t, windowTextLength> name = {};
    const int length = GetClassNameW(toSystem(window), name.data(), windowTextLength);
    return toText(name.data(), std::size_t(length));
}

bool WindowsPlatformOperations::isWindowVisible(WindowHandle window)
{
    return IsWindowVisible(toSystem(window)) != FALSE;
}

std::uint32_t WindowsPlatformOperations::registerWindowMessage(std::u16string_view name)
{
    const std::u16string terminated(name);
    return RegisterWindowMessageW(reinterpret_cast<const wchar_t *>(terminated.c_str()));
}

void WindowsPlatformOperations::sendMessage(WindowHandle window, std::uint32_t message, std::uint64_t wParam,
                                            std::uint64_t lParam)
{
    SendMessageW(toSystem(window), message, wParam, LPARAM(lParam));
}

std::uint32_t WindowsPlatformOperations::lastError()
{
    return GetLastError();
}
