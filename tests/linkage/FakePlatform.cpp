#include "linkage/FakePlatform.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

QString handleName(ProcessHandle process)
{
    return QStringLiteral("h%1").arg(quint64(process));
}
QString windowName(WindowHandle window)
{
    return window == WindowHandle::Broadcast ? QStringLiteral("all")
                                             : QStringLiteral("w%1").arg(quint64(window));
}
QString hex(std::uint64_t number)
{
    return QStringLiteral("0x%1").arg(number, 0, 16);
}
QString decimal(std::uint64_t number)
{
    return QString::number(number);
}

} // namespace

QStringList FakePlatform::takeCalls()
{
    QStringList calls;
    calls.swap(m_calls);
    return calls;
}

QStringList FakePlatform::openHandles() const
{
    QStringList names;
    for (const quint64 handle : m_open.keys())
        names.append(handleName(ProcessHandle(handle)));
    return names;
}

void FakePlatform::record(const char *operation, const QStringList &arguments)
{
    const QString name = QString::fromLatin1(operation);
    m_calls.append((QStringList(name) + arguments).join(QLatin1Char(' ')));
    if (name == throwingOperation)
        throw std::runtime_error("the operation was told to throw");
}

FakePlatform::Process *FakePlatform::processOf(ProcessHandle process)
{
    const auto pid = m_open.constFind(quint64(process));
    if (pid == m_open.constEnd())
        throw std::logic_error("a handle that is not open was used");
    const auto found = std::find_if(processes.begin(), processes.end(),
                                    [pid](const Process &candidate) { return candidate.pid == *pid; });
    return found == processes.end() ? nullptr : &*found;
}

const FakePlatform::Window &FakePlatform::windowOf(WindowHandle window) const
{
    return windows.at(int(quint64(window)) - 1);
}

bool FakePlatform::walkProcesses(const std::function<bool(const ProcessEntry &)> &visit)
{
    record("walkProcesses");
    if (snapshotFails)
        return false;
    const QList<Process> snapshot = processes;
    for (const Process &process : snapshot) {
        const std::u16string name = process.name.toStdU16String();
        if (!visit({process.pid, name}))
            break;
    }
    return true;
}

ProcessHandle FakePlatform::openProcess(std::uint32_t pid, ProcessAccess access)
{
    record("openProcess", {decimal(pid), hex(std::uint64_t(access))});
    const bool canBeOpened = std::any_of(processes.cbegin(), processes.cend(), [pid](const Process &process) {
        return process.pid == pid && process.canBeOpened;
    });
    if (!canBeOpened)
        return ProcessHandle::Null;
    m_open.insert(++m_lastHandle, pid);
    return ProcessHandle(m_lastHandle);
}

void FakePlatform::closeProcess(ProcessHandle process)
{
    record("closeProcess", {handleName(process)});
    if (m_open.remove(quint64(process)) != 1)
        throw std::logic_error("a handle that is not open was closed");
}

std::optional<std::u16string> FakePlatform::processImagePath(ProcessHandle process)
{
    record("processImagePath", {handleName(process)});
    const Process *target = processOf(process);
    if (!target || target->path.isNull())
        return std::nullopt;
    return target->path.toStdU16String();
}

std::optional<bool> FakePlatform::is32BitProcess(ProcessHandle process)
{
    record("is32BitProcess", {handleName(process)});
    const Process *target = processOf(process);
    return target ? target->is32Bit : std::nullopt;
}

bool FakePlatform::listModules(ProcessHandle process, ModuleFilter filter, std::uint64_t *modules,
                               std::uint32_t roomBytes, std::uint32_t &neededBytes)
{
    record("listModules", {handleName(process), decimal(std::uint64_t(filter)), decimal(roomBytes)});
    const Process *target = processOf(process);
    if (!target || moduleListFails || (secondModuleListFails && roomBytes > 0))
        return false;
    std::vector<std::uint64_t> bases;
    for (const Module &module : target->modules) {
        if (module.is32Bit == (filter == ModuleFilter::Modules32Bit))
            bases.push_back(module.base);
    }
    neededBytes = std::uint32_t(bases.size() * sizeof(std::uint64_t));
    std::copy_n(bases.begin(), std::min(bases.size(), roomBytes / sizeof(std::uint64_t)), modules);
    return true;
}

std::optional<std::string> FakePlatform::moduleBaseName(ProcessHandle process, std::uint64_t module)
{
    record("moduleBaseName", {handleName(process), hex(module)});
    const Process *target = processOf(process);
    for (const Module &candidate : target ? target->modules : QList<Module>()) {
        if (candidate.base == module && !candidate.name.isNull())
            return candidate.name.toStdString();
    }
    return std::nullopt;
}

bool FakePlatform::readMemory(ProcessHandle process, std::uint64_t address, void *buffer, std::size_t size,
                              std::size_t *bytesRead)
{
    record("readMemory", {handleName(process), hex(address), decimal(size),
                          QString::fromLatin1(bytesRead ? "counted" : "uncounted")});
    std::size_t available = 0;
    if (const Process *target = processOf(process)) {
        for (auto bytes = target->memory.constBegin(); bytes != target->memory.constEnd(); ++bytes) {
            if (address < bytes.key() || address >= bytes.key() + std::uint64_t(bytes->size()))
                continue;
            const std::size_t start = address - bytes.key();
            available = std::min(size, std::size_t(bytes->size()) - start);
            std::memcpy(buffer, bytes->constData() + start, available);
        }
    }
    if (bytesRead)
        *bytesRead = available;
    return available == size || (shortReadsSucceed && available > 0);
}

std::uint64_t FakePlatform::allocateMemory(ProcessHandle process, std::size_t size)
{
    record("allocateMemory", {handleName(process), decimal(size)});
    return allocationAddress;
}

bool FakePlatform::writeMemory(ProcessHandle process, std::uint64_t address, const void *data,
                               std::size_t size, std::size_t &bytesWritten)
{
    record("writeMemory", {handleName(process), hex(address), decimal(size)});
    writtenBlocks.append(QByteArray(static_cast<const char *>(data), int(size)));
    bytesWritten = std::min(size, writeLimit);
    return !writeFails;
}

void FakePlatform::releaseMemory(ProcessHandle process, std::uint64_t address)
{
    record("releaseMemory", {handleName(process), hex(address)});
}

void FakePlatform::walkWindows(const std::function<bool(WindowHandle)> &visit)
{
    record("walkWindows");
    for (int position = 0; position < windows.size(); ++position) {
        if (!visit(WindowHandle(position + 1)))
            break;
    }
}

std::uint32_t FakePlatform::windowProcessId(WindowHandle window)
{
    record("windowProcessId", {windowName(window)});
    return windowOf(window).pid;
}

std::u16string FakePlatform::windowTitle(WindowHandle window)
{
    record("windowTitle", {windowName(window)});
    return windowOf(window).title.toStdU16String();
}

std::u16string FakePlatform::windowClassName(WindowHandle window)
{
    record("windowClassName", {windowName(window)});
    return windowOf(window).className.toStdU16String();
}

bool FakePlatform::isWindowVisible(WindowHandle window)
{
    record("isWindowVisible", {windowName(window)});
    return windowOf(window).visible;
}

std::uint32_t FakePlatform::registerWindowMessage(std::u16string_view name)
{
    record("registerWindowMessage", {QString::fromUtf16(name.data(), int(name.size()))});
    return registeredMessage;
}

void FakePlatform::sendMessage(WindowHandle window, std::uint32_t message, std::uint64_t wParam,
                               std::uint64_t lParam)
{
    record("sendMessage", {windowName(window), hex(message), decimal(wParam), hex(lParam)});
    messages.append({quint64(window), message, wParam, lParam});
}

std::uint32_t FakePlatform::lastError()
{
    record("lastError");
    return error;
}
