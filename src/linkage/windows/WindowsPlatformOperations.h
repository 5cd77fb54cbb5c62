#pragma once

#include "linkage/PlatformOperations.h"

/// The operations of Windows itself: each is the call that PlatformOperations names beside it, with exactly
/// the arguments given there. It uses nothing but the Windows API and the standard library, so that the
/// helper that runs inside Wine needs no more either.
class WindowsPlatformOperations final : public PlatformOperations
{
public:
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
    std::uint64_t allocateMemory(ProcessHandle process, std::size_t size) override;
    bool writeMemory(ProcessHandle process, std::uint64_t address, const void *data, std::size_t size,
                     std::size_t &bytesWritten) override;
    void releaseMemory(ProcessHandle process, std::uint64_t address) override;
    void walkWindows(const std::function<bool(WindowHandle)> &visit) override;
    std::uint32_t windowProcessId(WindowHandle window) override;
    std::u16string windowTitle(WindowHandle window) override;
    std::u16string windowClassName(WindowHandle window) override;
    bool isWindowVisible(WindowHandle window) override;
    std::uint32_t registerWindowMessage(std::u16string_view name) override;
    void sendMessage(WindowHandle window, std::uint32_t message, std::uint64_t wParam,
                     std::uint64_t lParam) override;
    std::uint32_t lastError() override;
};
