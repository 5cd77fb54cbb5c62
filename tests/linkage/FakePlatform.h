#pragma once

#include "linkage/PlatformOperations.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// A system made of tables: processes with modules and bytes, and windows. It serves what stands in the
/// tables, lets single operations fail, and writes every call down in the order of calling.
class FakePlatform final : public PlatformOperations
{
public:
    struct Module
    {
        std::uint64_t base = 0;
        QString name; ///< null: its name cannot be had
        bool is32Bit = false;
    };

    struct Process
    {
        quint32 pid = 0;
        QString name;
        QString path; ///< null: cannot be had
        bool canBeOpened = true;
        std::optional<bool> is32Bit = false;
        QList<Module> modules;
        QMap<std::uint64_t, QByteArray> memory; ///< address of the first byte, and the bytes from there on
    };

    struct Window
    {
        quint32 pid = 0;
        QString title;
        QString className;
        bool visible = true;
    };

    struct Message
    {
        quint64 window = 0;
        quint32 number = 0;
        quint64 wParam = 0;
        quint64 lParam = 0;
    };

    QList<Process> processes;
    QList<Window> windows; ///< handle: position + 1
    bool snapshotFails = false;
    bool moduleListFails = false;       ///< every listModules()
    bool secondModuleListFails = false; ///< only the one that fetches entries
    bool shortReadsSucceed = false;     ///< a read that brings too few bytes is reported as a success
    std::size_t writeLimit = SIZE_MAX;  ///< more than this is cut off
    bool writeFails = false;
    std::uint64_t allocationAddress = 0x7000; ///< 0: allocation fails
    quint32 registeredMessage = 0xC123;       ///< 0: registration fails
    quint32 error = 0;                        ///< what lastError() answers
    QString throwingOperation;                ///< this one throws when called

    /// Calls since the last takeCalls(): the operation's name and its arguments, handles as h1, h2... in the
    /// order of opening, windows as w1, w2..., addresses in hexadecimal.
    QStringList takeCalls();
    /// What sendMessage() was called with.
    QList<Message> messages;
    /// What writeMemory() was called with.
    QList<QByteArray> writtenBlocks;
    /// Handles that are open.
    QStringList openHandles() const;

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

private:
    void record(const char *operation, const QStringList &arguments = {});
    Process *processOf(ProcessHandle process);
    const Window &windowOf(WindowHandle window) const;

    QStringList m_calls;
    QMap<quint64, quint32> m_open; ///< handle to process id
    quint64 m_lastHandle = 0;
};
