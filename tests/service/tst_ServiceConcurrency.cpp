#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSet>
#include <QTcpSocket>
#include <QtTest>

#include <atomic>
#include <mutex>
#include <thread>

using namespace WireRequests;

/// Many clients at once.
class ServiceConcurrencyTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void writersAndReadersDoNotDisturbEachOther();
    void oneKeywordIsAddedOnce();
    void oneDeviceGetsOneAccount();
    void theDeviceLimitHolds();
    void manyIdleConnectionsKeepNobodyOut();
    void aQtClientIsServedOnItsKeptConnections();

private:
    static void inThreads(int count, const std::function<void(int)> &work)
    {
        std::vector<std::thread> threads;
        threads.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            threads.emplace_back(work, i);
        for (std::thread &thread : threads)
            thread.join();
    }

    std::unique_ptr<ServiceProcess> m_service;
};

void ServiceConcurrencyTest::init()
{
    m_service = std::make_unique<ServiceProcess>(standingClock());
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
}

void ServiceConcurrencyTest::cleanup()
{
    QVERIFY2(!m_service->log().contains(QStringLiteral("fault in")), qPrintable(m_service->log()));
    QVERIFY(m_service->stop());
    m_service.reset();
}

void ServiceConcurrencyTest::writersAndReadersDoNotDisturbEachOther()
{
    constexpr int threads = 12;
    constexpr int rounds = 15;
    std::atomic<int> refused{0};
    std::atomic<int> unordered{0};
    inThreads(threads, [&](int thread) {
        for (int round = 0; round < rounds; ++round) {
            const QString name = QStringLiteral("t%1r%2").arg(thread).arg(round);
            if (thread % 3 == 0) {
                m_service->publish(name);
            } else if (thread % 3 == 1) {
                refused += m_service->request("POST", "/newsapi/keywords",
                                              {{QStringLiteral("keyword"), name}}, byDemoKey())
                                       .status == 200
                               ? 0
                               : 1;
            } else {
                const QJsonObject page =
                    m_service->request("GET", "/newsapi/news?limit=500", {}, byDemoKey()).object;
                const int items = at(page, QStringLiteral("data.news")).toArray().size();
                // One answer is one moment: its items and its total belong together.
                unordered += items == numberAt(page, "data.pagination.total") ? 0 : 1;
            }
        }
    });
    QCOMPARE(refused.load(), 0);
    QCOMPARE(unordered.load(), 0);
    const QStringList ids = idsOf(news(*m_service, "limit=500"));
    QCOMPARE(ids.size(), threads / 3 * rounds);
    QCOMPARE(QSet<QString>(ids.begin(), ids.end()).size(), ids.size());
    QCOMPARE(m_service->request("GET", "/newsapi/keywords", {}, byDemoKey())
                 .object.value(QLatin1String("data"))
                 .toArray()
                 .size(),
             7 + threads / 3 * rounds);
}

void ServiceConcurrencyTest::oneKeywordIsAddedOnce()
{
    std::atomic<int> added{0};
    std::atomic<int> refused{0};
    inThreads(10, [&](int) {
        const int status =
            m_service->request("POST", "/newsapi/keywords", json(R"({"keyword":"黄金"})"), byDemoKey())
                .status;
        added += status == 200 ? 1 : 0;
        refused += status == 400 ? 1 : 0;
    });
    QCOMPARE(added.load(), 1);
    QCOMPARE(refused.load(), 9);
}

void ServiceConcurrencyTest::oneDeviceGetsOneAccount()
{
    std::mutex mutex;
    QSet<QString> keys;
    int isNew = 0;
    inThreads(10, [&](int) {
        const QJsonObject reply =
            m_service
                ->request("POST", "/auth/get_apikey", json(R"({"request_type":"free_apikey"})"),
                          onDevice(QStringLiteral("d1")))
                .object;
        const std::lock_guard lock(mutex);
        keys.insert(textAt(reply, "api_key"));
        isNew += reply.value(QLatin1String("is_new")).toBool() ? 1 : 0;
    });
    QCOMPARE(keys.size(), 1);
    QVERIFY(!keys.contains(QString()));
    QCOMPARE(isNew, 1);
}

void ServiceConcurrencyTest::theDeviceLimitHolds()
{
    std::atomic<int> let{0};
    std::atomic<int> refused{0};
    inThreads(10, [&](int thread) {
        const int status = m_service
                               ->request("GET", "/newsapi/test", {},
                                         byDemoKey() + onDevice(QStringLiteral("d%1").arg(thread)))
                               .status;
        let += status == 200 ? 1 : 0;
        refused += status == 403 ? 1 : 0;
    });
    QCOMPARE(let.load(), 2);
    QCOMPARE(refused.load(), 8);
}

void ServiceConcurrencyTest::manyIdleConnectionsKeepNobodyOut()
{
    std::vector<std::unique_ptr<QTcpSocket>> idle(100);
    for (auto &socket : idle) {
        socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), m_service->port());
        QVERIFY(socket->waitForConnected());
        socket->write("GET /newsapi/health HTTP/1.1\r\n\r\n");
        QVERIFY(socket->waitForReadyRead(10000));
    }
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(m_service->request("GET", "/newsapi/news", {}, byDemoKey()).status, 200);
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
}

void ServiceConcurrencyTest::aQtClientIsServedOnItsKeptConnections()
{
    m_service->publishFromFeed(50);
    QNetworkAccessManager manager;
    manager.setProxy(QNetworkProxy::NoProxy);
    QNetworkRequest request(QUrl(m_service->baseUrl() + QStringLiteral("/newsapi/news?limit=50")));
    request.setRawHeader("X-API-Key", ServiceProcess::demoApiKey().toUtf8());
    int good = 0;
    int finished = 0;
    for (int i = 0; i < 100; ++i) {
        QNetworkReply *reply = manager.get(request);
        connect(reply, &QNetworkReply::finished, this, [&, reply] {
            const QJsonArray items = QJsonDocument::fromJson(reply->readAll())
                                         .object()
                                         .value(QLatin1String("data"))
                                         .toObject()
                                         .value(QLatin1String("news"))
                                         .toArray();
            good += reply->error() == QNetworkReply::NoError && items.size() == 50 ? 1 : 0;
            ++finished;
            reply->deleteLater();
        });
    }
    QTRY_COMPARE_WITH_TIMEOUT(finished, 100, 30000);
    QCOMPARE(good, 100);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceConcurrencyTest)
#include "tst_ServiceConcurrency.moc"
