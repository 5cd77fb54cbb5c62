#include "accounts/AuthManager.h"
#include "app/AppTestSupport.h"
#include "app/LarkspireAppPeer.h"
#include "news/CustomNotification.h"
#include "news/NewsTables.h"
#include "newsclient/ApiClient.h"
#include "resources/LarkspireResources.h"
#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/speechplugin/SpeechStage.h"

#include <QApplication>
#include <QJsonArray>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBrowser>
#include <QtTest>

/// The whole way of a news item, from the real service to a real window.
class TestLarkspireAppService : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void logsInWithEMailAndPassword();
    void firstNewsComesByItselfAndATickBringsWhatFollows();
    void aServiceThatFailsAndComesBackIsFollowed();
    void throughEveryFaultTheLabelsTellAndNoItemIsLostOrShownTwice();

private:
    void openWithFirstNews();
    void tick();
    QStringList rowIds() const;
    QString text(const char *label) const
    {
        return m_window->findChild<QLabel *>(QLatin1String(label))->text();
    }
    QTableWidget *table() const
    {
        return m_window->findChild<QTableWidget *>(QStringLiteral("newsTableWidget"));
    }

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<LarkspireApp> m_window;
};

void TestLarkspireAppService::init()
{
    clearSettings();
    SpeechStage::instance().reset();
    SpeechStage::instance().speaksAtOnce = false;
    ServiceProcess::Settings settings;
    settings.history = 30;
    m_service = std::make_unique<ServiceProcess>(settings);
    QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    ConfigManager *stored = ConfigManager::instance();
    stored->setApiServerUrl(m_service->baseUrl());
    stored->setLoginMethod(1);
    stored->setApiKey(ServiceProcess::demoApiKey());
    stored->setShowNewsDetails(true);
}

void TestLarkspireAppService::cleanup()
{
    m_window.reset();
    m_service.reset();
}

void TestLarkspireAppService::openWithFirstNews()
{
    m_window = std::make_unique<LarkspireApp>();
    QTRY_COMPARE_WITH_TIMEOUT(text("statusLabel"), QStringLiteral("已加载 30 条新闻"), 15000);
    QVERIFY(m_window->isVisible());
}

void TestLarkspireAppService::tick()
{
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "onRefreshTimer"));
}

void TestLarkspireAppService::logsInWithEMailAndPassword()
{
    ConfigManager *stored = ConfigManager::instance();
    stored->setLoginMethod(0);
    stored->setApiKey(QString());
    stored->setAuthEmail(ServiceProcess::demoEmail());
    {
        // The password is scrambled by the device id, which a first window writes.
        stored->setAutoLogin(false);
        const LarkspireApp first;
    }
    stored->setAuthPassword(ServiceProcess::demoPassword());
    stored->setAutoLogin(true);
    openWithFirstNews();
    QCOMPARE(text("userStatusLabel"), ServiceProcess::demoEmail());
}

void TestLarkspireAppService::firstNewsComesByItselfAndATickBringsWhatFollows()
{
    openWithFirstNews();
    QCOMPARE(text("connectionLabel"), QStringLiteral("API: <span style='color: green;'>●</span>"));
    QVERIFY(text("newsCountLabel").startsWith(QStringLiteral("新闻: 30 (关键词: ")));
    QVERIFY(SpeechStage::instance().said().isEmpty());

    m_service->publish(QStringLiteral("多家公司披露回购进展"));
    tick();
    QTRY_COMPARE(table()->rowCount(), 31);
    QVERIFY(text("newsCountLabel").endsWith(QStringLiteral("[+1]")));
    QCOMPARE(NewsTables::newsAt(table(), 0).title, QStringLiteral("多家公司披露回购进展"));
    QVERIFY(NewsTables::newsAt(table(), 0).hasKeywords);
    QCOMPARE(SpeechStage::instance().said(), QStringList{QStringLiteral("多家公司披露回购进展")});
    QVERIFY(m_window->findChild<CustomNotification *>()->isVisible());
    const QString details =
        m_window->findChild<QTextBrowser *>(QStringLiteral("detailsTextEdit"))->toPlainText();
    QVERIFY(details.contains(QStringLiteral("多家公司披露回购进展")));
    QVERIFY(details.contains(QStringLiteral("关键词 回购")));

    QSignalSpy received(m_window->findChild<ApiClient *>(), &ApiClient::incrementalNewsReceived);
    tick();
    QVERIFY(received.wait());
    QCOMPARE(table()->rowCount(), 31);
    QCOMPARE(SpeechStage::instance().said().size(), 1);
}

void TestLarkspireAppService::aServiceThatFailsAndComesBackIsFollowed()
{
    openWithFirstNews();
    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("not_json"),
                        {{QStringLiteral("count"), 1}});
    tick();
    QTRY_COMPARE(text("statusLabel"), QStringLiteral("API错误: 数据解析失败"));

    m_service->addFault(QStringLiteral("/newsapi/news"), QStringLiteral("reset"), {});
    tick();
    QTRY_COMPARE(text("statusLabel"), QStringLiteral("网络错误: 请检查API服务器地址配置"));
    QCOMPARE(table()->rowCount(), 30);
    QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());

    m_service->clearFaults();
    m_service->publish(QStringLiteral("恢复后的第一条"));
    tick();
    QTRY_COMPARE(table()->rowCount(), 31);
    QCOMPARE(text("connectionLabel"), QStringLiteral("API: <span style='color: green;'>●</span>"));

    m_service->kill();
    tick();
    QTRY_COMPARE(text("connectionLabel"),
                 QStringLiteral("API: <span style='color: red;'>✕</span> localhost"));
    QCOMPARE(table()->rowCount(), 31);
}

QStringList TestLarkspireAppService::rowIds() const
{
    QStringList ids;
    for (int row = 0; row < table()->rowCount(); ++row)
        ids.append(NewsTables::newsAt(table(), row).id);
    ids.sort();
    return ids;
}

void TestLarkspireAppService::throughEveryFaultTheLabelsTellAndNoItemIsLostOrShownTwice()
{
    openWithFirstNews();
    auto *client = m_window->findChild<ApiClient *>();
    const QString checking = QStringLiteral("正在检查新数据...");
    const QString nothingNew = QStringLiteral("没有新数据");
    const QString address = QStringLiteral("网络错误: 请检查API服务器地址配置");
    const QString words = QStringLiteral("网络错误: 模拟的服务错误");
    const QString green = QStringLiteral("API: <span style='color: green;'>●</span>");
    const auto red = [](const QString &what) {
        return QStringLiteral("API: <span style='color: red;'>✕</span> ") + what;
    };
    const QString localhost = red(QStringLiteral("localhost"));
    const QString unknown = red(QStringLiteral("未知"));
    const auto status = [](int code) { return QJsonObject{{QStringLiteral("status"), code}}; };
    const struct
    {
        const char *kind;
        QJsonObject further;
        QString status;
        QString connection;
    } faults[] = {
        {"delay", {{QStringLiteral("delay_ms"), 100}}, checking, green},
        {"drip", {{QStringLiteral("bytes"), 100}, {QStringLiteral("interval_ms"), 1}}, checking, green},
        {"drop", {}, QStringLiteral("网络错误: 连接超时，请检查网络连接"), red(QStringLiteral("连接超时"))},
        {"reset", {}, address, localhost},
        {"close", {}, address, localhost},
        {"truncate", {}, address, localhost},
        {"status", status(500), address, localhost},
        {"status", status(404), address, localhost},
        {"status", status(400), words, unknown},
        {"status", status(403), words, unknown},
        {"status", status(429), words, unknown},
        {"not_json", {}, QStringLiteral("API错误: 数据解析失败"), red(QStringLiteral("数据格式错误"))},
        {"wrong_types", {}, checking, green},
        {"change", {{QStringLiteral("remove"), QJsonArray{QStringLiteral("/data/news")}}}, nothingNew, green},
        {"huge", {}, nothingNew, green},
    };
    QStringList ids = rowIds();
    QStringList titles;
    for (const auto &fault : faults) {
        const QString kind = QString::fromLatin1(fault.kind);
        titles.append(QStringLiteral("第%1条，%2").arg(titles.size()).arg(kind));
        ids.append(m_service->publish(titles.last()).value(QLatin1String("id")).toString());
        ids.sort();
        m_service->addFault(QStringLiteral("/newsapi/news"), kind, fault.further);
        client->setTimeout(kind == QStringLiteral("drop") ? 200 : 60000);
        tick();
        auto *progress = m_window->findChild<QProgressBar *>(QStringLiteral("progressBar"));
        QVERIFY(!progress->isHidden());
        QTRY_VERIFY2_WITH_TIMEOUT(progress->isHidden(), fault.kind, 60000);
        m_service->clearFaults();
        QCOMPARE(text("statusLabel"), fault.status);
        QCOMPARE(text("connectionLabel"), fault.connection);
        QVERIFY(LarkspireAppPeer::refreshTimer(*m_window)->isActive());

        tick();
        QTRY_VERIFY2(progress->isHidden(), fault.kind);
        QCOMPARE(rowIds(), ids);
        QCOMPARE(text("connectionLabel"), green);
    }
    QCOMPARE(SpeechStage::instance().said(), titles);
}

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    setProgramIdentity();
    QApplication::setQuitOnLastWindowClosed(false);
    initLarkspireResources();
    SpeechStage::install();
    TestLarkspireAppService test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_larkspireapp_service.moc"
