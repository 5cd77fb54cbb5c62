#include "service/Relay.h"

#include "service/Clock.h"
#include "service/Json.h"
#include "service/Log.h"
#include "service/Router.h"
#include "service/Statistics.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace service {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t mostConnections = 512;
constexpr std::size_t largestHead = 32 * 1024;
constexpr std::size_t longestTarget = 4096;
constexpr std::size_t largestBody = 1024 * 1024;
constexpr std::size_t readSize = 64 * 1024;
constexpr std::int64_t hugeBody = 50 * 1024 * 1024;

constexpr auto idleTime = 75s;
constexpr auto requestTime = 30s;
constexpr auto serverTime = 60s;
constexpr auto answerTime = 60s;
constexpr auto drainTime = 2s;
constexpr auto acceptPause = 200ms;

const std::string jsonType = "application/json; charset=utf-8";

void configure(int socket)
{
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool wouldBlock()
{
    static_assert(EAGAIN == EWOULDBLOCK);
    return errno == EAGAIN;
}

/// A JSON object of `bytes` bytes in all.
std::string paddedObject(std::int64_t bytes)
{
    const std::string start =
        R"({"success":true,"status":"ok","data":{"news":[],"pagination":{"total":0}},"padding":")";
    const std::string end = R"("})";
    const auto wanted = static_cast<std::size_t>(bytes);
    const std::size_t frame = start.size() + end.size();
    return start + std::string(wanted > frame ? wanted - frame : 0, 'x') + end;
}

bool isServedMethod(const std::string &method)
{
    return method == "GET" || method == "POST" || method == "PUT" || method == "DELETE";
}

bool needsRealAnswer(FaultKind kind)
{
    return kind == FaultKind::Delay || kind == FaultKind::Truncate || kind == FaultKind::Drip ||
           kind == FaultKind::WrongTypes || kind == FaultKind::Change;
}

} // namespace

Relay::Relay(FaultPlan &faults, Statistics &statistics, const Clock &clock, Label label)
    : m_faults(faults), m_statistics(statistics), m_clock(clock), m_label(std::move(label))
{}

Relay::~Relay()
{
    stop();
    if (m_listener >= 0)
        ::close(m_listener);
}

int Relay::bind(int port)
{
    const auto fail = [&] {
        throw std::runtime_error("cannot listen on port " + std::to_string(port) + ": " +
                                 std::strerror(errno));
    };
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_listener < 0)
        fail();
    // Lets a new start take the port while old connections still fade away; a live listener keeps it.
    const int on = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = loopback(port);
    socklen_t length = sizeof address;
    if (::bind(m_listener, reinterpret_cast<const sockaddr *>(&address), length) != 0 ||
        ::listen(m_listener, SOMAXCONN) != 0 ||
        ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        fail();
    return ntohs(address.sin_port);
}

void Relay::start(int serverPort)
{
    m_serverPort = serverPort;
    m_wake = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (m_wake < 0)
        throw std::runtime_error(std::string("cannot start the relay: ") + std::strerror(errno));
    m_thread = std::thread([this] { run(); });
}

void Relay::stop()
{
    if (!m_thread.joinable())
        return;
    const std::uint64_t one = 1;
    if (::write(m_wake, &one, sizeof one) != sizeof one)
        logLine(std::string("cannot wake the relay: ") + std::strerror(errno));
    m_thread.join();
    for (const auto &connection : m_connections) {
        closeServer(*connection);
        closeClient(*connection);
    }
    m_connections.clear();
    ::close(m_wake);
    m_wake = -1;
}

void Relay::run()
{
    // Holds open sockets alone: the system refuses a list that is longer than the number of them it allows.
    std::vector<pollfd> watched;
    const auto watch = [&](int socket, int events) {
        if (socket < 0)
            return std::size_t(0);
        watched.push_back({socket, static_cast<short>(events), 0});
        return watched.size() - 1;
    };
    while (true) {
        watched.clear();
        watch(m_wake, POLLIN);
        const bool waitsForRoom = std::chrono::steady_clock::now() < m_acceptAgain;
        const bool hasRoom = m_connections.size() < mostConnections && !waitsForRoom;
        const std::size_t listenerPlace = watch(hasRoom ? m_listener : -1, POLLIN);
        TimePoint wake = waitsForRoom ? m_acceptAgain : TimePoint::max();
        for (const auto &connection : m_connections) {
            connection->clientPlace = watch(connection->client, clientEvents(*connection));
            const bool sending = connection->sentToServer < connection->toServer.size();
            connection->serverPlace = watch(connection->server, sending ? POLLOUT : POLLIN);
            wake = std::min(wake, wakeTime(*connection));
        }
        int timeoutMs = -1;
        if (wake != TimePoint::max()) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(wake - std::chrono::steady_clock::now());
            timeoutMs = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3'600'000));
        }
        if (::poll(watched.data(), watched.size(), timeoutMs) < 0 && errno != EINTR) {
            logLine(std::string("the relay cannot wait: ") + std::strerror(errno));
            return;
        }
        if (watched[0].revents != 0)
            return;
        const TimePoint now = std::chrono::steady_clock::now();
        const auto raised = [&](std::size_t at) { return at == 0 ? short(0) : watched[at].revents; };
        for (const auto &entry : m_connections) {
            Connection &connection = *entry;
            // The events belong to the sockets of before; a step that closes one makes the next one void.
            if (raised(connection.serverPlace) != 0 && connection.server >= 0)
                serveServer(connection, raised(connection.serverPlace));
            if (raised(connection.clientPlace) != 0 && connection.client >= 0)
                serveClient(connection, raised(connection.clientPlace));
            if (connection.client >= 0)
                serveTime(connection, now);
            // A request may have been waiting behind the one that is now answered.
            if (!connection.incoming.empty())
                takeRequests(connection);
        }
        m_connections.erase(std::remove_if(m_connections.begin(), m_connections.end(),
                                           [](const std::unique_ptr<Connection> &connection) {
                                               return connection->client < 0;
                                           }),
                            m_connections.end());
        if (raised(listenerPlace) != 0)
            acceptAll();
    }
}

void Relay::acceptAll()
{
    while (m_connections.size() < mostConnections) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket < 0) {
            if (!wouldBlock() && errno != EINTR && errno != ECONNABORTED) {
                logLine(std::string("cannot take a connection: ") + std::strerror(errno));
                m_acceptAgain = std::chrono::steady_clock::now() + acceptPause;
            }
            return;
        }
        configure(socket);
        auto connection = std::make_unique<Connection>();
        connection->client = socket;
        setPhase(*connection, Phase::Reading);
        m_connections.push_back(std::move(connection));
    }
}

short Relay::clientEvents(const Connection &connection) const
{
    // POLLRDHUP is asked for once only: it stays raised and would keep the loop spinning.
    const int end = connection.peerHasEnded ? 0 : POLLRDHUP;
    switch (connection.phase) {
    case Phase::Reading:
    case Phase::Draining:
        return POLLIN;
    case Phase::Answering:
        return static_cast<short>(connection.nextDrip == TimePoint() ? POLLOUT | end : end);
    default:
        return static_cast<short>(end);
    }
}

Relay::TimePoint Relay::wakeTime(const Connection &connection) const
{
    if (connection.phase == Phase::Answering && connection.nextDrip != TimePoint())
        return std::min(connection.nextDrip, connection.deadline);
    return connection.deadline;
}

void Relay::setPhase(Connection &connection, Phase phase)
{
    connection.phase = phase;
    const TimePoint now = std::chrono::steady_clock::now();
    switch (phase) {
    case Phase::Reading:
        connection.deadline = now + (connection.incoming.empty() ? idleTime : requestTime);
        break;
    case Phase::Forwarding:
        connection.deadline = now + serverTime;
        break;
    case Phase::Holding:
        connection.deadline =
            now + std::chrono::milliseconds(connection.fault ? connection.fault->delayMs : 0);
        break;
    case Phase::Answering:
        connection.deadline = now + answerTime;
        break;
    case Phase::Silent:
        connection.deadline = TimePoint::max();
        break;
    case Phase::Draining:
        connection.deadline = now + drainTime;
        break;
    }
}

void Relay::serveTime(Connection &connection, TimePoint now)
{
    if (connection.phase == Phase::Answering && connection.nextDrip != TimePoint() &&
        now >= connection.nextDrip)
        sendMore(connection);
    if (connection.client < 0 || now < connection.deadline)
        return;
    switch (connection.phase) {
    case Phase::Holding:
        startAnswering(connection);
        break;
    case Phase::Forwarding:
        closeServer(connection);
        refuse(connection, 504, "服务超时");
        break;
    default:
        closeClient(connection);
    }
}

void Relay::serveClient(Connection &connection, short events)
{
    switch (connection.phase) {
    case Phase::Reading:
    case Phase::Draining:
        readMore(connection);
        return;
    case Phase::Answering:
        if ((events & POLLOUT) != 0)
            sendMore(connection);
        break;
    default:
        break;
    }
    if (connection.client < 0)
        return;
    if ((events & (POLLERR | POLLHUP)) != 0 ||
        ((events & POLLRDHUP) != 0 && connection.phase == Phase::Silent)) {
        closeServer(connection);
        closeClient(connection);
    } else if ((events & POLLRDHUP) != 0) {
        // The other side has said all that it wanted to say but may still want its answer.
        connection.peerHasEnded = true;
        connection.closesAfterwards = true;
    }
}

void Relay::readMore(Connection &connection)
{
    char buffer[readSize];
    const ssize_t count = ::recv(connection.client, buffer, sizeof buffer, 0);
    if (count < 0 && (wouldBlock() || errno == EINTR))
        return;
    if (count <= 0) {
        closeClient(connection);
        return;
    }
    if (connection.phase == Phase::Draining)
        return;
    if (connection.incoming.empty())
        connection.deadline = std::chrono::steady_clock::now() + requestTime;
    connection.incoming.append(buffer, static_cast<std::size_t>(count));
    takeRequests(connection);
}

void Relay::takeRequests(Connection &connection)
{
    while (connection.client >= 0 && connection.phase == Phase::Reading && takeRequest(connection)) {
    }
}

bool Relay::takeRequest(Connection &connection)
{
    const std::size_t headEnd = connection.incoming.find("\r\n\r\n");
    static_assert(std::string::npos > largestHead);
    if (headEnd > largestHead) {
        if (connection.incoming.size() > largestHead)
            refuse(connection, 431, "请求头过大");
        return false;
    }
    const std::size_t bodyStart = headEnd + 4;
    auto head = parseRequestHead(connection.incoming.substr(0, bodyStart));
    if (!head) {
        refuse(connection, 400, "请求格式错误");
        return false;
    }
    connection.head = std::move(*head);
    if (!isServedMethod(connection.head.method)) {
        refuse(connection, 405, "不支持的请求方法");
        return false;
    }
    if (connection.head.target.size() > longestTarget) {
        refuse(connection, 414, "请求地址过长");
        return false;
    }
    if (connection.head.isChunked) {
        refuse(connection, 411, "请求缺少内容长度");
        return false;
    }
    if (connection.head.contentLength > largestBody) {
        refuse(connection, 413, "请求内容过大");
        return false;
    }
    if (connection.incoming.size() - bodyStart < connection.head.contentLength) {
        if (connection.head.expectsContinue && !connection.sentContinue) {
            connection.sentContinue = true;
            const std::string text = "HTTP/1.1 100 Continue\r\n\r\n";
            // Too short a text to be cut in a fresh send buffer; a client that never sees it sends anyway.
            if (::send(connection.client, text.data(), text.size(), MSG_NOSIGNAL) < 0)
                closeClient(connection);
        }
        return false;
    }
    const std::string body = connection.incoming.substr(bodyStart, connection.head.contentLength);
    connection.incoming.erase(0, bodyStart + connection.head.contentLength);
    connection.sentContinue = false;
    begin(connection, body);
    return true;
}

void Relay::begin(Connection &connection, const std::string &body)
{
    const RequestHead &head = connection.head;
    connection.closesAfterwards = !head.keepsAlive;
    connection.fault = m_faults.take(head.method, head.target);
    if (head.path().rfind("/admin/", 0) != 0)
        connection.number =
            m_statistics.noteRequest(m_label(head.method, head.path()), head, toBlankForm(m_clock.now()));
    if (!connection.fault || needsRealAnswer(connection.fault->kind)) {
        forward(connection, body);
        return;
    }
    const Fault &fault = *connection.fault;
    switch (fault.kind) {
    case FaultKind::Status:
        answer(connection, makeAnswer(fault.status, fault.body, fault.contentType));
        break;
    case FaultKind::NotJson:
        answer(connection, makeAnswer(200, fault.body, "text/html; charset=utf-8"));
        break;
    case FaultKind::Huge:
        answer(connection, makeAnswer(200, paddedObject(fault.bytes.value_or(hugeBody)), jsonType));
        break;
    case FaultKind::Drop:
        m_statistics.noteAnswer(connection.number, 0, wordFor(fault.kind));
        setPhase(connection, Phase::Silent);
        break;
    case FaultKind::Reset:
        m_statistics.noteAnswer(connection.number, 0, wordFor(fault.kind));
        resetClient(connection);
        break;
    default:
        m_statistics.noteAnswer(connection.number, 0, wordFor(fault.kind));
        closeClient(connection);
    }
}

void Relay::forward(Connection &connection, const std::string &body)
{
    setPhase(connection, Phase::Forwarding);
    connection.toServer = forwardedHead(connection.head) + body;
    connection.sentToServer = 0;
    connection.fromServer.clear();
    connection.server = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(m_serverPort);
    if (connection.server < 0 ||
        (::connect(connection.server, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 &&
         errno != EINPROGRESS)) {
        closeServer(connection);
        refuse(connection, 502, "服务不可用");
        return;
    }
    configure(connection.server);
}

void Relay::serveServer(Connection &connection, short events)
{
    if ((events & POLLOUT) != 0) {
        const ssize_t count = ::send(connection.server, connection.toServer.data() + connection.sentToServer,
                                     connection.toServer.size() - connection.sentToServer, MSG_NOSIGNAL);
        if (count > 0)
            connection.sentToServer += static_cast<std::size_t>(count);
        else if (!wouldBlock() && errno != EINTR)
            finishForward(connection);
        return;
    }
    char buffer[readSize];
    const ssize_t count = ::recv(connection.server, buffer, sizeof buffer, 0);
    if (count > 0)
        connection.fromServer.append(buffer, static_cast<std::size_t>(count));
    else if (count == 0 || (!wouldBlock() && errno != EINTR))
        finishForward(connection);
}

void Relay::finishForward(Connection &connection)
{
    closeServer(connection);
    auto received = parseAnswer(connection.fromServer);
    connection.fromServer.clear();
    connection.toServer.clear();
    connection.sentToServer = 0;
    if (!received)
        refuse(connection, 502, "服务不可用");
    else
        answer(connection, std::move(*received));
}

void Relay::refuse(Connection &connection, int status, const std::string &text)
{
    connection.fault.reset();
    connection.closesAfterwards = true;
    answer(connection, makeAnswer(status, toWire(refusal(status, text).body), jsonType));
}

void Relay::answer(Connection &connection, Answer answer)
{
    const FaultKind *kind = connection.fault ? &connection.fault->kind : nullptr;
    if (connection.number != 0)
        m_statistics.noteAnswer(connection.number, answer.status, kind ? wordFor(*kind) : "");
    if (kind && *kind == FaultKind::WrongTypes) {
        const Json body = Json::parse(answer.body, nullptr, false);
        if (!body.is_discarded())
            answer.body = toWire(withWrongTypes(body));
    }
    if (kind && *kind == FaultKind::Change)
        answer.body = changedBody(*connection.fault, answer.body);
    const std::size_t announced = answer.body.size();
    if (kind && *kind == FaultKind::Truncate) {
        const auto kept = static_cast<std::size_t>(
            connection.fault->bytes.value_or(static_cast<std::int64_t>(announced / 2)));
        answer.body.resize(std::min(kept, announced));
        connection.closesAfterwards = true;
    }
    connection.outgoing = answerHead(answer, announced, !connection.closesAfterwards);
    if (connection.head.method != "HEAD")
        connection.outgoing += answer.body;
    connection.sent = 0;
    if (connection.fault && connection.fault->delayMs > 0)
        setPhase(connection, Phase::Holding);
    else
        startAnswering(connection);
}

void Relay::startAnswering(Connection &connection)
{
    setPhase(connection, Phase::Answering);
    const bool drips = connection.fault && connection.fault->kind == FaultKind::Drip;
    connection.nextDrip = drips ? std::chrono::steady_clock::now() : TimePoint();
    sendMore(connection);
}

void Relay::sendMore(Connection &connection)
{
    while (connection.sent < connection.outgoing.size()) {
        std::size_t portion = connection.outgoing.size() - connection.sent;
        const bool drips = connection.nextDrip != TimePoint();
        if (drips)
            portion = std::min(portion, static_cast<std::size_t>(connection.fault->bytes.value_or(1)));
        const ssize_t count =
            ::send(connection.client, connection.outgoing.data() + connection.sent, portion, MSG_NOSIGNAL);
        if (count < 0) {
            if (!wouldBlock() && errno != EINTR)
                closeClient(connection);
            return;
        }
        connection.sent += static_cast<std::size_t>(count);
        const TimePoint now = std::chrono::steady_clock::now();
        connection.deadline = now + answerTime;
        if (drips) {
            const auto interval = std::chrono::milliseconds(connection.fault->intervalMs);
            connection.nextDrip = now + interval;
            connection.deadline += interval;
            if (connection.sent < connection.outgoing.size())
                return;
        }
    }
    finishAnswer(connection);
}

void Relay::finishAnswer(Connection &connection)
{
    connection.outgoing.clear();
    connection.outgoing.shrink_to_fit();
    connection.sent = 0;
    connection.nextDrip = TimePoint();
    connection.fault.reset();
    connection.number = 0;
    if (connection.closesAfterwards) {
        // Closing with unread bytes in the buffer would reset the connection and take the answer with it.
        ::shutdown(connection.client, SHUT_WR);
        setPhase(connection, Phase::Draining);
        return;
    }
    setPhase(connection, Phase::Reading);
}

void Relay::closeServer(Connection &connection)
{
    if (connection.server >= 0)
        ::close(connection.server);
    connection.server = -1;
}

void Relay::closeClient(Connection &connection)
{
    closeServer(connection);
    if (connection.client >= 0)
        ::close(connection.client);
    connection.client = -1;
}

void Relay::resetClient(Connection &connection)
{
    const linger atOnce{1, 0};
    ::setsockopt(connection.client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    closeClient(connection);
}

} // namespace service
