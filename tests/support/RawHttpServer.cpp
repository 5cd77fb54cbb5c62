#include "support/RawHttpServer.h"

#include "support/WaitUntil.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

#include <algorithm>

namespace {

const QByteArray headEnd = QByteArrayLiteral("\r\n\r\n");
const char bufferProperty[] = "receivedBytes";

QByteArray head(int status, qint64 contentLength, const QByteArray &contentType = "application/json")
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nContent-Type: " + contentType +
           "\r\nContent-Length: " + QByteArray::number(contentLength) + headEnd;
}

/// Reads the head of a request, without the blank line at its end.
RawRequest parseHead(const QByteArray &text)
{
    RawRequest request;
    const QList<QByteArray> lines = text.split('\n');
    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    request.method = requestLine.value(0);
    request.target = requestLine.value(1);
    for (int i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        const int colon = line.indexOf(':');
        if (colon > 0)
            request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    return request;
}

/// Makes the socket's close send an RST and drop what has not gone out yet.
void makeCloseAbrupt(const QTcpSocket &socket)
{
    const linger option = {1, 0};
    ::setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &option, sizeof option);
}

} // namespace

QByteArray RawRequest::header(const QByteArray &name) const
{
    for (const auto &entry : headers) {
        if (entry.first.compare(name, Qt::CaseInsensitive) == 0)
            return entry.second.isNull() ? QByteArray("") : entry.second;
    }
    return {};
}

bool RawRequest::hasHeader(const QByteArray &name) const
{
    return !header(name).isNull();
}

QList<QByteArray> RawRequest::headerNames() const
{
    QList<QByteArray> names;
    for (const auto &entry : headers)
        names.append(entry.first);
    return names;
}

QByteArray RawRequest::path() const
{
    return target.split('?').first();
}

RawAnswer RawAnswer::json(const QJsonObject &object, int status)
{
    return body(QJsonDocument(object).toJson(QJsonDocument::Compact), status);
}

RawAnswer RawAnswer::body(const QByteArray &body, int status)
{
    RawAnswer answer;
    answer.bytes = head(status, body.size()) + body;
    return answer;
}

RawAnswer RawAnswer::hang()
{
    return {};
}

RawAnswer RawAnswer::hold()
{
    RawAnswer answer;
    answer.held = true;
    return answer;
}

RawAnswer RawAnswer::drip(const QByteArray &body, int chunkSize, int intervalMs, int status)
{
    RawAnswer answer = RawAnswer::body(body, status);
    answer.chunkSize = chunkSize;
    answer.chunkIntervalMs = intervalMs;
    return answer;
}

RawAnswer RawAnswer::reset()
{
    RawAnswer answer;
    answer.end = End::Reset;
    return answer;
}

RawAnswer RawAnswer::resetWithinBody(const QByteArray &body)
{
    RawAnswer answer = truncated(body);
    answer.end = End::Reset;
    return answer;
}

RawAnswer RawAnswer::closeBeforeHeaders()
{
    RawAnswer answer;
    answer.end = End::Close;
    return answer;
}

RawAnswer RawAnswer::closeWithinHeaders()
{
    RawAnswer answer;
    answer.bytes = QByteArrayLiteral("HTTP/1.1 200 OK\r\nContent-Type: applica");
    answer.end = End::Close;
    return answer;
}

RawAnswer RawAnswer::truncated(const QByteArray &body)
{
    return wrongContentLength(body.left(body.size() / 2), body.size());
}

RawAnswer RawAnswer::wrongContentLength(const QByteArray &body, qint64 contentLength, End end)
{
    RawAnswer answer;
    answer.bytes = head(200, contentLength) + body;
    answer.end = end;
    return answer;
}

RawAnswer RawAnswer::notJson(int status)
{
    const QByteArray page = QByteArrayLiteral("<html><body><h1>It works!</h1></body></html>");
    RawAnswer answer;
    answer.bytes = head(status, page.size(), "text/html") + page;
    return answer;
}

RawAnswer RawAnswer::huge(int bytes, int status)
{
    return body("{\"filler\":\"" + QByteArray(bytes, 'x') + "\"}", status);
}

RawAnswer RawAnswer::garbage()
{
    RawAnswer answer;
    answer.bytes = QByteArray("\x16\x03\x01 this is no HTTP \xff\xfe\r\n\r\n");
    answer.end = End::Close;
    return answer;
}

RawHttpServer::RawHttpServer(QObject *parent) : QObject(parent), m_answer(RawAnswer::body("{}"))
{
    connect(&m_server, &QTcpServer::newConnection, this, &RawHttpServer::acceptConnections);
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("No port for the scripted server: %s", qPrintable(m_server.errorString()));
    m_port = m_server.serverPort();
}

RawHttpServer::~RawHttpServer()
{
    dropConnections();
}

QString RawHttpServer::url() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_port);
}

void RawHttpServer::setAnswer(const RawAnswer &answer)
{
    m_answer = answer;
}

void RawHttpServer::setHandler(const Handler &handler)
{
    m_handler = handler;
}

void RawHttpServer::queueAnswer(const RawAnswer &answer)
{
    m_queue.append(answer);
}

bool RawHttpServer::waitForRequests(int count, int timeoutMs) const
{
    return waitUntil([this, count] { return m_requests.size() >= count; }, timeoutMs);
}

void RawHttpServer::clear()
{
    m_requests.clear();
    m_queue.clear();
}

QList<int> RawHttpServer::heldRequests() const
{
    QList<int> numbers;
    for (const HeldRequest &request : m_held)
        numbers.append(request.number);
    return numbers;
}

bool RawHttpServer::release(int number, const RawAnswer &answer)
{
    const auto request = std::find_if(m_held.begin(), m_held.end(),
                                      [number](const HeldRequest &held) { return held.number == number; });
    if (request == m_held.end())
        return false;
    const QPointer<QTcpSocket> socket = request->socket;
    m_held.erase(request);
    if (!socket || socket->state() != QAbstractSocket::ConnectedState)
        return false;
    send(socket, answer);
    return true;
}

void RawHttpServer::refuseConnections()
{
    m_server.close();
    dropConnections();
}

void RawHttpServer::listenAgain()
{
    if (!m_server.listen(QHostAddress::LocalHost, m_port))
        qFatal("The scripted server's port is gone: %s", qPrintable(m_server.errorString()));
}

void RawHttpServer::dropConnections()
{
    const QList<QTcpSocket *> sockets = m_sockets;
    m_sockets.clear();
    m_held.clear();
    for (QTcpSocket *socket : sockets) {
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
}

void RawHttpServer::acceptConnections()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        m_sockets.append(socket);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readFrom(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_sockets.removeAll(socket);
            socket->deleteLater();
        });
        if (socket->bytesAvailable() > 0)
            readFrom(socket);
    }
}

void RawHttpServer::readFrom(QTcpSocket *socket)
{
    QByteArray buffer = socket->property(bufferProperty).toByteArray() + socket->readAll();
    for (;;) {
        const int endOfHead = buffer.indexOf(headEnd);
        if (endOfHead < 0)
            break;
        RawRequest request = parseHead(buffer.left(endOfHead));
        const int bodyStart = endOfHead + headEnd.size();
        const int bodyLength = request.header("Content-Length").toInt();
        if (buffer.size() - bodyStart < bodyLength)
            break;
        request.body = buffer.mid(bodyStart, bodyLength);
        buffer.remove(0, bodyStart + bodyLength);
        socket->setProperty(bufferProperty, buffer);

        const int number = m_nextNumber++;
        m_requests.append(request);
        const RawAnswer answer = answerFor(request);
        if (answer.held)
            m_held.append({number, socket});
        emit requestReceived(number);
        if (!answer.held)
            send(socket, answer);
        if (socket->state() != QAbstractSocket::ConnectedState)
            return;
    }
    socket->setProperty(bufferProperty, buffer);
}

RawAnswer RawHttpServer::answerFor(const RawRequest &request)
{
    if (!m_queue.isEmpty())
        return m_queue.takeFirst();
    return m_handler ? m_handler(request) : m_answer;
}

void RawHttpServer::send(QTcpSocket *socket, const RawAnswer &answer)
{
    if (socket->state() != QAbstractSocket::ConnectedState)
        return;
    if (answer.chunkSize > 0) {
        sendChunk(socket, answer, 0);
        return;
    }
    if (!answer.bytes.isEmpty()) {
        socket->write(answer.bytes);
        if (answer.end == RawAnswer::End::Reset) {
            // What a reset leaves in the buffers is lost, so the bytes have to be on the wire by then.
            socket->flush();
        }
    }
    end(socket, answer.end);
}

void RawHttpServer::sendChunk(QTcpSocket *socket, const RawAnswer &answer, int offset)
{
    if (socket->state() != QAbstractSocket::ConnectedState)
        return;
    socket->write(answer.bytes.mid(offset, answer.chunkSize));
    socket->flush();
    const int next = offset + answer.chunkSize;
    if (next >= answer.bytes.size()) {
        end(socket, answer.end);
        return;
    }
    QTimer::singleShot(answer.chunkIntervalMs, socket,
                       [this, socket, answer, next] { sendChunk(socket, answer, next); });
}

void RawHttpServer::end(QTcpSocket *socket, RawAnswer::End end)
{
    switch (end) {
    case RawAnswer::End::KeepOpen:
        break;
    case RawAnswer::End::Close:
        socket->disconnectFromHost();
        break;
    case RawAnswer::End::Reset:
        makeCloseAbrupt(*socket);
        socket->abort();
        break;
    }
}
