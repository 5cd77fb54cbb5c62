#include "service/HttpHead.h"

#include "service/AccountRules.h"
#include "service/KeywordMatcher.h"
#include "service/NewsQuery.h"

#include <algorithm>

namespace service {

namespace {

/// Splits the lines of a head; nothing when a header line has no colon.
std::optional<HeaderLines> headerLines(const std::string &text, std::size_t start)
{
    HeaderLines lines;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find("\r\n", start), text.size());
        if (end == start)
            break;
        const std::string line = text.substr(start, end - start);
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || colon == 0)
            return std::nullopt;
        lines.emplace_back(line.substr(0, colon), trimmed(line.substr(colon + 1)));
        start = end + 2;
    }
    return lines;
}

bool isTokenCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
}

} // namespace

std::string headerValue(const HeaderLines &lines, const std::string &name)
{
    for (const auto &[key, value] : lines) {
        if (foldedCase(key) == foldedCase(name))
            return value;
    }
    return {};
}

std::string RequestHead::path() const
{
    return target.substr(0, target.find('?'));
}

std::optional<RequestHead> parseRequestHead(const std::string &text)
{
    const std::size_t lineEnd = text.find("\r\n");
    if (lineEnd == std::string::npos)
        return std::nullopt;
    const std::string line = text.substr(0, lineEnd);
    const std::size_t first = line.find(' ');
    const std::size_t second = line.find(' ', first == std::string::npos ? first : first + 1);
    if (first == std::string::npos || second == std::string::npos)
        return std::nullopt;
    RequestHead head;
    head.method = line.substr(0, first);
    head.target = line.substr(first + 1, second - first - 1);
    const std::string version = line.substr(second + 1);
    if (head.method.empty() || !std::all_of(head.method.begin(), head.method.end(), isTokenCharacter) ||
        head.target.empty() || head.target.front() != '/' || (version != "HTTP/1.1" && version != "HTTP/1.0"))
        return std::nullopt;
    auto lines = headerLines(text, lineEnd + 2);
    if (!lines)
        return std::nullopt;
    head.headers = std::move(*lines);

    const std::string length = headerValue(head.headers, "content-length");
    if (!length.empty()) {
        const auto number = wholeNumber(length);
        if (!number || *number < 0)
            return std::nullopt;
        head.contentLength = static_cast<std::size_t>(*number);
    }
    head.isChunked = !headerValue(head.headers, "transfer-encoding").empty();
    head.expectsContinue = foldedCase(headerValue(head.headers, "expect")) == "100-continue";
    const std::string connection = foldedCase(headerValue(head.headers, "connection"));
    head.keepsAlive = version == "HTTP/1.1" ? connection != "close" : connection == "keep-alive";
    return head;
}

std::string forwardedHead(const RequestHead &head)
{
    std::string text = head.method + " " + head.target + " HTTP/1.1\r\n";
    for (const auto &[name, value] : head.headers) {
        const std::string folded = foldedCase(name);
        if (folded == "connection" || folded == "keep-alive" || folded == "expect" ||
            folded == "accept-encoding" || folded == "content-type" || folded == "range" ||
            folded == "content-length")
            continue;
        text += name;
        text += ": ";
        text += value;
        text += "\r\n";
    }
    // Told for every method that may have a body: the server behind waits for one that is not announced.
    if (head.contentLength > 0 || head.method == "POST" || head.method == "PUT")
        text += "Content-Length: " + std::to_string(head.contentLength) + "\r\n";
    return text + "Connection: close\r\n\r\n";
}

std::optional<Answer> parseAnswer(const std::string &text)
{
    const std::size_t headEnd = text.find("\r\n\r\n");
    const std::size_t lineEnd = text.find("\r\n");
    if (headEnd == std::string::npos || text.rfind("HTTP/1.", 0) != 0 || lineEnd < 12)
        return std::nullopt;
    const auto status = wholeNumber(text.substr(9, 3));
    auto lines = headerLines(text.substr(0, headEnd + 2), lineEnd + 2);
    if (!status || !lines)
        return std::nullopt;
    Answer answer;
    answer.status = static_cast<int>(*status);
    answer.reason = lineEnd > 13 ? text.substr(13, lineEnd - 13) : std::string();
    answer.headers = std::move(*lines);
    answer.body = text.substr(headEnd + 4);
    const auto length = wholeNumber(headerValue(answer.headers, "content-length"));
    if (length && *length > static_cast<std::int64_t>(answer.body.size()))
        return std::nullopt;
    return answer;
}

Answer makeAnswer(int status, const std::string &body, const std::string &contentType)
{
    return {status, reasonFor(status), {{"Content-Type", contentType}}, body};
}

std::string answerHead(const Answer &answer, std::size_t bodyLength, bool keepAlive)
{
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " " + answer.reason + "\r\n";
    for (const auto &[name, value] : answer.headers) {
        const std::string folded = foldedCase(name);
        if (folded == "connection" || folded == "keep-alive" || folded == "content-length")
            continue;
        text += name;
        text += ": ";
        text += value;
        text += "\r\n";
    }
    text += "Content-Length: " + std::to_string(bodyLength) + "\r\n";
    text += keepAlive ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n";
    return text;
}

std::string reasonFor(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 411:
        return "Length Required";
    case 413:
        return "Payload Too Large";
    case 414:
        return "URI Too Long";
    case 429:
        return "Too Many Requests";
    case 431:
        return "Request Header Fields Too Large";
    case 500:
        return "Internal Server Error";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    case 504:
        return "Gateway Timeout";
    default:
        return "Status";
    }
}

} // namespace service
