#include "settings/ConfigDialogRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

using namespace ConfigDialogRules;

namespace {

const QString schemeFault = QStringLiteral("API服务器地址必须以http://或https://开头");
const QString timedOut = QStringLiteral("连接超时，请检查服务器地址和网络连接");

ServiceAnswer answer(const char *body)
{
    return {QNetworkReply::NoError, QString(), QByteArray(body)};
}

ServiceAnswer failure(QNetworkReply::NetworkError error, const char *body = "")
{
    return {error, QStringLiteral("the reason"), QByteArray(body)};
}

} // namespace

Q_DECLARE_METATYPE(ServiceAnswer)

class TestConfigDialogRules : public QObject
{
    Q_OBJECT

private slots:
    void entriesAreFoundFaultyInTheWordsOfTheirPlace_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("connection");
        QTest::addColumn<QString>("keyTest");
        QTest::addColumn<QString>("saving");
        const QString none;
        const QString key = QStringLiteral("k");
        QTest::newRow("good") << "http://127.0.0.1:8888" << key << none << none << none;
        QTest::newRow("good, encrypted") << "https://larkspire.example/" << key << none << none << none;
        QTest::newRow("no address") << QString() << key << QStringLiteral("请填写API服务器地址")
                                    << QStringLiteral("请先输入API服务器地址")
                                    << QStringLiteral("API服务器地址不能为空");
        QTest::newRow("no key") << "http://x" << QString() << none << QStringLiteral("请先输入API Key")
                                << QStringLiteral("API Key不能为空");
        QTest::newRow("neither") << QString() << QString() << QStringLiteral("请填写API服务器地址")
                                 << QStringLiteral("请先输入API服务器地址")
                                 << QStringLiteral("API服务器地址不能为空");
        QTest::newRow("another scheme") << "ftp://x" << key << schemeFault << none << schemeFault;
        QTest::newRow("no scheme") << "127.0.0.1:8888" << key << schemeFault << none << schemeFault;
        QTest::newRow("scheme in capitals") << "HTTP://x" << key << schemeFault << none << schemeFault;
        QTest::newRow("half a scheme") << "http:/x" << key << schemeFault << none << schemeFault;
        QTest::newRow("a scheme alone") << "http://" << key << none << none << none;
    }
    void entriesAreFoundFaultyInTheWordsOfTheirPlace()
    {
        QFETCH(QString, address);
        QFETCH(QString, key);
        QTEST(connectionTestFault(address), "connection");
        QTEST(keyTestFault(address, key), "keyTest");
        QTEST(savingFault(address, key), "saving");
    }

    void pathsStandUnderTheBaseAddress_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("reason");
        const QString noScheme = QStringLiteral("地址必须以http://或https://开头");
        const QString noHost = QStringLiteral("地址中没有有效的服务器名称");
        QTest::newRow("without a slash") << "http://h:1"
                                         << "http://h:1/newsapi/health" << QString();
        QTest::newRow("with a slash") << "http://h:1/"
                                      << "http://h:1/newsapi/health" << QString();
        QTest::newRow("with a path") << "https://h/base"
                                     << "https://h/base/newsapi/health" << QString();
        QTest::newRow("Chinese host") << "http://云雀.example"
                                      << "http://xn--9kqt37o.example/newsapi/health" << QString();
        // The path never takes the host's place.
        QTest::newRow("no host") << "http://"
                                 << "http://" << noHost;
        QTest::newRow("no host, encrypted") << "https:///"
                                            << "https:///" << noHost;
        QTest::newRow("no host but a port") << "http://:8888" << QString() << noHost;
        QTest::newRow("another scheme") << "ftp://h"
                                        << "ftp://h/newsapi/health" << noScheme;
        QTest::newRow("a file") << "file:///etc"
                                << "file:///etc" << noScheme;
        QTest::newRow("no scheme") << "abc"
                                   << "abc" << noScheme;
    }
    void pathsStandUnderTheBaseAddress()
    {
        QFETCH(QString, address);
        QFETCH(QString, url);
        const QUrl made = serviceUrl(address, QStringLiteral("newsapi/health"));
        if (!url.isEmpty())
            QCOMPARE(made.toString(), url);
        QTEST(unreachableReason(made), "reason");
    }

    void answersOfTheConnectionTestAreTold_data()
    {
        QTest::addColumn<ServiceAnswer>("answer");
        QTest::addColumn<bool>("success");
        QTest::addColumn<QString>("text");
        QTest::newRow("good") << answer(R"({"status":"ok","version":"1.2"})") << true
                              << QStringLiteral("API服务器连接成功！\n版本: 1.2");
        QTest::newRow("good, no version")
            << answer(R"({"status":"ok"})") << true << QStringLiteral("API服务器连接成功！\n版本: 未知版本");
        QTest::newRow("ailing") << answer(R"({"status":"down"})") << false
                                << QStringLiteral("API服务器响应异常: status = down");
        QTest::newRow("no status") << answer("{}") << false << QStringLiteral("API服务器响应异常: status = ");
        QTest::newRow("a list") << answer("[]") << false << QStringLiteral("API服务器响应异常: status = ");
        QTest::newRow("no JSON") << answer("<html>") << false
                                 << QStringLiteral("API响应解析失败: illegal value");
        QTest::newRow("nothing") << answer("") << false << QStringLiteral("API响应解析失败: illegal value");
        QTest::newRow("time-out") << failure(QNetworkReply::OperationCanceledError) << false << timedOut;
        QTest::newRow("refused") << failure(QNetworkReply::ConnectionRefusedError) << false
                                 << QStringLiteral("网络错误: the reason");
        QTest::newRow("not authenticated")
            << failure(QNetworkReply::AuthenticationRequiredError, R"({"error":"x"})") << false
            << QStringLiteral("网络错误: the reason");
    }
    void answersOfTheConnectionTestAreTold() { compare(&connectionTestResult); }

    void answersOfTheKeyTestAreTold_data()
    {
        QTest::addColumn<ServiceAnswer>("answer");
        QTest::addColumn<bool>("success");
        QTest::addColumn<QString>("text");
        QTest::newRow("good") << answer(R"({"success":true,"message":"ok, demo"})") << true
                              << QStringLiteral("API Key验证成功！\nok, demo");
        QTest::newRow("good, no message")
            << answer(R"({"success":true})") << true << QStringLiteral("API Key验证成功！\nAPI Key验证成功");
        QTest::newRow("bad") << answer(R"({"success":false,"message":"expired"})") << false
                             << QStringLiteral("API Key验证失败: expired");
        QTest::newRow("bad, no message")
            << answer("{}") << false << QStringLiteral("API Key验证失败: API Key验证失败");
        QTest::newRow("401") << failure(QNetworkReply::AuthenticationRequiredError, R"({"error":"钥匙"})")
                             << false << QStringLiteral("钥匙");
        QTest::newRow("401, no text") << failure(QNetworkReply::AuthenticationRequiredError, "<html>")
                                      << false << QStringLiteral("认证失败");
        QTest::newRow("403") << failure(QNetworkReply::ContentAccessDenied, R"({"error":"设备已满"})")
                             << false << QStringLiteral("设备已满");
        QTest::newRow("403, no text")
            << failure(QNetworkReply::ContentAccessDenied) << false << QStringLiteral("禁止访问");
        QTest::newRow("no JSON") << answer("<html>") << false
                                 << QStringLiteral("API响应解析失败: illegal value");
        QTest::newRow("time-out") << failure(QNetworkReply::OperationCanceledError) << false << timedOut;
        QTest::newRow("500") << failure(QNetworkReply::InternalServerError, R"({"error":"x"})") << false
                             << QStringLiteral("网络错误: the reason");
    }
    void answersOfTheKeyTestAreTold() { compare(&keyTestResult); }

    void stockColorsAreTwentyAndSomeShareAValue()
    {
        QStringList words;
        QHash<QString, QString> values;
        for (const StockColor &color : stockColors()) {
            words.append(color.word);
            values.insert(color.word, color.value);
        }
        QCOMPARE(words.join(QLatin1Char(' ')),
                 QStringLiteral("red green blue yellow purple orange pink cyan magenta lime navy teal silver "
                                "gray maroon olive aqua fuchsia black white"));
        QCOMPARE(values.size(), 20);
        QCOMPARE(values.value(QStringLiteral("green")), values.value(QStringLiteral("lime")));
        QCOMPARE(values.value(QStringLiteral("cyan")), values.value(QStringLiteral("aqua")));
        QCOMPARE(values.value(QStringLiteral("magenta")), values.value(QStringLiteral("fuchsia")));
        QCOMPARE(values.value(QStringLiteral("green")), QStringLiteral("#00FF00"));
        QCOMPARE(values.value(QStringLiteral("pink")), QStringLiteral("#FFC0CB"));
        QCOMPARE(values.value(QStringLiteral("orange")), QStringLiteral("#FFA500"));
        QCOMPARE(values.value(QStringLiteral("navy")), QStringLiteral("#000080"));
    }

    void previewTakesWordsAndValuesOnly_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("color");
        const QString fallback = QStringLiteral("#FF6B6B");
        QTest::newRow("word") << "orange" << QStringLiteral("orange");
        QTest::newRow("value") << "#a0B1c2" << QStringLiteral("#a0B1c2");
        QTest::newRow("nothing") << QString() << fallback;
        QTest::newRow("short value") << "#abc" << fallback;
        QTest::newRow("words") << "light blue" << fallback;
        QTest::newRow("style") << "red; border: 0" << fallback;
        QTest::newRow("function") << "rgb(1,2,3)" << fallback;
    }
    void previewTakesWordsAndValuesOnly()
    {
        QFETCH(QString, entry);
        QTEST(previewColor(entry, QStringLiteral("#FF6B6B")), "color");
    }

private:
    static void compare(TestResult (*rule)(const ServiceAnswer &))
    {
        QFETCH(ServiceAnswer, answer);
        const TestResult result = rule(answer);
        QTEST(result.success, "success");
        QTEST(result.text, "text");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestConfigDialogRules)
#include "tst_configdialogrules.moc"
