#include "linkage/ProcessUtils.h"

#include "linkage/ProcessSearch.h"

#include <QDebug>

#include <algorithm>
#include <vector>

namespace {

const QStringView tdxProgram = u"tdxw.exe";
const QStringView tdxProgram64 = u"tdxw64.exe";
const QStringView thsProgram = u"hexin.exe";
constexpr int minimumCodeLength = 6;
constexpr std::size_t tdxTextSize = 6;
constexpr std::size_t thsTextSize = 8;

QString toQString(const std::u16string &text)
{
    return QString::fromUtf16(text.data(), int(text.size()));
}

/// Takes the text in `bytes` up to the first zero byte, if there is one, without its first `skip` characters
/// and without white space at both ends, over to `code`.
void decodeCode(const char *bytes, std::size_t size, int skip, QString &code)
{
    const char *end = std::find(bytes, bytes + size, '\0');
    const char *plain = std::min(bytes + skip, end);
    // On most reads the code has not changed: tell that apart before anything is allocated.
    const auto isAsciiDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    if (std::all_of(plain, end, isAsciiDigit) && code == QLatin1String(plain, int(end - plain)))
        return;
    code = QString::fromUtf8(bytes, int(end - bytes)).mid(skip).trimmed();
}

bool isCode(const QString &text)
{
    return text.size() >= minimumCodeLength && ProcessUtils::isAllDigits(text);
}

} // namespace

ProcessUtils::ProcessUtils(PlatformOperations &operations, QObject *parent)
    : QObject(parent), m_operations(operations)
{}

ProcessUtils::~ProcessUtils()
{
    close(m_tdxProcess);
    close(m_thsProcess);
}

QList<ProcessInstance> ProcessUtils::listTdxInstances()
{
    return listInstances({tdxProgram, tdxProgram64}, u"通达信");
}

QList<ProcessInstance> ProcessUtils::listThsInstances()
{
    return listInstances({thsProgram}, u"同花顺");
}

QList<ProcessInstance> ProcessUtils::listInstances(std::initializer_list<QStringView> names,
                                                   QStringView titleWord)
{
    QList<ProcessInstance> instances;
    m_operations.walkProcesses([&](const ProcessEntry &entry) {
        const auto isEntryNamed = [&entry](QStringView name) { return ProcessSearch::isNamed(entry, name); };
        if (std::none_of(names.begin(), names.end(), isEntryNamed))
            return true;
        ProcessInstance instance;
        instance.pid = entry.pid;
        ProcessHandle process = m_operations.openProcess(entry.pid, ProcessAccess::QueryAndRead);
        if (process != ProcessHandle::Null) {
            if (const auto path = m_operations.processImagePath(process))
                instance.exePath = toQString(*path);
            close(process);
        }
        instance.windowTitle = mainWindowTitle(entry.pid, titleWord);
        instances.append(instance);
        return true;
    });
    return instances;
}

bool ProcessUtils::isRunning(const ProcessInstance &instance)
{
    ProcessHandle process = m_operations.openProcess(instance.pid, ProcessAccess::QueryAndRead);
    if (process == ProcessHandle::Null)
        return false;
    // Ids are given out again, and on Windows an ended process can be opened as long as others hold it.
    const auto path = m_operations.processImagePath(process);
    close(process);
    return path && (instance.exePath.isEmpty() || toQString(*path) == instance.exePath);
}

QString ProcessUtils::mainWindowTitle(quint32 pid, QStringView titleWord)
{
    QString result;
    m_operations.walkWindows([&](WindowHandle window) {
        if (m_operations.windowProcessId(window) != pid)
            return true;
        const QString title = toQString(m_operations.windowTitle(window));
        if (!title.contains(titleWord) || !m_operations.isWindowVisible(window))
            return true;
        result = title;
        return false;
    });
    return result;
}

quint64 ProcessUtils::findModuleBase(ProcessHandle process, const char *module, ModuleFilter filter)
{
    quint32 neededBytes = 0;
    if (!m_operations.listModules(process, filter, nullptr, 0, neededBytes))
        return 0;
    std::vector<std::uint64_t> modules(neededBytes / sizeof(std::uint64_t));
    const auto roomBytes = quint32(modules.size() * sizeof(std::uint64_t));
    if (!m_operations.listModules(process, filter, modules.data(), roomBytes, neededBytes))
        return 0;
    // Between the two calls the process may have loaded or dropped a module.
    modules.resize(std::min<std::size_t>(modules.size(), neededBytes / sizeof(std::uint64_t)));
    const QLatin1String wanted(module);
    for (const std::uint64_t base : modules) {
        const auto name = m_operations.moduleBaseName(process, base);
        if (name && wanted.compare(QLatin1String(name->data(), int(name->size())), Qt::CaseInsensitive) == 0)
            return base;
    }
    return 0;
}

bool ProcessUtils::attach(ProcessHandle &process, quint64 &moduleBase, quint32 pid, QStringView name,
                          const char *module32, const char *module64)
{
    close(process);
    if (pid == 0)
        pid = ProcessSearch::findFirst(m_operations, name);
    if (pid == 0)
        return false;
    process = m_operations.openProcess(pid, ProcessAccess::QueryAndRead);
    if (process == ProcessHandle::Null)
        return false;
    const std::optional<bool> is32Bit = m_operations.is32BitProcess(process);
    if (!is32Bit) {
        qWarning("Cannot determine process architecture");
        close(process);
        return false;
    }
    const char *module = *is32Bit ? module32 : module64;
    const quint64 base =
        findModuleBase(process, module, *is32Bit ? ModuleFilter::Modules32Bit : ModuleFilter::Modules64Bit);
    if (base == 0) {
        qWarning("%s not found in process", module);
        close(process);
        return false;
    }
    moduleBase = base;
    return true;
}

bool ProcessUtils::attachTdx(quint32 pid)
{
    // Meant: the search by name knows only tdxw.exe, a tdxw64.exe is reached by its id.
    return attach(m_tdxProcess, m_tdxModuleBase, tdxPid != 0 ? tdxPid : pid, tdxProgram, "Viewthem.dll",
                  "Viewthem64.dll");
}

bool ProcessUtils::attachThs(quint32 pid)
{
    // Meant: it is the other program's id that decides whether the chosen Ths counts.
    return attach(m_thsProcess, m_thsModuleBase, tdxPid != 0 ? thsPid : pid, thsProgram, "hexin.exe",
                  "hexin.exe");
}

bool ProcessUtils::readTdxCode(QString &code)
{
    if (m_tdxOffset == 0)
        return false;
    if (m_tdxProcess == ProcessHandle::Null || m_tdxModuleBase == 0) {
        attachTdx(0);
        if (m_tdxProcess == ProcessHandle::Null)
            return false;
    }
    if (m_tdxModuleBase == 0)
        return false;

    char text[tdxTextSize + 1] = {};
    std::size_t bytesRead = 0;
    if (m_operations.readMemory(m_tdxProcess, m_tdxModuleBase + m_tdxOffset, text, tdxTextSize, &bytesRead) &&
        bytesRead == tdxTextSize) {
        decodeCode(text, tdxTextSize, 0, code);
        if (isCode(code))
            return true;
    }
    close(m_tdxProcess);
    return false;
}

bool ProcessUtils::readThsCode(QString &code)
{
    if (m_thsOffset == 0)
        return false;
    if (m_thsProcess == ProcessHandle::Null || m_thsModuleBase == 0) {
        m_thsCodePointer = 0;
        attachThs(0);
        if (m_thsProcess == ProcessHandle::Null)
            return false;
    }
    if (m_thsModuleBase == 0)
        return false;

    if (m_thsCodePointer == 0) {
        quint32 pointer = 0; // 32 bits wide also in a 64-bit process
        if (!m_operations.readMemory(m_thsProcess, m_thsModuleBase + m_thsOffset, &pointer, sizeof(pointer),
                                     nullptr)) {
            qWarning("ReadProcessMemory failed. Error: %u", m_operations.lastError());
            close(m_thsProcess);
            return false;
        }
        m_thsCodePointer = pointer;
    }

    char text[thsTextSize] = {};
    std::size_t bytesRead = 0;
    if (m_operations.readMemory(m_thsProcess, m_thsCodePointer, text, thsTextSize, &bytesRead) &&
        bytesRead == thsTextSize) {
        decodeCode(text, thsTextSize, 1, code);
        if (isCode(code))
            return true;
    }
    close(m_thsProcess);
    m_thsCodePointer = 0;
    return false;
}

bool ProcessUtils::setTdxOffset(const QString &offset)
{
    bool ok = false;
    m_tdxOffset = offset.toUInt(&ok, 16);
    return ok;
}

bool ProcessUtils::setThsOffset(const QString &offset)
{
    bool ok = false;
    m_thsOffset = offset.toUInt(&ok, 16);
    return ok;
}

void ProcessUtils::detachAll()
{
    close(m_tdxProcess);
    close(m_thsProcess);
    m_tdxModuleBase = 0;
    m_thsModuleBase = 0;
    m_thsCodePointer = 0;
    m_tdxOffset = 0;
    m_thsOffset = 0;
}

bool ProcessUtils::isAllDigits(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) { return character.isDigit(); });
}

void ProcessUtils::close(ProcessHandle &process)
{
    if (process == ProcessHandle::Null)
        return;
    m_operations.closeProcess(process);
    process = ProcessHandle::Null;
}
