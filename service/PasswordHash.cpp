#include "service/PasswordHash.h"

#include "service/AccountRules.h"

#include <sodium.h>

#include <condition_variable>
#include <mutex>
#include <new>

namespace service {

namespace {

/// Lets two hashes run at a time: sixteen of them at once would take a gigabyte.
class HashingTurn final
{
public:
    HashingTurn()
    {
        std::unique_lock lock(s_mutex);
        s_freed.wait(lock, [] { return s_running < 2; });
        ++s_running;
    }
    ~HashingTurn()
    {
        {
            const std::lock_guard lock(s_mutex);
            --s_running;
        }
        s_freed.notify_one();
    }
    HashingTurn(const HashingTurn &) = delete;
    HashingTurn &operator=(const HashingTurn &) = delete;

private:
    static std::mutex s_mutex;
    static std::condition_variable s_freed;
    static int s_running;
};

std::mutex HashingTurn::s_mutex;
std::condition_variable HashingTurn::s_freed;
int HashingTurn::s_running = 0;

} // namespace

std::string hashPassword(const std::string &password)
{
    const HashingTurn turn;
    char hash[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(hash, password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        throw std::bad_alloc();
    return hash;
}

bool passwordFits(const std::string &hash, const std::string &password)
{
    const HashingTurn turn;
    return crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

std::optional<std::string> decodeWirePassword(const std::string &encoded)
{
    std::string clear(encoded.size(), '\0');
    std::size_t length = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char *>(clear.data()), clear.size(), encoded.data(),
                          encoded.size(), nullptr, &length, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0)
        return std::nullopt;
    clear.resize(length);
    if (!utf8Length(clear))
        return std::nullopt;
    return clear;
}

} // namespace service
