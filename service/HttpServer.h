#pragma once

#include <memory>
#include <thread>

namespace service {

class Router;

/// The server behind the relay: takes requests on a loopback port of its own and lets the router answer them
/// on a pool of workers.
class HttpServer final
{
public:
    /// @param router must be complete, and outlive the server.
    explicit HttpServer(const Router &router);

    /// Stops when still running.
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// Starts to listen. @return the port. Throws std::runtime_error when there is none.
    int start();

    /// Ends the workers, each after the request that it is answering.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_server;
    std::thread m_thread;
};

} // namespace service
