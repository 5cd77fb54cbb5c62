#include "accounts/AuthFixture.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <functional>

using Operation = std::function<bool(AuthManager &)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(RawAnswer)

namespace {

struct Route
{
    const char *name;
    Operation operation;
    const char *signal; ///< the signal with (false, text); null for the validation
};

const std::vector<Route> &routes()
{
    static const std::vector<Route> all = {
        {"login", [](AuthManager &m) { return m.login(text("li"), text("secret"), QString(), QString()); },
         "loginFinished"},
        {"verifyApiKey", [](AuthManager &m) { return m.verifyApiKey(text("k-new")); }, "loginFinished"},
        {"requestFreeApiKey", [](AuthManager &m) { return m.requestFreeApiKey(); }, "loginFinished"},
        {"registerUser",
         [](AuthManager &m) { return m.registerUser(text("li"), text("a@b.cn"), text("secret"), text("1")); },
         "registrationFinished"},
        {"sendVerificationCode",
         [](AuthManager &m) { return m.sendVerificationCode(text("a@b.cn"), text("login")); },
         "verificationCodeSent"},
        {"resetPassword",
         [](AuthManager &m) { return m.resetPassword(text("a@b.cn"), text("1"), text("x")); },
         "passwordResetFinished"},
        {"validateSession", [](AuthManager &m) { return m.validateSession(); }, nullptr},
    };
    return all;
}

/// What every failure of the lower kind says, as a pattern.
const char lowerFailure[] = "网络错误: .+";

} // namespace

class TestAuthManagerFailures : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anyFaultIsReportedOnceAndTheNextRequestWorks_data();
    void anyFaultIsReportedOnceAndTheNextRequestWorks();
    void aRefusedConnectionIsReportedOnceAndTheNextRequestWorks_data();
    void aRefusedConnectionIsReportedOnceAndTheNextRequestWorks();
    void aHangingRequestWaitsWithoutALimit();
    void aHugeAnswerIsReadAsAnyOther();
    void aFailedLoginLeavesWhatIsStored();
    void aFailedValidationLeavesTheStatus();
    void overlappingRequestsEachGetTheirOwnAnswer();
    void destroyingTheManagerDropsARequestUnderWay();
    void theSlotsDoNothingWithoutAReply();

private:
    static QStringList expectedLines(const Route &route, bool isClientError, const QString &pattern);
    static void verifyLines(const QStringList &lines, const QStringList &patterns);
    static void verifyNextRequestWorks(AuthFixture &auth);
};

void TestAuthManagerFailures::init()
{
    clearSettings();
}

/// Patterns of the signals that a route gives on a failure.
QStringList TestAuthManagerFailures::expectedLines(const Route &route, bool isClientError,
                                                   const QString &pattern)
{
    if (!route.signal) {
        // Meant: a failure that is not a 4xx is told twice.
        const QString expired = text("sessionExpired\\(\\)");
        return isClientError ? QStringList(expired) : QStringList({expired, expired});
    }
    // Meant: nobody hears of a reset that failed below the service's answer.
    if (!isClientError && QLatin1String(route.signal) == QLatin1String("passwordResetFinished"))
        return {};
    return {text("%1\\(false, %2\\)").arg(text(route.signal), pattern)};
}

void TestAuthManagerFailures::verifyLines(const QStringList &lines, const QStringList &patterns)
{
    QVERIFY2(lines.size() == patterns.size(), qPrintable(lines.join(QLatin1Char('|'))));
    for (int i = 0; i < lines.size(); ++i) {
        const QRegularExpression pattern(QRegularExpression::anchoredPattern(patterns.at(i)));
        QVERIFY2(pattern.match(lines.at(i)).hasMatch(), qPrintable(lines.at(i)));
    }
}

void TestAuthManagerFailures::verifyNextRequestWorks(AuthFixture &auth)
{
    auth.log().clear();
    auth.server.setAnswer(RawAnswer::body(R"({"success": true, "message": "已发送"})"));
    QVERIFY(auth.manager().sendVerificationCode(text("a@b.cn"), text("login")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("verificationCodeSent(true, 已发送)")));
}

void TestAuthManagerFailures::anyFaultIsReportedOnceAndTheNextRequestWorks_data()
{
    QTest::addColumn<int>("route");
    QTest::addColumn<RawAnswer>("fault");
    QTest::addColumn<bool>("isClientError");
    QTest::addColumn<QString>("pattern");

    const QByteArray whole = R"({"success": true, "data": {"user_id": 7, "api_key": "k"}, "api_key": "k"})";
    const QByteArray words = R"({"success": false, "error": "服务的话", "message": "另一句"})";
    const QByteArray message = R"({"success": false, "error": "", "message": "另一句"})";
    const struct
    {
        const char *name = nullptr;
        RawAnswer answer;
        bool isClientError = false;
        const char *pattern = nullptr;
    } faults[] = {
        {"resets", RawAnswer::reset(), false, lowerFailure},
        {"resets within the body", RawAnswer::resetWithinBody(whole), false, lowerFailure},
        {"closes ahead of the headers", RawAnswer::closeBeforeHeaders(), false, lowerFailure},
        {"closes within the headers", RawAnswer::closeWithinHeaders(), false, lowerFailure},
        {"truncates the body", RawAnswer::truncated(whole), false, lowerFailure},
        {"declares more than it sends", RawAnswer::wrongContentLength(whole, whole.size() + 7), false,
         lowerFailure},
        {"sends garbage", RawAnswer::garbage(), false, lowerFailure},
        {"500", RawAnswer::notJson(500), false, lowerFailure},
        {"500 in its words", RawAnswer::body(words, 500), false, "服务的话"},
        {"503 with a message", RawAnswer::body(message, 503), false, "另一句"},
        {"502 of 1 MB", RawAnswer::huge(1 << 20, 502), false, lowerFailure},
        {"400", RawAnswer::body("{}", 400), true, lowerFailure},
        {"400 in its words", RawAnswer::body(words, 400), true, "服务的话"},
        {"401", RawAnswer::notJson(401), true, lowerFailure},
        {"401 in its words", RawAnswer::body(words, 401), true, "服务的话"},
        {"403 with a message", RawAnswer::body(message, 403), true, "另一句"},
        {"404", RawAnswer::notJson(404), true, lowerFailure},
        {"429 in its words", RawAnswer::body(words, 429), true, "服务的话"},
        {"499", RawAnswer::body("[]", 499), true, lowerFailure},
    };
    for (int route = 0; route < int(routes().size()); ++route) {
        for (const auto &fault : faults)
            QTest::addRow("%s: %s", routes().at(size_t(route)).name, fault.name)
                << route << fault.answer << fault.isClientError << text(fault.pattern);
    }
}

void TestAuthManagerFailures::anyFaultIsReportedOnceAndTheNextRequestWorks()
{
    QFETCH(int, route);
    QFETCH(RawAnswer, fault);
    QFETCH(bool, isClientError);
    QFETCH(QString, pattern);
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.setAnswer(fault);
    QVERIFY(routes().at(size_t(route)).operation(auth.manager()));
    QVERIFY(auth.settles());
    verifyLines(auth.lines(), expectedLines(routes().at(size_t(route)), isClientError, pattern));
    if (QTest::currentTestFailed())
        return;
    QVERIFY(!auth.manager().isAuthenticated());
    verifyNextRequestWorks(auth);
}

void TestAuthManagerFailures::aRefusedConnectionIsReportedOnceAndTheNextRequestWorks_data()
{
    QTest::addColumn<int>("route");
    for (int route = 0; route < int(routes().size()); ++route)
        QTest::newRow(routes().at(size_t(route)).name) << route;
}

void TestAuthManagerFailures::aRefusedConnectionIsReportedOnceAndTheNextRequestWorks()
{
    QFETCH(int, route);
    AuthFixture auth;
    settings().setSessionToken(text("t-1"));
    auth.start();
    auth.server.refuseConnections();
    QVERIFY(routes().at(size_t(route)).operation(auth.manager()));
    QVERIFY(auth.settles());
    verifyLines(auth.lines(),
                expectedLines(routes().at(size_t(route)), false, text("网络错误: Connection refused")));
    if (QTest::currentTestFailed())
        return;
    auth.server.listenAgain();
    verifyNextRequestWorks(auth);
}

void TestAuthManagerFailures::aHangingRequestWaitsWithoutALimit()
{
    AuthFixture auth;
    settings().setApiTimeout(1);
    auth.start();
    auth.server.setAnswer(RawAnswer::hang());
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.server.waitForRequests(1));
    // No timer runs that could end it, neither the manager's nor one of the network's.
    for (const QTimer *timer : auth.manager().findChildren<QTimer *>())
        QVERIFY(!timer->isActive());
    QCOMPARE(auth.lines(), QStringList());
    auth.server.refuseConnections();
    QVERIFY(auth.settles());
    verifyLines(auth.lines(), {text("loginFinished\\(false, %1\\)").arg(text(lowerFailure))});
}

void TestAuthManagerFailures::aHugeAnswerIsReadAsAnyOther()
{
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::huge(8 << 20));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList(text("loginFinished(false, )")));
    verifyNextRequestWorks(auth);
}

void TestAuthManagerFailures::aFailedLoginLeavesWhatIsStored()
{
    AuthFixture auth;
    settings().setLoginMethod(LoginMethod::ApiKey);
    settings().setAuthUsername(text("wang"));
    settings().setAuthEmail(text("wang@larkspire.example"));
    settings().setApiKey(text("k-1"));
    settings().setSessionToken(text("t-1"));
    auth.start();
    settings().setAuthPassword(text("stored"));
    auth.server.setAnswer(RawAnswer::body(R"({"error": "x"})", 401));
    for (const Route &route : routes()) {
        QVERIFY(route.operation(auth.manager()));
        QVERIFY(auth.settles());
        QCOMPARE(settings().getLoginMethod(), int(LoginMethod::ApiKey));
        QCOMPARE(settings().getAuthUsername(), text("wang"));
        QCOMPARE(settings().getAuthEmail(), text("wang@larkspire.example"));
        QCOMPARE(settings().getAuthPassword(), text("stored"));
        QCOMPARE(settings().getApiKey(), text("k-1"));
        QCOMPARE(settings().getSessionToken(), text("t-1"));
        QVERIFY(!settings().getLastLoginTime().isValid());
    }
    // Meant: the key that was tried stays in memory.
    QCOMPARE(auth.manager().credentials().apiKey, text("k-new"));
}

void TestAuthManagerFailures::aFailedValidationLeavesTheStatus()
{
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(
        RawAnswer::body(R"({"success": true, "data": {"user_id": 7, "session_token": "t-2"}})"));
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.settles());
    auth.log().clear();
    for (const int status : {401, 500}) {
        auth.server.setAnswer(RawAnswer::notJson(status));
        QVERIFY(auth.manager().validateSession());
        QVERIFY(auth.settles());
        QVERIFY(auth.manager().isAuthenticated());
    }
    QCOMPARE(auth.log().count(text("sessionExpired")), 3);
    QCOMPARE(auth.log().count(text("authStatusChanged")), 0);
}

void TestAuthManagerFailures::overlappingRequestsEachGetTheirOwnAnswer()
{
    AuthFixture auth;
    auth.start();
    auth.server.setAnswer(RawAnswer::hold());
    QVERIFY(auth.manager().login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(auth.server.waitForRequests(1));
    QVERIFY(auth.manager().sendVerificationCode(text("a@b.cn"), text("login")));
    QVERIFY(auth.server.waitForRequests(2));
    QVERIFY(auth.server.release(1, RawAnswer::body(R"({"success": true, "message": "已发送"})")));
    QVERIFY(auth.log().waitFor(1));
    QVERIFY(auth.server.release(0, RawAnswer::body(R"({"success": false, "error": "密码错误"})")));
    QVERIFY(auth.settles());
    QCOMPARE(auth.lines(), QStringList({text("verificationCodeSent(true, 已发送)"),
                                        text("loginFinished(false, 密码错误)")}));
}

void TestAuthManagerFailures::destroyingTheManagerDropsARequestUnderWay()
{
    RawHttpServer server;
    server.setAnswer(RawAnswer::hold());
    settings().setApiServerUrl(server.url());
    auto manager = std::make_unique<AuthManager>();
    manager->loadStoredCredentials();
    SignalLog log(*manager);
    QVERIFY(manager->login(text("li"), text("secret"), QString(), QString()));
    QVERIFY(server.waitForRequests(1));
    manager.reset();
    QCOMPARE(log.lines(), QStringList());
}

void TestAuthManagerFailures::theSlotsDoNothingWithoutAReply()
{
    AuthFixture auth;
    auth.start();
    for (const char *slot :
         {"onLoginReplyFinished", "onRegistrationReplyFinished", "onVerificationCodeReplyFinished",
          "onPasswordResetReplyFinished", "onApiKeyReplyFinished", "onFreeApiKeyReplyFinished",
          "onSessionValidationReplyFinished"})
        QVERIFY2(QMetaObject::invokeMethod(&auth.manager(), slot, Qt::DirectConnection), slot);
    QVERIFY(
        QMetaObject::invokeMethod(&auth.manager(), "onNetworkError", Qt::DirectConnection,
                                  Q_ARG(QNetworkReply::NetworkError, QNetworkReply::ConnectionRefusedError)));
    QCOMPARE(auth.lines(), QStringList());
}

LARKSPIRE_GUILESS_TEST_MAIN(TestAuthManagerFailures)
#include "tst_AuthManagerFailures.moc"
