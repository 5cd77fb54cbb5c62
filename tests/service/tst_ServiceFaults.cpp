#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QtTest>

#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace WireRequests;

namespace {

const QByteArray healthRequest = "GET /newsapi/health HTTP/1.1\r\nHost: a\r\n\r\n";

/// What a connection has given when it ended, or when the time was up.
struct Received
{
    QByteArray bytes;
    bool ended = false;
    QAbstractSocket::SocketError error = QAbstractSocket::UnknownSocketError;

    QByteArray head() const { return bytes.left(bytes.indexOf("\r\n\r\n")); }
    QByteArray body() const { return bytes.mid(bytes.indexOf("\r\n\r\n") + 4); }
    int contentLength() const
    {
        const int start = head().indexOf("Content-Length: ") + 16;
        return head().mid(start, head().indexOf('\r', start) - start).toInt();
    }
};

/// Reads until \p enough holds, the other side ends the connection, or \p timeoutMs have passed.
Received readFrom(QTcpSocket &socket, const std::function<bool(const QByteArray &)> &enough,
                  int timeoutMs = 10000)
{
    Received received;
    QElapsedTimer timer;
    timer.start();
    while (!enough(received.bytes) && timer.elapsed() < timeoutMs) {
        if (!socket.waitForReadyRead(static_cast<int>(timeoutMs - timer.elapsed())) &&
            socket.error() != QAbstractSocket::SocketTimeoutError) {
            received.bytes += socket.readAll();
            received.ended = true;
            received.error = socket.error();
            break;
        }
        received.bytes += socket.readAll();
    }
    return received;
}

bool never(const QByteArray &)
{
    return false;
}

/// A whole answer by its own length.
bool wholeAnswer(const QByteArray &bytes)
{
    const Received received{bytes, false, QAbstractSocket::UnknownSocketError};
    return bytes.contains("\r\n\r\n") && received.body().size() >= received.contentLength();
}

} // namespace

/// Every fault as a client's socket sees it.
class ServiceFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void aDelayHoldsTheAnswerBack();
    void aDropNeverAnswersAndKeepsTheConnection();
    void aResetIsAReset();
    void aCloseEndsWithoutAByte();
    void aCutAnswerHasFewerBytesThanAnnounced_data();
    void aCutAnswerHasFewerBytesThanAnnounced();
    void aDripSendsPortionsInTheirTime();
    void aStatusComesWithItsWords_data();
    void aStatusComesWithItsWords();
    void aStatusTakesAnyBody();
    void tooManyRequestsSayHowLongToWait();
    void noJsonIsNoJson();
    void wrongTypesKeepTheNames();
    void aChangeKeepsEverythingElse();
    void aChangeCanComeLate();
    void aHugeBodyIsFiftyMegabytesOfJson();
    void aFaultHitsItsPathAndItsCount();
    void aFaultThatAnswersItselfDoesNotReachTheService();
    void aFaultThatSpoilsTheAnswerDoes();
    void otherConnectionsGoOnMeanwhile();
    void theNextRequestOnAKeptConnectionIsWell();
    void faultsAreListedAndCounted();
    void badFaultsAreRefused();

private:
    std::unique_ptr<QTcpSocket> connected(const QByteArray &request = healthRequest) const
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), m_service->port());
        if (!socket->waitForConnected())
            qWarning("not connected");
        socket->write(request);
        socket->flush();
        return socket;
    }
    void fault(const char *kind, const QByteArray &further = "{}", const char *path = "/newsapi/health") const
    {
        m_service->addFault(QString::fromLatin1(path), QString::fromLatin1(kind), json(further));
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceFaultsTest::initTestCase()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceFaultsTest::init()
{
    m_service->clearFaults();
    m_service->clearStatistics();
}

void ServiceFaultsTest::cleanupTestCase()
{
    QVERIFY(m_service->stop());
}

void ServiceFaultsTest::aDelayHoldsTheAnswerBack()
{
    fault("delay", R"({"delay_ms":300})");
    QElapsedTimer timer;
    timer.start();
    const auto socket = connected();
    const Received received = readFrom(*socket, wholeAnswer);
    QVERIFY2(timer.elapsed() >= 299, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(received.head().startsWith("HTTP/1.1 200 OK\r\n"));
    QVERIFY(received.body().contains(R"("status":"ok")"));
}

void ServiceFaultsTest::aDropNeverAnswersAndKeepsTheConnection()
{
    fault("drop");
    const auto socket = connected();
    const Received received = readFrom(*socket, never, 500);
    QVERIFY(received.bytes.isEmpty());
    QVERIFY(!received.ended);
    QCOMPARE(socket->state(), QAbstractSocket::ConnectedState);
}

void ServiceFaultsTest::aResetIsAReset()
{
    fault("reset");
    // QTcpSocket makes no difference between an end and a reset, the system's own call does.
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    QVERIFY(socket >= 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_service->port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(::send(socket, healthRequest.constData(), static_cast<std::size_t>(healthRequest.size()), 0),
             static_cast<ssize_t>(healthRequest.size()));
    char byte = 0;
    const ssize_t count = ::recv(socket, &byte, 1, 0);
    const int error = errno;
    ::close(socket);
    QCOMPARE(count, static_cast<ssize_t>(-1));
    QCOMPARE(error, ECONNRESET);
}

void ServiceFaultsTest::aCloseEndsWithoutAByte()
{
    fault("close");
    const auto socket = connected();
    const Received received = readFrom(*socket, never);
    QVERIFY(received.ended);
    QVERIFY(received.bytes.isEmpty());
    QCOMPARE(received.error, QAbstractSocket::RemoteHostClosedError);
}

void ServiceFaultsTest::aCutAnswerHasFewerBytesThanAnnounced_data()
{
    QTest::addColumn<QByteArray>("further");
    QTest::addColumn<int>("bytes");
    QTest::newRow("half of it") << QByteArray("{}") << -1;
    QTest::newRow("ten bytes") << QByteArray(R"({"bytes":10})") << 10;
    QTest::newRow("the head alone") << QByteArray(R"({"bytes":0})") << 0;
}

void ServiceFaultsTest::aCutAnswerHasFewerBytesThanAnnounced()
{
    QFETCH(QByteArray, further);
    QFETCH(int, bytes);
    fault("truncate", further);
    const auto socket = connected();
    const Received received = readFrom(*socket, never);
    QVERIFY(received.ended);
    QVERIFY(received.contentLength() > 20);
    QCOMPARE(received.body().size(), bytes < 0 ? received.contentLength() / 2 : bytes);
}

void ServiceFaultsTest::aDripSendsPortionsInTheirTime()
{
    fault("drip", R"({"bytes":40,"interval_ms":30})");
    QElapsedTimer timer;
    timer.start();
    const auto socket = connected();
    const Received received = readFrom(*socket, wholeAnswer);
    const qint64 portions = (received.bytes.size() + 39) / 40;
    QVERIFY(portions > 3);
    QVERIFY2(timer.elapsed() >= 30 * (portions - 1), qPrintable(QString::number(timer.elapsed())));
    QVERIFY(QJsonDocument::fromJson(received.body()).isObject());
}

void ServiceFaultsTest::aStatusComesWithItsWords_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("400") << 400 << QByteArray("Bad Request");
    QTest::newRow("401") << 401 << QByteArray("Unauthorized");
    QTest::newRow("403") << 403 << QByteArray("Forbidden");
    QTest::newRow("404") << 404 << QByteArray("Not Found");
    QTest::newRow("429") << 429 << QByteArray("Too Many Requests");
    QTest::newRow("500") << 500 << QByteArray("Internal Server Error");
    QTest::newRow("502") << 502 << QByteArray("Bad Gateway");
    QTest::newRow("503") << 503 << QByteArray("Service Unavailable");
}

void ServiceFaultsTest::aStatusComesWithItsWords()
{
    QFETCH(int, status);
    QFETCH(QByteArray, reason);
    m_service->addFault(
        QStringLiteral("/newsapi/health"), QStringLiteral("status"),
        {{QStringLiteral("status"), status}, {QStringLiteral("error"), QStringLiteral("坏了")}});
    const auto socket = connected();
    const Received received = readFrom(*socket, wholeAnswer);
    QVERIFY2(received.head().startsWith("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\n"),
             received.head().constData());
    QCOMPARE(textAt(json(received.body()), "error"), QStringLiteral("坏了"));
}

void ServiceFaultsTest::aStatusTakesAnyBody()
{
    m_service->addFault(
        QStringLiteral("/newsapi/health"), QStringLiteral("status"),
        {{QStringLiteral("status"), 200}, {QStringLiteral("body"), QString()}, {QStringLiteral("count"), 1}});
    QCOMPARE(m_service->request("GET", "/newsapi/health").body, QByteArray());
    m_service->addFault(QStringLiteral("/newsapi/health"), QStringLiteral("status"),
                        json(R"({"status":200,"count":1,"body":{"status":"OK"}})"));
    QCOMPARE(m_service->request("GET", "/newsapi/health").body, QByteArray(R"({"status":"OK"})"));
}

void ServiceFaultsTest::tooManyRequestsSayHowLongToWait()
{
    fault("status", R"({"status":429,"wait_seconds":12})");
    const ServiceProcess::Answer answer = m_service->request("GET", "/newsapi/health");
    QCOMPARE(answer.status, 429);
    QCOMPARE(numberAt(answer.object, "wait_seconds"), 12);
}

void ServiceFaultsTest::noJsonIsNoJson()
{
    fault("not_json");
    const ServiceProcess::Answer answer = m_service->request("GET", "/newsapi/health");
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.body.size() > 10);
    QVERIFY(QJsonDocument::fromJson(answer.body).isNull());
}

void ServiceFaultsTest::wrongTypesKeepTheNames()
{
    m_service->publish(json(R"({"id":"a","title":"机器人"})"));
    fault("wrong_types", "{}", "/newsapi/news");
    const QJsonObject reply = m_service->request("GET", "/newsapi/news?limit=1", {}, byDemoKey()).object;
    QVERIFY(reply.value(QLatin1String("success")).isString());
    QVERIFY(at(reply, QStringLiteral("data.pagination.total")).isString());
    QVERIFY(at(reply, QStringLiteral("data.news.0")).isString());
    QVERIFY(at(reply, QStringLiteral("data.news.1.id")).isDouble());
    QVERIFY(at(reply, QStringLiteral("data.news.1.has_keywords")).isString());
}

void ServiceFaultsTest::aChangeKeepsEverythingElse()
{
    const QByteArray target = "/stockhelper/stock/comprehensive?code=600519";
    QJsonObject expected = m_service->request("GET", target, {}, byDemoKey()).object;
    m_service->changeAnswers(QStringLiteral("/stockhelper/stock/comprehensive?code=600519"),
                             {{QStringLiteral("/data/basic_info/stock_code"), QStringLiteral("000001")},
                              {QStringLiteral("/data/opening_data"), QJsonValue::Null}},
                             {QStringLiteral("/data/query_time")});
    const ServiceProcess::Answer answer = m_service->request("GET", target, {}, byDemoKey());
    QCOMPARE(answer.status, 200);
    QJsonObject data = expected.value(QLatin1String("data")).toObject();
    QJsonObject basicInfo = data.value(QLatin1String("basic_info")).toObject();
    basicInfo.insert(QStringLiteral("stock_code"), QStringLiteral("000001"));
    data.insert(QStringLiteral("basic_info"), basicInfo);
    data.insert(QStringLiteral("opening_data"), QJsonValue::Null);
    data.remove(QStringLiteral("query_time"));
    expected.insert(QStringLiteral("data"), data);
    QCOMPARE(answer.object, expected);
    QCOMPARE(numberAt(m_service->statistics(), "faults.change"), 1);
}

void ServiceFaultsTest::aChangeCanComeLate()
{
    fault("change", R"({"set":{"/status":"tired"},"delay_ms":200})");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(textAt(m_service->request("GET", "/newsapi/health").object, "status"), QStringLiteral("tired"));
    QVERIFY(timer.elapsed() >= 199);
}

void ServiceFaultsTest::aHugeBodyIsFiftyMegabytesOfJson()
{
    fault("huge");
    const ServiceProcess::Answer answer = m_service->request("GET", "/newsapi/health");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.body.size(), 50 * 1024 * 1024);
    QVERIFY(answer.success());
    m_service->clearFaults();
    fault("huge", R"({"bytes":1000})");
    QCOMPARE(m_service->request("GET", "/newsapi/health").body.size(), 1000);
}

void ServiceFaultsTest::aFaultHitsItsPathAndItsCount()
{
    fault("status", R"({"status":500,"count":2})", "/newsapi/");
    QCOMPARE(m_service->request("GET", "/newsapi/health").status, 500);
    QCOMPARE(m_service->request("GET", "/user/info", {}, byDemoKey()).status, 200);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byDemoKey()).status, 500);
    QCOMPARE(m_service->request("GET", "/newsapi/health").status, 200);
    fault("status", R"({"status":500,"method":"POST"})", "/newsapi/keywords");
    QCOMPARE(m_service->request("GET", "/newsapi/keywords", {}, byDemoKey()).status, 200);
    QCOMPARE(m_service->request("POST", "/newsapi/keywords", json(R"({"keyword":"x"})"), byDemoKey()).status,
             500);
}

void ServiceFaultsTest::aFaultThatAnswersItselfDoesNotReachTheService()
{
    fault("status", R"({"status":500,"count":1})", "/newsapi/keywords");
    m_service->request("POST", "/newsapi/keywords", json(R"({"keyword":"unreached"})"), byDemoKey());
    const QByteArray keywords = m_service->request("GET", "/newsapi/keywords", {}, byDemoKey()).body;
    QVERIFY(keywords.contains("keyword"));
    QVERIFY(!keywords.contains("unreached"));
}

void ServiceFaultsTest::aFaultThatSpoilsTheAnswerDoes()
{
    fault("truncate", R"({"bytes":3,"count":1})", "/newsapi/keywords");
    m_service->request("POST", "/newsapi/keywords", json(R"({"keyword":"reached"})"), byDemoKey());
    QVERIFY(m_service->request("GET", "/newsapi/keywords", {}, byDemoKey()).body.contains("reached"));
}

void ServiceFaultsTest::otherConnectionsGoOnMeanwhile()
{
    fault("drop", R"({"count":20})");
    std::vector<std::unique_ptr<QTcpSocket>> silent(20);
    for (auto &socket : silent)
        socket = connected();
    QTRY_COMPARE(numberAt(m_service->statistics(), "faults.drop"), 20);
    QCOMPARE(m_service->request("GET", "/newsapi/health").status, 200);
}

void ServiceFaultsTest::theNextRequestOnAKeptConnectionIsWell()
{
    fault("delay", R"({"delay_ms":50,"count":1})");
    const auto socket = connected();
    QVERIFY(readFrom(*socket, wholeAnswer).head().contains("Connection: keep-alive"));
    socket->write(healthRequest);
    QVERIFY(readFrom(*socket, wholeAnswer).body().contains(R"("status":"ok")"));
}

void ServiceFaultsTest::faultsAreListedAndCounted()
{
    fault("status", R"({"status":503,"count":3})");
    QCOMPARE(m_service->request("GET", "/newsapi/health").status, 503);
    const QJsonObject listed = m_service->request("GET", "/admin/faults").object;
    QCOMPARE(textAt(listed, "data.0.kind"), QStringLiteral("status"));
    QCOMPARE(numberAt(listed, "data.0.count"), 2);
    QCOMPARE(numberAt(listed, "data.0.status"), 503);
    const QJsonObject counters = m_service->statistics();
    QCOMPARE(numberAt(counters, "faults.status"), 1);
    QCOMPARE(numberAt(counters, "statuses.503"), 1);
    QCOMPARE(m_service->requestCount(QStringLiteral("GET /newsapi/health")), 1);
    const QJsonObject request = m_service->requests().at(0).toObject();
    QCOMPARE(textAt(request, "target"), QStringLiteral("/newsapi/health"));
    QCOMPARE(textAt(request, "fault"), QStringLiteral("status"));
    QCOMPARE(numberAt(request, "status"), 503);
    QCOMPARE(textAt(request, "headers.Host"), QStringLiteral("127.0.0.1"));
}

void ServiceFaultsTest::badFaultsAreRefused()
{
    QCOMPARE(m_service->request("POST", "/admin/faults", json(R"({"path":"/","kind":"explode"})")).status,
             400);
    QCOMPARE(m_service->request("POST", "/admin/faults", json(R"({"kind":"drop"})")).status, 400);
    QCOMPARE(m_service->request("GET", "/admin/faults").object, json(R"({"success":true,"data":[]})"));
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceFaultsTest)
#include "tst_ServiceFaults.moc"
