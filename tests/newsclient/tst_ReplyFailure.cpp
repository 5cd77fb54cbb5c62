#include "newsclient/ReplyFailure.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

using Signal = ReplyFailure::Signal;
Q_DECLARE_METATYPE(ReplyFailure::Signal)

namespace {

const QString &baseUrl()
{
    static const QString url = QStringLiteral("http://news.larkspire.example/");
    return url;
}

} // namespace

class TestReplyFailure : public QObject
{
    Q_OBJECT

private slots:
    void theFirstRowThatFitsDecides_data();
    void theFirstRowThatFitsDecides();
    void theServicesOwnWordsReplaceTheDefault_data();
    void theServicesOwnWordsReplaceTheDefault();
    void aRefusalGoesToTheWaitingOperation_data();
    void aRefusalGoesToTheWaitingOperation();
    void aDenialGoesToKeywordChangesAsAnError_data();
    void aDenialGoesToKeywordChangesAsAnError();
    void lowerFailuresTellTheAddressAndIgnoreTheBody_data();
    void lowerFailuresTellTheAddressAndIgnoreTheBody();
    void aPercentSignInTheReasonIsNoPlaceholder();
    void timeOutsAreReportedFromTheEighthOn_data();
    void timeOutsAreReportedFromTheEighthOn();
};

void TestReplyFailure::theFirstRowThatFitsDecides_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("status");
    QTest::addColumn<Signal>("signal");
    QTest::addColumn<QString>("text");

    QTest::newRow("429") << int(QNetworkReply::UnknownContentError) << 429 << Signal::NetworkError
                         << QStringLiteral("请求过于频繁，请稍后再试");
    QTest::newRow("429 ahead of a refused operation")
        << int(QNetworkReply::ProtocolInvalidOperationError) << 429 << Signal::NetworkError
        << QStringLiteral("请求过于频繁，请稍后再试");
    QTest::newRow("429 ahead of a missing identification")
        << int(QNetworkReply::AuthenticationRequiredError) << 429 << Signal::NetworkError
        << QStringLiteral("请求过于频繁，请稍后再试");
    QTest::newRow("400 by error") << int(QNetworkReply::ProtocolInvalidOperationError) << 0
                                  << Signal::NetworkError << QStringLiteral("请求参数错误");
    QTest::newRow("400 by status") << int(QNetworkReply::UnknownContentError) << 400 << Signal::NetworkError
                                   << QStringLiteral("请求参数错误");
    QTest::newRow("400 ahead of a missing identification")
        << int(QNetworkReply::AuthenticationRequiredError) << 400 << Signal::NetworkError
        << QStringLiteral("请求参数错误");
    QTest::newRow("401") << int(QNetworkReply::AuthenticationRequiredError) << 401
                         << Signal::AuthenticationFailed << QStringLiteral("API密钥无效，请检查配置");
    QTest::newRow("403") << int(QNetworkReply::ContentAccessDenied) << 403 << Signal::NetworkError
                         << QStringLiteral("禁止访问");
}

void TestReplyFailure::theFirstRowThatFitsDecides()
{
    QFETCH(int, error);
    QFETCH(int, status);
    QFETCH(Signal, signal);
    QFETCH(QString, text);
    ReplyFailure failure;
    failure.error = static_cast<QNetworkReply::NetworkError>(error);
    failure.httpStatus = status;
    failure.errorString = QStringLiteral("reason");
    const ReplyFailure::Report report = failure.report(QStringLiteral("getNews"), baseUrl());
    QCOMPARE(report.signal, signal);
    QCOMPARE(report.text, text);
}

void TestReplyFailure::theServicesOwnWordsReplaceTheDefault_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");

    const struct
    {
        const char *name;
        QNetworkReply::NetworkError error;
        int status;
        QString defaultText;
    } rows[] = {
        {"429", QNetworkReply::UnknownContentError, 429, QStringLiteral("请求过于频繁，请稍后再试")},
        {"400", QNetworkReply::ProtocolInvalidOperationError, 400, QStringLiteral("请求参数错误")},
        {"401", QNetworkReply::AuthenticationRequiredError, 401, QStringLiteral("API密钥无效，请检查配置")},
        {"403", QNetworkReply::ContentAccessDenied, 403, QStringLiteral("禁止访问")},
    };
    for (const auto &row : rows) {
        const int error = row.error;
        QTest::addRow("%s, own words", row.name)
            << error << row.status << QByteArray(R"({"error": "服务的话", "message": "另一句"})")
            << QStringLiteral("服务的话");
        QTest::addRow("%s, wait_seconds beside them", row.name)
            << error << row.status << QByteArray(R"({"error": "慢一点", "wait_seconds": 30})")
            << QStringLiteral("慢一点");
        QTest::addRow("%s, wait_seconds alone", row.name)
            << error << row.status << QByteArray(R"({"wait_seconds": 30})") << row.defaultText;
        QTest::addRow("%s, message alone", row.name)
            << error << row.status << QByteArray(R"({"message": "另一句"})") << row.defaultText;
        QTest::addRow("%s, empty error", row.name)
            << error << row.status << QByteArray(R"({"error": ""})") << row.defaultText;
        QTest::addRow("%s, error of another type", row.name)
            << error << row.status << QByteArray(R"({"error": {"code": 7}})") << row.defaultText;
        QTest::addRow("%s, an array", row.name)
            << error << row.status << QByteArray(R"([{"error": "x"}])") << row.defaultText;
        QTest::addRow("%s, not JSON", row.name)
            << error << row.status << QByteArray("<html>error</html>") << row.defaultText;
        QTest::addRow("%s, no body", row.name) << error << row.status << QByteArray() << row.defaultText;
    }
}

void TestReplyFailure::theServicesOwnWordsReplaceTheDefault()
{
    QFETCH(int, error);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    ReplyFailure failure;
    failure.error = static_cast<QNetworkReply::NetworkError>(error);
    failure.httpStatus = status;
    failure.body = body;
    QCOMPARE(failure.report(QStringLiteral("getNews"), baseUrl()).text, text);
}

void TestReplyFailure::aRefusalGoesToTheWaitingOperation_data()
{
    QTest::addColumn<Signal>("signal");
    QTest::newRow("resetPassword") << Signal::PasswordResetCompleted;
    QTest::newRow("registerUser") << Signal::UserRegistered;
    QTest::newRow("loginUser") << Signal::UserLoggedIn;
    QTest::newRow("sendEmailVerification") << Signal::EmailCodeSent;
    QTest::newRow("sendEmailVerificationForReset") << Signal::EmailCodeResetSent;
    QTest::newRow("verifyEmailCode") << Signal::EmailCodeVerified;
    QTest::newRow("addKeyword") << Signal::ErrorOccurred;
    QTest::newRow("updateKeyword") << Signal::ErrorOccurred;
    QTest::newRow("deleteKeyword") << Signal::ErrorOccurred;
    for (const char *tag :
         {"getNews", "getKeywords", "bindEmail", "testApiConnection", "loginWithCode", "LoginUser", ""})
        QTest::addRow("%s", *tag ? tag : "no tag") << Signal::NetworkError;
}

void TestReplyFailure::aRefusalGoesToTheWaitingOperation()
{
    QFETCH(Signal, signal);
    const QString tag = QLatin1String(QTest::currentDataTag()) == QLatin1String("no tag")
                            ? QString()
                            : QString::fromLatin1(QTest::currentDataTag());
    ReplyFailure failure;
    failure.error = QNetworkReply::ProtocolInvalidOperationError;
    failure.httpStatus = 400;
    failure.body = R"({"error": "不行"})";
    const ReplyFailure::Report report = failure.report(tag, baseUrl());
    QCOMPARE(report.signal, signal);
    QCOMPARE(report.text, QStringLiteral("不行"));
}

void TestReplyFailure::aDenialGoesToKeywordChangesAsAnError_data()
{
    QTest::addColumn<Signal>("signal");
    QTest::newRow("addKeyword") << Signal::ErrorOccurred;
    QTest::newRow("updateKeyword") << Signal::ErrorOccurred;
    QTest::newRow("deleteKeyword") << Signal::ErrorOccurred;
    QTest::newRow("getKeywords") << Signal::NetworkError;
    QTest::newRow("loginUser") << Signal::NetworkError;
}

void TestReplyFailure::aDenialGoesToKeywordChangesAsAnError()
{
    QFETCH(Signal, signal);
    ReplyFailure failure;
    failure.error = QNetworkReply::ContentAccessDenied;
    failure.httpStatus = 403;
    QCOMPARE(failure.report(QString::fromLatin1(QTest::currentDataTag()), baseUrl()).signal, signal);
}

void TestReplyFailure::lowerFailuresTellTheAddressAndIgnoreTheBody_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");
    QTest::newRow("refused") << int(QNetworkReply::ConnectionRefusedError) << 0
                             << QStringLiteral(
                                    "连接被拒绝: reason\n服务器地址: http://news.larkspire.example/");
    QTest::newRow("no such host") << int(QNetworkReply::HostNotFoundError) << 0
                                  << QStringLiteral(
                                         "主机未找到: reason\n服务器地址: http://news.larkspire.example/");
    QTest::newRow("timed out below") << int(QNetworkReply::TimeoutError) << 0
                                     << QStringLiteral(
                                            "连接超时: reason\n服务器地址: http://news.larkspire.example/");
    QTest::newRow("404") << int(QNetworkReply::ContentNotFoundError) << 404
                         << QStringLiteral(
                                "网络错误 (203): reason\n服务器地址: http://news.larkspire.example/");
    QTest::newRow("500") << int(QNetworkReply::InternalServerError) << 500
                         << QStringLiteral(
                                "网络错误 (401): reason\n服务器地址: http://news.larkspire.example/");
    QTest::newRow("closed") << int(QNetworkReply::RemoteHostClosedError) << 0
                            << QStringLiteral(
                                   "网络错误 (2): reason\n服务器地址: http://news.larkspire.example/");
}

void TestReplyFailure::lowerFailuresTellTheAddressAndIgnoreTheBody()
{
    QFETCH(int, error);
    QFETCH(int, status);
    QFETCH(QString, text);
    ReplyFailure failure;
    failure.error = static_cast<QNetworkReply::NetworkError>(error);
    failure.httpStatus = status;
    failure.errorString = QStringLiteral("reason");
    failure.body = R"({"error": "服务的话"})";
    const ReplyFailure::Report report = failure.report(QStringLiteral("addKeyword"), baseUrl());
    QCOMPARE(report.signal, Signal::NetworkError);
    QCOMPARE(report.text, text);
}

void TestReplyFailure::aPercentSignInTheReasonIsNoPlaceholder()
{
    ReplyFailure failure;
    failure.error = QNetworkReply::ContentNotFoundError;
    failure.errorString = QStringLiteral("/news?keyword=%3 %1 %2");
    QCOMPARE(failure.report(QStringLiteral("getNews"), baseUrl()).text,
             QStringLiteral("网络错误 (203): /news?keyword=%3 %1 %2\n服务器地址: "
                            "http://news.larkspire.example/"));
}

void TestReplyFailure::timeOutsAreReportedFromTheEighthOn_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("text");
    QTest::newRow("first") << 1 << QString();
    QTest::newRow("seventh") << 7 << QString();
    QTest::newRow("eighth") << 8
                            << QStringLiteral("网络通讯异常: 连续8次请求失败\n服务器地址: "
                                              "http://news.larkspire.example/");
    QTest::newRow("ninth") << 9
                           << QStringLiteral("网络通讯异常: 连续9次请求失败\n服务器地址: "
                                             "http://news.larkspire.example/");
    QTest::newRow("hundredth") << 100
                               << QStringLiteral("网络通讯异常: 连续100次请求失败\n服务器地址: "
                                                 "http://news.larkspire.example/");
}

void TestReplyFailure::timeOutsAreReportedFromTheEighthOn()
{
    QFETCH(int, count);
    QFETCH(QString, text);
    QCOMPARE(ReplyFailure::repeatedTimeoutText(count, baseUrl()), text);
}

LARKSPIRE_GUILESS_TEST_MAIN(TestReplyFailure)
#include "tst_ReplyFailure.moc"
