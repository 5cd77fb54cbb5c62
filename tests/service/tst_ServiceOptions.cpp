#include "service/Options.h"
#include "support/IsolatedHome.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QtTest>

#include <stdexcept>

using namespace service;

namespace {

Options parsed(const QByteArrayList &arguments)
{
    std::vector<std::string> texts;
    for (const QByteArray &argument : arguments)
        texts.push_back(argument.toStdString());
    return parseOptions(texts);
}

} // namespace

/// The command line.
class ServiceOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void theDefaultsAreThoseOfTheDesktop();
    void everyOptionIsRead();
    void helpNeedsNothingElse();
    void everyOptionStandsInTheHelp();
    void badOptionsAreRefusedInOneLine_data();
    void badOptionsAreRefusedInOneLine();
};

void ServiceOptionsTest::theDefaultsAreThoseOfTheDesktop()
{
    const Options options = parsed({"--database", "d"});
    QCOMPARE(options.databaseFile, std::string("d"));
    QCOMPARE(options.port, 8888);
    QVERIFY(!options.seed && !options.clockStart && !options.demoAccount);
    QVERIFY(options.oddities);
    QVERIFY(options.history >= 400);
}

void ServiceOptionsTest::everyOptionIsRead()
{
    const Options options =
        parsed({"--database=d.sqlite", "--port", "0", "--port-file", "p", "--seed", "12", "--clock",
                "2024-08-08 10:30:00", "--clock-runs", "--feed-interval", "0.5", "--history", "7",
                "--no-oddities", "--rate-limit", "60", "--demo-account", "a@b.cn:lark2024:key:with:colons"});
    QCOMPARE(options.databaseFile, std::string("d.sqlite"));
    QCOMPARE(options.port, 0);
    QCOMPARE(options.portFile, std::string("p"));
    QCOMPARE(*options.seed, std::uint64_t(12));
    QCOMPARE(toBlankForm(*options.clockStart), std::string("2024-08-08 10:30:00"));
    QVERIFY(options.clockRuns);
    QCOMPARE(options.feedIntervalSeconds, 0.5);
    QCOMPARE(options.history, std::int64_t(7));
    QVERIFY(!options.oddities);
    QCOMPARE(options.requestsPerMinute, std::int64_t(60));
    QCOMPARE(options.demoAccount->email, std::string("a@b.cn"));
    QCOMPARE(options.demoAccount->password, std::string("lark2024"));
    QCOMPARE(options.demoAccount->apiKey, std::string("key:with:colons"));
}

void ServiceOptionsTest::helpNeedsNothingElse()
{
    QVERIFY(parsed({"--help"}).wantsHelp);
    QVERIFY(parsed({"-h"}).wantsHelp);
}

void ServiceOptionsTest::everyOptionStandsInTheHelp()
{
    const QString help = QString::fromStdString(helpText());
    for (const char *option :
         {"--database", "--port", "--port-file", "--seed", "--clock", "--clock-runs", "--feed-interval",
          "--history", "--no-oddities", "--rate-limit", "--demo-account", "--help"})
        QVERIFY2(help.contains(QStringLiteral("  %1 ").arg(QLatin1String(option))) ||
                     help.contains(QStringLiteral("  %1\n").arg(QLatin1String(option))),
                 option);
}

void ServiceOptionsTest::badOptionsAreRefusedInOneLine_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("no database") << QByteArrayList();
    QTest::newRow("unknown") << QByteArrayList{"--database", "d", "--colour", "red"};
    QTest::newRow("stray word") << QByteArrayList{"--database", "d", "red"};
    QTest::newRow("value missing") << QByteArrayList{"--database"};
    QTest::newRow("port too high") << QByteArrayList{"--database", "d", "--port", "65536"};
    QTest::newRow("port in words") << QByteArrayList{"--database", "d", "--port", "http"};
    QTest::newRow("negative seed") << QByteArrayList{"--database", "d", "--seed", "-1"};
    QTest::newRow("clock without time") << QByteArrayList{"--database", "d", "--clock", "2024-08-08"};
    QTest::newRow("clock on 30 February")
        << QByteArrayList{"--database", "d", "--clock", "2024-02-30 10:00:00"};
    QTest::newRow("interval in words") << QByteArrayList{"--database", "d", "--feed-interval", "often"};
    QTest::newRow("interval that is no number")
        << QByteArrayList{"--database", "d", "--feed-interval", "nan"};
    QTest::newRow("interval too short") << QByteArrayList{"--database", "d", "--feed-interval", "0.001"};
    QTest::newRow("flag with a value") << QByteArrayList{"--database", "d", "--no-oddities=1"};
    QTest::newRow("account without key")
        << QByteArrayList{"--database", "d", "--demo-account", "a@b.cn:lark2024"};
    QTest::newRow("account with a bad address")
        << QByteArrayList{"--database", "d", "--demo-account", "a:lark2024:k"};
    QTest::newRow("account with a bad password")
        << QByteArrayList{"--database", "d", "--demo-account", "a@b.cn:lark:k"};
}

void ServiceOptionsTest::badOptionsAreRefusedInOneLine()
{
    QFETCH(QByteArrayList, arguments);
    try {
        parsed(arguments);
        QFAIL("the options were taken");
    } catch (const std::runtime_error &error) {
        const QString message = QString::fromUtf8(error.what());
        QVERIFY(!message.isEmpty());
        QVERIFY(!message.contains(QLatin1Char('\n')));
    }
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceOptionsTest)
#include "tst_ServiceOptions.moc"
