#pragma once

#include "service/Accounts.h"
#include "service/Json.h"
#include "service/NewsQuery.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace service {

/// One request as the routes see it: decoded path and query, header names in lower case.
struct Request
{
    std::string method;
    std::string path;
    QueryItems query;
    std::map<std::string, std::string> headers;
    std::string body;

    /// Value of a header, empty when it is missing. @param name in lower case.
    std::string header(const std::string &name) const;
};

/// Who sends a request.
struct Caller
{
    Account account;
    /// Device that the request comes from; empty when a key came without one.
    std::string deviceId;
    /// The token that identified the caller; empty when a key did.
    std::string sessionToken;
    /// The token that takes the other one's place from now on; empty when none does.
    std::string rolledToken;
};

/// A request on its way through a route.
struct Call
{
    const Request &request;
    /// Values of the pattern's places, in order.
    std::vector<std::string> places;
    /// The JSON object of the body, empty for a method without one.
    JsonIn body;
    /// Filled on routes that ask who calls.
    Caller caller;
};

/// What goes back.
struct Reply
{
    Reply(Json replyBody) : body(std::move(replyBody)) {}
    Reply(int replyStatus, Json replyBody) : status(replyStatus), body(std::move(replyBody)) {}

    int status = 200;
    Json body;
};

/// The reply of a refusal: "success" false, "error", and "wait_seconds" where it is known.
Reply refusal(int status, const std::string &text, std::optional<std::int64_t> waitSeconds = std::nullopt);

/// Who may use a route.
enum class Access
{
    /// Anybody.
    Open,
    /// Callers with a session or an API key.
    Identified,
    /// Whoever sits at this machine and is no web page.
    Administration,
};

/// The table of all paths. Each area of the wire adds its own rows at start; after that the table is only
/// read and safe to use from any thread.
class Router final
{
public:
    using Handler = std::function<Reply(const Call &)>;
    using Identify = std::function<Caller(const Request &)>;

    struct Route
    {
        std::string method;
        std::string pattern;
        Access access = Access::Open;
        Handler handler;
    };

    /// @param identify tells who sends a request, or throws ServiceError.
    explicit Router(Identify identify);

    /// Adds a row. @param pattern a path; a segment in braces is a place that takes any one segment.
    void add(const std::string &method, const std::string &pattern, Access access, Handler handler);

    const std::vector<Route> &routes() const { return m_routes; }

    /// Answers a request; never throws. Refusals and faults become replies, and a fresh session token is put
    /// into the reply of a caller whose token is due to roll.
    Reply answer(const Request &request) const;

    /// "METHOD pattern" of the row that a request falls to, "(other)" when there is none.
    std::string label(const std::string &method, const std::string &path) const;

private:
    const Route *find(const std::string &method, const std::string &path, std::vector<std::string> &places,
                      bool &pathIsKnown) const;
    Reply dispatch(const Request &request) const;
    static Reply answerCall(const Route &route, Call &call);

    Identify m_identify;
    std::vector<Route> m_routes;
};

/// The places of `pattern` filled from `path`; nothing when the path does not fit.
std::optional<std::vector<std::string>> matchPath(const std::string &pattern, const std::string &path);

} // namespace service
