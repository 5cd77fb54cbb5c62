#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace service {

/// Header lines in their order, names as they came.
using HeaderLines = std::vector<std::pair<std::string, std::string>>;

/// Value of the first line of that name, compared without regard to case; empty when there is none.
std::string headerValue(const HeaderLines &lines, const std::string &name);

/// The head of an HTTP/1 request: what the relay has to know to pass it on.
struct RequestHead
{
    std::string method;
    std::string target;
    HeaderLines headers;
    std::size_t contentLength = 0;
    bool isChunked = false;
    bool expectsContinue = false;
    bool keepsAlive = true;

    /// The target without its query.
    std::string path() const;
};

/// Reads a request head. @param text from the request line to the empty line.
/// @return nothing when it is no HTTP/1 request head.
std::optional<RequestHead> parseRequestHead(const std::string &text);

/// The head as it goes to the server behind the relay: one request per connection, no compression.
std::string forwardedHead(const RequestHead &head);

/// An HTTP/1 answer taken apart.
struct Answer
{
    int status = 0;
    std::string reason;
    HeaderLines headers;
    std::string body;
};

/// Takes a whole answer apart. @return nothing when it is none or its body is shorter than announced.
std::optional<Answer> parseAnswer(const std::string &text);

/// An answer of the relay's own. @param contentType of the body.
Answer makeAnswer(int status, const std::string &body, const std::string &contentType);

/// The head of an answer. @param bodyLength what "Content-Length" says. @param keepAlive what "Connection"
/// says.
std::string answerHead(const Answer &answer, std::size_t bodyLength, bool keepAlive);

/// The usual words for an HTTP status.
std::string reasonFor(int status);

} // namespace service
