#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QTcpServer>

#include <functional>

class QTcpSocket;

/// One request as it came in, byte for byte.
struct RawRequest
{
    QByteArray method;                            ///< "GET"
    QByteArray target;                            ///< path and query as sent, "/newsapi/news?page=1"
    QList<QPair<QByteArray, QByteArray>> headers; ///< in the order of the wire, names as sent
    QByteArray body;

    /// Value of the header \p name, compared without case; null when the request doesn't carry it.
    QByteArray header(const QByteArray &name) const;
    bool hasHeader(const QByteArray &name) const;
    /// Names of all headers, in the order of the wire.
    QList<QByteArray> headerNames() const;
    /// The part of target() ahead of the "?".
    QByteArray path() const;
};

/// What the server does with one request: the bytes that it sends, how fast, and what becomes of the
/// connection afterwards. Use the named constructors; for anything else fill the fields.
struct RawAnswer
{
    enum class End
    {
        KeepOpen, ///< the connection takes the next request
        Close,    ///< closed in an orderly way
        Reset     ///< closed with an RST
    };

    QByteArray bytes;        ///< status line, headers and body, exactly as sent; may be empty
    int chunkSize = 0;       ///< bytes per write; 0 sends everything at once
    int chunkIntervalMs = 0; ///< pause between two writes, in milliseconds
    End end = End::KeepOpen;
    bool held = false; ///< nothing happens until the test calls RawHttpServer::release

    // Proper answers: "Content-Type: application/json", the right "Content-Length", connection kept open.
    static RawAnswer json(const QJsonObject &object, int status = 200);
    static RawAnswer body(const QByteArray &body, int status = 200);

    // Faults.
    /// Never answers; the connection stays open until the server goes or dropConnections() is called.
    static RawAnswer hang();
    /// Waits for RawHttpServer::release: the order of the answers is in the test's hands.
    static RawAnswer hold();
    /// A proper answer, sent \p chunkSize bytes at a time every \p intervalMs milliseconds.
    static RawAnswer drip(const QByteArray &body, int chunkSize, int intervalMs, int status = 200);
    /// Resets the connection (RST) instead of answering.
    static RawAnswer reset();
    /// Sends the headers and the first half of \p body, then resets the connection.
    static RawAnswer resetWithinBody(const QByteArray &body);
    /// Closes the connection without a byte.
    static RawAnswer closeBeforeHeaders();
    /// Closes the connection in the middle of a header line.
    static RawAnswer closeWithinHeaders();
    /// Declares the whole length, sends the first half of \p body and closes the connection.
    static RawAnswer truncated(const QByteArray &body);
    /// Declares \p contentLength whatever the length of \p body, sends the body and ends as \p end says.
    static RawAnswer wrongContentLength(const QByteArray &body, qint64 contentLength, End end = End::Close);
    /// A proper answer whose body is HTML.
    static RawAnswer notJson(int status = 200);
    /// A proper answer whose body is a JSON object with \p bytes bytes of text under the key "filler".
    static RawAnswer huge(int bytes, int status = 200);
    /// Bytes that are no HTTP at all, then closes the connection.
    static RawAnswer garbage();
};

/// A socket that speaks just enough HTTP/1.1 to record requests byte for byte and to answer them as no decent
/// server would. It listens on 127.0.0.1 on a free port and works in the test's own event loop.
///
/// Which answer a request gets: the first one in the queue, else the handler's, else the standing one (at
/// first
/// "{}" with status 200). Note that a client may send a request anew by itself when its connection was closed
/// ahead of the answer, so that a fault of this kind belongs into the standing answer, not into the queue.
class RawHttpServer final : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<RawAnswer(const RawRequest &)>;

    /// Starts to listen. Ends the process with a message when there is no port to be had.
    explicit RawHttpServer(QObject *parent = nullptr);
    ~RawHttpServer() override;
    Q_DISABLE_COPY_MOVE(RawHttpServer)

    /// "http://127.0.0.1:PORT", without a "/" at the end.
    QString url() const;
    quint16 port() const { return m_port; }

    /// Sets the standing answer.
    void setAnswer(const RawAnswer &answer);
    /// Sets a function that chooses the answer by the request; an empty function removes it.
    void setHandler(const Handler &handler);
    /// Puts an answer for one request into the queue.
    void queueAnswer(const RawAnswer &answer);

    /// All requests so far, in the order of arrival.
    const QList<RawRequest> &requests() const { return m_requests; }
    /// Runs the event loop until \p count requests have arrived in all; false after \p timeoutMs
    /// milliseconds.
    bool waitForRequests(int count, int timeoutMs = 10000) const;
    /// Forgets the recorded requests and the queue. Connections and held requests stay.
    void clear();

    /// Numbers of the requests that wait for release(), in the order of arrival. The number counts from 0
    /// over the server's whole life.
    QList<int> heldRequests() const;
    /// Answers the held request \p number now. Returns false when it is not held or its connection is gone.
    bool release(int number, const RawAnswer &answer);

    /// Stops listening and drops all connections: the port refuses connections until listenAgain().
    void refuseConnections();
    /// Listens on the same port again. Ends the process with a message when the port has been taken
    /// meanwhile.
    void listenAgain();
    /// Drops all connections at once, the hanging ones among them.
    void dropConnections();

signals:
    /// A request has arrived whole; its answer goes out when the listeners have returned.
    void requestReceived(int number);

private:
    struct HeldRequest
    {
        int number = 0;
        QPointer<QTcpSocket> socket;
    };

    void acceptConnections();
    void readFrom(QTcpSocket *socket);
    RawAnswer answerFor(const RawRequest &request);
    void send(QTcpSocket *socket, const RawAnswer &answer);
    void sendChunk(QTcpSocket *socket, const RawAnswer &answer, int offset);
    static void end(QTcpSocket *socket, RawAnswer::End end);

    QTcpServer m_server;
    quint16 m_port = 0;
    QList<QTcpSocket *> m_sockets;
    QList<RawRequest> m_requests;
    QList<HeldRequest> m_held;
    QList<RawAnswer> m_queue;
    RawAnswer m_answer;
    Handler m_handler;
    int m_nextNumber = 0;
};
