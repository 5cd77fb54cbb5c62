#pragma once

#include "linkage/PlatformOperations.h"
#include "linkage/linux/LinuxPlatformOperations.h"
#include "linkage/linux/WineSession.h"

#include <map>
#include <memory>
#include <vector>

/// What StockCodeSender needs, on Linux. The trading programs run in Wine there, and Windows messages reach
/// them only from inside the same Wine session: each operation is done by a helper program in the session of
/// a trading program. All sessions in which a trading program runs make up the system that is seen from here;
/// which those are is looked up when a send begins, by walkProcesses() and registerWindowMessage().
///
/// A send fails where there is no Wine or no helper. Where both are there but no trading program runs in
/// Wine, a broadcast reaches nobody and counts as sent, as on Windows. Only messages that were registered are
/// broadcast.
///
/// What only ProcessUtils needs keeps the base class's answer. lastError() is the error number of Windows for
/// what failed inside Wine, errno's for what failed on the way.
class WinePlatformOperations final : public PlatformOperations
{
public:
    /// `helper` is the program file of the helper.
    explicit WinePlatformOperations(const QString &helper, const WineSession::Limits &limits = {});
    WinePlatformOperations(const WinePlatformOperations &) = delete;
    WinePlatformOperations &operator=(const WinePlatformOperations &) = delete;
    ~WinePlatformOperations() override;

    /// Program file of the helper that was installed with this program: beside it or in lib/larkspire. Empty
    /// if there is none.
    static QString installedHelper();

    bool walkProcesses(const std::function<bool(const ProcessEntry &)> &visit) override;
    ProcessHandle openProcess(std::uint32_t pid, ProcessAccess access) override;
    void closeProcess(ProcessHandle process) override;
    std::uint64_t allocateMemory(ProcessHandle process, std::size_t size) override;
    bool writeMemory(ProcessHandle process, std::uint64_t address, const void *data, std::size_t size,
                     std::size_t &bytesWritten) override;
    void releaseMemory(ProcessHandle process, std::uint64_t address) override;
    void walkWindows(const std::function<bool(WindowHandle)> &visit) override;
    std::u16string windowTitle(WindowHandle window) override;
    std::u16string windowClassName(WindowHandle window) override;
    std::uint32_t registerWindowMessage(std::u16string_view name) override;
    void sendMessage(WindowHandle window, std::uint32_t message, std::uint64_t wParam,
                     std::uint64_t lParam) override;
    std::uint32_t lastError() override { return m_lastError; }

private:
    /// Something in one of the sessions: a process, a handle, a window or a registered message. What is given
    /// out for it is its position in a list, as two sessions may use the same number.
    struct Remote
    {
        std::shared_ptr<WineSession> session;
        std::uint64_t number = 0;
    };
    using Answer = std::optional<QList<QByteArray>>;

    bool findSessions();
    Answer ask(WineSession &session, const QByteArray &line);
    std::optional<std::uint64_t> askNumber(WineSession &session, const QByteArray &line);
    std::u16string askText(const char *operation, WindowHandle window);
    const Remote *entry(const std::vector<Remote> &list, std::uint64_t number);
    const Remote *handle(ProcessHandle process);

    QString m_helper;
    WineSession::Limits m_limits;
    LinuxPlatformOperations m_native; ///< to look for trading programs
    std::vector<std::shared_ptr<WineSession>> m_sessions;
    std::vector<Remote> m_processes; ///< of the last walk; process id: position + 1
    std::vector<Remote> m_windows;   ///< of the last walk; window: position + 1
    std::map<std::uint64_t, Remote> m_handles;
    std::uint64_t m_lastHandle = 0;
    std::vector<Remote> m_message; ///< the message registered last, in each session
    std::uint32_t m_lastError = 0;
};
