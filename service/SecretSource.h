#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace service {

class Database;

/// Makes tokens, keys and codes. Without a seed they come from the system's random source. With a seed they
/// are derived from it and a counter in the database, so that a run can be repeated: that is for development
/// and demonstrations, where guessable secrets do no harm.
class SecretSource final
{
public:
    /// @param seed nothing for real secrets.
    SecretSource(Database &database, std::optional<std::uint64_t> seed);

    /// `bytes` random bytes as lower-case hexadecimal.
    std::string hex(std::size_t bytes);

    /// Six decimal digits.
    std::string sixDigits();

    /// The token that follows `token` when it rolls. Always the same for one token and one database, so that
    /// a reply that was lost on the way can be given again.
    std::string successorOf(const std::string &token) const;

    /// What is stored in place of a token: its BLAKE2b hash as hexadecimal.
    static std::string fingerprint(const std::string &token);

private:
    void fill(unsigned char *bytes, std::size_t count);

    Database &m_database;
    std::optional<std::uint64_t> m_seed;
    std::string m_rollingKey;
};

} // namespace service
