#include "service/Json.h"
#include "service/ServiceError.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

#include <limits>

using namespace service;

/// JSON in and out.
class ServiceJsonTest : public QObject
{
    Q_OBJECT

private slots:
    void onlyObjectsAreTaken_data();
    void onlyObjectsAreTaken();
    void fieldsAreReadWithTheirTypes();
    void repliesKeepTheirOrder();
    void bytesThatAreNoUtf8AreReplaced();
    void wrongTypesKeepNamesAndNesting();
    void aValueIsChangedAtItsPlace_data();
    void aValueIsChangedAtItsPlace();
    void whatIsNoPointerIsRefused();
};

void ServiceJsonTest::onlyObjectsAreTaken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("good");
    QTest::newRow("object") << QByteArray(R"({"a":1})") << true;
    QTest::newRow("empty object") << QByteArray("{}") << true;
    QTest::newRow("list") << QByteArray("[]") << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("text") << QByteArray(R"("a")") << false;
    QTest::newRow("cut") << QByteArray(R"({"a":)") << false;
    QTest::newRow("something behind") << QByteArray("{} x") << false;
    QTest::newRow("no UTF-8") << QByteArray("{\"a\":\"\xff\"}") << false;
    QTest::newRow("deeply nested and cut") << QByteArray(500000, '[') << false;
    const auto nested = [](int depth) {
        return "{\"a\":" + QByteArray(depth - 1, '[') + QByteArray(depth - 1, ']') + "}";
    };
    QTest::newRow("nested as deep as allowed") << nested(64) << true;
    QTest::newRow("nested one deeper") << nested(65) << false;
    QTest::newRow("brackets in a text") << "{\"a\":\"\\\"" + QByteArray(100, '[') + "\"}" << true;
}

void ServiceJsonTest::onlyObjectsAreTaken()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, good);
    QCOMPARE(parseObject(text.toStdString()).has_value(), good);
}

void ServiceJsonTest::fieldsAreReadWithTheirTypes()
{
    const JsonIn object = *parseObject(R"({"text":"a","flag":true,"number":7,"null":null,)"
                                       R"("largest":9223372036854775807,"larger":9223372036854775808})");
    QCOMPARE(requiredText(object, "text"), std::string("a"));
    QCOMPARE(optionalText(object, "missing", "b"), std::string("b"));
    QCOMPARE(optionalFlag(object, "flag", false), true);
    QCOMPARE(optionalFlag(object, "missing", true), true);
    QCOMPARE(optionalNumber(object, "number").value_or(0), std::int64_t(7));
    QCOMPARE(optionalNumber(object, "largest").value_or(0), std::numeric_limits<std::int64_t>::max());
    QVERIFY(!optionalNumber(object, "missing").has_value());
    QVERIFY_EXCEPTION_THROWN(requiredText(object, "missing"), ServiceError);
    QVERIFY_EXCEPTION_THROWN(requiredText(object, "number"), ServiceError);
    QVERIFY_EXCEPTION_THROWN(optionalText(object, "null"), ServiceError);
    QVERIFY_EXCEPTION_THROWN(optionalFlag(object, "text", false), ServiceError);
    QVERIFY_EXCEPTION_THROWN(optionalNumber(object, "text"), ServiceError);
    QVERIFY_EXCEPTION_THROWN(optionalNumber(object, "larger"), ServiceError);
}

void ServiceJsonTest::repliesKeepTheirOrder()
{
    QCOMPARE(toWire(Json{{"success", true}, {"data", {{"z", 1}, {"a", 2}}}}),
             std::string(R"({"success":true,"data":{"z":1,"a":2}})"));
}

void ServiceJsonTest::bytesThatAreNoUtf8AreReplaced()
{
    QCOMPARE(toWire(Json{{"a", "x\xffy"}}), std::string("{\"a\":\"x\xEF\xBF\xBDy\"}"));
}

void ServiceJsonTest::wrongTypesKeepNamesAndNesting()
{
    const Json given =
        Json::parse(R"({"success":true,"data":{"id":"N1","total":3,"none":null,"list":[{"a":1.5}]}})");
    QCOMPARE(
        toWire(withWrongTypes(given)),
        std::string(
            R"({"success":"yes","data":{"id":42,"total":"3","none":[],"list":["not an object",{"a":"1.5"}]}})"));
}

void ServiceJsonTest::aValueIsChangedAtItsPlace_data()
{
    QTest::addColumn<QByteArray>("pointer");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("changed");
    const auto row = [](const char *name, const char *pointer, const char *value, const char *changed) {
        QTest::newRow(name) << QByteArray(pointer) << QByteArray(value) << QByteArray(changed);
    };
    row("a value", "/a", "2", R"({"a":2,"list":[1,{"b":"x"}]})");
    row("another type", "/list", "null", R"({"a":"1","list":null})");
    row("a new key", "/c", R"({"d":[]})", R"({"a":"1","list":[1,{"b":"x"}],"c":{"d":[]}})");
    row("inside a list", "/list/1/b", "true", R"({"a":"1","list":[1,{"b":true}]})");
    row("an entry", "/list/0", "\"y\"", R"({"a":"1","list":["y",{"b":"x"}]})");
    row("behind the end", "/list/-", "3", R"({"a":"1","list":[1,{"b":"x"},3]})");
    row("everything", "", "[]", "[]");
    row("a place that is not there", "/c/d", "1", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("an entry that is not there", "/list/2", "1", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("no number in a list", "/list/x", "1", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("inside a text", "/a/b", "1", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("taken out", "/a", "", R"({"list":[1,{"b":"x"}]})");
    row("an entry taken out", "/list/0", "", R"({"a":"1","list":[{"b":"x"}]})");
    row("taken out where nothing is", "/c", "", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("nothing behind the end", "/list/-", "", R"({"a":"1","list":[1,{"b":"x"}]})");
    row("everything taken out", "", "", "null");
}

void ServiceJsonTest::aValueIsChangedAtItsPlace()
{
    QFETCH(QByteArray, pointer);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, changed);
    const std::optional<JsonIn> newValue =
        value.isEmpty() ? std::nullopt : std::optional<JsonIn>(JsonIn::parse(value.toStdString()));
    const Json given = Json::parse(R"({"a":"1","list":[1,{"b":"x"}]})");
    QCOMPARE(QByteArray::fromStdString(toWire(withChange(given, pointer.toStdString(), newValue))), changed);
}

void ServiceJsonTest::whatIsNoPointerIsRefused()
{
    QVERIFY_EXCEPTION_THROWN(withChange(Json::object(), "a", std::nullopt), ServiceError);
    QVERIFY_EXCEPTION_THROWN(withChange(Json::object(), "/~2", std::nullopt), ServiceError);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceJsonTest)
#include "tst_ServiceJson.moc"
