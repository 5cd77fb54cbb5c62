#pragma once

#include "linkage/PlatformOperations.h"
#include "linkage/linux/FileDescriptor.h"
#include "linkage/linux/ImageHeader.h"
#include "linkage/linux/ProcFiles.h"
#include "linkage/linux/X11Windows.h"

#include <set>
#include <vector>

/// What ProcessUtils needs, on Linux: processes and their modules by /proc, memory by process_vm_readv,
/// windows by X11. Native programs and Windows programs under Wine look alike from here. Nothing is sent from
/// here; what only StockCodeSender needs keeps the base class's answer.
///
/// A handle holds on to the process itself, not to its number: once the process has ended, everything asked
/// by the handle fails, also if the number was given to another process since.
///
/// Where the kernel does not allow reading, one line in the log says why and what to change, once per
/// process.
class LinuxPlatformOperations final : public PlatformOperations
{
public:
    LinuxPlatformOperations() = default;
    LinuxPlatformOperations(const LinuxPlatformOperations &) = delete;
    LinuxPlatformOperations &operator=(const LinuxPlatformOperations &) = delete;
    ~LinuxPlatformOperations() override = default;

    bool walkProcesses(const std::function<bool(const ProcessEntry &)> &visit) override;
    ProcessHandle openProcess(std::uint32_t pid, ProcessAccess access) override;
    void closeProcess(ProcessHandle process) override;
    std::optional<std::u16string> processImagePath(ProcessHandle process) override;
    std::optional<bool> is32BitProcess(ProcessHandle process) override;
    bool listModules(ProcessHandle process, ModuleFilter filter, std::uint64_t *modules,
                     std::uint32_t roomBytes, std::uint32_t &neededBytes) override;
    std::optional<std::string> moduleBaseName(ProcessHandle process, std::uint64_t module) override;
    bool readMemory(ProcessHandle process, std::uint64_t address, void *buffer, std::size_t size,
                    std::size_t *bytesRead) override;
    void walkWindows(const std::function<bool(WindowHandle)> &visit) override;
    std::uint32_t windowProcessId(WindowHandle window) override;
    std::u16string windowTitle(WindowHandle window) override;
    std::u16string windowClassName(WindowHandle window) override;
    bool isWindowVisible(WindowHandle window) override;
    std::uint32_t lastError() override { return m_lastError; }

private:
    struct OpenProcess
    {
        std::uint32_t pid = 0;
        FileDescriptor folder;  ///< /proc/PID; goes dead with the process
        FileDescriptor process; ///< pidfd, the cheap way to ask whether it lives; absent before Linux 5.3
        /// The memory maps as last read, for the one question that follows: reading them is slow.
        std::optional<std::vector<ProcFiles::MappedFile>> files;
        std::vector<ProcFiles::MappedFile> modules; ///< as last listed
    };

    static OpenProcess &opened(ProcessHandle process);
    static bool isAlive(const OpenProcess &process);
    static std::string programName(const OpenProcess &process);
    std::size_t readBytes(const OpenProcess &process, std::uint64_t address, void *buffer, std::size_t size);
    std::optional<std::vector<ProcFiles::MappedFile>> mappedFiles(const OpenProcess &process);
    std::optional<std::string> programFile(const OpenProcess &process,
                                           const std::vector<ProcFiles::MappedFile> &files);
    std::optional<ImageHeader::Kind> headerKind(const OpenProcess &process,
                                                const ProcFiles::MappedFile &file);
    void explainRefusal(const OpenProcess &process);

    std::vector<std::unique_ptr<OpenProcess>> m_processes;
    X11Windows m_windows;
    std::set<std::pair<std::uint32_t, std::uint64_t>> m_explained; ///< process id and start time
    std::uint32_t m_lastError = 0;
};
