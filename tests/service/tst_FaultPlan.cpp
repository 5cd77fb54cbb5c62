#include "service/FaultPlan.h"
#include "service/ServiceError.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

namespace {

Fault faultOf(const char *json)
{
    return faultFrom(JsonIn::parse(json));
}

} // namespace

/// Which fault hits which request.
class FaultPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void aFaultHitsTargetsThatBeginWithItsPath();
    void aCountedFaultEndsByItself();
    void theOldestFittingFaultHits();
    void aMethodNarrowsAFault();
    void administrationIsNeverHit();
    void clearingSwitchesEverythingOff();
    void everyKindHasItsWord_data();
    void everyKindHasItsWord();
    void aTooManyRequestsSaysHowLongToWait();
    void statusesWithoutABodyHaveNone();
    void aChangeChangesItsPlacesAlone();
    void badRulesAreRefused_data();
    void badRulesAreRefused();
};

void FaultPlanTest::aFaultHitsTargetsThatBeginWithItsPath()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/newsapi/news?since","kind":"drop"})"));
    QVERIFY(plan.take("GET", "/newsapi/news?since_id=1").has_value());
    QVERIFY(!plan.take("GET", "/newsapi/news?page=1").has_value());
}

void FaultPlanTest::aCountedFaultEndsByItself()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/","kind":"reset","count":2})"));
    QVERIFY(plan.take("GET", "/a").has_value());
    QVERIFY(plan.take("GET", "/b").has_value());
    QVERIFY(!plan.take("GET", "/c").has_value());
    QVERIFY(plan.all().empty());
}

void FaultPlanTest::theOldestFittingFaultHits()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/a","kind":"reset","count":1})"));
    plan.add(faultOf(R"({"path":"/","kind":"drop"})"));
    QCOMPARE(plan.take("GET", "/a")->kind, FaultKind::Reset);
    QCOMPARE(plan.take("GET", "/a")->kind, FaultKind::Drop);
}

void FaultPlanTest::aMethodNarrowsAFault()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/","kind":"drop","method":"POST"})"));
    QVERIFY(!plan.take("GET", "/a").has_value());
    QVERIFY(plan.take("POST", "/a").has_value());
}

void FaultPlanTest::administrationIsNeverHit()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/","kind":"drop"})"));
    QVERIFY(!plan.take("DELETE", "/admin/faults").has_value());
}

void FaultPlanTest::clearingSwitchesEverythingOff()
{
    FaultPlan plan;
    plan.add(faultOf(R"({"path":"/","kind":"drop"})"));
    plan.clear();
    QVERIFY(!plan.take("GET", "/a").has_value());
}

void FaultPlanTest::everyKindHasItsWord_data()
{
    QTest::addColumn<QString>("word");
    for (const char *word :
         {"drop", "reset", "close", "truncate", "drip", "status", "not_json", "wrong_types", "huge"})
        QTest::newRow(word) << QString::fromLatin1(word);
}

void FaultPlanTest::everyKindHasItsWord()
{
    QFETCH(QString, word);
    const Fault fault = faultFrom({{"path", "/"}, {"kind", word.toStdString()}});
    QCOMPARE(QString::fromLatin1(wordFor(fault.kind)), word);
    QCOMPARE(QString::fromStdString(toJson(fault)["kind"].get<std::string>()), word);
}

void FaultPlanTest::aTooManyRequestsSaysHowLongToWait()
{
    const JsonIn body =
        JsonIn::parse(faultOf(R"({"path":"/","kind":"status","status":429,"wait_seconds":7})").body);
    QCOMPARE(body["wait_seconds"].get<int>(), 7);
    QCOMPARE(body["success"].get<bool>(), false);
    QCOMPARE(faultOf(R"({"path":"/","kind":"status","body":{"a":1}})").body, std::string(R"({"a":1})"));
    QCOMPARE(faultOf(R"({"path":"/","kind":"status","body":"plain"})").body, std::string("plain"));
}

void FaultPlanTest::statusesWithoutABodyHaveNone()
{
    QCOMPARE(faultOf(R"({"path":"/","kind":"status","status":204})").body, std::string());
    QCOMPARE(faultOf(R"({"path":"/","kind":"status","status":304})").body, std::string());
    QVERIFY(!faultOf(R"({"path":"/","kind":"status","status":205})").body.empty());
}

void FaultPlanTest::aChangeChangesItsPlacesAlone()
{
    const Fault fault = faultOf(
        R"({"path":"/","kind":"change","set":{"/data/a":7,"/data/list/0/b":null},"remove":["/data/c","/gone"]})");
    QCOMPARE(QString::fromLatin1(wordFor(fault.kind)), QStringLiteral("change"));
    QCOMPARE(changedBody(fault, R"({"success":true,"data":{"a":"x","c":1,"list":[{"b":2}]}})"),
             std::string(R"({"success":true,"data":{"a":7,"list":[{"b":null}]}})"));
    QCOMPARE(changedBody(fault, "<html>"), std::string("<html>"));
    QCOMPARE(toWire(toJson(fault)["set"]), std::string(R"({"/data/a":7,"/data/list/0/b":null})"));
    QCOMPARE(toWire(toJson(fault)["remove"]), std::string(R"(["/data/c","/gone"])"));
}

void FaultPlanTest::badRulesAreRefused_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("no path") << QByteArray(R"({"kind":"drop"})");
    QTest::newRow("no kind") << QByteArray(R"({"path":"/"})");
    QTest::newRow("unknown kind") << QByteArray(R"({"path":"/","kind":"explode"})");
    QTest::newRow("path without slash") << QByteArray(R"({"path":"newsapi","kind":"drop"})");
    QTest::newRow("delay without time") << QByteArray(R"({"path":"/","kind":"delay"})");
    QTest::newRow("count of nothing") << QByteArray(R"({"path":"/","kind":"drop","count":0})");
    QTest::newRow("status beyond all") << QByteArray(R"({"path":"/","kind":"status","status":1000})");
    QTest::newRow("status before the last") << QByteArray(R"({"path":"/","kind":"status","status":101})");
    QTest::newRow("count as text") << QByteArray(R"({"path":"/","kind":"drop","count":"2"})");
    QTest::newRow("change of nothing") << QByteArray(R"({"path":"/","kind":"change"})");
    QTest::newRow("change of no pointer") << QByteArray(R"({"path":"/","kind":"change","set":{"data":1}})");
    QTest::newRow("change by a list") << QByteArray(R"({"path":"/","kind":"change","set":["/data"]})");
    QTest::newRow("removal by a text") << QByteArray(R"({"path":"/","kind":"change","remove":"/data"})");
    QTest::newRow("removal of a number") << QByteArray(R"({"path":"/","kind":"change","remove":[1]})");
    QTest::newRow("drip of nothing") << QByteArray(R"({"path":"/","kind":"drip","bytes":0})");
}

void FaultPlanTest::badRulesAreRefused()
{
    QFETCH(QByteArray, json);
    try {
        faultOf(json.constData());
        QFAIL("the rule was taken");
    } catch (const ServiceError &error) {
        QCOMPARE(error.status, 400);
    }
}

LARKSPIRE_GUILESS_TEST_MAIN(FaultPlanTest)
#include "tst_FaultPlan.moc"
