#include "app/SingleApplication.h"

#include "support/IsolatedHome.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMetaMethod>
#include <QProcess>
#include <QRegularExpression>
#include <QSharedMemory>
#include <QUuid>

#include <array>
#include <cstring>
#include <memory>

#ifndef Q_OS_WIN
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

namespace {

QString t(const char *text)
{
    return QString::fromLatin1(text);
}

QString uniqueId()
{
    return t("LarkspireTest") + QUuid::createUuid().toString(QUuid::Id128);
}

/// Where clients reach a copy's server. Windows keeps no file for it.
QString socketPath(const QString &appId)
{
#ifdef Q_OS_WIN
    return appId + t("_LocalServer");
#else
    return QDir::tempPath() + QLatin1Char('/') + appId + t("_LocalServer");
#endif
}

/// Whether a process holds the marker of this id, asked without leaving a trace.
bool markerExists(const QString &appId)
{
    QSharedMemory marker(appId + t("_SharedMemory"));
    return marker.attach(QSharedMemory::ReadOnly);
}

/// One copy of the program: a process of its own.
class Copy
{
public:
    explicit Copy(const QString &appId, const QStringList &options = QStringList(),
                  const QString &program = t(SINGLE_APPLICATION_PROBE))
    {
        m_process.start(program, QStringList{appId} + options);
    }
    ~Copy()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished())
            m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Copy)

    /// The next word that the copy prints; empty when none comes.
    QString nextWord()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(20000))
                return QString();
        }
        return QString::fromLatin1(m_process.readLine().trimmed());
    }

    /// The words that came and were not asked for yet, at the copy's end. Closes its input, which ends it.
    QStringList wordsToTheEnd()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
        return QString::fromLatin1(m_process.readAllStandardOutput())
            .split(QRegularExpression(t("[\r\n]+")), Qt::SkipEmptyParts);
    }

    /// Waits for the copy's own end. True when it ended regularly with code 0.
    bool endsWithZero()
    {
        return (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(20000)) &&
               m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    void sendLine() { m_process.write("\n"); }

    /// Ends the copy as a crash does: it gets no chance to clean up.
    bool crash()
    {
        m_process.kill();
        return m_process.waitForFinished() && m_process.exitStatus() == QProcess::CrashExit;
    }

private:
    QProcess m_process;
};

#ifndef Q_OS_WIN
/// A local socket at the place of a copy's server on which nobody ever accepts a connection.
class DeafServer
{
public:
    explicit DeafServer(const QString &path) : m_path(QFile::encodeName(path))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, m_path.constData(), static_cast<std::size_t>(m_path.size()));
        const auto *const generic = reinterpret_cast<const sockaddr *>(&address);
        m_isSetUp = bind(m_listener, generic, sizeof(address)) == 0 && listen(m_listener, 0) == 0;
        // Fills the queue of waiting connections, so that the next one has to wait for its turn.
        for (int &waiting : m_waiting) {
            waiting = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
            m_isFull = connect(waiting, generic, sizeof(address)) != 0;
        }
    }
    ~DeafServer()
    {
        for (const int waiting : m_waiting)
            close(waiting);
        close(m_listener);
        unlink(m_path.constData());
    }
    Q_DISABLE_COPY_MOVE(DeafServer)

    bool isDeaf() const { return m_isSetUp && m_isFull; }

private:
    const QByteArray m_path;
    const int m_listener = socket(AF_UNIX, SOCK_STREAM, 0);
    std::array<int, 4> m_waiting{};
    bool m_isSetUp = false;
    bool m_isFull = false;
};
#endif

} // namespace

class TestSingleApplication : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_id = uniqueId(); }

    void theMembersStandInTheirOrder()
    {
        const QMetaObject &meta = SingleApplication::staticMetaObject;
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 3);
        const QMetaMethod started = meta.method(meta.methodOffset());
        QCOMPARE(started.methodSignature(), QByteArray("instanceStarted()"));
        QCOMPARE(started.methodType(), QMetaMethod::Signal);
        const QMetaMethod show = meta.method(meta.methodOffset() + 1);
        QCOMPARE(show.methodSignature(), QByteArray("showMainWindow()"));
        QCOMPARE(show.methodType(), QMetaMethod::Slot);
        QCOMPARE(show.access(), QMetaMethod::Public);
        const QMetaMethod connection = meta.method(meta.methodOffset() + 2);
        QCOMPARE(connection.methodSignature(), QByteArray("onNewConnection()"));
        QCOMPARE(connection.methodType(), QMetaMethod::Slot);
        QCOMPARE(connection.access(), QMetaMethod::Private);
    }

    void showMainWindowOnlyEmitsItsSignal()
    {
        auto *const application = static_cast<SingleApplication *>(QCoreApplication::instance());
        QVERIFY(!application->isRunning());
        QSignalSpy started(application, &SingleApplication::instanceStarted);
        application->showMainWindow();
        QCOMPARE(started.count(), 1);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void aSecondStartWakesTheFirstAndEndsWithZero()
    {
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        for (int start = 0; start < 3; ++start) {
            Copy second(m_id);
            QCOMPARE(second.nextWord(), t("second"));
            QVERIFY(second.endsWithZero());
            QCOMPARE(first.nextWord(), t("woken"));
        }
        QCOMPARE(first.wordsToTheEnd(), QStringList());
        QVERIFY(first.endsWithZero());
    }

    void startsAtTheSameTimeAllWakeTheFirst()
    {
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        std::array<std::unique_ptr<Copy>, 4> others;
        for (auto &other : others)
            other = std::make_unique<Copy>(m_id);
        for (const auto &other : others) {
            QCOMPARE(other->nextWord(), t("second"));
            QVERIFY(other->endsWithZero());
            QCOMPARE(first.nextWord(), t("woken"));
        }
    }

    void copiesOfAnotherIdAreStrangers()
    {
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        Copy stranger(uniqueId());
        QCOMPARE(stranger.nextWord(), t("first"));
        QCOMPARE(first.wordsToTheEnd(), QStringList());
    }

    void afterACleanEndTheNextStartIsTheFirst()
    {
        {
            Copy first(m_id);
            QCOMPARE(first.nextWord(), t("first"));
            QVERIFY(markerExists(m_id));
            QVERIFY(socketFileIs(true));
            first.wordsToTheEnd();
            QVERIFY(first.endsWithZero());
        }
        QVERIFY(!markerExists(m_id));
        QVERIFY(socketFileIs(false));
        Copy next(m_id);
        QCOMPARE(next.nextWord(), t("first"));
    }

    void aSecondStartEndsThoughTheFirstIsBlockedAndWakesItLater()
    {
        Copy first(m_id, {t("--blocked")});
        QCOMPARE(first.nextWord(), t("first"));
        Copy second(m_id);
        QCOMPARE(second.nextWord(), t("second"));
        QVERIFY(second.endsWithZero());
        first.sendLine();
#ifdef Q_OS_WIN
        // A pipe keeps nothing: the call has gone with the copy that made it.
        QCOMPARE(first.wordsToTheEnd(), QStringList());
#else
        QCOMPARE(first.nextWord(), t("woken"));
#endif
    }

#ifndef Q_OS_WIN
    void aSecondStartGivesUpAfterASecondWhenNobodyTakesItsConnection()
    {
        QSharedMemory marker(m_id + t("_SharedMemory"));
        QVERIFY(marker.create(8));
        const DeafServer server(socketPath(m_id));
        QVERIFY(server.isDeaf());
        QElapsedTimer time;
        time.start();
        Copy second(m_id);
        QCOMPARE(second.nextWord(), t("second"));
        QVERIFY(second.endsWithZero());
        QVERIFY2(time.elapsed() >= 1000, qPrintable(QString::number(time.elapsed())));
        QVERIFY2(time.elapsed() < 10000, qPrintable(QString::number(time.elapsed())));
    }
#endif

    void aSecondStartEndsThoughTheFirstHasNoServer()
    {
        Copy first(m_id, {t("--without-server")});
        QCOMPARE(first.nextWord(), t("first"));
        QVERIFY(socketFileIs(false));
        Copy second(m_id);
        QCOMPARE(second.nextWord(), t("second"));
        QVERIFY(second.endsWithZero());
        QCOMPARE(first.wordsToTheEnd(), QStringList());
    }

    void aCrashedFirstCopyDoesNotBlockTheNextStart()
    {
        {
            Copy first(m_id);
            QCOMPARE(first.nextWord(), t("first"));
            QVERIFY(first.crash());
        }
        QVERIFY2(socketFileIs(true), "a crash leaves the socket behind");
        Copy next(m_id);
        QCOMPARE(next.nextWord(), t("first"));
        Copy second(m_id);
        QCOMPARE(second.nextWord(), t("second"));
        QVERIFY(second.endsWithZero());
        QCOMPARE(next.nextWord(), t("woken"));
    }

    void aCrashWhileBlockedDoesNotBlockTheNextStartEither()
    {
        {
            Copy first(m_id, {t("--blocked")});
            QCOMPARE(first.nextWord(), t("first"));
            Copy second(m_id);
            QVERIFY(second.endsWithZero());
            QVERIFY(first.crash());
        }
        Copy next(m_id);
        QCOMPARE(next.nextWord(), t("first"));
        QVERIFY2(next.wordsToTheEnd().isEmpty(), "the dead copy's call is not the new one's");
    }

#ifndef Q_OS_WIN
    void aStaleSocketIsReplaced()
    {
        QFile stale(socketPath(m_id));
        {
            const DeafServer server(stale.fileName() + t(".made"));
            QVERIFY(QFile::rename(stale.fileName() + t(".made"), stale.fileName()));
        }
        QVERIFY(stale.exists());
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        Copy second(m_id);
        QVERIFY(second.endsWithZero());
        QCOMPARE(first.nextWord(), t("woken"));
    }
#endif

    void aClientThatSendsNothingIsDroppedAfterThreeSeconds()
    {
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        QLocalSocket silent;
        QElapsedTimer time;
        time.start();
        silent.connectToServer(socketPath(m_id));
        QVERIFY(silent.waitForConnected());
        QVERIFY(silent.waitForDisconnected(20000));
        QVERIFY2(time.elapsed() >= 2900, qPrintable(QString::number(time.elapsed())));
        // The next one is served as ever, and is the only one that counted.
        Copy second(m_id);
        QVERIFY(second.endsWithZero());
        QCOMPARE(first.nextWord(), t("woken"));
        QCOMPARE(first.wordsToTheEnd(), QStringList());
    }

    void onlyTheExactMessageWakes_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<bool>("wakes");
        QTest::newRow("exact") << QByteArray("SHOW_WINDOW") << true;
        QTest::newRow("with a newline") << QByteArray("SHOW_WINDOW\n") << false;
        QTest::newRow("with a zero byte") << QByteArray("SHOW_WINDOW\0", 12) << false;
        QTest::newRow("with a byte order mark") << QByteArray("\xEF\xBB\xBFSHOW_WINDOW") << false;
        QTest::newRow("with a blank in front") << QByteArray(" SHOW_WINDOW") << false;
        QTest::newRow("twice") << QByteArray("SHOW_WINDOWSHOW_WINDOW") << false;
        QTest::newRow("cut short") << QByteArray("SHOW_WINDO") << false;
        QTest::newRow("lower case") << QByteArray("show_window") << false;
        QTest::newRow("mixed case") << QByteArray("Show_Window") << false;
        QTest::newRow("something else") << QByteArray("QUIT") << false;
        QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80") << false;
#ifdef Q_OS_WIN
        // Wine itself ends a program now and then that writes more than 64 KiB into a pipe which is closed.
        constexpr int huge = 50000;
#else
        constexpr int huge = 100000;
#endif
        QTest::newRow("huge") << QByteArray(huge, 'S') << false;
    }

    void onlyTheExactMessageWakes()
    {
        QFETCH(QByteArray, message);
        QFETCH(bool, wakes);
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        QLocalSocket client;
        client.connectToServer(socketPath(m_id));
        QVERIFY(client.waitForConnected());
        client.write(message);
        // The copy hangs up once it has dealt with the message, and sends nothing back.
        QVERIFY(client.state() == QLocalSocket::UnconnectedState || client.waitForDisconnected(20000));
        QVERIFY(client.readAll().isEmpty());
        QCOMPARE(first.wordsToTheEnd(), wakes ? QStringList{t("woken")} : QStringList());
    }

    void aClientThatHangsUpAtOnceDoesNoHarm()
    {
        Copy first(m_id);
        QCOMPARE(first.nextWord(), t("first"));
        {
            QLocalSocket client;
            client.connectToServer(socketPath(m_id));
            QVERIFY(client.waitForConnected());
        }
        Copy second(m_id);
        QVERIFY(second.endsWithZero());
        QCOMPARE(first.nextWord(), t("woken"));
    }

    void anEmptyIdTakesTheApplicationsName()
    {
        // The application's name is the program file's until the program sets another one.
        QTemporaryDir folder;
        const QString original = t(SINGLE_APPLICATION_PROBE);
        const QString program =
            folder.filePath(m_id) + (original.endsWith(t(".exe")) ? t(".exe") : QString());
        QVERIFY(QFile::copy(original, program));
        Copy first(QString(), {}, program);
        QCOMPARE(first.nextWord(), t("first"));
        QVERIFY(socketFileIs(true));
        QVERIFY(markerExists(m_id));
        Copy second(m_id);
        QCOMPARE(second.nextWord(), t("second"));
        QVERIFY(second.endsWithZero());
        QCOMPARE(first.nextWord(), t("woken"));
    }

private:
    /// Whether the server's file is there or not, as expected; true where there are no such files.
    bool socketFileIs(bool expected) const
    {
#ifdef Q_OS_WIN
        Q_UNUSED(expected)
        return true;
#else
        return QFile::exists(socketPath(m_id)) == expected;
#endif
    }

    QString m_id;
};

int main(int argc, char *argv[])
{
    IsolatedHome home;
    pauseLeakCheck();
    SingleApplication application(argc, argv, uniqueId());
    resumeLeakCheck();
    TestSingleApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_singleapplication.moc"
