#include "linkage/linux/ProcFiles.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::string_view deletedMark = " (deleted)";
constexpr std::size_t longestComm = 15;

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

/// Cuts the first word off `line`; words are separated by blanks.
std::string_view takeWord(std::string_view &line)
{
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(word.size());
    return word;
}

template <typename Number>
std::optional<Number> toNumber(std::string_view text, int base)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// The kernel writes a newline inside a path as \012 and every other character as it is.
std::string decodePath(std::string_view path)
{
    constexpr std::string_view newline = "\\012";
    std::string result;
    while (!path.empty()) {
        if (startsWith(path, newline)) {
            result += '\n';
            path.remove_prefix(newline.size());
        } else {
            result += path.front();
            path.remove_prefix(1);
        }
    }
    return result;
}

std::optional<ProcFiles::MappedFile> parseMapping(std::string_view line)
{
    const std::string_view range = takeWord(line);
    takeWord(line); // permissions
    const auto offset = toNumber<std::uint64_t>(takeWord(line), 16);
    takeWord(line); // device
    const auto inode = toNumber<std::uint64_t>(takeWord(line), 10);
    const auto address = toNumber<std::uint64_t>(range.substr(0, range.find('-')), 16);
    if (!address || !offset || !inode || *offset != 0 || *inode == 0)
        return std::nullopt;
    const std::size_t pathStart = line.find('/');
    if (pathStart == std::string_view::npos)
        return std::nullopt;
    std::string_view path = line.substr(pathStart);
    if (path.size() > deletedMark.size() && path.substr(path.size() - deletedMark.size()) == deletedMark)
        path.remove_suffix(deletedMark.size());
    return ProcFiles::MappedFile{*address, decodePath(path)};
}

/// The field of that number, counted as in proc(5) from 1, of /proc/PID/stat; only from the third on.
std::string_view statField(std::string_view stat, int number)
{
    // The second field is the program's name in brackets and may hold blanks and brackets of its own.
    const std::size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string_view::npos)
        return {};
    stat.remove_prefix(nameEnd + 1);
    constexpr int firstFieldBehindName = 3;
    for (int field = firstFieldBehindName; field < number; ++field)
        takeWord(stat);
    return takeWord(stat);
}

template <typename Visit>
void forEachLine(std::string_view text, const Visit &visit)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        visit(line);
    }
}

} // namespace

std::vector<ProcFiles::MappedFile> ProcFiles::filesMappedFromTheirStart(std::string_view maps)
{
    std::vector<MappedFile> files;
    forEachLine(maps, [&files](std::string_view line) {
        if (auto file = parseMapping(line))
            files.push_back(std::move(*file));
    });
    return files;
}

std::string_view ProcFiles::fileName(std::string_view path)
{
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

std::string_view ProcFiles::programName(std::string_view commandLine, std::string_view comm,
                                        std::string_view executable)
{
    const std::string_view name = fileName(commandLine.substr(0, commandLine.find('\0')));
    if (!name.empty())
        return name;
    const std::string_view executableName = fileName(executable);
    const bool mayBeCut = comm.size() >= longestComm;
    return mayBeCut && startsWith(executableName, comm) ? executableName : comm;
}

std::optional<std::uint64_t> ProcFiles::startTime(std::string_view stat)
{
    constexpr int startTimeField = 22;
    return toNumber<std::uint64_t>(statField(stat, startTimeField), 10);
}

bool ProcFiles::hasEnded(std::string_view stat)
{
    constexpr int stateField = 3;
    const std::string_view state = statField(stat, stateField);
    return state == "Z" || state == "X" || state == "x";
}

std::optional<std::uint32_t> ProcFiles::effectiveUser(std::string_view status)
{
    std::optional<std::uint32_t> user;
    forEachLine(status, [&user](std::string_view line) {
        constexpr std::string_view key = "Uid:";
        if (!startsWith(line, key))
            return;
        line.remove_prefix(key.size());
        takeWord(line); // real user
        user = toNumber<std::uint32_t>(takeWord(line), 10);
    });
    return user;
}
