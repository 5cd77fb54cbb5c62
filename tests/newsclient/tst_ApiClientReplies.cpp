#include "newsclient/ApiClient.h"
#include "newsclient/ApiClientPeer.h"
#include "newsclient/NewsSignalLog.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/RawHttpServer.h"

#include <QCoreApplication>
#include <QFile>

#include <functional>
#include <stdexcept>

using Operation = std::function<void(ApiClient &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// The pages of news share one shape.
const char newsPage[] =
    R"({"data": {"news": [{"id": "a"}, "text", {"id": "b"}], "pagination": {"total": 77}}})";

} // namespace

class TestApiClientReplies : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyTagTurnsItsReplyIntoItsSignal_data();
    void everyTagTurnsItsReplyIntoItsSignal();
    void aReplyOfWrongTypesYieldsDefaultsAndNoError_data();
    void aReplyOfWrongTypesYieldsDefaultsAndNoError();
    void theNewsPayloadArrivesWhole();
    void theKeywordOfAChangeIsReadFromTheUrl_data();
    void theKeywordOfAChangeIsReadFromTheUrl();
    void aTagThatNothingMatchesDoesNothing();
    void everyOperationIsRoutedToItsOwnBranch_data();
    void everyOperationIsRoutedToItsOwnBranch();

    void aRolledTokenIsStoredWithoutASignal_data();
    void aRolledTokenIsStoredWithoutASignal();
    void aRolledTokenReachesTheFileInTheSettingsOwnTime();
    void aTokenEqualToTheCurrentOnePersistsNothing();
    void aRolledTokenIdentifiesTheNextRequest();
    void aLoginTakesOverKeyTokenAndDevice_data();
    void aLoginTakesOverKeyTokenAndDevice();
    void theTokenOfALoginIsNotStored();
    void aLoginWithoutTokenIdentifiesByTheNewKeyAndDevice();
    void aClientThatWasToldNoDeviceIsADesktopOfThisVersion();
    void aLoginByCodeTakesOverTheToken_data();
    void aLoginByCodeTakesOverTheToken();

    void reauthenticatingDropsTheTokenAndReportsTheOutcome_data();
    void reauthenticatingDropsTheTokenAndReportsTheOutcome();
    void aConnectionTestThatNobodyAskedForReauthenticatesNothing();
    void aStoredRequestIsSentAfterReauthenticating();
    void aStoredRequestWaitsWhenReauthenticatingFails();
    void halfAStoredRequestIsNotSent_data();
    void halfAStoredRequestIsNotSent();
    void noOperationStoresARequest();

    void overlappingRepliesAreReadUnderTheNewestTag();
    void anOlderReplyStopsTheOneTimer();
    void anExceptionWhileHandlingAReplyIsReported();
    void threeSignalsAndOneMoreAreDeclaredForTheirListeners();
    void noReplyOutlivesItsHandling();
};

void TestApiClientReplies::init()
{
    clearSettings();
}

void TestApiClientReplies::everyTagTurnsItsReplyIntoItsSignal_data()
{
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char *tag, const char *what, const QByteArray &reply, const QByteArray &line) {
        QTest::addRow("%s, %s", tag, what) << text(tag) << reply << QStringList(QString::fromUtf8(line));
    };

    row("getNews", "page", newsPage, "newsReceived([a b], 77)");
    row("getNews", "no pagination", R"({"data": {"news": [{"id": "a"}]}})", "newsReceived([a], 0)");
    row("getNews", "no news", R"({"data": {"pagination": {"total": 5}}})", "newsReceived([], 5)");
    row("getNews", "an array at the top", R"([{"id": "a"}])", "newsReceived([], 0)");
    row("searchNews", "page", newsPage, "newsSearchResult([a b], 77)");
    row("getSelectedNews", "page", newsPage, "selectedNewsReceived([a b], 77)");
    row("getInteractivePlatformNews", "page", newsPage, "interactivePlatformNewsReceived([a b], 77)");
    row("getNewsAfterTime", "page", newsPage, "incrementalNewsReceived([a b])");
    row("getNewsAfterId", "page", newsPage, "incrementalNewsReceived([a b])");
    row("getLatestNews", "list", R"({"data": [{"id": "a"}, 7, {"id": "b"}]})", "latestNewsReceived([a b])");

    row("getKeywords", "list",
        R"({"data": [{"id": 2, "keyword": "锂电"}, null, {"id": 1, "keyword": "降准"}]})",
        "keywordsReceived([2:锂电 1:降准])");
    row("addKeyword", "record", R"({"data": {"id": 17, "keyword": "锂电"}})", "keywordAdded(17:锂电)");
    row("updateKeyword", "no id in the URL", R"({"data": {"id": 17}})", "keywordUpdated(-1)");
    row("deleteKeyword", "no id in the URL", R"({"data": {"id": 17}})", "keywordDeleted(-1)");

    row("getStats", "record", R"({"data": {"total_news": 9}})", "statsReceived(total 9)");
    row("getUserDevices", "list", R"({"data": [{"device_id": "x"}, {"device_id": "y"}]})",
        "devicesReceived([x y])");
    row("removeDevice", "record", R"({"data": {"device_id": "x"}})", "deviceRemoved(x)");

    row("healthCheck", "well", R"({"status": "ok", "version": "3.1"})", "healthCheckResult(true, 3.1)");
    row("healthCheck", "no version", R"({"status": "ok"})", "healthCheckResult(true, 未知版本)");
    row("healthCheck", "capitals", R"({"status": "OK", "version": "3.1"})", "healthCheckResult(false, 3.1)");
    row("healthCheck", "ill", R"({"status": "degraded", "version": "3.1"})", "healthCheckResult(false, 3.1)");
    row("healthCheck", "nothing", "{}", "healthCheckResult(false, 未知版本)");

    row("testApiConnection", "well", R"({"success": true, "message": "好"})",
        "apiConnectionTestResult(true, 好)");
    row("testApiConnection", "nothing", "{}", "apiConnectionTestResult(false, 连接测试完成)");

    row("getUserInfo", "object", R"({"data": {"id": 3, "odd": [1]}, "success": false})",
        R"(userInfoReceived({"id":3,"odd":[1]}))");
    row("getUserInfo", "nothing", "{}", "userInfoReceived({})");

    const struct
    {
        const char *tag;
        const char *signal;
    } messages[] = {
        {"bindWechat", "bindWechatResponse"},
        {"bindEmail", "bindEmailResponse"},
        {"verifyWechatQr", "wechatQrVerified"},
        {"sendEmailVerification", "emailCodeSent"},
        {"sendEmailVerificationForReset", "emailCodeResetSent"},
        {"verifyEmailCode", "emailCodeVerified"},
        {"registerUser", "userRegistered"},
        {"loginUser", "userLoggedIn"},
        {"resetPassword", "passwordResetCompleted"},
        {"verifyWechatLogin", "wechatLoginVerified"},
        {"sendLoginCode", "loginCodeSent"},
        {"loginWithCode", "loginWithCodeResult"},
    };
    for (const auto &message : messages) {
        const auto line = [&message](const char *arguments) {
            return QByteArray(message.signal) + arguments;
        };
        row(message.tag, "done", R"({"success": true, "message": "好了"})", line("(true, 好了)"));
        row(message.tag, "refused", R"({"success": false, "message": "不行"})", line("(false, 不行)"));
        row(message.tag, "nothing", "{}", line("(false, 操作完成)"));
        row(message.tag, "success that is no bool", R"({"success": 1, "message": "好了"})",
            line("(false, 好了)"));
        row(message.tag, "an empty message", R"({"success": true, "message": ""})", line("(true, )"));
    }
    for (const auto &qr : {std::pair("generateWechatQr", "wechatQrGenerated"),
                           std::pair("generateWechatLoginQr", "wechatLoginQrGenerated")}) {
        row(qr.first, "done", R"({"success": true, "message": "m", "qr_token": "t", "qr_code": "c"})",
            QByteArray(qr.second) + "(true, t, c)");
        row(qr.first, "inside data", R"({"success": true, "data": {"qr_token": "t", "qr_code": "c"}})",
            QByteArray(qr.second) + "(true, , )");
    }
}

void TestApiClientReplies::everyTagTurnsItsReplyIntoItsSignal()
{
    QFETCH(QString, tag);
    QFETCH(QByteArray, reply);
    QFETCH(QStringList, lines);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    ApiClientPeer::send(client, tag);
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), lines);
}

void TestApiClientReplies::aReplyOfWrongTypesYieldsDefaultsAndNoError_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("an empty object") << QByteArray("{}");
    QTest::newRow("an empty array") << QByteArray("[]");
    QTest::newRow("numbers") << QByteArray(R"({"data": 7, "success": 7, "message": 7, "status": 7})");
    QTest::newRow("texts") << QByteArray(R"({"data": "x", "success": "true", "session_token": 7})");
    QTest::newRow("nulls") << QByteArray(R"({"data": null, "success": null, "message": null})");
    QTest::newRow("lists in place of records") << QByteArray(R"({"data": [[1], "x", null]})");
    QTest::newRow("records in place of lists")
        << QByteArray(R"({"data": {"news": {"id": "a"}, "pagination": [1], "session_token": {}}})");
    QTest::newRow("wrong inside the records")
        << QByteArray(R"({"data": {"news": [{"id": 7, "title": [], "publish_time": 7, "has_keywords": "x",
                          "matched_keywords": 7}], "pagination": {"total": "77"}}})");
}

void TestApiClientReplies::aReplyOfWrongTypesYieldsDefaultsAndNoError()
{
    QFETCH(QByteArray, reply);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    QStringList expected;
    const std::pair<const char *, const char *> tags[] = {{"getNews", "newsReceived"},
                                                          {"searchNews", "newsSearchResult"},
                                                          {"getSelectedNews", "selectedNewsReceived"},
                                                          {"getNewsAfterTime", "incrementalNewsReceived"},
                                                          {"getLatestNews", "latestNewsReceived"},
                                                          {"getKeywords", "keywordsReceived"},
                                                          {"addKeyword", "keywordAdded"},
                                                          {"deleteKeyword", "keywordDeleted"},
                                                          {"getStats", "statsReceived"},
                                                          {"getUserDevices", "devicesReceived"},
                                                          {"removeDevice", "deviceRemoved"},
                                                          {"healthCheck", "healthCheckResult"},
                                                          {"testApiConnection", "apiConnectionTestResult"},
                                                          {"getUserInfo", "userInfoReceived"},
                                                          {"generateWechatQr", "wechatQrGenerated"},
                                                          {"loginUser", "userLoggedIn"},
                                                          {"loginWithCode", "loginWithCodeResult"}};
    for (const auto &tag : tags) {
        expected.append(text(tag.second));
        ApiClientPeer::send(client, text(tag.first));
        QVERIFY(seen.log.waitFor(expected.size()));
    }
    QCOMPARE(seen.log.names(), expected);
}

void TestApiClientReplies::theNewsPayloadArrivesWhole()
{
    RawHttpServer server;
    server.setAnswer(
        RawAnswer::body(R"({"data": {"news": [{"id": "n-1", "title": "央行降准", "content": "正文",
        "source": "来源", "category": "快讯", "url": "https://larkspire.example/1",
        "publish_time": "2024-03-15T09:30:05", "has_keywords": true, "matched_keywords": ["降准"]}],
        "pagination": {"total": 1}}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    QSignalSpy received(&client, &ApiClient::newsReceived);
    client.getNews(1, 200, QString());
    QVERIFY(received.wait());
    const auto list = received.first().first().value<QList<NewsData>>();
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.first().title, text("央行降准"));
    QCOMPARE(list.first().publishTime, QDateTime(QDate(2024, 3, 15), QTime(9, 30, 5)));
    QCOMPARE(list.first().matchedKeywords, QStringList(text("降准")));
}

void TestApiClientReplies::theKeywordOfAChangeIsReadFromTheUrl_data()
{
    QTest::addColumn<int>("keywordId");
    QTest::addColumn<int>("expected");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("17") << 17 << 17 << QByteArray("{}");
    QTest::newRow("17, whatever the body says")
        << 17 << 17 << QByteArray(R"({"data": {"id": 99}, "id": 98})");
    QTest::newRow("0") << 0 << 0 << QByteArray("{}");
    QTest::newRow("the largest") << 2147483647 << 2147483647 << QByteArray("{}");
    QTest::newRow("below 0, which is no number in a path") << -5 << -1 << QByteArray("{}");
}

void TestApiClientReplies::theKeywordOfAChangeIsReadFromTheUrl()
{
    QFETCH(int, keywordId);
    QFETCH(int, expected);
    QFETCH(QByteArray, reply);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.deleteKeyword(keywordId);
    QVERIFY(seen.log.waitFor(1));
    client.updateKeyword(keywordId, text("锂电"), true, true);
    QVERIFY(seen.log.waitFor(2));
    QCOMPARE(seen.log.lines(), QStringList({text("keywordDeleted(%1)").arg(expected),
                                            text("keywordUpdated(%1)").arg(expected)}));
}

void TestApiClientReplies::aTagThatNothingMatchesDoesNothing()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": true, "data": {}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    for (const char *tag : {"", "GETNEWS", "getNewsX", "unheardOf"})
        ApiClientPeer::send(client, text(tag));
    QVERIFY(server.waitForRequests(4));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), QStringList());
}

void TestApiClientReplies::everyOperationIsRoutedToItsOwnBranch_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("signal");
    const auto row = [](const char *name, const char *signal, const Operation &operation) {
        QTest::newRow(name) << operation << text(signal);
    };
    row("getNews", "newsReceived", [](ApiClient &c) { c.getNews(1, 2, QString()); });
    row("getNewsAfterId", "incrementalNewsReceived", [](ApiClient &c) { c.getNewsAfterId(text("a"), 2); });
    row("getNewsAfterTime", "incrementalNewsReceived",
        [](ApiClient &c) { c.getNewsAfterTime(QDateTime::fromSecsSinceEpoch(1), 2); });
    row("getSelectedNews", "selectedNewsReceived", [](ApiClient &c) { c.getSelectedNews(1, 2); });
    row("getInteractivePlatformNews", "interactivePlatformNewsReceived",
        [](ApiClient &c) { c.getInteractivePlatformNews(1, 2); });
    row("searchNews", "newsSearchResult", [](ApiClient &c) { c.searchNews(text("a")); });
    row("getKeywords", "keywordsReceived", [](ApiClient &c) { c.getKeywords(); });
    row("addKeyword", "keywordAdded", [](ApiClient &c) { c.addKeyword(text("a"), true, true); });
    row("updateKeyword", "keywordUpdated", [](ApiClient &c) { c.updateKeyword(1, text("a"), true, true); });
    row("deleteKeyword", "keywordDeleted", [](ApiClient &c) { c.deleteKeyword(1); });
    row("healthCheck", "healthCheckResult", [](ApiClient &c) { c.healthCheck(); });
    row("getUserInfo", "userInfoReceived", [](ApiClient &c) { c.getUserInfo(); });
    row("bindWechat", "bindWechatResponse", [](ApiClient &c) { c.bindWechat(text("a")); });
    row("bindEmail", "bindEmailResponse", [](ApiClient &c) { c.bindEmail(text("a")); });
    row("generateWechatQr", "wechatQrGenerated", [](ApiClient &c) { c.generateWechatQr(text("a")); });
    row("verifyWechatQr", "wechatQrVerified", [](ApiClient &c) { c.verifyWechatQr(text("a")); });
    row("sendEmailVerification", "emailCodeSent", [](ApiClient &c) { c.sendEmailVerification(text("a")); });
    row("sendEmailVerificationForReset", "emailCodeResetSent",
        [](ApiClient &c) { c.sendEmailVerificationForReset(text("a")); });
    row("verifyEmailCode", "emailCodeVerified",
        [](ApiClient &c) { c.verifyEmailCode(text("a"), text("b")); });
    row("registerUser", "userRegistered",
        [](ApiClient &c) { c.registerUser(text("a"), text("b"), text("c"), text("d")); });
    row("loginUser", "userLoggedIn", [](ApiClient &c) { c.loginUser(text("a"), text("b")); });
    row("resetPassword", "passwordResetCompleted",
        [](ApiClient &c) { c.resetPassword(text("a"), text("b"), text("c")); });
}

void TestApiClientReplies::everyOperationIsRoutedToItsOwnBranch()
{
    QFETCH(Operation, operation);
    QFETCH(QString, signal);
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    operation(client);
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.names(), QStringList(signal));
}

void TestApiClientReplies::aRolledTokenIsStoredWithoutASignal_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("token");
    QTest::newRow("at the top") << QByteArray(R"({"session_token": "top"})") << text("top");
    QTest::newRow("inside data") << QByteArray(R"({"data": {"session_token": "inner"}})") << text("inner");
    QTest::newRow("both") << QByteArray(R"({"session_token": "top", "data": {"session_token": "inner"}})")
                          << text("top");
    QTest::newRow("an empty one at the top")
        << QByteArray(R"({"session_token": "", "data": {"session_token": "inner"}})") << text("inner");
    QTest::newRow("one of another type at the top")
        << QByteArray(R"({"session_token": 7, "data": {"session_token": "inner"}})") << text("inner");
    QTest::newRow("none") << QByteArray(R"({"data": {}})") << text("current");
    QTest::newRow("both empty") << QByteArray(R"({"session_token": "", "data": {"session_token": ""}})")
                                << text("current");
    QTest::newRow("data that is a list")
        << QByteArray(R"({"data": [{"session_token": "inner"}]})") << text("current");
}

void TestApiClientReplies::aRolledTokenIsStoredWithoutASignal()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, token);
    ConfigManager::instance()->setSessionToken(text("current"));
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setSessionToken(text("current"));
    NewsSignalLog seen(client);
    client.getUserInfo();
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(ApiClientPeer::sessionToken(client), token);
    QCOMPARE(ConfigManager::instance()->getSessionToken(), token);
    QCOMPARE(seen.log.names(), QStringList(text("userInfoReceived")));
}

void TestApiClientReplies::aRolledTokenReachesTheFileInTheSettingsOwnTime()
{
    const auto fileHoldsTheToken = [] {
        QFile file(settingsFilePath());
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("rolled-token");
    };
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"session_token": "rolled-token"})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.getUserInfo();
    QString storedAtOnce;
    bool writtenAtOnce = true;
    // Comes right after the client's own handler, before the event loop turns again.
    connect(ApiClientPeer::currentReply(client), &QNetworkReply::finished, this, [&] {
        storedAtOnce = ConfigManager::instance()->getSessionToken();
        writtenAtOnce = fileHoldsTheToken();
    });
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(storedAtOnce, text("rolled-token"));
    QVERIFY(!writtenAtOnce);
    QTRY_VERIFY(fileHoldsTheToken());
}

void TestApiClientReplies::aTokenEqualToTheCurrentOnePersistsNothing()
{
    ConfigManager::instance()->setSessionToken(text("stored by others"));
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"session_token": "current"})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setSessionToken(text("current"));
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(ConfigManager::instance()->getSessionToken(), text("stored by others"));
}

void TestApiClientReplies::aRolledTokenIdentifiesTheNextRequest()
{
    RawHttpServer server;
    server.queueAnswer(RawAnswer::body(R"({"session_token": "second"})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setSessionToken(text("first"));
    NewsSignalLog seen(client);
    client.healthCheck();
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::settles(client));
    client.healthCheck();
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.requests().at(0).header("X-Session-Token"), QByteArray("first"));
    QCOMPARE(server.requests().at(1).header("X-Session-Token"), QByteArray("second"));
}

void TestApiClientReplies::aLoginTakesOverKeyTokenAndDevice_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("token");
    QTest::newRow("everything") << QByteArray(R"({"success": true, "message": "好", "data":
        {"api_key": "k-2", "session_token": "t-2", "device_id": "d-2"}})")
                                << QStringList(
                                       {text("sessionTokenUpdated(t-2)"), text("userLoggedIn(true, 好)")})
                                << text("t-2");
    QTest::newRow("no token") << QByteArray(R"({"success": true, "data": {"api_key": "k-2"}})")
                              << QStringList(text("userLoggedIn(true, 操作完成)")) << text("t-1");
    QTest::newRow("an empty token") << QByteArray(R"({"success": true, "data": {"session_token": ""}})")
                                    << QStringList(text("userLoggedIn(true, 操作完成)")) << text("t-1");
    QTest::newRow("refused, and the token rolls all the same")
        << QByteArray(R"({"success": false, "message": "不行", "data": {"session_token": "t-2"}})")
        << QStringList(text("userLoggedIn(false, 不行)")) << text("t-2");
    QTest::newRow("another token at the top, which the scan takes after the login's")
        << QByteArray(R"({"success": true, "session_token": "t-3", "data": {"session_token": "t-2"}})")
        << QStringList({text("sessionTokenUpdated(t-2)"), text("userLoggedIn(true, 操作完成)")})
        << text("t-3");
}

void TestApiClientReplies::aLoginTakesOverKeyTokenAndDevice()
{
    QFETCH(QByteArray, reply);
    QFETCH(QStringList, lines);
    QFETCH(QString, token);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setSessionToken(text("t-1"));
    NewsSignalLog seen(client);
    client.loginUser(text("li"), text("secret"));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), lines);
    QCOMPARE(ApiClientPeer::sessionToken(client), token);
}

void TestApiClientReplies::theTokenOfALoginIsNotStored()
{
    ConfigManager::instance()->setSessionToken(text("stored by others"));
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": true, "data": {"session_token": "t-2"}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.loginUser(text("li"), text("secret"));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(ApiClientPeer::sessionToken(client), text("t-2"));
    // Meant: the login only tells it, and the scan of the reply finds nothing new by then.
    QCOMPARE(ConfigManager::instance()->getSessionToken(), text("stored by others"));
}

void TestApiClientReplies::aLoginWithoutTokenIdentifiesByTheNewKeyAndDevice()
{
    RawHttpServer server;
    server.queueAnswer(
        RawAnswer::body(R"({"success": true, "data": {"api_key": "k-2", "device_id": "d-2"}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setApiKey(text("k-1"));
    client.setDeviceInfo(text("d-1"), text("PC"), text("desktop"), text("Windows 11"), text("2.0.1"));
    NewsSignalLog seen(client);
    client.loginUser(text("li"), text("secret"));
    QVERIFY(seen.log.waitFor(1));
    client.healthCheck();
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.requests().at(0).header("X-API-Key"), QByteArray("k-1"));
    QCOMPARE(server.requests().at(1).header("X-API-Key"), QByteArray("k-2"));
    QCOMPARE(server.requests().at(1).header("X-Device-ID"), QByteArray("d-2"));
}

void TestApiClientReplies::aClientThatWasToldNoDeviceIsADesktopOfThisVersion()
{
    RawHttpServer server;
    server.queueAnswer(RawAnswer::body(R"({"success": true, "data": {"device_id": "d-2"}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.loginUser(text("li"), text("secret"));
    QVERIFY(seen.log.waitFor(1));
    client.healthCheck();
    QVERIFY(server.waitForRequests(2));
    const RawRequest &request = server.requests().at(1);
    QCOMPARE(request.header("X-Device-ID"), QByteArray("d-2"));
    QCOMPARE(request.header("X-Device-Type"), QByteArray("desktop"));
    QCOMPARE(request.header("X-App-Version"), QByteArray("2.0.1"));
    for (const char *name : {"X-Device-Name", "X-OS-Info"}) {
        QVERIFY(request.hasHeader(name));
        QCOMPARE(request.header(name), QByteArray());
    }
}

void TestApiClientReplies::aLoginByCodeTakesOverTheToken_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("token");
    QTest::newRow("at the top") << QByteArray(R"({"success": true, "session_token": "t-2"})")
                                << QStringList({text("sessionTokenUpdated(t-2)"),
                                                text("loginWithCodeResult(true, 操作完成)")})
                                << text("t-2");
    QTest::newRow("inside data") << QByteArray(R"({"success": true, "data": {"session_token": "t-2"}})")
                                 << QStringList({text("sessionTokenUpdated(t-2)"),
                                                 text("loginWithCodeResult(true, 操作完成)")})
                                 << text("t-2");
    QTest::newRow("none") << QByteArray(R"({"success": true})")
                          << QStringList(text("loginWithCodeResult(true, 操作完成)")) << QString();
}

void TestApiClientReplies::aLoginByCodeTakesOverTheToken()
{
    QFETCH(QByteArray, reply);
    QFETCH(QStringList, lines);
    QFETCH(QString, token);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    ApiClientPeer::send(client, text("loginWithCode"));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), lines);
    QCOMPARE(ApiClientPeer::sessionToken(client), token);
    QCOMPARE(ConfigManager::instance()->getSessionToken(), token);
}

void TestApiClientReplies::reauthenticatingDropsTheTokenAndReportsTheOutcome_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("accepted") << QByteArray(R"({"success": true, "message": "好"})")
                              << QStringList(
                                     {text("sessionRefreshed()"), text("apiConnectionTestResult(true, 好)")});
    QTest::newRow("refused") << QByteArray(R"({"success": false, "message": "不行"})")
                             << QStringList({text("authenticationFailed(重新登录失败: 不行)"),
                                             text("apiConnectionTestResult(false, 不行)")});
    QTest::newRow("nothing said") << QByteArray("{}")
                                  << QStringList({text("authenticationFailed(重新登录失败: 连接测试完成)"),
                                                  text("apiConnectionTestResult(false, 连接测试完成)")});
}

void TestApiClientReplies::reauthenticatingDropsTheTokenAndReportsTheOutcome()
{
    QFETCH(QByteArray, reply);
    QFETCH(QStringList, lines);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(reply));
    ApiClient client;
    client.setBaseUrl(server.url());
    client.setSessionToken(text("t-1"));
    client.setApiKey(text("k-1"));
    client.setDeviceInfo(text("d-1"), text("PC"), text("desktop"), text("Windows 11"), text("2.0.1"));
    NewsSignalLog seen(client);
    client.reauthenticate();
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(), lines);
    const RawRequest &request = server.requests().first();
    QVERIFY(!request.hasHeader("X-Session-Token"));
    QCOMPARE(request.header("X-API-Key"), QByteArray("k-1"));
    QCOMPARE(request.header("X-Device-ID"), QByteArray("d-1"));

    // The outcome belongs to that one request: a later test is a test and nothing else.
    seen.log.clear();
    ApiClientPeer::send(client, text("testApiConnection"), text("newsapi/test"));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.names(), QStringList(text("apiConnectionTestResult")));
}

void TestApiClientReplies::aConnectionTestThatNobodyAskedForReauthenticatesNothing()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": true})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    ApiClientPeer::setPending(client, text("getNews"), text("newsapi/news"), text("GET"), {});
    NewsSignalLog seen(client);
    ApiClientPeer::send(client, text("testApiConnection"), text("newsapi/test"));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.names(), QStringList(text("apiConnectionTestResult")));
    QCOMPARE(server.requests().size(), 1);
}

void TestApiClientReplies::aStoredRequestIsSentAfterReauthenticating()
{
    RawHttpServer server;
    server.queueAnswer(RawAnswer::body(R"({"success": true})"));
    server.queueAnswer(RawAnswer::body(R"({"data": {"id": 5, "keyword": "锂电"}})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    ApiClientPeer::setPending(client, text("addKeyword"), text("newsapi/keywords"), text("POST"),
                              {{text("keyword"), text("锂电")}});
    NewsSignalLog seen(client);
    client.reauthenticate();
    QVERIFY(seen.log.waitFor(3));
    QCOMPARE(seen.log.lines(),
             QStringList({text("sessionRefreshed()"), text("apiConnectionTestResult(true, 连接测试完成)"),
                          text("keywordAdded(5:锂电)")}));
    QCOMPARE(server.requests().at(1).method, QByteArray("POST"));
    QCOMPARE(server.requests().at(1).target, QByteArray("/newsapi/keywords"));
    QCOMPARE(server.requests().at(1).body, QByteArray("{\n    \"keyword\": \"锂电\"\n}\n"));
    QVERIFY(ApiClientPeer::nothingPending(client));
}

void TestApiClientReplies::aStoredRequestWaitsWhenReauthenticatingFails()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": false})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    ApiClientPeer::setPending(client, text("getNews"), text("newsapi/news"), text("GET"), {});
    client.reauthenticate();
    QVERIFY(server.waitForRequests(1));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(!ApiClientPeer::nothingPending(client));
}

void TestApiClientReplies::halfAStoredRequestIsNotSent_data()
{
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("path");
    QTest::newRow("no tag") << QString() << text("newsapi/news");
    QTest::newRow("no path") << text("getNews") << QString();
}

void TestApiClientReplies::halfAStoredRequestIsNotSent()
{
    QFETCH(QString, tag);
    QFETCH(QString, path);
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"success": true})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    ApiClientPeer::setPending(client, tag, path, text("GET"), {});
    NewsSignalLog seen(client);
    client.reauthenticate();
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.names(), QStringList({text("sessionRefreshed"), text("apiConnectionTestResult")}));
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(!ApiClientPeer::nothingPending(client));
}

void TestApiClientReplies::noOperationStoresARequest()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"error": "x"})", 401));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    client.addKeyword(text("锂电"), true, true);
    client.loginUser(text("li"), text("secret"));
    client.reauthenticate();
    QVERIFY(server.waitForRequests(4));
    QVERIFY(ApiClientPeer::settles(client));
    QVERIFY(ApiClientPeer::nothingPending(client));
}

void TestApiClientReplies::overlappingRepliesAreReadUnderTheNewestTag()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.getNews(1, 200, QString());
    QVERIFY(server.waitForRequests(1));
    client.getKeywords();
    QVERIFY(server.waitForRequests(2));

    // The answer to getNews arrives first and is read as keywords, of which it has none.
    QVERIFY(server.release(0, RawAnswer::body(newsPage)));
    QVERIFY(seen.log.waitFor(1));
    QVERIFY(ApiClientPeer::hasCurrentReply(client));
    QVERIFY(server.release(1, RawAnswer::body(R"({"data": [{"id": 1, "keyword": "锂电"}]})")));
    QVERIFY(seen.log.waitFor(2));
    QCOMPARE(seen.log.lines(),
             QStringList({text("keywordsReceived([])"), text("keywordsReceived([1:锂电])")}));
    QVERIFY(!ApiClientPeer::hasCurrentReply(client));
    QVERIFY(ApiClientPeer::settles(client));
}

void TestApiClientReplies::anOlderReplyStopsTheOneTimer()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    client.healthCheck();
    QVERIFY(server.waitForRequests(1));
    QVERIFY(ApiClientPeer::timeoutTimer(client).isActive());
    client.healthCheck();
    QVERIFY(server.waitForRequests(2));
    QVERIFY(server.release(0, RawAnswer::body("{}")));
    QVERIFY(seen.log.waitFor(1));
    // Meant: there is one timer, and the newer request is left without a limit.
    QVERIFY(!ApiClientPeer::timeoutTimer(client).isActive());
    QVERIFY(ApiClientPeer::hasCurrentReply(client));
}

void TestApiClientReplies::anExceptionWhileHandlingAReplyIsReported()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::body(R"({"session_token": "rolled"})"));
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    const auto connection =
        connect(&client, &ApiClient::userInfoReceived, this, [] { throw std::runtime_error("坏了"); });
    client.getUserInfo();
    QVERIFY(seen.log.waitFor(2));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.lines(),
             QStringList({text("userInfoReceived({})"), text("errorOccurred(处理响应时出错: 坏了)")}));
    QCOMPARE(ApiClientPeer::sessionToken(client), QString());
    disconnect(connection);

    client.getUserInfo();
    QVERIFY(seen.log.waitFor(3));
    QCOMPARE(seen.log.names().last(), text("userInfoReceived"));
}

void TestApiClientReplies::threeSignalsAndOneMoreAreDeclaredForTheirListeners()
{
    ApiClient client;
    QVERIFY(QSignalSpy(&client, &ApiClient::authenticationRequired).isValid());
    QVERIFY(QSignalSpy(&client, &ApiClient::deviceLimitExceeded).isValid());
    QVERIFY(QSignalSpy(&client, &ApiClient::sessionExpired).isValid());
    QVERIFY(QSignalSpy(&client, &ApiClient::passwordResetSent).isValid());
}

void TestApiClientReplies::noReplyOutlivesItsHandling()
{
    RawHttpServer server;
    ApiClient client;
    client.setBaseUrl(server.url());
    NewsSignalLog seen(client);
    for (int i = 0; i < 20; ++i)
        client.healthCheck();
    QVERIFY(seen.log.waitFor(20));
    QVERIFY(ApiClientPeer::settles(client));
    QCOMPARE(seen.log.count(text("healthCheckResult")), 20);
}

LARKSPIRE_GUILESS_TEST_MAIN(TestApiClientReplies)
#include "tst_ApiClientReplies.moc"
