#include "newsclient/ApiClient.h"
#include "newsclient/ApiClientPeer.h"
#include "newsclient/NewsSignalLog.h"
#include "support/IsolatedHome.h"
#include "support/LogCapture.h"
#include "support/RawHttpServer.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <functional>

using Operation = std::function<void(ApiClient &)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(RawAnswer)

namespace {

constexpr int shortLimitMs = 60;
constexpr int ampleLimitMs = 30000;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// An answer with headers beyond the usual ones.
RawAnswer withHeaders(int status, const QByteArray &headers, const QByteArray &body)
{
    RawAnswer answer;
    answer.bytes = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n" + headers +
                   "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    return answer;
}

} // namespace

class TestApiClientFailures : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anyFaultIsReportedAndTheNextRequestWorks_data();
    void anyFaultIsReportedAndTheNextRequestWorks();
    void aRefusedConnectionIsReportedAndTheNextRequestWorks();
    void anAddressThatLeadsNowhereIsReported_data();
    void anAddressThatLeadsNowhereIsReported();
    void aRefusedOperationGetsItsAnswer_data();
    void aRefusedOperationGetsItsAnswer();
    void aFailureIsLoggedByName();

    void theFirstSevenTimeOutsAreReportedAlone();
    void oneSuccessStartsTheCountAgain_data();
    void oneSuccessStartsTheCountAgain();
    void failuresOtherThanTimeOutsNeitherAddNorReset_data();
    void failuresOtherThanTimeOutsNeitherAddNorReset();
    void aTimeOutEndsOnlyTheNewestRequest();
    void aNewRequestStartsTheLimitAnew();
    void theLimitIsTenSecondsUntilItIsSet();
    void aTimerWithoutARequestDoesNothing();

    void overtakenRequestsWithoutAnEndAreGivenUp();
    void anOvertakenRequestIsGivenUpWhileTheNewerOnesGoOn();
    void anOvertakenReplyThatArrivesInTimeIsReadAndNotGivenUp();

private:
    static void timeOut(ApiClient &client, RawHttpServer &server, const NewsSignalLog &seen);
};

void TestApiClientFailures::init()
{
    clearSettings();
}

void TestApiClientFailures::anyFaultIsReportedAndTheNextRequestWorks_data()
{
    QTest::addColumn<RawAnswer>("fault");
    QTest::addColumn<int>("limitMs");
    QTest::addColumn<QString>("pattern"); // of the one signal, %1 standing for the base URL

    const QByteArray page = R"({"data": {"news": [{"id": "a"}], "pagination": {"total": 1}}})";
    const auto row = [](const char *name, const RawAnswer &fault, const char *pattern,
                        int limitMs = ampleLimitMs) {
        QTest::newRow(name) << fault << limitMs << text(pattern);
    };
    const char timedOut[] = "networkError\\(请求超时\\)";
    const char closed[] = "networkError\\(网络错误 \\(2\\): .+\n服务器地址: %1\\)";
    const char notJson[] = "errorOccurred\\(JSON解析错误: .+\\)";

    row("none", RawAnswer::body(page), "newsReceived\\(\\[a\\], 1\\)");
    row("hangs", RawAnswer::hang(), timedOut, shortLimitMs);
    row("drips too slowly", RawAnswer::drip(page, 10, 20), timedOut, shortLimitMs);
    row("drips in time", RawAnswer::drip(page, 30, 1), "newsReceived\\(\\[a\\], 1\\)");
    row("stalls within the body", RawAnswer::wrongContentLength(page, 9999, RawAnswer::End::KeepOpen),
        timedOut, shortLimitMs);
    row("resets", RawAnswer::reset(), closed);
    row("resets within the body", RawAnswer::resetWithinBody(page), closed);
    row("closes ahead of the headers", RawAnswer::closeBeforeHeaders(), closed);
    row("closes within the headers", RawAnswer::closeWithinHeaders(), closed);
    row("truncates the body", RawAnswer::truncated(page), closed);
    row("declares more than it sends", RawAnswer::wrongContentLength(page, page.size() + 7), closed);
    row("declares less than it sends", RawAnswer::wrongContentLength(page, page.size() - 7), notJson);
    row("sends garbage", RawAnswer::garbage(), "networkError\\(网络错误 \\(\\d+\\): .+\n服务器地址: %1\\)");
    row("sends a page for people", RawAnswer::notJson(), notJson);
    row("sends no body", RawAnswer::body(""), notJson);
    row("sends half a JSON text", RawAnswer::body(page.left(page.size() / 2)), notJson);
    row("sends JSON nested too deeply", RawAnswer::body(QByteArray(5000, '[') + QByteArray(5000, ']')),
        notJson);
    row("sends invalid UTF-8", RawAnswer::body("{\"data\": \"\xff\xfe\"}"), notJson);
    row("sends another shape", RawAnswer::body("[1, 2, 3]"), "newsReceived\\(\\[\\], 0\\)");
    row("sends 16 MB", RawAnswer::huge(16 << 20), "newsReceived\\(\\[\\], 0\\)");
    row("redirects", withHeaders(302, "Location: /elsewhere\r\n", "moved"), notJson);

    row("400", RawAnswer::body("{}", 400), "networkError\\(请求参数错误\\)");
    row("400 in its words", RawAnswer::body(R"({"error": "缺少参数"})", 400), "networkError\\(缺少参数\\)");
    row("401", RawAnswer::body("{}", 401), "authenticationFailed\\(API密钥无效，请检查配置\\)");
    row("401 in its words", RawAnswer::body(R"({"error": "密钥过期"})", 401),
        "authenticationFailed\\(密钥过期\\)");
    row("401 with a challenge",
        withHeaders(401, "WWW-Authenticate: Basic realm=\"news\"\r\n", R"({"error": "密钥过期"})"),
        "authenticationFailed\\(密钥过期\\)");
    row("403", RawAnswer::notJson(403), "networkError\\(禁止访问\\)");
    row("403 in its words", RawAnswer::body(R"({"error": "没有权限"})", 403), "networkError\\(没有权限\\)");
    row("404", RawAnswer::body(R"({"error": "没有"})", 404),
        "networkError\\(网络错误 \\(203\\): .+\n服务器地址: %1\\)");
    row("409", RawAnswer::body("{}", 409), "networkError\\(网络错误 \\(206\\): .+\n服务器地址: %1\\)");
    row("429", RawAnswer::notJson(429), "networkError\\(请求过于频繁，请稍后再试\\)");
    row("429 in its words", RawAnswer::body(R"({"error": "每分钟最多10次", "wait_seconds": 40})", 429),
        "networkError\\(每分钟最多10次\\)");
    row("500", RawAnswer::body(R"({"error": "数据库"})", 500),
        "networkError\\(网络错误 \\(401\\): .+\n服务器地址: %1\\)");
    row("500 of 4 MB", RawAnswer::huge(4 << 20, 500),
        "networkError\\(网络错误 \\(401\\): .+\n服务器地址: %1\\)");
    row("502", RawAnswer::notJson(502), "networkError\\(网络错误 \\(499\\): .+\n服务器地址: %1\\)");
    row("503", RawAnswer::notJson(503), "networkError\\(网络错误 \\(403\\): .+\n服务器地址: %1\\)");
}

void TestApiClientFailures::anyFaultIsReportedAndTheNextRequestWorks()
{
    QFETCH(RawAnswer, fault);
    QFETCH(int, limitMs);
    QFETCH(QString, pattern);
    RawHttpServer server;
    server.setAnswer(fault);
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setTimeout(limitMs);
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.entries().size(), 1);
    const QString baseUrl = QRegularExpression::escape(server.url() + QLatin1Char('/'));
    const QRegularExpression expected(
        QRegularExpression::anchoredPattern(pattern.contains(text("%1")) ? pattern.arg(baseUrl) : pattern));
    const QString line = seen.log.lines().first();
    QVERIFY2(expected.match(line).hasMatch(), qPrintable(line));
    QVERIFY(!ApiClientPeer::hasCurrentReply(client));
    QVERIFY(!ApiClientPeer::timeoutTimer(client).isActive());

    seen.log.clear();
    server.setAnswer(RawAnswer::body(R"({"status": "ok", "version": "3.1"})"));
    client.setTimeout(ampleLimitMs);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QCOMPARE(seen.log.lines(), QStringList(text("healthCheckResult(true, 3.1)")));
    QVERIFY(ApiClientPeer::settles(client));
}

void TestApiClientFailures::aRefusedConnectionIsReportedAndTheNextRequestWorks()
{
    RawHttpServer server;
    server.refuseConnections();
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(
        seen.log.lines(),
        QStringList(text("networkError(连接被拒绝: Connection refused\n服务器地址: %1/)").arg(server.url())));
    server.listenAgain();
    server.setAnswer(RawAnswer::body(R"({"status": "ok", "version": "3.1"})"));
    client.healthCheck();
    QVERIFY(seen.log.waitFor(2));
    QCOMPARE(seen.log.lines().last(), text("healthCheckResult(true, 3.1)"));
}

void TestApiClientFailures::anAddressThatLeadsNowhereIsReported_data()
{
    QTest::addColumn<QString>("baseUrl");
    QTest::addColumn<QString>("prefix");
    QTest::newRow("none") << QString() << text("networkError(网络错误 (");
    QTest::newRow("a foreign scheme") << text("gopher://127.0.0.1/") << text("networkError(网络错误 (301): ");
    QTest::newRow("no scheme") << text("news") << text("networkError(网络错误 (");
    QTest::newRow("a port that is none") << text("http://127.0.0.1:99999") << text("networkError(");
    QTest::newRow("no host") << text("http:///") << text("networkError(");
}

void TestApiClientFailures::anAddressThatLeadsNowhereIsReported()
{
    QFETCH(QString, baseUrl);
    QFETCH(QString, prefix);
    ApiClient client;
    client.setBaseUrl(baseUrl);
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.entries().size(), 1);
    const QString line = seen.log.lines().first();
    QVERIFY2(line.startsWith(prefix), qPrintable(line));
}

void TestApiClientFailures::aRefusedOperationGetsItsAnswer_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, int status, const char *line, const Operation &operation) {
        QTest::addRow("%d to %s", status, name) << operation << status << text(line);
    };
    const Operation addKeyword = [](ApiClient &c) { c.addKeyword(text("a"), true, true); };
    const Operation updateKeyword = [](ApiClient &c) { c.updateKeyword(1, text("a"), true, true); };
    const Operation deleteKeyword = [](ApiClient &c) { c.deleteKeyword(1); };
    const Operation loginUser = [](ApiClient &c) { c.loginUser(text("a"), text("b")); };

    row("resetPassword", 400, "passwordResetCompleted(false, 不行)",
        [](ApiClient &c) { c.resetPassword(text("a"), text("b"), text("c")); });
    row("registerUser", 400, "userRegistered(false, 不行)",
        [](ApiClient &c) { c.registerUser(text("a"), text("b"), text("c"), text("d")); });
    row("loginUser", 400, "userLoggedIn(false, 不行)", loginUser);
    row("sendEmailVerification", 400, "emailCodeSent(false, 不行)",
        [](ApiClient &c) { c.sendEmailVerification(text("a")); });
    row("sendEmailVerificationForReset", 400, "emailCodeResetSent(false, 不行)",
        [](ApiClient &c) { c.sendEmailVerificationForReset(text("a")); });
    row("verifyEmailCode", 400, "emailCodeVerified(false, 不行)",
        [](ApiClient &c) { c.verifyEmailCode(text("a"), text("b")); });
    row("addKeyword", 400, "errorOccurred(不行)", addKeyword);
    row("updateKeyword", 400, "errorOccurred(不行)", updateKeyword);
    row("deleteKeyword", 400, "errorOccurred(不行)", deleteKeyword);
    row("getNews", 400, "networkError(不行)", [](ApiClient &c) { c.getNews(1, 2, QString()); });
    row("addKeyword", 403, "errorOccurred(不行)", addKeyword);
    row("updateKeyword", 403, "errorOccurred(不行)", updateKeyword);
    row("deleteKeyword", 403, "errorOccurred(不行)", deleteKeyword);
    row("loginUser", 403, "networkError(不行)", loginUser);
    row("addKeyword", 401, "authenticationFailed(不行)", addKeyword);
    row("loginUser", 401, "authenticationFailed(不行)", loginUser);
    row("addKeyword", 429, "networkError(不行)", addKeyword);
}

void TestApiClientFailures::aRefusedOperationGetsItsAnswer()
{
    QFETCH(Operation, operation);
    QFETCH(int, status);
    QFETCH(QString, line);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": false, "error": "不行", "session_token": "x"})", status));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    operation(client);
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), QStringList(line));
    QCOMPARE(ApiClientPeer::sessionToken(client), QString());
}

void TestApiClientFailures::aFailureIsLoggedByName()
{
    RawHttpServer server;
    server.refuseConnections();
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    QTest::ignoreMessage(QtWarningMsg, "handleNetworkError error: ConnectionRefusedError Connection refused");
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
}

/// Sends one request that runs into its time limit.
void TestApiClientFailures::timeOut(ApiClient &client, RawHttpServer &server, const NewsSignalLog &seen)
{
    server.setAnswer(RawAnswer::hang());
    client.setTimeout(shortLimitMs);
    const int before = seen.log.count(text("networkError"));
    const auto timedOut = [&seen] {
        return !seen.log.lines().isEmpty() && seen.log.lines().last() == text("networkError(请求超时)");
    };
    client.getNews(1, 200, QString());
    QVERIFY(waitUntil([&] { return seen.log.count(text("networkError")) > before && timedOut(); }, 10000));
    client.setTimeout(ampleLimitMs);
}

void TestApiClientFailures::theFirstSevenTimeOutsAreReportedAlone()
{
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    const QString plain = text("networkError(请求超时)");
    const QString counted = text("networkError(网络通讯异常: 连续%1次请求失败\n服务器地址: %2/)");
    QStringList expected;
    for (int number = 1; number <= 7; ++number) {
        timeOut(client, server, seen);
        expected.append(plain);
        QCOMPARE(seen.log.lines(), expected);
    }
    for (int number = 8; number <= 9; ++number) {
        timeOut(client, server, seen);
        expected << counted.arg(QString::number(number), server.url()) << plain;
        QCOMPARE(seen.log.lines(), expected);
    }
    QVERIFY(ApiClientPeer::settles(client));
}

void TestApiClientFailures::oneSuccessStartsTheCountAgain_data()
{
    QTest::addColumn<RawAnswer>("answer");
    QTest::newRow("a proper reply") << RawAnswer::body("{}");
    QTest::newRow("a reply that is not JSON") << RawAnswer::notJson();
    QTest::newRow("a redirection") << withHeaders(302, "Location: /elsewhere\r\n", "moved");
}

void TestApiClientFailures::oneSuccessStartsTheCountAgain()
{
    QFETCH(RawAnswer, answer);
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    for (int number = 1; number <= 7; ++number)
        timeOut(client, server, seen);
    server.setAnswer(answer);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(8));
    seen.log.clear();
    for (int number = 1; number <= 7; ++number)
        timeOut(client, server, seen);
    QCOMPARE(seen.log.entries().size(), 7);
    timeOut(client, server, seen);
    QCOMPARE(seen.log.entries().size(), 9);
    QVERIFY(seen.log.lines().at(7).startsWith(text("networkError(网络通讯异常: 连续8次请求失败")));
}

void TestApiClientFailures::failuresOtherThanTimeOutsNeitherAddNorReset_data()
{
    QTest::addColumn<bool>("refused");
    QTest::addColumn<RawAnswer>("answer");
    QTest::newRow("refused connections") << true << RawAnswer();
    QTest::newRow("resets") << false << RawAnswer::reset();
    QTest::newRow("status 500") << false << RawAnswer::body("{}", 500);
    QTest::newRow("status 429") << false << RawAnswer::body("{}", 429);
    QTest::newRow("status 400") << false << RawAnswer::body("{}", 400);
}

void TestApiClientFailures::failuresOtherThanTimeOutsNeitherAddNorReset()
{
    QFETCH(bool, refused);
    QFETCH(RawAnswer, answer);
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    for (int number = 1; number <= 6; ++number)
        timeOut(client, server, seen);
    if (refused)
        server.refuseConnections();
    server.setAnswer(answer);
    for (int number = 1; number <= 10; ++number) {
        client.getNews(1, 200, QString());
        QVERIFY(seen.log.waitFor(6 + number));
    }
    if (refused)
        server.listenAgain();
    for (const QString &line : seen.log.lines())
        QVERIFY2(!line.contains(text("网络通讯异常")), qPrintable(line));

    seen.log.clear();
    timeOut(client, server, seen);
    QCOMPARE(seen.log.lines(), QStringList(text("networkError(请求超时)")));
    timeOut(client, server, seen);
    QCOMPARE(seen.log.entries().size(), 3);
    QVERIFY(seen.log.lines().at(1).startsWith(text("networkError(网络通讯异常: 连续8次请求失败")));
}

void TestApiClientFailures::aTimeOutEndsOnlyTheNewestRequest()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(server.waitForRequests(1));
    client.setTimeout(shortLimitMs);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QCOMPARE(seen.log.lines(), QStringList(text("networkError(请求超时)")));
    // The older one is still under way, and its reply is read under the tag of the newer.
    QVERIFY(server.release(0, RawAnswer::body(R"({"status": "ok", "version": "3.1"})")));
    QVERIFY(seen.log.waitFor(2));
    QCOMPARE(seen.log.lines().last(), text("healthCheckResult(true, 3.1)"));
    QVERIFY(ApiClientPeer::settles(client));
}

void TestApiClientFailures::aNewRequestStartsTheLimitAnew()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setTimeout(shortLimitMs);
    client.healthCheck();
    client.setTimeout(ampleLimitMs);
    client.healthCheck();
    const QTimer &timer = ApiClientPeer::timeoutTimer(client);
    QVERIFY(timer.isActive() && timer.isSingleShot());
    QCOMPARE(timer.interval(), ampleLimitMs);
}

void TestApiClientFailures::theLimitIsTenSecondsUntilItIsSet()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    client.setBaseUrl(server.url());
    client.healthCheck();
    QVERIFY(ApiClientPeer::timeoutTimer(client).isActive());
    QCOMPARE(ApiClientPeer::timeoutTimer(client).interval(), 10000);
}

void TestApiClientFailures::aTimerWithoutARequestDoesNothing()
{
    ApiClient client;
    NewsSignalLog seen(client);
    QVERIFY(QMetaObject::invokeMethod(&client, "handleTimeout", Qt::DirectConnection));
    QVERIFY(QMetaObject::invokeMethod(&client, "handleNetworkReply", Qt::DirectConnection));
    QVERIFY(
        QMetaObject::invokeMethod(&client, "handleNetworkError", Qt::DirectConnection,
                                  Q_ARG(QNetworkReply::NetworkError, QNetworkReply::ConnectionRefusedError)));
    QCOMPARE(seen.log.lines(), QStringList());
}

void TestApiClientFailures::overtakenRequestsWithoutAnEndAreGivenUp()
{
    constexpr int connections = 6; // connections to one host at a time
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setTimeout(shortLimitMs);
    NewsSignalLog seen(client);
    const LogCapture log;
    for (int number = 0; number <= connections; ++number)
        client.getNews(1, 200, QString());
    QVERIFY(seen.log.waitFor(connections + 1));
    QVERIFY(ApiClientPeer::settles(client));
    QStringList expected;
    for (int number = 0; number <= connections; ++number)
        expected.append(text("networkError(请求超时)"));
    QCOMPARE(seen.log.lines(), expected);
    QCOMPARE(server.requests().size(), connections);
    QCOMPARE(ApiClientPeer::consecutiveFailures(client), 1); // the newest alone
    QCOMPARE(log.count(text("Giving up an overtaken request")), connections);

    seen.log.clear();
    server.setAnswer(RawAnswer::body(R"({"status": "ok", "version": "3.1"})"));
    client.setTimeout(ampleLimitMs);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QCOMPARE(seen.log.lines(), QStringList(text("healthCheckResult(true, 3.1)")));
}

void TestApiClientFailures::anOvertakenRequestIsGivenUpWhileTheNewerOnesGoOn()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hang());
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setTimeout(shortLimitMs);
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    client.setTimeout(ampleLimitMs);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QCOMPARE(seen.log.lines(), QStringList(text("networkError(请求超时)")));
    QCOMPARE(ApiClientPeer::consecutiveFailures(client), 0);
    // The newer one is still tracked and under its own limit.
    QVERIFY(ApiClientPeer::hasCurrentReply(client));
    QVERIFY(ApiClientPeer::timeoutTimer(client).isActive());
}

void TestApiClientFailures::anOvertakenReplyThatArrivesInTimeIsReadAndNotGivenUp()
{
    RawHttpServer server;
    server.queueAnswer(RawAnswer::hold());
    server.queueAnswer(RawAnswer::hang());
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setTimeout(300);
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(server.waitForRequests(1));
    client.getNews(1, 200, QString());
    QVERIFY(server.waitForRequests(2));
    client.setTimeout(ampleLimitMs);
    server.queueAnswer(RawAnswer::body(R"({"status": "ok", "version": "3.1"})"));
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(server.release(0, RawAnswer::body(R"({"status": "ok", "version": "3.0"})")));
    QVERIFY(seen.log.waitFor(2));
    // The end of the second request is later than the end that the first one would have had.
    QVERIFY(seen.log.waitFor(3));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(),
             QStringList({text("healthCheckResult(true, 3.1)"), text("healthCheckResult(true, 3.0)"),
                          text("networkError(请求超时)")}));
}

LARKSPIRE_GUILESS_TEST_MAIN(TestApiClientFailures)
#include "tst_ApiClientFailures.moc"
