#include "service/SecretSource.h"

#include "service/Database.h"

#include <sodium.h>

#include <array>
#include <stdexcept>
#include <vector>

namespace service {

namespace {

std::string toHex(const unsigned char *bytes, std::size_t count)
{
    std::string text(count * 2 + 1, '\0');
    sodium_bin2hex(text.data(), text.size(), bytes, count);
    text.pop_back();
    return text;
}

std::array<unsigned char, 32> hashOf(const std::string &text, const std::string &key)
{
    std::array<unsigned char, 32> digest{};
    crypto_generichash(digest.data(), digest.size(), reinterpret_cast<const unsigned char *>(text.data()),
                       text.size(), reinterpret_cast<const unsigned char *>(key.data()), key.size());
    return digest;
}

} // namespace

SecretSource::SecretSource(Database &database, std::optional<std::uint64_t> seed)
    : m_database(database), m_seed(seed)
{
    if (sodium_init() < 0)
        throw std::runtime_error("the cryptographic library cannot be initialised");
    m_rollingKey = m_database.setting("rolling_key");
    if (m_rollingKey.empty()) {
        m_rollingKey = hex(32);
        m_database.setSetting("rolling_key", m_rollingKey);
    }
}

void SecretSource::fill(unsigned char *bytes, std::size_t count)
{
    if (!m_seed) {
        randombytes_buf(bytes, count);
        return;
    }
    const std::int64_t turn = m_database.nextNumber("secret_counter");
    const auto seedBytes = hashOf("secret " + std::to_string(*m_seed) + " " + std::to_string(turn), {});
    static_assert(randombytes_SEEDBYTES == 32);
    randombytes_buf_deterministic(bytes, count, seedBytes.data());
}

std::string SecretSource::hex(std::size_t bytes)
{
    std::vector<unsigned char> buffer(bytes);
    fill(buffer.data(), buffer.size());
    return toHex(buffer.data(), buffer.size());
}

std::string SecretSource::sixDigits()
{
    std::array<unsigned char, 8> bytes{};
    fill(bytes.data(), bytes.size());
    std::uint64_t number = 0;
    for (const unsigned char byte : bytes)
        number = number << 8 | byte;
    const std::string digits = std::to_string(number % 1000000);
    return std::string(6 - digits.size(), '0') + digits;
}

std::string SecretSource::successorOf(const std::string &token) const
{
    const auto digest = hashOf("successor " + token, m_rollingKey);
    return toHex(digest.data(), digest.size());
}

std::string SecretSource::fingerprint(const std::string &token)
{
    const auto digest = hashOf(token, {});
    return toHex(digest.data(), digest.size());
}

} // namespace service
