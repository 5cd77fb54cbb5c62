#include "linkage/linux/LinuxPlatformOperations.h"

#include "linkage/linux/ReadingRefusal.h"

#include <QDebug>
#include <QString>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>

namespace {

constexpr int longestTitle = 255; // characters, as the callers' buffers are on Windows

FileDescriptor openAt(const FileDescriptor &folder, const char *name, int flags = O_RDONLY)
{
    return FileDescriptor(::openat(folder.get(), name, flags | O_CLOEXEC));
}

/// Contents of a file, up to `limit` bytes. No value, and errno set, if it cannot be opened or read.
std::optional<std::string> readFile(const FileDescriptor &folder, const char *name, std::size_t limit)
{
    const FileDescriptor file = openAt(folder, name);
    if (!file.isValid())
        return std::nullopt;
    std::string contents;
    std::size_t length = 0;
    while (length < limit) {
        constexpr std::size_t step = 16384;
        contents.resize(std::min(limit, length + step));
        const ssize_t count = ::read(file.get(), contents.data() + length, contents.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        length += std::size_t(count);
    }
    contents.resize(length);
    return contents;
}

/// Contents of one of the small files of /proc; empty if it cannot be read.
std::string readSmallFile(const FileDescriptor &folder, const char *name)
{
    constexpr std::size_t smallFile = 4096;
    return readFile(folder, name, smallFile).value_or(std::string());
}

std::string readLink(const FileDescriptor &folder, const char *name)
{
    constexpr std::size_t longestPath = 4096;
    std::string target(longestPath, '\0');
    const ssize_t length = ::readlinkat(folder.get(), name, target.data(), target.size());
    target.resize(std::size_t(std::max<ssize_t>(length, 0)));
    return target;
}

std::string_view withoutNewline(std::string_view text)
{
    return text.substr(0, text.find('\n'));
}

/// Name of the program that the process runs; empty if it has ended.
std::string programNameIn(const FileDescriptor &folder)
{
    const std::string commandLine = readSmallFile(folder, "cmdline");
    if (!commandLine.empty() && commandLine.front() != '\0')
        return std::string(ProcFiles::programName(commandLine, {}, {}));
    if (ProcFiles::hasEnded(readSmallFile(folder, "stat")))
        return {};
    return std::string(ProcFiles::programName(commandLine, withoutNewline(readSmallFile(folder, "comm")),
                                              readLink(folder, "exe")));
}

QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

bool isSameName(std::string_view left, std::string_view right)
{
    return toQString(left).compare(toQString(right), Qt::CaseInsensitive) == 0;
}

std::optional<std::uint32_t> toProcessId(const char *name)
{
    std::uint32_t pid = 0;
    const char *end = name + std::strlen(name);
    const auto [parsed, error] = std::from_chars(name, end, pid);
    if (error != std::errc() || parsed != end)
        return std::nullopt;
    return pid;
}

std::optional<int> ptraceScope()
{
    const FileDescriptor folder(::open("/proc/sys/kernel/yama", O_PATH | O_DIRECTORY | O_CLOEXEC));
    bool ok = false;
    const int scope = toQString(readSmallFile(folder, "ptrace_scope")).trimmed().toInt(&ok);
    return ok ? std::optional<int>(scope) : std::nullopt;
}

xcb_window_t toX11(WindowHandle window)
{
    return xcb_window_t(window);
}

} // namespace

std::unique_ptr<PlatformOperations> PlatformOperations::forReading()
{
    return std::make_unique<LinuxPlatformOperations>();
}

bool LinuxPlatformOperations::walkProcesses(const std::function<bool(const ProcessEntry &)> &visit)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> processes(::opendir("/proc"), ::closedir);
    if (!processes) {
        m_lastError = std::uint32_t(errno);
        return false;
    }
    const int top = ::dirfd(processes.get());
    while (const dirent *entry = ::readdir(processes.get())) {
        const auto pid = toProcessId(entry->d_name);
        if (!pid)
            continue;
        const FileDescriptor folder(::openat(top, entry->d_name, O_PATH | O_DIRECTORY | O_CLOEXEC));
        const std::u16string name = toQString(programNameIn(folder)).toStdU16String();
        // A process that has ended since has no name any more.
        if (!name.empty() && !visit({*pid, name}))
            break;
    }
    return true;
}

ProcessHandle LinuxPlatformOperations::openProcess(std::uint32_t pid, ProcessAccess access)
{
    if (access != ProcessAccess::QueryAndRead) {
        m_lastError = EACCES;
        return ProcessHandle::Null;
    }
    auto process = std::make_unique<OpenProcess>();
    process->pid = pid;
    const QByteArray path = "/proc/" + QByteArray::number(pid);
    process->folder = FileDescriptor(::open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    process->process = FileDescriptor(int(::syscall(SYS_pidfd_open, pid, 0)));
    // Asked last: the folder that still lives vouches for both meaning the same process.
    if (!process->folder.isValid() || ::faccessat(process->folder.get(), "stat", F_OK, 0) != 0) {
        m_lastError = ESRCH;
        return ProcessHandle::Null;
    }
    m_processes.push_back(std::move(process));
    return ProcessHandle(reinterpret_cast<std::uintptr_t>(m_processes.back().get()));
}

void LinuxPlatformOperations::closeProcess(ProcessHandle process)
{
    const OpenProcess *closed = &opened(process);
    const auto found = std::find_if(m_processes.begin(), m_processes.end(),
                                    [closed](const auto &candidate) { return candidate.get() == closed; });
    if (found != m_processes.end())
        m_processes.erase(found);
}

LinuxPlatformOperations::OpenProcess &LinuxPlatformOperations::opened(ProcessHandle process)
{
    return *reinterpret_cast<OpenProcess *>(process); // NOLINT(performance-no-int-to-ptr): a handle is this
}

bool LinuxPlatformOperations::isAlive(const OpenProcess &process)
{
    if (!process.process.isValid())
        return ::faccessat(process.folder.get(), "stat", F_OK, 0) == 0;
    pollfd ended = {process.process.get(), POLLIN, 0};
    return ::poll(&ended, 1, 0) == 0;
}

std::string LinuxPlatformOperations::programName(const OpenProcess &process)
{
    return programNameIn(process.folder);
}

std::optional<std::vector<ProcFiles::MappedFile>>
LinuxPlatformOperations::mappedFiles(const OpenProcess &process)
{
    constexpr std::size_t unlimited = SIZE_MAX / 2;
    const auto maps = readFile(process.folder, "maps", unlimited);
    if (!maps) {
        m_lastError = std::uint32_t(errno);
        if (m_lastError == EACCES || m_lastError == EPERM)
            explainRefusal(process);
        return std::nullopt;
    }
    return ProcFiles::filesMappedFromTheirStart(*maps);
}

/// What the file's mapping begins with in memory, or in the file where the memory may not be read. No value
/// if neither can be.
std::optional<ImageHeader::Kind> LinuxPlatformOperations::headerKind(const OpenProcess &process,
                                                                     const ProcFiles::MappedFile &file)
{
    char header[ImageHeader::usefulSize] = {};
    const std::size_t size = readBytes(process, file.address, header, sizeof(header));
    if (size > 0)
        return ImageHeader::kindOf(header, size);
    const auto contents = readFile(process.folder, ("root" + file.path).c_str(), sizeof(header));
    if (!contents)
        return std::nullopt;
    return ImageHeader::kindOf(contents->data(), contents->size());
}

std::optional<std::u16string> LinuxPlatformOperations::processImagePath(ProcessHandle process)
{
    const OpenProcess &target = opened(process);
    const std::string name = programName(target);
    std::string path = readLink(target.folder, "exe");
    if (!isSameName(ProcFiles::fileName(path), name)) {
        // Under Wine that is Wine's loader; the program is one of the files it has mapped.
        const auto files = mappedFiles(target);
        if (!files)
            return std::nullopt;
        for (const ProcFiles::MappedFile &file : *files) {
            if (isSameName(ProcFiles::fileName(file.path), name)) {
                path = file.path;
                break;
            }
        }
    }
    if (path.empty())
        return std::nullopt;
    return toQString(path).toStdU16String();
}

std::optional<bool> LinuxPlatformOperations::is32BitProcess(ProcessHandle process)
{
    OpenProcess &target = opened(process);
    target.files = mappedFiles(target);
    if (!target.files)
        return std::nullopt;
    // The program's own header, not that of the loader: a 64-bit Wine runs 32-bit programs too.
    const std::string name = programName(target);
    for (const ProcFiles::MappedFile &file : *target.files) {
        if (!isSameName(ProcFiles::fileName(file.path), name))
            continue;
        const auto kind = headerKind(target, file);
        if (kind && *kind != ImageHeader::Kind::None)
            return *kind == ImageHeader::Kind::Image32;
    }
    const auto executable = readFile(target.folder, "exe", ImageHeader::usefulSize);
    const auto kind =
        executable ? ImageHeader::kindOf(executable->data(), executable->size()) : ImageHeader::Kind::None;
    if (kind == ImageHeader::Kind::None)
        return std::nullopt;
    return kind == ImageHeader::Kind::Image32;
}

bool LinuxPlatformOperations::listModules(ProcessHandle process, ModuleFilter filter, std::uint64_t *modules,
                                          std::uint32_t roomBytes, std::uint32_t &neededBytes)
{
    OpenProcess &target = opened(process);
    if (!modules || target.modules.empty()) {
        auto files = target.files ? std::exchange(target.files, std::nullopt) : mappedFiles(target);
        if (!files)
            return false;
        const auto wanted =
            filter == ModuleFilter::Modules32Bit ? ImageHeader::Kind::Image32 : ImageHeader::Kind::Image64;
        // Where the header cannot be had the file stays in: reading its memory will tell why, in the log.
        const auto isOther = [&](const ProcFiles::MappedFile &file) {
            return headerKind(target, file).value_or(wanted) != wanted;
        };
        files->erase(std::remove_if(files->begin(), files->end(), isOther), files->end());
        target.modules = std::move(*files);
    }
    neededBytes = std::uint32_t(target.modules.size() * sizeof(std::uint64_t));
    const std::size_t count = std::min(target.modules.size(), roomBytes / sizeof(std::uint64_t));
    for (std::size_t index = 0; index < count; ++index)
        modules[index] = target.modules[index].address;
    return true;
}

std::optional<std::string> LinuxPlatformOperations::moduleBaseName(ProcessHandle process,
                                                                   std::uint64_t module)
{
    const OpenProcess &target = opened(process);
    for (const ProcFiles::MappedFile &file : target.modules) {
        if (file.address == module)
            return std::string(ProcFiles::fileName(file.path));
    }
    return std::nullopt;
}

/// Reads as much as there is and returns the count; the cause of a lesser one is in m_lastError.
std::size_t LinuxPlatformOperations::readBytes(const OpenProcess &process, std::uint64_t address,
                                               void *buffer, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const iovec local = {static_cast<char *>(buffer) + done, size - done};
        const iovec remote = {reinterpret_cast<void *>(address + done), // NOLINT(performance-no-int-to-ptr)
                              size - done};
        const ssize_t count = ::process_vm_readv(pid_t(process.pid), &local, 1, &remote, 1, 0);
        if (count <= 0) {
            m_lastError = count < 0 ? std::uint32_t(errno) : EFAULT;
            break;
        }
        done += std::size_t(count);
    }
    // The number may have gone to another process: asked behind the reading, when it can no longer change.
    if (!isAlive(process)) {
        m_lastError = ESRCH;
        return 0;
    }
    if (done < size && m_lastError == EPERM)
        explainRefusal(process);
    return done;
}

bool LinuxPlatformOperations::readMemory(ProcessHandle process, std::uint64_t address, void *buffer,
                                         std::size_t size, std::size_t *bytesRead)
{
    const std::size_t count = readBytes(opened(process), address, buffer, size);
    if (bytesRead)
        *bytesRead = count;
    return count == size;
}

void LinuxPlatformOperations::explainRefusal(const OpenProcess &process)
{
    const auto start = ProcFiles::startTime(readSmallFile(process.folder, "stat"));
    if (!m_explained.insert({process.pid, start.value_or(0)}).second)
        return;
    const FileDescriptor own(::open("/proc/self", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string ownNamespace = readLink(own, "ns/user");
    const std::string otherNamespace = readLink(process.folder, "ns/user");
    ReadingRefusal refusal;
    refusal.pid = process.pid;
    refusal.program = toQString(programName(process));
    refusal.ownUser = ::geteuid();
    refusal.otherUser = ProcFiles::effectiveUser(readSmallFile(process.folder, "status"));
    if (!ownNamespace.empty() && !otherNamespace.empty())
        refusal.sharesUserNamespace = ownNamespace == otherNamespace;
    refusal.ptraceScope = ptraceScope();
    qWarning("%s", qUtf8Printable(refusal.explanation()));
}

void LinuxPlatformOperations::walkWindows(const std::function<bool(WindowHandle)> &visit)
{
    m_windows.walk([&visit](xcb_window_t window) { return visit(WindowHandle(window)); });
}

std::uint32_t LinuxPlatformOperations::windowProcessId(WindowHandle window)
{
    return m_windows.processId(toX11(window));
}

std::u16string LinuxPlatformOperations::windowTitle(WindowHandle window)
{
    return toQString(m_windows.title(toX11(window))).left(longestTitle).toStdU16String();
}

std::u16string LinuxPlatformOperations::windowClassName(WindowHandle window)
{
    return toQString(m_windows.className(toX11(window))).toStdU16String();
}

bool LinuxPlatformOperations::isWindowVisible(WindowHandle window)
{
    return m_windows.isShown(toX11(window));
}
