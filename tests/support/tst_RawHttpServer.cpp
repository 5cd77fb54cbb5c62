#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

Q_DECLARE_METATYPE(RawAnswer)

namespace {

const QByteArray getRequest =
    QByteArrayLiteral("GET /a?b=c HTTP/1.1\r\nHost: x\r\nX-Empty:\r\nX-Two: 1\r\n\r\n");

/// A plain socket to the server: unlike QTcpSocket it tells a reset from an orderly end.
class Connection
{
public:
    explicit Connection(const RawHttpServer &server) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(server.port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_isOpen = ::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        m_connectError = m_isOpen ? 0 : errno;
    }
    ~Connection() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Connection)

    bool isOpen() const { return m_isOpen; }
    int connectError() const { return m_connectError; }
    bool isReset() const { return m_isReset; }

    bool write(const QByteArray &bytes)
    {
        return ::send(m_socket, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size();
    }
    /// Reads until \p count bytes have come in all.
    bool readUpTo(int count)
    {
        return waitUntil([this, count] {
            readSome();
            return received.size() >= count;
        });
    }
    /// Reads until the server ends the connection.
    bool readToEnd()
    {
        return waitUntil([this] {
            readSome();
            return m_isEnded;
        });
    }

    QByteArray received;

private:
    void readSome()
    {
        char buffer[4096];
        while (!m_isEnded) {
            const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT);
            if (count > 0) {
                received.append(buffer, int(count));
            } else if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
                return;
            } else {
                m_isEnded = true;
                m_isReset = count < 0 && errno == ECONNRESET;
            }
        }
    }

    int m_socket;
    int m_connectError = 0;
    bool m_isOpen = false;
    bool m_isEnded = false;
    bool m_isReset = false;
};

} // namespace

class TestRawHttpServer : public QObject
{
    Q_OBJECT

private slots:
    void aRequestIsRecordedByteForByte();
    void aRequestInPiecesIsPutTogether();
    void twoRequestsInOneGoAreBothAnswered();
    void anAnswerIsSentAndTheConnectionEndsAsScripted_data();
    void anAnswerIsSentAndTheConnectionEndsAsScripted();
    void aHangingRequestGetsNothingUntilItIsDropped();
    void heldRequestsAreAnsweredInTheTestsOrder();
    void theQueueComesAheadOfTheHandlerAndTheStandingAnswer();
    void connectionsAreRefusedUntilTheServerListensAgain();
};

void TestRawHttpServer::aRequestIsRecordedByteForByte()
{
    RawHttpServer server;
    Connection connection(server);
    QVERIFY(connection.isOpen());
    QVERIFY(connection.write(
        "POST /x%20y?q=%E9%94%82 HTTP/1.1\r\nHost: a\r\ncontent-length: 5\r\nX-Name:  v: w \r\n\r\n"));
    const QByteArray body("\0\xff{}\n", 5);
    QVERIFY(connection.write(body));
    QVERIFY(server.waitForRequests(1));
    const RawRequest &request = server.requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, QByteArray("/x%20y?q=%E9%94%82"));
    QCOMPARE(request.path(), QByteArray("/x%20y"));
    QCOMPARE(request.headerNames(), QList<QByteArray>({"Host", "content-length", "X-Name"}));
    QCOMPARE(request.header("X-NAME"), QByteArray("v: w"));
    QVERIFY(!request.hasHeader("X-Other"));
    QCOMPARE(request.body, body);
}

void TestRawHttpServer::aRequestInPiecesIsPutTogether()
{
    RawHttpServer server;
    Connection connection(server);
    QVERIFY(connection.isOpen());
    int arrived = 0;
    connect(&server, &RawHttpServer::requestReceived, this, [&arrived] { ++arrived; });
    const QByteArray request = "POST / HTTP/1.1\r\nContent-Length: 10\r\n\r\n0123456789";
    for (const char byte : request) {
        QCOMPARE(arrived, 0);
        QVERIFY(connection.write(QByteArray(1, byte)));
        QCoreApplication::processEvents();
    }
    QVERIFY(server.waitForRequests(1));
    QCOMPARE(server.requests().first().body, QByteArray("0123456789"));
}

void TestRawHttpServer::twoRequestsInOneGoAreBothAnswered()
{
    RawHttpServer server;
    server.queueAnswer(RawAnswer::body("first"));
    server.queueAnswer(RawAnswer::body("second"));
    Connection connection(server);
    QVERIFY(connection.isOpen());
    QVERIFY(connection.write(getRequest + getRequest));
    const QByteArray expected = RawAnswer::body("first").bytes + RawAnswer::body("second").bytes;
    QVERIFY(connection.readUpTo(expected.size()));
    QCOMPARE(connection.received, expected);
    QVERIFY(server.requests().first().hasHeader("X-Empty"));
    QCOMPARE(server.requests().first().header("X-Empty"), QByteArray(""));
}

void TestRawHttpServer::anAnswerIsSentAndTheConnectionEndsAsScripted_data()
{
    const QByteArray start = "HTTP/1.1 200 Scripted\r\nContent-Type: application/json\r\nContent-Length: ";
    QTest::addColumn<RawAnswer>("answer");
    QTest::addColumn<QByteArray>("received");
    QTest::addColumn<bool>("isReset");
    QTest::newRow("reset") << RawAnswer::reset() << QByteArray() << true;
    QTest::newRow("reset within the body")
        << RawAnswer::resetWithinBody("0123456789") << start + "10\r\n\r\n01234" << true;
    QTest::newRow("close ahead of the headers") << RawAnswer::closeBeforeHeaders() << QByteArray() << false;
    QTest::newRow("close within the headers")
        << RawAnswer::closeWithinHeaders() << QByteArray("HTTP/1.1 200 OK\r\nContent-Type: applica") << false;
    QTest::newRow("truncated") << RawAnswer::truncated("0123456789") << start + "10\r\n\r\n01234" << false;
    QTest::newRow("wrong content length")
        << RawAnswer::wrongContentLength("0123456789", 3) << start + "3\r\n\r\n0123456789" << false;
}

void TestRawHttpServer::anAnswerIsSentAndTheConnectionEndsAsScripted()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QByteArray, received);
    QFETCH(bool, isReset);
    RawHttpServer server;
    server.setAnswer(answer);
    Connection connection(server);
    QVERIFY(connection.isOpen());
    QVERIFY(connection.write(getRequest));
    QVERIFY(connection.readToEnd());
    QCOMPARE(connection.received, received);
    QCOMPARE(connection.isReset(), isReset);
}

void TestRawHttpServer::aHangingRequestGetsNothingUntilItIsDropped()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    Connection connection(server);
    QVERIFY(connection.isOpen());
    QVERIFY(connection.write(getRequest));
    QVERIFY(server.waitForRequests(1));
    server.dropConnections();
    QVERIFY(connection.readToEnd());
    QCOMPARE(connection.received, QByteArray());
}

void TestRawHttpServer::heldRequestsAreAnsweredInTheTestsOrder()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    Connection first(server);
    Connection second(server);
    QVERIFY(first.isOpen() && second.isOpen());
    QVERIFY(first.write(getRequest));
    QVERIFY(server.waitForRequests(1));
    QVERIFY(second.write(getRequest));
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.heldRequests(), QList<int>({0, 1}));
    const QByteArray answer = RawAnswer::body("{}").bytes;
    QVERIFY(server.release(1, RawAnswer::body("{}")));
    QVERIFY(second.readUpTo(answer.size()));
    QCOMPARE(first.received, QByteArray());
    QCOMPARE(server.heldRequests(), QList<int>({0}));
    QVERIFY(server.release(0, RawAnswer::body("{}")));
    QVERIFY(first.readUpTo(answer.size()));
    QVERIFY(!server.release(0, RawAnswer::body("{}")));
    QVERIFY(!server.release(7, RawAnswer::body("{}")));
}

void TestRawHttpServer::theQueueComesAheadOfTheHandlerAndTheStandingAnswer()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body("standing"));
    server.setHandler([](const RawRequest &request) { return RawAnswer::body(request.target); });
    server.queueAnswer(RawAnswer::body("queued"));
    Connection connection(server);
    QVERIFY(connection.isOpen());
    QByteArray expected;
    const auto next = [&](const QByteArray &body) {
        expected += RawAnswer::body(body).bytes;
        return connection.write(getRequest) && connection.readUpTo(expected.size()) &&
               connection.received == expected;
    };
    QVERIFY(next("queued"));
    QVERIFY(next("/a?b=c"));
    server.setHandler({});
    QVERIFY(next("standing"));
}

void TestRawHttpServer::connectionsAreRefusedUntilTheServerListensAgain()
{
    RawHttpServer server;
    const QString url = server.url();
    Connection open(server);
    QVERIFY(open.isOpen());
    QVERIFY(open.write(getRequest));
    QVERIFY(server.waitForRequests(1));
    server.refuseConnections();
    QVERIFY(open.readToEnd());
    const Connection refused(server);
    QVERIFY(!refused.isOpen());
    QCOMPARE(refused.connectError(), ECONNREFUSED);
    server.listenAgain();
    QCOMPARE(server.url(), url);
    QVERIFY(Connection(server).isOpen());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestRawHttpServer)
#include "tst_RawHttpServer.moc"
