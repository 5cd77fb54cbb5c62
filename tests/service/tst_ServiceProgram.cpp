#include "WireRequests.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

using namespace WireRequests;

/// The program itself: command line, errors, signals, and what outlives it.
class ServiceProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void helpIsPrintedAndThatIsAll();
    void whatCannotStartSaysSoInOneLineAndEndsWithOne_data();
    void whatCannotStartSaysSoInOneLineAndEndsWithOne();
    void aTakenPortIsTold();
    void aDatabaseThatCannotBeWrittenIsTold();
    void itPrintsOneLineAndWritesThePortFile();
    void aSignalEndsItWithinASecondWhateverIsOpen_data();
    void aSignalEndsItWithinASecondWhateverIsOpen();
    void aSignalEndsALongHistory();
    void itListensOnTheLoopbackAddressAlone();
    void aRestartKeepsEverything();
    void whatWasAnsweredOutlivesACrash();
    void theHistoryIsWrittenOnce();
    void thePortCanBeTakenAgainAtOnce();
    void itRecoversWhenTheSystemHasNoRoomForConnections();

private:
    struct Ended
    {
        int exitCode = -1;
        QString output;
        QString errors;
    };
    static Ended run(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral(LARKSPIRE_SERVICE_BINARY), arguments);
        if (!process.waitForFinished(20000) || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QTemporaryDir m_folder;
};

void ServiceProgramTest::helpIsPrintedAndThatIsAll()
{
    const Ended ended = run({QStringLiteral("--help")});
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.output.startsWith(QStringLiteral("Usage: larkspire-service")));
    QCOMPARE(ended.errors, QString());
}

void ServiceProgramTest::whatCannotStartSaysSoInOneLineAndEndsWithOne_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("names");
    const QString database = QStringLiteral("--database");
    QFile text(m_folder.filePath(QStringLiteral("text")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write(QByteArray(5000, 'x'));
    const QString good = m_folder.filePath(QStringLiteral("good.sqlite"));
    QTest::newRow("no database") << QStringList() << database;
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--colour")} << QStringLiteral("--colour");
    QTest::newRow("bad port") << QStringList{database, good, QStringLiteral("--port"),
                                             QStringLiteral("70000")}
                              << QStringLiteral("--port");
    QTest::newRow("folder as database") << QStringList{database, m_folder.path()} << m_folder.path();
    QTest::newRow("folder that is not there")
        << QStringList{database, QStringLiteral("/nowhere/d.sqlite")} << QStringLiteral("/nowhere/d.sqlite");
    QTest::newRow("another file as database") << QStringList{database, text.fileName()} << text.fileName();
    QTest::newRow("port file that cannot be written") << QStringList{database,
                                                                     good,
                                                                     QStringLiteral("--port"),
                                                                     QStringLiteral("0"),
                                                                     QStringLiteral("--port-file"),
                                                                     QStringLiteral("/nowhere/port")}
                                                      << QStringLiteral("/nowhere/port");
}

void ServiceProgramTest::whatCannotStartSaysSoInOneLineAndEndsWithOne()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, names);
    const Ended ended = run(arguments);
    QCOMPARE(ended.exitCode, 1);
    QCOMPARE(ended.output, QString());
    QCOMPARE(ended.errors.count(QLatin1Char('\n')), 1);
    QVERIFY2(ended.errors.startsWith(QStringLiteral("larkspire-service: ")) && ended.errors.contains(names),
             qPrintable(ended.errors));
}

void ServiceProgramTest::aTakenPortIsTold()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QString port = QString::number(server.serverPort());
    const Ended ended =
        run({QStringLiteral("--database"), m_folder.filePath(QStringLiteral("taken.sqlite")),
             QStringLiteral("--port"), port, QStringLiteral("--history"), QStringLiteral("0")});
    QCOMPARE(ended.exitCode, 1);
    QVERIFY2(ended.errors.contains(port) && ended.errors.count(QLatin1Char('\n')) == 1,
             qPrintable(ended.errors));
}

void ServiceProgramTest::aDatabaseThatCannotBeWrittenIsTold()
{
    if (::geteuid() == 0) {
        // Rights do not bind the super-user; a file that stands where the journal must go binds anybody.
        const QString file = m_folder.filePath(QStringLiteral("blocked.sqlite"));
        QVERIFY(QDir().mkpath(file + QStringLiteral("-wal")));
        const Ended ended =
            run({QStringLiteral("--database"), file, QStringLiteral("--port"), QStringLiteral("0")});
        QCOMPARE(ended.exitCode, 1);
        QVERIFY2(ended.errors.contains(file) && ended.errors.count(QLatin1Char('\n')) == 1,
                 qPrintable(ended.errors));
        return;
    }
    const QString file = m_folder.filePath(QStringLiteral("readonly.sqlite"));
    ServiceProcess::Settings settings;
    settings.databaseFile = file;
    ServiceProcess service(settings);
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QVERIFY(service.stop());
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
    const Ended ended =
        run({QStringLiteral("--database"), file, QStringLiteral("--port"), QStringLiteral("0")});
    QCOMPARE(ended.exitCode, 1);
    QVERIFY2(ended.errors.contains(file) && ended.errors.count(QLatin1Char('\n')) == 1,
             qPrintable(ended.errors));
}

void ServiceProgramTest::itPrintsOneLineAndWritesThePortFile()
{
    const QString portFile = m_folder.filePath(QStringLiteral("port"));
    QProcess process;
    process.start(QStringLiteral(LARKSPIRE_SERVICE_BINARY),
                  {QStringLiteral("--database"), m_folder.filePath(QStringLiteral("line.sqlite")),
                   QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--port-file"), portFile,
                   QStringLiteral("--history"), QStringLiteral("0")});
    QVERIFY(process.waitForReadyRead(20000));
    const QByteArray line = process.readAllStandardOutput();
    QFile file(portFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray port = file.readAll();
    QVERIFY(port.endsWith('\n'));
    QCOMPARE(line, "larkspire-service listening on http://127.0.0.1:" + port);
    process.terminate();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
}

void ServiceProgramTest::aSignalEndsItWithinASecondWhateverIsOpen_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void ServiceProgramTest::aSignalEndsItWithinASecondWhateverIsOpen()
{
    QFETCH(int, signal);
    QProcess process;
    const QString portFile = m_folder.filePath(QStringLiteral("open-port%1").arg(signal));
    process.start(QStringLiteral(LARKSPIRE_SERVICE_BINARY),
                  {QStringLiteral("--database"),
                   m_folder.filePath(QStringLiteral("open%1.sqlite").arg(signal)), QStringLiteral("--port"),
                   QStringLiteral("0"), QStringLiteral("--feed-interval"), QStringLiteral("0.01"),
                   QStringLiteral("--history"), QStringLiteral("10")});
    QVERIFY(process.waitForReadyRead(20000));
    const QByteArray line = process.readAllStandardOutput().trimmed();
    const auto port = line.mid(line.lastIndexOf(':') + 1).toUShort();

    const auto connectTo = [&](const QByteArray &bytes, bool answered) {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), port);
        if (!socket->waitForConnected())
            qWarning("not connected");
        socket->write(bytes);
        socket->flush();
        if (answered && !socket->waitForReadyRead(10000))
            qWarning("not answered");
        return socket;
    };
    const auto faultFor = [&](const QByteArray &body) {
        return connectTo("POST /admin/faults HTTP/1.1\r\nContent-Length: " + QByteArray::number(body.size()) +
                             "\r\n\r\n" + body,
                         true);
    };
    std::vector<std::unique_ptr<QTcpSocket>> open;
    open.push_back(faultFor(R"({"path":"/drop","kind":"drop"})"));
    open.push_back(faultFor(R"({"path":"/delay","kind":"delay","delay_ms":600000})"));
    open.push_back(faultFor(R"({"path":"/drip","kind":"drip","interval_ms":60000})"));
    open.push_back(faultFor(R"({"path":"/huge","kind":"huge"})"));
    open.push_back(connectTo("", false));
    open.push_back(connectTo("GET /newsapi/hea", false));
    open.push_back(connectTo("POST /auth/login HTTP/1.1\r\nContent-Length: 50\r\n\r\n{", false));
    open.push_back(connectTo("GET /newsapi/health HTTP/1.1\r\n\r\n", true));
    open.push_back(connectTo("GET /drop HTTP/1.1\r\n\r\n", false));
    open.push_back(connectTo("GET /delay HTTP/1.1\r\n\r\n", false));
    open.push_back(
        connectTo("POST /admin/feed HTTP/1.1\r\nContent-Length: 16\r\n\r\n{\"count\":100000}", false));
    open.push_back(connectTo("GET /drip HTTP/1.1\r\n\r\n", true));
    // Nobody reads this answer, so most of it is still waiting inside the service.
    open.push_back(connectTo("GET /huge HTTP/1.1\r\n\r\n", true));

    QElapsedTimer timer;
    timer.start();
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signal), 0);
    QVERIFY(process.waitForFinished(10000));
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void ServiceProgramTest::aSignalEndsALongHistory()
{
    const QString file = m_folder.filePath(QStringLiteral("long.sqlite"));
    const QStringList arguments{QStringLiteral("--database"), file, QStringLiteral("--port"),
                                QStringLiteral("0"), QStringLiteral("--history")};
    QProcess process;
    process.start(QStringLiteral(LARKSPIRE_SERVICE_BINARY),
                  arguments + QStringList(QStringLiteral("1000000")));
    // The database is there: from now on the history is being written.
    QTRY_VERIFY(QFile::exists(file));
    process.terminate();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.readAllStandardOutput(), QByteArray());

    process.start(QStringLiteral(LARKSPIRE_SERVICE_BINARY), arguments + QStringList(QStringLiteral("10")));
    QVERIFY(process.waitForReadyRead(20000));
    process.terminate();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitCode(), 0);
}

void ServiceProgramTest::itListensOnTheLoopbackAddressAlone()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    // 127.0.0.2 is this machine as well, but another address than the one listened on.
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.2"), service.port());
    QVERIFY(!socket.waitForConnected(5000));
    QCOMPARE(socket.error(), QAbstractSocket::ConnectionRefusedError);
}

void ServiceProgramTest::aRestartKeepsEverything()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    const QString token = demoToken(service);
    const QString key = service.registerAccount(
        QStringLiteral("lark"), QStringLiteral("lark@larkspire.example"), QStringLiteral("lark2024"));
    service.request("POST", "/newsapi/keywords", json(R"({"keyword":"机器人"})"), byKey(key));
    service.publish(json(R"({"id":"a","title":"one"})"));
    const QByteArray keywords = service.request("GET", "/newsapi/keywords", {}, byKey(key)).body;
    const QByteArray page = service.request("GET", "/newsapi/news", {}, byKey(key)).body;
    QVERIFY(service.stop());
    QVERIFY(!service.isRunning());

    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QCOMPARE(service.request("GET", "/newsapi/keywords", {}, byKey(key)).body, keywords);
    QCOMPARE(service.request("GET", "/newsapi/news", {}, byKey(key)).body, page);
    QCOMPARE(service.request("GET", "/user/info", {}, bySession(token)).status, 200);
    QCOMPARE(login(service, QStringLiteral("lark"), QStringLiteral("lark2024"), QStringLiteral("d1")).status,
             200);
    // The same seed goes on where it stopped instead of giving the same tokens again.
    QVERIFY(demoToken(service) != token);
}

void ServiceProgramTest::whatWasAnsweredOutlivesACrash()
{
    ServiceProcess service(standingClock());
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    for (int i = 0; i < 20; ++i)
        service.publish(QString::number(i));
    service.kill();
    QVERIFY2(service.start(), qPrintable(service.errorText()));
    QCOMPARE(news(service, "limit=100").size(), 20);
}

void ServiceProgramTest::theHistoryIsWrittenOnce()
{
    ServiceProcess::Settings settings = standingClock();
    settings.history = 30;
    ServiceProcess service(settings);
    for (int i = 0; i < 2; ++i) {
        QVERIFY2(service.start(), qPrintable(service.errorText()));
        QCOMPARE(news(service, "limit=100").size(), 30);
        QVERIFY(service.stop());
    }
}

void ServiceProgramTest::thePortCanBeTakenAgainAtOnce()
{
    ServiceProcess first(standingClock());
    QVERIFY2(first.start(), qPrintable(first.errorText()));
    const quint16 port = first.port();
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    QVERIFY(socket.waitForConnected());
    QVERIFY(first.stop());
    ServiceProcess::Settings settings = standingClock();
    settings.port = port;
    ServiceProcess second(settings);
    QVERIFY2(second.start(), qPrintable(second.errorText()));
    QCOMPARE(second.port(), port);
    QCOMPARE(second.request("GET", "/newsapi/health").status, 200);
}

void ServiceProgramTest::itRecoversWhenTheSystemHasNoRoomForConnections()
{
    QProcess process;
    process.setStandardErrorFile(m_folder.filePath(QStringLiteral("room-log")));
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), QStringLiteral("ulimit -n 40; exec \"$0\" \"$@\""),
                   QStringLiteral(LARKSPIRE_SERVICE_BINARY), QStringLiteral("--database"),
                   m_folder.filePath(QStringLiteral("room.sqlite")), QStringLiteral("--port"),
                   QStringLiteral("0"), QStringLiteral("--history"), QStringLiteral("0")});
    QVERIFY(process.waitForReadyRead(20000));
    const QByteArray line = process.readAllStandardOutput().trimmed();
    const auto port = line.mid(line.lastIndexOf(':') + 1).toUShort();
    std::vector<std::unique_ptr<QTcpSocket>> sockets(60);
    for (auto &socket : sockets) {
        socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), port);
        QVERIFY(socket->waitForConnected());
    }
    const auto log = [&] {
        QFile file(m_folder.filePath(QStringLiteral("room-log")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QTRY_VERIFY(log().contains("cannot take a connection"));
    sockets.clear();
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    QVERIFY(socket.waitForConnected());
    socket.write("GET /newsapi/health HTTP/1.1\r\nConnection: close\r\n\r\n");
    QVERIFY(socket.waitForReadyRead(10000));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 OK"));
    // A pause lies between two tries: the log is not flooded.
    QVERIFY2(log().count('\n') < 30, log().constData());
    process.terminate();
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitCode(), 0);
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceProgramTest)
#include "tst_ServiceProgram.moc"
