#pragma once

#include "service/Clock.h"

#include <string>
#include <vector>

namespace service {

class Database;
class SecretSource;

/// How long a code is good, and how long the next one for the same address and purpose has to wait.
inline constexpr EpochSeconds CodeLifetime = 600;
inline constexpr EpochSeconds CodeInterval = 60;

/// After so many wrong tries a code is worth nothing.
inline constexpr int CodeTries = 5;

/// A code that would have been sent.
struct SentCode
{
    std::string email;
    std::string codeType;
    std::string code;
    EpochSeconds issuedAt = 0;
    EpochSeconds expiresAt = 0;
    bool isUsed = false;
};

/// The e-mail codes. No mail goes out: a code is printed to the log and can be read on the administration
/// path.
class VerificationCodes final
{
public:
    VerificationCodes(Database &database, const Clock &clock, SecretSource &secrets);

    /// Makes a code and prints it. Throws ServiceError 429 with the seconds to wait when the last one for
    /// this address and purpose is too young.
    void send(const std::string &email, const std::string &codeType);

    /// Throws ServiceError 400 unless `code` is the newest one of its kind, not over and not used.
    void check(const std::string &email, const std::string &codeType, const std::string &code);

    /// The same, and the code is used up.
    void consume(const std::string &email, const std::string &codeType, const std::string &code);

    /// The codes sent, the newest first, at most 100. An empty argument takes all.
    std::vector<SentCode> sent(const std::string &email, const std::string &codeType);

private:
    void examine(const std::string &email, const std::string &codeType, const std::string &code, bool useUp);

    Database &m_database;
    const Clock &m_clock;
    SecretSource &m_secrets;
};

/// Whether `codeType` is one of "register", "login" and "reset_password".
bool isCodeType(const std::string &codeType);

} // namespace service
