#include "linkage/linux/WinePlatformOperations.h"

#include "linkage/ProcessSearch.h"
#include "linkage/linux/WineTarget.h"
#include "linkage/wine/OperationsProtocol.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>

namespace {

const QStringView tradingPrograms[] = {u"tdxw.exe", u"tdxw64.exe", u"hexin.exe"};

// Where Windows has its registered messages too.
constexpr std::uint32_t registeredMessage = 0xC000;

std::string_view view(const QByteArray &word)
{
    return {word.constData(), std::size_t(word.size())};
}

/// An operation and its numbers as a line of the protocol.
template <typename... Numbers>
QByteArray line(const char *operation, Numbers... numbers)
{
    QByteArray result(operation);
    (result.append(' ').append(QByteArray::number(qulonglong(numbers))), ...);
    return result;
}

bool isWineInstalled()
{
    return !QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty() ||
           !QStandardPaths::findExecutable(QStringLiteral("wine64")).isEmpty();
}

/// The Wine that a process runs in; no value if it runs in none, has ended, or belongs to somebody else.
std::optional<WineTarget> wineOf(std::uint32_t pid)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(pid);
    QFile environ(folder + QStringLiteral("environ"));
    if (!environ.open(QIODevice::ReadOnly))
        return std::nullopt;
    return WineTarget::of(environ.readAll(), QFile::symLinkTarget(folder + QStringLiteral("exe")));
}

} // namespace

std::unique_ptr<PlatformOperations> PlatformOperations::forSending()
{
    return std::make_unique<WinePlatformOperations>(WinePlatformOperations::installedHelper());
}

WinePlatformOperations::WinePlatformOperations(const QString &helper, const WineSession::Limits &limits)
    : m_helper(helper), m_limits(limits)
{}

WinePlatformOperations::~WinePlatformOperations() = default;

QString WinePlatformOperations::installedHelper()
{
    const QString folder = QCoreApplication::applicationDirPath();
    const QString name = QStringLiteral("larkspire-wine-helper.exe");
    for (const QString &place :
         {folder + QLatin1Char('/') + name, folder + QStringLiteral("/../lib/larkspire/") + name}) {
        if (QFile::exists(place))
            return QFileInfo(place).canonicalFilePath();
    }
    return {};
}

/// Brings the list of sessions up to date and makes sure that each has a helper. False if nothing can be sent
/// from this machine.
bool WinePlatformOperations::findSessions()
{
    std::vector<std::shared_ptr<WineSession>> sessions;
    const auto take = [&](const WineTarget &target) {
        const auto isTargets = [&target](const std::shared_ptr<WineSession> &session) {
            return session->target().prefix == target.prefix;
        };
        if (std::any_of(sessions.begin(), sessions.end(), isTargets))
            return;
        const auto known = std::find_if(m_sessions.begin(), m_sessions.end(), isTargets);
        sessions.push_back(
            known != m_sessions.end() ? *known : std::make_shared<WineSession>(target, m_helper, m_limits));
    };
    m_native.walkProcesses([&](const ProcessEntry &entry) {
        const auto isEntryNamed = [&entry](QStringView name) { return ProcessSearch::isNamed(entry, name); };
        if (std::any_of(std::begin(tradingPrograms), std::end(tradingPrograms), isEntryNamed)) {
            if (const auto target = wineOf(entry.pid))
                take(*target);
        }
        return true;
    });
    // The helper of a session that is not among them any more ends here.
    m_sessions = std::move(sessions);
    if (m_sessions.empty()) {
        m_lastError = ENOENT;
        return QFile::exists(m_helper) && isWineInstalled();
    }
    const auto hasNoHelper = [this](const std::shared_ptr<WineSession> &session) {
        if (session->ensureHelper())
            return false;
        m_lastError = session->lastError();
        return true;
    };
    m_sessions.erase(std::remove_if(m_sessions.begin(), m_sessions.end(), hasNoHelper), m_sessions.end());
    return !m_sessions.empty();
}

WinePlatformOperations::Answer WinePlatformOperations::ask(WineSession &session, const QByteArray &line)
{
    Answer answer = session.ask(line);
    if (!answer)
        m_lastError = session.lastError();
    return answer;
}

std::optional<std::uint64_t> WinePlatformOperations::askNumber(WineSession &session, const QByteArray &line)
{
    const Answer answer = ask(session, line);
    if (!answer)
        return std::nullopt;
    const auto number =
        answer->size() == 1 ? OperationsProtocol::number(view(answer->first())) : std::nullopt;
    if (!number)
        m_lastError = EPROTO;
    return number;
}

/// What stands for a number given out by one of the walks.
const WinePlatformOperations::Remote *WinePlatformOperations::entry(const std::vector<Remote> &list,
                                                                    std::uint64_t number)
{
    if (number >= 1 && number <= list.size())
        return &list[number - 1];
    m_lastError = ESRCH;
    return nullptr;
}

bool WinePlatformOperations::walkProcesses(const std::function<bool(const ProcessEntry &)> &visit)
{
    m_processes.clear();
    if (!findSessions())
        return false;
    std::vector<std::u16string> names;
    for (const std::shared_ptr<WineSession> &session : m_sessions) {
        const Answer answer = ask(*session, "processes");
        if (!answer)
            return false;
        for (int index = 0; index + 1 < answer->size(); index += 2) {
            const auto pid = OperationsProtocol::number(view(answer->at(index)));
            const auto name = OperationsProtocol::text(view(answer->at(index + 1)));
            if (!pid || !name) {
                m_lastError = EPROTO;
                return false;
            }
            m_processes.push_back({session, *pid});
            names.push_back(*name);
        }
    }
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (!visit({std::uint32_t(index + 1), names[index]}))
            break;
    }
    return true;
}

ProcessHandle WinePlatformOperations::openProcess(std::uint32_t pid, ProcessAccess access)
{
    const Remote *process = entry(m_processes, pid);
    if (!process)
        return ProcessHandle::Null;
    const auto number = askNumber(*process->session, line("open", process->number, std::uint32_t(access)));
    if (!number)
        return ProcessHandle::Null;
    m_handles.emplace(++m_lastHandle, Remote{process->session, *number});
    return ProcessHandle(m_lastHandle);
}

void WinePlatformOperations::closeProcess(ProcessHandle process)
{
    const auto found = m_handles.find(std::uint64_t(process));
    if (found == m_handles.end())
        return;
    // If the helper has gone the system has closed it.
    ask(*found->second.session, line("close", found->second.number));
    m_handles.erase(found);
}

const WinePlatformOperations::Remote *WinePlatformOperations::handle(ProcessHandle process)
{
    const auto found = m_handles.find(std::uint64_t(process));
    if (found != m_handles.end())
        return &found->second;
    m_lastError = EBADF;
    return nullptr;
}

std::uint64_t WinePlatformOperations::allocateMemory(ProcessHandle process, std::size_t size)
{
    const Remote *target = handle(process);
    return target ? askNumber(*target->session, line("allocate", target->number, size)).value_or(0) : 0;
}

bool WinePlatformOperations::writeMemory(ProcessHandle process, std::uint64_t address, const void *data,
                                         std::size_t size, std::size_t &bytesWritten)
{
    bytesWritten = 0;
    const Remote *target = handle(process);
    if (!target)
        return false;
    const std::string bytes = OperationsProtocol::bytesWord({static_cast<const char *>(data), size});
    const auto count = askNumber(*target->session, line("write", target->number, address) + ' ' +
                                                       QByteArray::fromStdString(bytes));
    bytesWritten = count.value_or(0);
    return count.has_value();
}

void WinePlatformOperations::releaseMemory(ProcessHandle process, std::uint64_t address)
{
    if (const Remote *target = handle(process))
        ask(*target->session, line("release", target->number, address));
}

void WinePlatformOperations::walkWindows(const std::function<bool(WindowHandle)> &visit)
{
    m_windows.clear();
    for (const std::shared_ptr<WineSession> &session : m_sessions) {
        const Answer answer = ask(*session, "windows");
        if (!answer)
            continue;
        for (const QByteArray &word : *answer) {
            if (const auto number = OperationsProtocol::number(view(word)))
                m_windows.push_back({session, *number});
        }
    }
    for (std::size_t index = 0; index < m_windows.size(); ++index) {
        if (!visit(WindowHandle(index + 1)))
            return;
    }
}

std::u16string WinePlatformOperations::askText(const char *operation, WindowHandle window)
{
    const Remote *target = entry(m_windows, std::uint64_t(window));
    if (!target)
        return {};
    const Answer answer = ask(*target->session, line(operation, target->number));
    if (!answer || answer->size() != 1)
        return {};
    return OperationsProtocol::text(view(answer->first())).value_or(std::u16string());
}

std::u16string WinePlatformOperations::windowTitle(WindowHandle window)
{
    return askText("title", window);
}

std::u16string WinePlatformOperations::windowClassName(WindowHandle window)
{
    return askText("class", window);
}

std::uint32_t WinePlatformOperations::registerWindowMessage(std::u16string_view name)
{
    m_message.clear();
    if (!findSessions())
        return 0;
    const QByteArray request = "register " + QByteArray::fromStdString(OperationsProtocol::textWord(name));
    for (const std::shared_ptr<WineSession> &session : m_sessions) {
        const auto number = askNumber(*session, request);
        if (!number)
            return 0;
        m_message.push_back({session, *number});
    }
    return registeredMessage;
}

void WinePlatformOperations::sendMessage(WindowHandle window, std::uint32_t message, std::uint64_t wParam,
                                         std::uint64_t lParam)
{
    const auto send = [&](const Remote &target, std::uint64_t number) {
        if (!target.session->askPatiently(line("send", target.number, number, wParam, lParam)))
            qWarning("A message to a Wine session failed. Error: %u", target.session->lastError());
    };
    if (window == WindowHandle::Broadcast) {
        for (const Remote &registered : m_message)
            send({registered.session, std::uint64_t(window)}, registered.number);
    } else if (const Remote *target = entry(m_windows, std::uint64_t(window))) {
        send(*target, message);
    }
}
