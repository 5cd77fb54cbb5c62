#include "service/HttpHead.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// Heads of HTTP messages as the relay reads and writes them.
class HttpHeadTest : public QObject
{
    Q_OBJECT

private slots:
    void aRequestHeadIsTakenApart();
    void connectionsAreKeptAsTheVersionSays_data();
    void connectionsAreKeptAsTheVersionSays();
    void whatIsNoRequestIsRefused_data();
    void whatIsNoRequestIsRefused();
    void forwardingEndsTheConnectionAndAsksForNoCompression();
    void forwardingAnnouncesTheBodyInItsOwnWords_data();
    void forwardingAnnouncesTheBodyInItsOwnWords();
    void anAnswerIsTakenApart();
    void anAnswerCutShortIsNone();
    void anAnswerHeadSaysWhatItIsTold();
};

void HttpHeadTest::aRequestHeadIsTakenApart()
{
    const auto head = parseRequestHead("POST /auth/login?x=1 HTTP/1.1\r\nHost: a\r\ncontent-length:  12 \r\n"
                                       "Expect: 100-Continue\r\nX-Device-Name: 电脑\r\n\r\n");
    QVERIFY(head.has_value());
    QCOMPARE(head->method, std::string("POST"));
    QCOMPARE(head->target, std::string("/auth/login?x=1"));
    QCOMPARE(head->path(), std::string("/auth/login"));
    QCOMPARE(head->contentLength, std::size_t(12));
    QVERIFY(head->expectsContinue);
    QVERIFY(!head->isChunked);
    QCOMPARE(headerValue(head->headers, "x-device-name"), std::string("电脑"));
    QCOMPARE(headerValue(head->headers, "missing"), std::string());
}

void HttpHeadTest::connectionsAreKeptAsTheVersionSays_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("kept");
    QTest::newRow("1.1") << QByteArray("GET / HTTP/1.1\r\n\r\n") << true;
    QTest::newRow("1.1 close") << QByteArray("GET / HTTP/1.1\r\nConnection: Close\r\n\r\n") << false;
    QTest::newRow("1.0") << QByteArray("GET / HTTP/1.0\r\n\r\n") << false;
    QTest::newRow("1.0 keep-alive") << QByteArray("GET / HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n") << true;
}

void HttpHeadTest::connectionsAreKeptAsTheVersionSays()
{
    QFETCH(QByteArray, head);
    QFETCH(bool, kept);
    QCOMPARE(parseRequestHead(head.toStdString())->keepsAlive, kept);
}

void HttpHeadTest::whatIsNoRequestIsRefused_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("nothing") << QByteArray("\r\n\r\n");
    QTest::newRow("no version") << QByteArray("GET /\r\n\r\n");
    QTest::newRow("other version") << QByteArray("GET / HTTP/2.0\r\n\r\n");
    QTest::newRow("target without slash") << QByteArray("GET newsapi HTTP/1.1\r\n\r\n");
    QTest::newRow("no target") << QByteArray("GET  HTTP/1.1\r\n\r\n");
    QTest::newRow("method with signs") << QByteArray("G(T / HTTP/1.1\r\n\r\n");
    QTest::newRow("header without colon") << QByteArray("GET / HTTP/1.1\r\nHost\r\n\r\n");
    QTest::newRow("length that is none") << QByteArray("GET / HTTP/1.1\r\nContent-Length: many\r\n\r\n");
    QTest::newRow("negative length") << QByteArray("GET / HTTP/1.1\r\nContent-Length: -1\r\n\r\n");
    QTest::newRow("start of a TLS handshake") << QByteArray("\x16\x03\x01\r\n\r\n");
}

void HttpHeadTest::whatIsNoRequestIsRefused()
{
    QFETCH(QByteArray, head);
    QVERIFY(!parseRequestHead(head.toStdString()).has_value());
}

void HttpHeadTest::forwardingEndsTheConnectionAndAsksForNoCompression()
{
    const auto head = parseRequestHead("GET /a HTTP/1.1\r\nHost: a\r\nAccept-Encoding: gzip\r\nConnection: "
                                       "keep-alive\r\nX-API-Key: k\r\n\r\n");
    QCOMPARE(forwardedHead(*head),
             std::string("GET /a HTTP/1.1\r\nHost: a\r\nX-API-Key: k\r\nConnection: close\r\n\r\n"));
}

void HttpHeadTest::forwardingAnnouncesTheBodyInItsOwnWords_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("forwarded");
    QTest::newRow("a body is wanted but none announced")
        << QByteArray("POST /a HTTP/1.1\r\n\r\n")
        << QByteArray("POST /a HTTP/1.1\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    QTest::newRow("no body is wanted") << QByteArray("DELETE /a HTTP/1.1\r\n\r\n")
                                       << QByteArray("DELETE /a HTTP/1.1\r\nConnection: close\r\n\r\n");
    QTest::newRow("a body of any type is JSON")
        << QByteArray("PUT /a HTTP/1.1\r\nContent-Type: application/x-www-form-urlencoded\r\n"
                      "Content-Length: 2\r\n\r\n")
        << QByteArray("PUT /a HTTP/1.1\r\nContent-Length: 2\r\nConnection: close\r\n\r\n");
    QTest::newRow("two lengths") << QByteArray("PUT /a HTTP/1.1\r\nContent-Length: 2\r\n"
                                               "Content-Length: 7\r\n\r\n")
                                 << QByteArray(
                                        "PUT /a HTTP/1.1\r\nContent-Length: 2\r\nConnection: close\r\n\r\n");
    QTest::newRow("a part of the answer") << QByteArray("GET /a HTTP/1.1\r\nRange: bytes=0-3\r\n\r\n")
                                          << QByteArray("GET /a HTTP/1.1\r\nConnection: close\r\n\r\n");
}

void HttpHeadTest::forwardingAnnouncesTheBodyInItsOwnWords()
{
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, forwarded);
    QCOMPARE(QByteArray::fromStdString(forwardedHead(*parseRequestHead(head.toStdString()))), forwarded);
}

void HttpHeadTest::anAnswerIsTakenApart()
{
    const auto answer =
        parseAnswer("HTTP/1.1 404 Not Found\r\nContent-Type: a/b\r\nContent-Length: 3\r\n\r\nabc");
    QVERIFY(answer.has_value());
    QCOMPARE(answer->status, 404);
    QCOMPARE(answer->reason, std::string("Not Found"));
    QCOMPARE(answer->body, std::string("abc"));
    QCOMPARE(headerValue(answer->headers, "content-type"), std::string("a/b"));
}

void HttpHeadTest::anAnswerCutShortIsNone()
{
    QVERIFY(!parseAnswer("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab").has_value());
    QVERIFY(!parseAnswer("HTTP/1.1 200 OK\r\nContent-Le").has_value());
    QVERIFY(!parseAnswer("").has_value());
}

void HttpHeadTest::anAnswerHeadSaysWhatItIsTold()
{
    const Answer answer{
        200, "OK", {{"Content-Type", "a/b"}, {"Connection", "close"}, {"Content-Length", "1"}}, "x"};
    QCOMPARE(
        answerHead(answer, 77, true),
        std::string(
            "HTTP/1.1 200 OK\r\nContent-Type: a/b\r\nContent-Length: 77\r\nConnection: keep-alive\r\n\r\n"));
    QVERIFY(answerHead(answer, 77, false).find("Connection: close") != std::string::npos);
}

LARKSPIRE_GUILESS_TEST_MAIN(HttpHeadTest)
#include "tst_HttpHead.moc"
