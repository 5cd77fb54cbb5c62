#include "service/Router.h"

#include "service/Log.h"
#include "service/ServiceError.h"

namespace service {

namespace {

std::vector<std::string> segments(const std::string &path)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

} // namespace

std::string Request::header(const std::string &name) const
{
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

Reply refusal(int status, const std::string &text, std::optional<std::int64_t> waitSeconds)
{
    Json body{{"success", false}, {"error", text}};
    if (waitSeconds)
        body["wait_seconds"] = *waitSeconds;
    return {status, body};
}

std::optional<std::vector<std::string>> matchPath(const std::string &pattern, const std::string &path)
{
    const std::vector<std::string> wanted = segments(pattern);
    const std::vector<std::string> given = segments(path);
    if (wanted.size() != given.size())
        return std::nullopt;
    std::vector<std::string> places;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const bool isPlace = !wanted[i].empty() && wanted[i].front() == '{';
        if (isPlace && !given[i].empty())
            places.push_back(given[i]);
        else if (isPlace || wanted[i] != given[i])
            return std::nullopt;
    }
    return places;
}

Router::Router(Identify identify) : m_identify(std::move(identify)) {}

void Router::add(const std::string &method, const std::string &pattern, Access access, Handler handler)
{
    m_routes.push_back({method, pattern, access, std::move(handler)});
}

const Router::Route *Router::find(const std::string &method, const std::string &path,
                                  std::vector<std::string> &places, bool &pathIsKnown) const
{
    pathIsKnown = false;
    for (const Route &route : m_routes) {
        auto values = matchPath(route.pattern, path);
        if (!values)
            continue;
        pathIsKnown = true;
        if (route.method == method) {
            places = std::move(*values);
            return &route;
        }
    }
    return nullptr;
}

std::string Router::label(const std::string &method, const std::string &path) const
{
    std::vector<std::string> places;
    bool pathIsKnown = false;
    const Route *route = find(method, path, places, pathIsKnown);
    return route ? route->method + " " + route->pattern : "(other)";
}

Reply Router::answer(const Request &request) const
{
    try {
        return dispatch(request);
    } catch (const ServiceError &error) {
        return refusal(error.status, error.what(), error.waitSeconds);
    } catch (const std::exception &error) {
        logLine("fault in " + request.method + " " + request.path + ": " + error.what());
        return refusal(500, "服务器内部错误");
    }
}

Reply Router::dispatch(const Request &request) const
{
    std::vector<std::string> places;
    bool pathIsKnown = false;
    const Route *route = find(request.method, request.path, places, pathIsKnown);
    if (!route)
        return pathIsKnown ? refusal(405, "不支持的请求方法") : refusal(404, "请求的资源不存在");

    // A web page in a browser on this machine could reach the address as well; its requests name their
    // origin.
    if (route->access == Access::Administration && !request.header("origin").empty())
        return refusal(403, "禁止访问");

    Call call{request, std::move(places), JsonIn::object(), {}};
    if (route->access == Access::Identified)
        call.caller = m_identify(request);
    Reply reply = answerCall(*route, call);
    if (!call.caller.rolledToken.empty())
        reply.body["session_token"] = call.caller.rolledToken;
    return reply;
}

Reply Router::answerCall(const Route &route, Call &call)
{
    const Request &request = call.request;
    if (request.method == "POST" || request.method == "PUT") {
        auto body = parseObject(request.body);
        if (!body)
            return refusal(400, "请求体不是有效的JSON对象");
        call.body = std::move(*body);
    }
    try {
        return route.handler(call);
    } catch (const ServiceError &error) {
        return refusal(error.status, error.what(), error.waitSeconds);
    }
}

} // namespace service
