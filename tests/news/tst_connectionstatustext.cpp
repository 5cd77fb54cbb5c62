#include "news/ConnectionStatusText.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString cross(const char *what)
{
    return QStringLiteral("API: <span style='color: red;'>✕</span> ") + QString::fromUtf8(what);
}

void addTexts(const char *message, const char *status, const QString &connection)
{
    QTest::newRow(message) << QString::fromUtf8(message) << QString::fromUtf8(status) << connection;
}

void addColumns()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("connection");
}

} // namespace

class TestConnectionStatusText : public QObject
{
    Q_OBJECT

private slots:
    void allIsWellInGreen()
    {
        QCOMPARE(ConnectionStatusText::connected(),
                 QStringLiteral("API: <span style='color: green;'>●</span>"));
    }

    void aServiceErrorIsToldInPlainWords_data()
    {
        addColumns();
        addTexts("JSON parse error", "API错误: 数据解析失败", cross("数据格式错误"));
        addTexts("数据解析出错", "API错误: 数据解析失败", cross("数据格式错误"));
        addTexts("HTTP 404", "API错误: 请求的资源不存在", cross("资源未找到"));
        addTexts("Not Found", "API错误: 请求的资源不存在", cross("资源未找到"));
        addTexts("HTTP 500", "API错误: 服务器内部错误", cross("服务器错误"));
        addTexts("Internal Server Error", "API错误: 服务器内部错误", cross("服务器错误"));
        addTexts("HTTP 401", "API错误: 认证失败", cross("认证失败"));
        addTexts("Unauthorized", "API错误: 认证失败", cross("认证失败"));
        addTexts("关键词已存在", "API错误: 关键词已存在", cross("操作失败"));
        addTexts("", "API错误: ", cross("操作失败"));
        // The first match wins, and case counts.
        addTexts("JSON of a 404", "API错误: 数据解析失败", cross("数据格式错误"));
        addTexts("404 after 500", "API错误: 请求的资源不存在", cross("资源未找到"));
        addTexts("401 or 500", "API错误: 服务器内部错误", cross("服务器错误"));
        addTexts("json, not found, unauthorized", "API错误: json, not found, unauthorized",
                 cross("操作失败"));
        addTexts("%1 解 析", "API错误: %1 解 析", cross("操作失败"));
    }

    void aServiceErrorIsToldInPlainWords()
    {
        QFETCH(QString, message);
        const ConnectionStatusText::Texts texts = ConnectionStatusText::forApiError(message);
        QTEST(texts.status, "status");
        QTEST(texts.connection, "connection");
    }

    void aNetworkErrorIsToldInPlainWords_data()
    {
        addColumns();
        addTexts("网络通讯异常: 请求失败\n服务器地址: http://news.example", "网络错误: 通讯异常",
                 cross("http://news.example"));
        addTexts("连续8次请求失败\n服务器地址: http://news.example", "网络错误: 通讯异常",
                 cross("http://news.example"));
        addTexts("请求被取消", "网络错误: 通讯异常", cross("未知"));
        addTexts("连接被拒绝: refused\n服务器地址: http://localhost:8888",
                 "网络错误: 请检查API服务器地址配置", cross("localhost"));
        addTexts("连接被拒绝\n服务器地址: http://127.0.0.1:8888", "网络错误: 请检查API服务器地址配置",
                 cross("localhost"));
        addTexts("Socket timeout", "网络错误: 连接超时，请检查网络连接", cross("连接超时"));
        addTexts("连接超时: x\n服务器地址: http://news.example", "网络错误: 连接超时，请检查网络连接",
                 cross("连接超时"));
        addTexts("Connection refused\n服务器地址: http://news.example",
                 "网络错误: 服务器拒绝连接，请检查服务器状态", cross("http://news.example"));
        addTexts("连接被拒绝: x\n服务器地址: http://news.example",
                 "网络错误: 服务器拒绝连接，请检查服务器状态", cross("http://news.example"));
        addTexts("Host not found\n服务器地址: http://news.example", "网络错误: 服务器未找到，请检查地址配置",
                 cross("http://news.example"));
        addTexts("主机未找到: x", "网络错误: 服务器未找到，请检查地址配置", cross("未知"));
        addTexts("网络错误 (5): x\n服务器地址: http://news.example",
                 "网络错误: 网络错误 (5): x\n服务器地址: http://news.example", cross("http://news.example"));
        addTexts("", "网络错误: ", cross("未知"));
        // The first match wins, and case counts.
        addTexts("网络通讯异常: 连续8次请求失败\n服务器地址: http://127.0.0.1:8888", "网络错误: 通讯异常",
                 cross("http://127.0.0.1:8888"));
        addTexts("timeout at localhost", "网络错误: 请检查API服务器地址配置", cross("localhost"));
        addTexts("refused after timeout", "网络错误: 连接超时，请检查网络连接", cross("连接超时"));
        addTexts("not found or refused", "网络错误: 服务器拒绝连接，请检查服务器状态", cross("未知"));
        addTexts("Timeout, Refused, Not Found, LOCALHOST", "网络错误: Timeout, Refused, Not Found, LOCALHOST",
                 cross("未知"));
    }

    void aNetworkErrorIsToldInPlainWords()
    {
        QFETCH(QString, message);
        const ConnectionStatusText::Texts texts = ConnectionStatusText::forNetworkError(message);
        QTEST(texts.status, "status");
        QTEST(texts.connection, "connection");
    }

    void theServersAddressIsTakenOutOfTheMessage_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("address");
        const auto row = [](const char *name, const char *message, const char *address) {
            QTest::newRow(name) << QString::fromUtf8(message) << QString::fromUtf8(address);
        };
        row("no mark", "连接被拒绝", "未知");
        row("up to the end", "x\n服务器地址: http://a.example/", "http://a.example/");
        row("up to the line feed", "服务器地址: http://a.example\n重试: 2", "http://a.example");
        row("right behind the mark", "服务器地址:http://a.example", "http://a.example");
        row("trimmed", "服务器地址: \t http://a.example  \n", "http://a.example");
        row("nothing behind the mark", "服务器地址:", "");
        row("an empty line behind the mark", "服务器地址:\nx", "");
        row("the first of two marks", "服务器地址: a\n服务器地址: b", "a");
        row("another colon is another mark", "服务器地址： http://a.example", "未知");
    }

    void theServersAddressIsTakenOutOfTheMessage()
    {
        QFETCH(QString, message);
        QTEST(ConnectionStatusText::serverAddress(message), "address");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestConnectionStatusText)
#include "tst_connectionstatustext.moc"
