#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QtTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace WireRequests;

namespace {

/// Sends bytes as they are and reads until the other side ends the connection or \p enough has come.
QByteArray exchange(quint16 port, const QByteArray &bytes, const QByteArray &enough = {})
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected())
        return {};
    socket.write(bytes);
    QByteArray received;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 10000 && (enough.isEmpty() || !received.contains(enough))) {
        const bool more = socket.waitForReadyRead(static_cast<int>(10000 - timer.elapsed()));
        received += socket.readAll();
        if (!more)
            break;
    }
    return received;
}

int statusOf(const QByteArray &answer)
{
    return answer.mid(9, 3).toInt();
}

} // namespace

/// What comes in wrong, odd or hostile: it is refused in words, and the service goes on.
class ServiceInputsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void cleanupTestCase();

    void bodiesThatAreNoObjectAreRefusedEverywhere_data();
    void bodiesThatAreNoObjectAreRefusedEverywhere();
    void fieldsOfWrongTypesAreRefusedEverywhere_data();
    void fieldsOfWrongTypesAreRefusedEverywhere();
    void pathsAndMethodsThatAreNone_data();
    void pathsAndMethodsThatAreNone();
    void messagesThatAreNoHttp_data();
    void messagesThatAreNoHttp();
    void aBodyOfOneMegabyteIsTakenAndALargerOneIsNot();
    void aBodyThatIsNotAnnouncedIsRefusedThoughItIsSent();
    void aBodyThatIsNeitherSentNorAnnouncedIsAnEmptyOne();
    void aBodyIsJsonWhateverItsTypeSays_data();
    void aBodyIsJsonWhateverItsTypeSays();
    void requestsInARowOnOneConnectionAreAllAnswered();
    void aRequestOfSingleBytesIsAnswered();
    void aClientThatHasEndedItsSideGetsItsAnswer();
    void aClientThatAsksBeforeSendingIsToldToGoOn();
    void anOldClientGetsItsAnswerAndTheEnd();
    void textsOfAnySignsComeBackAsTheyWere();
    void aQueryThatIsNoUtf8IsAnswered();
    void signsOfSqlChangeNothing_data();
    void signsOfSqlChangeNothing();
    void tooManyRequestsOfOneUserAreRefused();

private:
    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceInputsTest::initTestCase()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceInputsTest::cleanup()
{
    QCOMPARE(m_service->request("GET", "/newsapi/health").status, 200);
    QVERIFY2(!m_service->log().contains(QStringLiteral("fault in")), qPrintable(m_service->log()));
}

void ServiceInputsTest::cleanupTestCase()
{
    QVERIFY(m_service->stop());
}

void ServiceInputsTest::bodiesThatAreNoObjectAreRefusedEverywhere_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("username=demo&password=x");
    QTest::newRow("cut") << QByteArray(R"({"username":"demo)");
    QTest::newRow("list") << QByteArray("[{}]");
    QTest::newRow("word") << QByteArray("null");
    QTest::newRow("no UTF-8") << QByteArray("{\"username\":\"\xff\"}");
    QTest::newRow("half a surrogate pair") << QByteArray(R"({"username":"\ud800"})");
    QTest::newRow("zero byte") << QByteArray("{\"a\":\0}", 7);
    QTest::newRow("deeply nested") << QByteArray(400000, '[');
}

void ServiceInputsTest::bodiesThatAreNoObjectAreRefusedEverywhere()
{
    QFETCH(QByteArray, body);
    const QJsonArray routes =
        m_service->request("GET", "/admin/routes").object.value(QLatin1String("data")).toArray();
    QVERIFY(routes.size() > 30);
    int tried = 0;
    for (const QJsonValue &route : routes) {
        const QStringList parts = route.toString().split(QLatin1Char(' '));
        if (parts.at(0) != QLatin1String("POST") && parts.at(0) != QLatin1String("PUT"))
            continue;
        QString path = parts.at(1);
        path.replace(QRegularExpression(QStringLiteral("\\{[a-z_]+\\}")), QStringLiteral("1"));
        const ServiceProcess::Answer answer =
            m_service->send(parts.at(0).toLatin1(), path.toLatin1(), body, byDemoKey());
        QVERIFY2(answer.status == 400, qPrintable(route.toString()));
        QCOMPARE(answer.error(), QStringLiteral("请求体不是有效的JSON对象"));
        ++tried;
    }
    QVERIFY(tried > 20);
}

void ServiceInputsTest::fieldsOfWrongTypesAreRefusedEverywhere_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArrayList>("fields");
    const auto row = [](const char *path, const QByteArrayList &fields) {
        QTest::newRow(path) << QByteArray(path) << fields;
    };
    row("/auth/login", {"username", "password"});
    row("/auth/verify_apikey", {"api_key"});
    row("/auth/get_apikey", {"request_type"});
    row("/auth/register", {"username", "email", "verification_code", "password"});
    row("/auth/send_verification_code", {"email", "code_type"});
    row("/auth/verify_email_code", {"email", "code", "code_type"});
    row("/auth/reset_password", {"email", "verification_code", "new_password"});
    row("/auth/session/validate", {"session_token"});
    row("/auth/verify_wechat_login", {"qr_token"});
    row("/auth/send_login_code", {"email"});
    row("/auth/login_with_code", {"email", "code"});
    row("/user/bind_wechat", {"wechat_id"});
    row("/user/bind_email", {"email"});
    row("/user/generate_wechat_qr", {"wechat_id"});
    row("/user/verify_wechat_qr", {"qr_token"});
    row("/newsapi/keywords", {"keyword"});
}

void ServiceInputsTest::fieldsOfWrongTypesAreRefusedEverywhere()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArrayList, fields);
    const QByteArrayList values{"1", "1.5", "true", "null", "[]", "{}", R"(["a@b.cn"])", "1e308", "\"\""};
    for (const QByteArray &field : fields) {
        for (const QByteArray &value : values) {
            QByteArrayList pairs;
            for (const QByteArray &other : fields)
                pairs << '"' + other +
                             "\":" + (other == field ? value : QByteArray(R"("lark1@larkspire.example")"));
            const ServiceProcess::Answer answer =
                m_service->send("POST", path, '{' + pairs.join(',') + '}', byDemoKey());
            QVERIFY2(answer.status == 400, (field + ": " + value + " -> " + answer.body).constData());
            QVERIFY(!answer.error().isEmpty());
        }
    }
}

void ServiceInputsTest::pathsAndMethodsThatAreNone_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("status");
    const auto row = [](const char *request, int status) {
        QTest::newRow(request) << QByteArray(request) << status;
    };
    row("GET /", 404);
    row("GET /newsapi", 404);
    row("GET /newsapi/news/", 404);
    row("GET //newsapi/news", 404);
    row("GET /newsapi/../admin/routes", 404);
    row("GET /newsapi/news%00", 404);
    row("GET /newsapi/news%0a", 404);
    row("GET /NEWSAPI/health", 404);
    row("POST /newsapi/health", 405);
    row("DELETE /auth/login", 405);
    row("PUT /newsapi/keywords", 405);
    row("HEAD /newsapi/health", 405);
    row("OPTIONS /newsapi/health", 405);
    row("PATCH /newsapi/health", 405);
}

void ServiceInputsTest::pathsAndMethodsThatAreNone()
{
    QFETCH(QByteArray, request);
    QFETCH(int, status);
    const QByteArray answer =
        exchange(m_service->port(),
                 request + " HTTP/1.1\r\nHost: a\r\nConnection: close\r\nContent-Length: 2\r\n\r\n{}");
    QCOMPARE(statusOf(answer), status);
    if (!request.startsWith("HEAD"))
        QVERIFY2(answer.contains(R"("success":false)"), answer.constData());
}

void ServiceInputsTest::messagesThatAreNoHttp_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    QTest::newRow("words") << QByteArray("hello there\r\n\r\n") << 400;
    QTest::newRow("start of a TLS handshake") << QByteArray("\x16\x03\x01\x02\x00\r\n\r\n", 9) << 400;
    QTest::newRow("no length that can be read")
        << QByteArray("POST /auth/login HTTP/1.1\r\nContent-Length: x\r\n\r\n") << 400;
    QTest::newRow("head without end") << QByteArray("GET / HTTP/1.1\r\nX: ") + QByteArray(70000, 'x') << 431;
    QTest::newRow("too long a target") << QByteArray("GET /") + QByteArray(5000, 'a') + " HTTP/1.1\r\n\r\n"
                                       << 414;
    QTest::newRow("body in chunks")
        << QByteArray("POST /auth/login HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n")
        << 411;
}

void ServiceInputsTest::messagesThatAreNoHttp()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    const QByteArray answer = exchange(m_service->port(), bytes);
    QCOMPARE(statusOf(answer), status);
    QVERIFY(answer.contains("Connection: close"));
    QVERIFY2(answer.contains(R"("success":false)"), answer.constData());
}

void ServiceInputsTest::aBodyOfOneMegabyteIsTakenAndALargerOneIsNot()
{
    const QByteArray frame = R"({"username":"demo","password":""})";
    QByteArray body = frame;
    body.insert(body.size() - 2, QByteArray(1024 * 1024 - frame.size(), 'x'));
    QCOMPARE(body.size(), 1024 * 1024);
    QCOMPARE(m_service->send("POST", "/auth/login", body).status, 400);
    body.insert(body.size() - 2, 'x');
    const ServiceProcess::Answer answer = m_service->send("POST", "/auth/login", body);
    QCOMPARE(answer.status, 413);
    QVERIFY(!answer.error().isEmpty());
}

void ServiceInputsTest::aBodyThatIsNotAnnouncedIsRefusedThoughItIsSent()
{
    const QByteArray head = "POST /auth/login HTTP/1.1\r\nContent-Length: 100000000\r\n\r\n";
    const QByteArray answer = exchange(m_service->port(), head + QByteArray(3'000'000, 'x'), "}");
    QCOMPARE(statusOf(answer), 413);
}

void ServiceInputsTest::aBodyThatIsNeitherSentNorAnnouncedIsAnEmptyOne()
{
    const QByteArray answer = exchange(
        m_service->port(), "POST /newsapi/keywords HTTP/1.1\r\nX-API-Key: lks-demo-key\r\n\r\n", "}");
    QCOMPARE(statusOf(answer), 400);
    QVERIFY2(answer.contains("请求体不是有效的JSON对象"), answer.constData());
}

void ServiceInputsTest::aBodyIsJsonWhateverItsTypeSays_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("a form") << QByteArray("application/x-www-form-urlencoded");
    QTest::newRow("a form in parts") << QByteArray("multipart/form-data; boundary=x");
    QTest::newRow("none") << QByteArray();
}

void ServiceInputsTest::aBodyIsJsonWhateverItsTypeSays()
{
    QFETCH(QByteArray, type);
    const QByteArray body = R"({"title":")" + QByteArray(20000, 'x') + R"("})";
    const QByteArray answer =
        exchange(m_service->port(), "POST /admin/news HTTP/1.1\r\nContent-Type: " + type +
                                        "\r\nContent-Length: " + QByteArray::number(body.size()) +
                                        "\r\nConnection: close\r\n\r\n" + body);
    QCOMPARE(statusOf(answer), 200);
    QVERIFY(answer.contains(QByteArray(20000, 'x')));
}

void ServiceInputsTest::requestsInARowOnOneConnectionAreAllAnswered()
{
    constexpr int count = 50;
    QByteArray requests;
    for (int i = 0; i < count; ++i)
        requests += "GET /newsapi/health HTTP/1.1\r\n\r\nGET /nowhere HTTP/1.1\r\n\r\n";
    requests += "GET /newsapi/health HTTP/1.1\r\nConnection: close\r\n\r\n";
    const QByteArray answers = exchange(m_service->port(), requests);
    QCOMPARE(answers.count("HTTP/1.1 200 OK"), count + 1);
    QCOMPARE(answers.count("HTTP/1.1 404 Not Found"), count);
}

void ServiceInputsTest::aRequestOfSingleBytesIsAnswered()
{
    QTcpSocket socket;
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_service->port());
    QVERIFY(socket.waitForConnected());
    for (const char byte : QByteArray("POST /auth/login HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}")) {
        socket.write(&byte, 1);
        socket.flush();
    }
    QVERIFY(socket.waitForReadyRead(10000));
    QCOMPARE(statusOf(socket.readAll()), 400);
}

void ServiceInputsTest::aClientThatHasEndedItsSideGetsItsAnswer()
{
    m_service->addFault(QStringLiteral("/newsapi/health"), QStringLiteral("delay"),
                        json(R"({"delay_ms":200,"count":1})"));
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_service->port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    const QByteArray request = "GET /newsapi/health HTTP/1.1\r\n\r\n";
    QCOMPARE(::send(socket, request.constData(), static_cast<std::size_t>(request.size()), 0),
             static_cast<ssize_t>(request.size()));
    QCOMPARE(::shutdown(socket, SHUT_WR), 0);
    QByteArray answer;
    char buffer[4096];
    for (ssize_t count = 0; (count = ::recv(socket, buffer, sizeof buffer, 0)) > 0;)
        answer.append(buffer, static_cast<int>(count));
    ::close(socket);
    QCOMPARE(statusOf(answer), 200);
    QVERIFY(answer.endsWith('}'));
}

void ServiceInputsTest::aClientThatAsksBeforeSendingIsToldToGoOn()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_service->port());
    QVERIFY(socket.waitForConnected());
    socket.write("POST /auth/login HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
    QVERIFY(socket.waitForReadyRead(10000));
    QCOMPARE(socket.readAll(), QByteArray("HTTP/1.1 100 Continue\r\n\r\n"));
    socket.write("{}");
    QVERIFY(socket.waitForReadyRead(10000));
    QCOMPARE(statusOf(socket.readAll()), 400);
}

void ServiceInputsTest::anOldClientGetsItsAnswerAndTheEnd()
{
    const QByteArray answer = exchange(m_service->port(), "GET /newsapi/health HTTP/1.0\r\n\r\n");
    QCOMPARE(statusOf(answer), 200);
    QVERIFY(answer.contains("Connection: close"));
}

void ServiceInputsTest::textsOfAnySignsComeBackAsTheyWere()
{
    const QString text = QStringLiteral("\"'\\/<b>&amp;%1\t\n😀𠮷 \u202e \u0001");
    m_service->publish(
        QJsonObject{{QStringLiteral("title"), text}, {QStringLiteral("content"), text.repeated(500)}});
    const QJsonObject item = news(*m_service, "limit=1").at(0).toObject();
    QCOMPARE(textAt(item, "title"), text);
    QCOMPARE(textAt(item, "content"), text.repeated(500));
}

void ServiceInputsTest::aQueryThatIsNoUtf8IsAnswered()
{
    QCOMPARE(m_service->request("GET", "/newsapi/news?keyword=%ff%fe&since_id=%00", {}, byDemoKey()).status,
             200);
    QCOMPARE(m_service->request("GET", "/newsapi/news?limit=%zz", {}, byDemoKey()).status, 400);
    QCOMPARE(m_service->request("GET", "/newsapi/news?&&=&limit&keyword", {}, byDemoKey()).status, 400);
    QCOMPARE(m_service->request("DELETE", "/user/devices/%ff", {}, byDemoKey()).status, 404);
}

void ServiceInputsTest::signsOfSqlChangeNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("always true") << QStringLiteral("' OR '1'='1");
    QTest::newRow("second statement") << QStringLiteral("x'; DELETE FROM users; --");
    QTest::newRow("union") << QStringLiteral("x' UNION SELECT api_key FROM users --");
    QTest::newRow("quotes of names") << QStringLiteral("\"; DROP TABLE news; --");
    QTest::newRow("comment") << QStringLiteral("demo'/*");
}

void ServiceInputsTest::signsOfSqlChangeNothing()
{
    QFETCH(QString, text);
    const QByteArray encoded = text.toUtf8().toPercentEncoding();
    m_service->publish(QStringLiteral("unharmed"));
    QCOMPARE(m_service->request("GET", "/newsapi/news?keyword=" + encoded, {}, byDemoKey())
                 .data()
                 .value(QLatin1String("news"))
                 .toArray()
                 .size(),
             0);
    QCOMPARE(login(*m_service, text, text, text).status, 401);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byKey(text)).status, 401);
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, bySession(text)).status, 401);
    QCOMPARE(m_service->request("DELETE", "/user/devices/" + encoded, {}, byDemoKey()).status, 404);
    QCOMPARE(m_service->request("GET", "/admin/codes?email=" + encoded).object,
             json(R"({"success":true,"data":[]})"));
    QCOMPARE(m_service->request("GET", "/user/info", {}, byDemoKey()).status, 200);
    QCOMPARE(titlesOf(news(*m_service, "limit=1")), QStringList{QStringLiteral("unharmed")});
}

void ServiceInputsTest::tooManyRequestsOfOneUserAreRefused()
{
    ServiceProcess::Settings settings = standingClock();
    settings.rateLimit = 3;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(service.request("GET", "/newsapi/keywords", {}, byDemoKey()).status, 200);
    service.advanceClock(20);
    const ServiceProcess::Answer answer = service.request("GET", "/newsapi/keywords", {}, byDemoKey());
    QCOMPARE(answer.status, 429);
    QCOMPARE(numberAt(answer.object, "wait_seconds"), 40);
    QVERIFY(!answer.error().isEmpty());
    QCOMPARE(service.request("GET", "/newsapi/health").status, 200);
    service.advanceClock(40);
    QCOMPARE(service.request("GET", "/newsapi/keywords", {}, byDemoKey()).status, 200);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceInputsTest)
#include "tst_ServiceInputs.moc"
