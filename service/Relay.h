#pragma once

#include "service/FaultPlan.h"
#include "service/HttpHead.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace service {

class Clock;
class Statistics;

/// What listens on the public port: a relay of plain sockets on one thread. It reads whole requests, passes
/// them to the server behind it over a connection each, and passes the answers back; in between it counts
/// them and lets faults happen that a server's workers could not produce: resets, silence, cut and dripping
/// answers. It listens on the loopback address alone.
class Relay final
{
public:
    /// Gives "METHOD pattern" for a method and a path.
    using Label = std::function<std::string(const std::string &method, const std::string &path)>;

    Relay(FaultPlan &faults, Statistics &statistics, const Clock &clock, Label label);

    /// Stops when still running.
    ~Relay();
    Relay(const Relay &) = delete;
    Relay &operator=(const Relay &) = delete;

    /// Binds the public port. @param port 0 for any free one. @return the port.
    /// Throws std::runtime_error with one line of text when the port cannot be had.
    int bind(int port);

    /// Starts to take connections. @param serverPort loopback port of the server behind.
    void start(int serverPort);

    /// Closes every connection at once, whatever it is waiting for.
    void stop();

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    enum class Phase
    {
        /// Reading a request, or waiting for one.
        Reading,
        /// The server behind works on it.
        Forwarding,
        /// The answer is there and held back.
        Holding,
        /// The answer goes out.
        Answering,
        /// No answer will come.
        Silent,
        /// The answer is out and the connection ends; what still comes in is thrown away.
        Draining,
    };

    struct Connection
    {
        int client = -1;
        int server = -1;
        /// Places of the two sockets in the list that is waited on; 0 for none.
        std::size_t clientPlace = 0;
        std::size_t serverPlace = 0;
        Phase phase = Phase::Reading;
        TimePoint deadline;
        std::string incoming;
        RequestHead head;
        bool sentContinue = false;
        bool peerHasEnded = false;
        std::int64_t number = 0;
        std::optional<Fault> fault;
        std::string toServer;
        std::size_t sentToServer = 0;
        std::string fromServer;
        std::string outgoing;
        std::size_t sent = 0;
        bool closesAfterwards = false;
        /// When the next bytes of a dripping answer go out.
        TimePoint nextDrip;
    };

    void run();
    void acceptAll();
    void serveClient(Connection &connection, short events);
    void serveServer(Connection &connection, short events);
    void serveTime(Connection &connection, TimePoint now);
    short clientEvents(const Connection &connection) const;
    TimePoint wakeTime(const Connection &connection) const;

    void readMore(Connection &connection);
    void takeRequests(Connection &connection);
    bool takeRequest(Connection &connection);
    void begin(Connection &connection, const std::string &body);
    void forward(Connection &connection, const std::string &body);
    void finishForward(Connection &connection);
    void answer(Connection &connection, Answer answer);
    void refuse(Connection &connection, int status, const std::string &text);
    void startAnswering(Connection &connection);
    void sendMore(Connection &connection);
    void finishAnswer(Connection &connection);
    void setPhase(Connection &connection, Phase phase);
    static void closeServer(Connection &connection);
    static void closeClient(Connection &connection);
    static void resetClient(Connection &connection);

    FaultPlan &m_faults;
    Statistics &m_statistics;
    const Clock &m_clock;
    Label m_label;
    int m_listener = -1;
    int m_wake = -1;
    int m_serverPort = 0;
    /// No connections are taken before this: the system had no room for one.
    TimePoint m_acceptAgain;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::thread m_thread;
};

} // namespace service
