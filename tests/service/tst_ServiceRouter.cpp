#include "service/Router.h"
#include "service/ServiceError.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

namespace {

Request requestFor(const std::string &method, const std::string &path, const std::string &body = "{}")
{
    Request request;
    request.method = method;
    request.path = path;
    request.body = body;
    return request;
}

} // namespace

/// The table of paths and what becomes of a request.
class ServiceRouterTest : public QObject
{
    Q_OBJECT

private:
    Router router() const;

private slots:
    void patternsFitPaths_data();
    void patternsFitPaths();
    void everyOutcomeHasItsStatus_data();
    void everyOutcomeHasItsStatus();
    void aRolledTokenGoesIntoTheReply();
    void webPagesDoNotReachTheAdministration();
    void aRefusalCarriesTheSecondsToWait();
    void labelsNameThePattern();
};

Router ServiceRouterTest::router() const
{
    Router router([](const Request &request) -> Caller {
        if (request.path == "/who/2")
            throw ServiceError(401, "nobody");
        Caller caller;
        caller.rolledToken = "fresh";
        return caller;
    });
    router.add("GET", "/open", Access::Open, [](const Call &) { return Reply(messageReply("hello")); });
    router.add("POST", "/open", Access::Open,
               [](const Call &call) { return Reply(messageReply(requiredText(call.body, "a"))); });
    router.add("GET", "/who/{id}", Access::Identified,
               [](const Call &call) { return Reply(messageReply(call.places[0])); });
    router.add("GET", "/fault", Access::Open, [](const Call &) -> Reply { throw std::logic_error("inner"); });
    router.add("GET", "/later", Access::Open,
               [](const Call &) -> Reply { throw ServiceError(429, "wait", 12); });
    router.add("GET", "/admin/x", Access::Administration,
               [](const Call &) { return Reply(messageReply("x")); });
    return router;
}

void ServiceRouterTest::patternsFitPaths_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("fits");
    QTest::newRow("the same") << "/a/b"
                              << "/a/b" << true;
    QTest::newRow("a place") << "/a/{x}"
                             << "/a/17" << true;
    QTest::newRow("a place takes one segment") << "/a/{x}"
                                               << "/a/17/b" << false;
    QTest::newRow("a place takes something") << "/a/{x}"
                                             << "/a/" << false;
    QTest::newRow("slash behind") << "/a"
                                  << "/a/" << false;
    QTest::newRow("slash twice") << "/a/b"
                                 << "/a//b" << false;
    QTest::newRow("other case") << "/a"
                                << "/A" << false;
    QTest::newRow("shorter") << "/a/b"
                             << "/a" << false;
}

void ServiceRouterTest::patternsFitPaths()
{
    QFETCH(QString, pattern);
    QFETCH(QString, path);
    QTEST(matchPath(pattern.toStdString(), path.toStdString()).has_value(), "fits");
}

void ServiceRouterTest::everyOutcomeHasItsStatus_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("fine") << "GET"
                          << "/open"
                          << "" << 200;
    QTest::newRow("fine with a body") << "POST"
                                      << "/open"
                                      << R"({"a":"b"})" << 200;
    QTest::newRow("field missing") << "POST"
                                   << "/open"
                                   << "{}" << 400;
    QTest::newRow("body is no JSON") << "POST"
                                     << "/open"
                                     << "a=b" << 400;
    QTest::newRow("body is a list") << "POST"
                                    << "/open"
                                    << "[]" << 400;
    QTest::newRow("identified") << "GET"
                                << "/who/1"
                                << "" << 200;
    QTest::newRow("not identified") << "GET"
                                    << "/who/2"
                                    << "" << 401;
    QTest::newRow("unknown path") << "GET"
                                  << "/nowhere"
                                  << "" << 404;
    QTest::newRow("known path, other method") << "DELETE"
                                              << "/open"
                                              << "" << 405;
    QTest::newRow("inner fault") << "GET"
                                 << "/fault"
                                 << "" << 500;
}

void ServiceRouterTest::everyOutcomeHasItsStatus()
{
    QFETCH(QString, method);
    QFETCH(QString, path);
    QFETCH(QString, body);
    QFETCH(int, status);
    const Reply reply =
        router().answer(requestFor(method.toStdString(), path.toStdString(), body.toStdString()));
    QCOMPARE(reply.status, status);
    QCOMPARE(reply.body["success"].get<bool>(), status == 200);
    if (status != 200)
        QVERIFY(!reply.body["error"].get<std::string>().empty());
    QVERIFY(toWire(reply.body).find("inner") == std::string::npos);
}

void ServiceRouterTest::aRolledTokenGoesIntoTheReply()
{
    QCOMPARE(router().answer(requestFor("GET", "/who/1")).body["session_token"].get<std::string>(),
             std::string("fresh"));
    QVERIFY(!router().answer(requestFor("GET", "/open")).body.contains("session_token"));
}

void ServiceRouterTest::webPagesDoNotReachTheAdministration()
{
    Request request = requestFor("GET", "/admin/x");
    QCOMPARE(router().answer(request).status, 200);
    request.headers["origin"] = "https://elsewhere.example";
    QCOMPARE(router().answer(request).status, 403);
}

void ServiceRouterTest::aRefusalCarriesTheSecondsToWait()
{
    const Reply reply = router().answer(requestFor("GET", "/later"));
    QCOMPARE(reply.status, 429);
    QCOMPARE(reply.body["wait_seconds"].get<int>(), 12);
}

void ServiceRouterTest::labelsNameThePattern()
{
    QCOMPARE(router().label("GET", "/who/17"), std::string("GET /who/{id}"));
    QCOMPARE(router().label("PUT", "/who/17"), std::string("(other)"));
    QCOMPARE(router().label("GET", "/nowhere"), std::string("(other)"));
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceRouterTest)
#include "tst_ServiceRouter.moc"
