#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// An open process of the platform. It stays open until closeProcess(); a value of this type is nothing but a
/// ticket for the object that gave it out.
enum class ProcessHandle : std::uintptr_t
{
    Null = 0
};

/// A top-level window of the platform. Valid while the window exists; not closed.
enum class WindowHandle : std::uintptr_t
{
    Null = 0,
    Broadcast = 0xFFFF, ///< every top-level window at once, HWND_BROADCAST
};

/// What an opened process is opened for; the values are Windows access masks.
enum class ProcessAccess : std::uint32_t
{
    QueryAndRead = 0x410, ///< PROCESS_QUERY_INFORMATION | PROCESS_VM_READ
    All = 0x1FFFFF,       ///< PROCESS_ALL_ACCESS
};

/// Which modules of a process a list shows; the values are those of K32EnumProcessModulesEx.
enum class ModuleFilter : std::uint32_t
{
    Modules32Bit = 1, ///< LIST_MODULES_32BIT
    Modules64Bit = 2, ///< LIST_MODULES_64BIT
};

/// One process of a snapshot.
struct ProcessEntry
{
    std::uint32_t pid = 0;
    std::u16string_view name; ///< file name of the executable as the system spells it; valid during the visit
};

/// Everything that the linkage needs from the operating system: the processes, memory and windows of the
/// trading programs. ProcessUtils and StockCodeSender are handed one of these at construction and make no
/// system call of their own.
///
/// Every operation stands for the Windows call named beside it and follows that call's contract; an
/// implementation for another system does the same job with its own means. Operations return at once, but for
/// sendMessage(), which waits for the receiver. Errors are results; the cause is lastError(), to be asked
/// right after the failure. Used on one thread.
///
/// The operations with a body here are needed by only one of the two classes. An implementation that serves
/// the other keeps that body, which is the answer of a system without the ability: failure.
class PlatformOperations
{
public:
    PlatformOperations() = default;
    PlatformOperations(const PlatformOperations &) = delete;
    PlatformOperations &operator=(const PlatformOperations &) = delete;
    virtual ~PlatformOperations() = default;

    /// The operations of the running system for ProcessUtils.
    static std::unique_ptr<PlatformOperations> forReading();

    /// The operations of the running system for StockCodeSender. On Windows these are the same as
    /// forReading(); elsewhere the trading programs live in Wine, and messages reach them only from inside
    /// it.
    static std::unique_ptr<PlatformOperations> forSending();

    // Processes

    /// Takes a snapshot of all processes and shows each to `visit`, first to last, until it returns false;
    /// the snapshot is closed again on every path. Returns false if no snapshot could be taken, and then
    /// visits none. CreateToolhelp32Snapshot (TH32CS_SNAPPROCESS, 0), Process32FirstW, Process32NextW,
    /// CloseHandle.
    virtual bool walkProcesses(const std::function<bool(const ProcessEntry &)> &visit) = 0;

    /// Opens the process `pid`, the handle not inherited. Null if there is none or it may not be opened.
    /// OpenProcess.
    virtual ProcessHandle openProcess(std::uint32_t pid, ProcessAccess access) = 0;

    /// Closes a handle of openProcess(). CloseHandle.
    virtual void closeProcess(ProcessHandle process) = 0;

    /// Full path of the process's executable, at most 259 characters. QueryFullProcessImageNameW with flags
    /// 0.
    virtual std::optional<std::u16string> processImagePath(ProcessHandle) { return std::nullopt; }

    /// Whether the process is a 32-bit one on a 64-bit system; no value if that cannot be told.
    /// IsWow64Process.
    virtual std::optional<bool> is32BitProcess(ProcessHandle) { return std::nullopt; }

    // Modules

    /// Fills `modules`, which has room for `roomBytes` bytes, with the load addresses of the process's
    /// modules that pass `filter`, and sets `neededBytes` to the size in bytes of the whole list; what does
    /// not fit is left out. `modules` may be null with a room of 0. False if the list cannot be had.
    /// K32EnumProcessModulesEx.
    virtual bool listModules(ProcessHandle, ModuleFilter, std::uint64_t * /*modules*/,
                             std::uint32_t /*roomBytes*/, std::uint32_t & /*neededBytes*/)
    {
        return false;
    }

    /// Base name of the module loaded at `module`, 8-bit, at most 259 characters. K32GetModuleBaseNameA.
    virtual std::optional<std::string> moduleBaseName(ProcessHandle, std::uint64_t /*module*/)
    {
        return std::nullopt;
    }

    // Memory

    /// Copies `size` bytes at `address` of the process to `buffer`. True only if all of them came.
    /// `bytesRead` is set to the count that came; null if the caller does not ask. ReadProcessMemory.
    virtual bool readMemory(ProcessHandle, std::uint64_t /*address*/, void * /*buffer*/, std::size_t /*size*/,
                            std::size_t * /*bytesRead*/)
    {
        return false;
    }

    /// Reserves and commits `size` bytes of read-write memory in the process, at an address of the system's
    /// choice. 0 on failure. VirtualAllocEx with MEM_COMMIT | MEM_RESERVE (0x3000) and PAGE_READWRITE (4).
    virtual std::uint64_t allocateMemory(ProcessHandle, std::size_t /*size*/) { return 0; }

    /// Copies `size` bytes of `data` to `address` of the process and sets `bytesWritten` to the count that
    /// arrived. WriteProcessMemory.
    virtual bool writeMemory(ProcessHandle, std::uint64_t /*address*/, const void * /*data*/,
                             std::size_t /*size*/, std::size_t & /*bytesWritten*/)
    {
        return false;
    }

    /// Gives the memory of allocateMemory() back. VirtualFreeEx with size 0 and MEM_RELEASE (0x8000).
    virtual void releaseMemory(ProcessHandle, std::uint64_t /*address*/) {}

    // Windows and messages

    /// Shows every top-level window to `visit` until it returns false. EnumWindows; the callback returns 0 to
    /// end the walk.
    virtual void walkWindows(const std::function<bool(WindowHandle)> &visit) = 0;

    /// Id of the process that owns the window, 0 if unknown. GetWindowThreadProcessId.
    virtual std::uint32_t windowProcessId(WindowHandle) { return 0; }

    /// Title of the window, at most 255 characters; empty if it has none. GetWindowTextW.
    virtual std::u16string windowTitle(WindowHandle window) = 0;

    /// Class name of the window, at most 255 characters; empty on failure. GetClassNameW.
    virtual std::u16string windowClassName(WindowHandle) { return {}; }

    /// Whether the window is shown; a minimised window is. IsWindowVisible.
    virtual bool isWindowVisible(WindowHandle) { return false; }

    /// Number of the system-wide message of that name, 0 on failure. RegisterWindowMessageW.
    virtual std::uint32_t registerWindowMessage(std::u16string_view /*name*/) { return 0; }

    /// Sends a message and waits, without any limit, until the window has handled it; with
    /// WindowHandle::Broadcast until every top-level window has. SendMessageW.
    virtual void sendMessage(WindowHandle, std::uint32_t /*message*/, std::uint64_t /*wParam*/,
                             std::uint64_t /*lParam*/)
    {}

    // Errors

    /// Number of the last failure: GetLastError on Windows, errno on other systems.
    virtual std::uint32_t lastError() = 0;
};
