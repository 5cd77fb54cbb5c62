#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the kernel's files under /proc/PID say. Pure functions from a file's contents to its meaning.
namespace ProcFiles {

/// A mapping of the first byte of a file into a process.
struct MappedFile
{
    std::uint64_t address = 0; ///< where the first byte lies in the process
    std::string path;          ///< the file's path in the process's own mount namespace
};

/// The mappings in `maps` (proc(5), /proc/PID/maps) that begin at offset 0 of a file, in the order of their
/// addresses. Lines that cannot be understood are left out, and so are mappings that belong to no file.
std::vector<MappedFile> filesMappedFromTheirStart(std::string_view maps);

/// The part of a path behind its last separator. A Windows program under Wine knows itself by a path of its
/// own, so the backslash counts as one too.
std::string_view fileName(std::string_view path);

/// Name of the program that a process runs.
///
/// `commandLine` is /proc/PID/cmdline: its first word decides, as under Wine the executable is Wine's loader.
/// Where it is empty, `comm` (/proc/PID/comm, without its newline) decides. The kernel cuts that at 15 bytes,
/// even inside a character: `executable`, the target of /proc/PID/exe, completes a name that may have been
/// cut.
std::string_view programName(std::string_view commandLine, std::string_view comm,
                             std::string_view executable);

/// Start of the process since the start of the machine, in clock ticks, from /proc/PID/stat. Together with
/// its id it tells a process from a later one that was given the same id.
std::optional<std::uint64_t> startTime(std::string_view stat);

/// Whether the process has ended and only waits to be collected by its parent, from /proc/PID/stat.
bool hasEnded(std::string_view stat);

/// Effective user id of the process, from /proc/PID/status.
std::optional<std::uint32_t> effectiveUser(std::string_view status);

} // namespace ProcFiles
