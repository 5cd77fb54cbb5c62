#pragma once

#include <QString>

#include <cstdint>
#include <optional>

/// What is known about a process whose memory the kernel does not let this program read.
struct ReadingRefusal
{
    std::uint32_t pid = 0;
    QString program;                         ///< name of the other program
    std::uint32_t ownUser = 0;               ///< effective user id of this program
    std::optional<std::uint32_t> otherUser;  ///< that of the other
    std::optional<bool> sharesUserNamespace; ///< no value if that cannot be told
    std::optional<int> ptraceScope;          ///< kernel.yama.ptrace_scope; no value without Yama

    /// One line for the log, in English: why reading is refused and what to change.
    QString explanation() const;
};
