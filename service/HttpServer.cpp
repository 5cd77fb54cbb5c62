#include "service/HttpServer.h"

#include "service/KeywordMatcher.h"
#include "service/Router.h"

#include <httplib.h>

#include <sys/socket.h>

#include <stdexcept>

namespace service {

namespace {

constexpr int workers = 16;

/// The library listens with room for five waiting connections; a burst beyond that would wait a whole second
/// for the system's second try.
constexpr int waitingConnections = 256;

constexpr std::size_t largestBody = 1024 * 1024;

Request requestFrom(const httplib::Request &from)
{
    Request request;
    request.method = from.method;
    request.path = from.path;
    for (const auto &[name, value] : from.params)
        request.query.emplace(name, value);
    for (const auto &[name, value] : from.headers)
        request.headers.emplace(foldedCase(name), value);
    request.body = from.body;
    return request;
}

} // namespace

class HttpServer::Implementation final : public httplib::Server
{
public:
    explicit Implementation(const Router &router)
    {
        const Handler handler = [&router](const httplib::Request &from, httplib::Response &response) {
            const Reply reply = router.answer(requestFrom(from));
            response.status = reply.status;
            response.set_content(toWire(reply.body), "application/json; charset=utf-8");
        };
        const char *everyPath = R"([\s\S]*)";
        Get(everyPath, handler);
        Post(everyPath, handler);
        Put(everyPath, handler);
        Delete(everyPath, handler);
        set_error_handler([](const httplib::Request &, httplib::Response &response) {
            if (response.body.empty())
                response.set_content(toWire(refusal(response.status, "请求无效").body),
                                     "application/json; charset=utf-8");
        });
        new_task_queue = [] { return new httplib::ThreadPool(workers); };
        set_tcp_nodelay(true);
        set_keep_alive_max_count(1);
        set_payload_max_length(largestBody);
    }

    int bindLoopback()
    {
        const int port = bind_to_any_port("127.0.0.1");
        if (port > 0)
            ::listen(svr_sock_, waitingConnections);
        return port;
    }
};

HttpServer::HttpServer(const Router &router) : m_server(std::make_unique<Implementation>(router)) {}

HttpServer::~HttpServer()
{
    stop();
}

int HttpServer::start()
{
    const int port = m_server->bindLoopback();
    if (port <= 0)
        throw std::runtime_error("no free port for the server behind the relay");
    m_thread = std::thread([this] { m_server->listen_after_bind(); });
    while (!m_server->is_running())
        std::this_thread::yield();
    return port;
}

void HttpServer::stop()
{
    if (!m_thread.joinable())
        return;
    m_server->stop();
    m_thread.join();
}

} // namespace service
