#include "service/AccountRules.h"

#include <algorithm>

namespace service {

namespace {

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// One character of a UTF-8 text: its code point and its length in bytes; length 0 for no UTF-8.
struct Character
{
    char32_t codePoint = 0;
    std::size_t bytes = 0;
};

Character characterAt(const std::string &text, std::size_t position)
{
    const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(text[position + offset]); };
    const unsigned char first = byte(0);
    std::size_t bytes = 0;
    char32_t codePoint = 0;
    char32_t smallest = 0;
    if (first < 0x80)
        return {first, 1};
    if ((first & 0xE0) == 0xC0) {
        bytes = 2;
        codePoint = first & 0x1F;
        smallest = 0x80;
    } else if ((first & 0xF0) == 0xE0) {
        bytes = 3;
        codePoint = first & 0x0F;
        smallest = 0x800;
    } else if ((first & 0xF8) == 0xF0) {
        bytes = 4;
        codePoint = first & 0x07;
        smallest = 0x10000;
    } else {
        return {};
    }
    if (text.size() - position < bytes)
        return {};
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {};
        codePoint = codePoint << 6 | (byte(i) & 0x3F);
    }
    if (codePoint < smallest || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return {};
    return {codePoint, bytes};
}

} // namespace

std::optional<std::size_t> utf8Length(const std::string &text)
{
    std::size_t count = 0;
    for (std::size_t position = 0; position < text.size(); ++count) {
        const Character character = characterAt(text, position);
        if (character.bytes == 0)
            return std::nullopt;
        position += character.bytes;
    }
    return count;
}

std::string utf8Left(const std::string &text, std::size_t characters)
{
    std::size_t position = 0;
    for (std::size_t i = 0; i < characters && position < text.size(); ++i) {
        const Character character = characterAt(text, position);
        if (character.bytes == 0)
            break;
        position += character.bytes;
    }
    return text.substr(0, position);
}

std::string trimmed(const std::string &text)
{
    const char *blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string emailFault(const std::string &email)
{
    const char *fault = "邮箱格式不正确";
    const std::size_t at = email.find('@');
    if (email.size() > 254 || at == std::string::npos || at == 0 ||
        email.find('@', at + 1) != std::string::npos)
        return fault;
    const std::string name = email.substr(0, at);
    const std::string domain = email.substr(at + 1);
    const auto nameCharacter = [](char c) {
        return isAsciiLetter(c) || isAsciiDigit(c) || std::string("._%+-").find(c) != std::string::npos;
    };
    const auto domainCharacter = [](char c) {
        return isAsciiLetter(c) || isAsciiDigit(c) || c == '.' || c == '-';
    };
    if (!std::all_of(name.begin(), name.end(), nameCharacter) ||
        !std::all_of(domain.begin(), domain.end(), domainCharacter))
        return fault;
    const std::size_t dot = domain.rfind('.');
    if (dot == std::string::npos || dot == 0 || domain.size() - dot - 1 < 2 ||
        !std::all_of(domain.begin() + static_cast<std::ptrdiff_t>(dot) + 1, domain.end(), isAsciiLetter))
        return fault;
    return {};
}

std::string usernameFault(const std::string &username)
{
    const bool plain = std::all_of(username.begin(), username.end(),
                                   [](char c) { return isAsciiLetter(c) || isAsciiDigit(c) || c == '_'; });
    if (username.size() < 3 || username.size() > 20 || !plain)
        return "用户名必须是3-20个字符，只能包含字母、数字和下划线";
    if (username.rfind(AutoUserPrefix, 0) == 0)
        return "该用户名为系统保留";
    return {};
}

std::string passwordFault(const std::string &password)
{
    const auto length = utf8Length(password);
    if (!length)
        return "密码格式不正确";
    if (*length < 6)
        return "密码长度不能少于6位";
    if (*length > 16)
        return "密码长度不能超过16位";
    if (std::none_of(password.begin(), password.end(), isAsciiDigit))
        return "密码必须包含至少一个数字";
    return {};
}

std::string keywordFault(const std::string &keyword)
{
    if (keyword.empty())
        return "关键词不能为空";
    std::size_t count = 0;
    bool plain = true;
    for (std::size_t position = 0; position < keyword.size(); ++count) {
        const Character character = characterAt(keyword, position);
        if (character.bytes == 0)
            return "关键词格式不正确";
        const bool chinese = character.codePoint >= 0x4E00 && character.codePoint <= 0x9FA5;
        const bool ascii =
            character.bytes == 1 && (isAsciiLetter(keyword[position]) || isAsciiDigit(keyword[position]));
        plain = plain && (chinese || ascii);
        position += character.bytes;
    }
    if (count > 15)
        return "关键词长度不能超过15个字符";
    if (!plain)
        return "仅允许中文、英文字母和数字，不能包含空格或特殊符号";
    return {};
}

bool hasFreeKeyShape(const std::string &apiKey)
{
    const std::string prefix = FreeKeyPrefix;
    if (apiKey.rfind(prefix, 0) != 0 || apiKey.size() != prefix.size() + 32)
        return false;
    return std::all_of(apiKey.begin() + static_cast<std::ptrdiff_t>(prefix.size()), apiKey.end(),
                       [](char c) { return isAsciiDigit(c) || (c >= 'a' && c <= 'f'); });
}

} // namespace service
