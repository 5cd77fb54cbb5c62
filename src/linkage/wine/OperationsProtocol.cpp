#include "linkage/wine/OperationsProtocol.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr char wordStart = '=';
constexpr char escape = '%';
constexpr std::size_t unitDigits = 4;
constexpr std::size_t byteDigits = 2;

bool isPlain(char16_t unit)
{
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'a' && unit <= u'z') || unit == u'.' || unit == u'_' || unit == u':' || unit == u'-';
}

void appendHex(std::string &word, unsigned value, std::size_t digits)
{
    constexpr std::string_view hexDigits = "0123456789abcdef";
    constexpr unsigned bitsPerDigit = 4;
    for (std::size_t position = digits; position > 0; --position)
        word += hexDigits[(value >> (bitsPerDigit * (position - 1))) & 0xFU];
}

/// Takes a hexadecimal number of exactly so many digits off the front of `word`.
std::optional<unsigned> takeHex(std::string_view &word, std::size_t digits)
{
    unsigned value = 0;
    if (word.size() < digits)
        return std::nullopt;
    const char *end = word.data() + digits;
    const auto [parsed, error] = std::from_chars(word.data(), end, value, 16);
    if (error != std::errc() || parsed != end)
        return std::nullopt;
    word.remove_prefix(digits);
    return value;
}

bool takeWordStart(std::string_view &word)
{
    if (word.empty() || word.front() != wordStart)
        return false;
    word.remove_prefix(1);
    return true;
}

} // namespace

std::vector<std::string_view> OperationsProtocol::words(std::string_view line)
{
    std::vector<std::string_view> result;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(" \r\n"), line.size()));
        if (line.empty())
            return result;
        result.push_back(line.substr(0, line.find_first_of(" \r\n")));
        line.remove_prefix(result.back().size());
    }
}

std::string OperationsProtocol::textWord(std::u16string_view text)
{
    std::string word(1, wordStart);
    for (const char16_t unit : text) {
        if (isPlain(unit)) {
            word += char(unit);
        } else {
            word += escape;
            appendHex(word, unit, unitDigits);
        }
    }
    return word;
}

std::optional<std::u16string> OperationsProtocol::text(std::string_view word)
{
    if (!takeWordStart(word))
        return std::nullopt;
    std::u16string result;
    while (!word.empty()) {
        const char first = word.front();
        word.remove_prefix(1);
        if (first != escape) {
            if (!isPlain(char16_t(first)))
                return std::nullopt;
            result += char16_t(first);
            continue;
        }
        const auto unit = takeHex(word, unitDigits);
        if (!unit)
            return std::nullopt;
        result += char16_t(*unit);
    }
    return result;
}

std::string OperationsProtocol::bytesWord(std::string_view bytes)
{
    std::string word(1, wordStart);
    for (const char byte : bytes)
        appendHex(word, static_cast<unsigned char>(byte), byteDigits);
    return word;
}

std::optional<std::string> OperationsProtocol::bytes(std::string_view word)
{
    if (!takeWordStart(word))
        return std::nullopt;
    std::string result;
    while (!word.empty()) {
        const auto byte = takeHex(word, byteDigits);
        if (!byte)
            return std::nullopt;
        result += char(*byte);
    }
    return result;
}

std::optional<std::uint64_t> OperationsProtocol::number(std::string_view word)
{
    std::uint64_t value = 0;
    const char *end = word.data() + word.size();
    const auto [parsed, error] = std::from_chars(word.data(), end, value);
    if (word.empty() || error != std::errc() || parsed != end)
        return std::nullopt;
    return value;
}
