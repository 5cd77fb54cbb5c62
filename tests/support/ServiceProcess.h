#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// The real reference service as a process of its own, on a free loopback port and with a database of its
/// own, for tests that go over the wire. Link larkspire_service_process.
///
/// All requests of this class block the calling thread on a socket of their own and run no event loop, so
/// they don't disturb what is being tested.
class ServiceProcess final
{
public:
    /// How the service is started. The defaults give a quiet service: no history, no feed, the demonstration
    /// account, the system's time.
    struct Settings
    {
        /// Empty: a file in a temporary folder that goes with this object.
        QString databaseFile;
        /// 0: any free port.
        quint16 port = 0;
        /// Start of all secrets and of the feed.
        qint64 seed = 1;
        /// "yyyy-MM-dd hh:mm:ss"; empty for the system's time.
        QString clock;
        /// Whether the clock runs on from there; otherwise it stands and moves by setClock and advanceClock.
        bool clockRuns = false;
        /// Seconds between two items of the feed; 0 for no feed.
        double feedIntervalSeconds = 0;
        /// News items that the database starts with; the newest is two minutes old.
        int history = 0;
        /// Whether the feed has items with an unreadable date, without a title and the like.
        bool oddities = false;
        /// Requests per user and minute; 0 for any number.
        int rateLimit = 0;
        /// Whether the account demoEmail() is there.
        bool demoAccount = true;
        QStringList furtherArguments;
    };

    /// The demonstration account. Its name is "demo"; its active keywords are 重大资产重组 (preset), 人工智能
    /// (selected), 机器人 (selected), 半导体, 低空经济, 回购 and 降准 (selected).
    static QString demoEmail() { return QStringLiteral("demo@larkspire.example"); }
    static QString demoPassword() { return QStringLiteral("lark2024"); }
    static QString demoApiKey() { return QStringLiteral("lks-demo-key"); }

    using Headers = QList<QPair<QByteArray, QByteArray>>;

    /// An answer: HTTP status (0 when none came), the raw body, and the body as an object where it is one.
    struct Answer
    {
        int status = 0;
        QByteArray body;
        QJsonObject object;

        QJsonObject data() const;
        QString error() const;
        bool success() const;
    };

    ServiceProcess();
    explicit ServiceProcess(const Settings &settings);
    /// Stops the service when it still runs.
    ~ServiceProcess();
    Q_DISABLE_COPY_MOVE(ServiceProcess)

    /// Starts the service and waits until it listens. Where LARKSPIRE_TEST_SERVICE_PORT names the port of one
    /// (tests/support/with-service), that one is used and none is started; of the settings only the clock
    /// counts.
    /// @return false within 20 seconds otherwise; errorText() says why.
    bool start();

    /// Asks the service to end (SIGTERM) and waits. @return whether it ended by itself with code 0.
    bool stop();

    /// Ends the service at once, as a crash would.
    void kill();

    bool isRunning() const;
    QString errorText() const { return m_error; }

    quint16 port() const { return m_port; }
    /// "http://127.0.0.1:PORT", without a slash at the end.
    QString baseUrl() const;
    /// What the service has written to standard error so far.
    QString log() const;
    QString databaseFile() const { return m_settings.databaseFile; }

    /// Sends a request and waits for the answer. @param target path with query.
    /// @param body an empty one is sent with POST and PUT as {}.
    Answer request(const QByteArray &method, const QByteArray &target, const QJsonObject &body = {},
                   const Headers &headers = {}) const;

    /// The same with a body of raw bytes.
    Answer send(const QByteArray &method, const QByteArray &target, const QByteArray &body,
                const Headers &headers = {}) const;

    /// Publishes an item now: any keys of the wire with any values. A missing "id" or "publish_time" is
    /// filled in; "age_seconds" dates the item that far back. @return the item as it will be delivered.
    QJsonObject publish(const QJsonObject &item) const;

    /// Publishes several items, the last of the list as the newest of those with equal times.
    QJsonArray publish(const QJsonArray &items) const;

    /// Publishes an item with a title and an age.
    QJsonObject publish(const QString &title, qint64 ageSeconds = 0) const;

    /// Publishes items of the generator at once.
    void publishFromFeed(int count) const;

    /// Sets the pace of the feed; 0 stops it.
    void setFeedInterval(double seconds) const;

    /// Switches a fault on for all targets that begin with \p path. @param kind delay, drop, reset, close,
    /// truncate, drip, status, not_json, wrong_types, change or huge. @param further more keys: "count",
    /// "method", "delay_ms", "status", "body", "error", "wait_seconds", "bytes", "interval_ms", "set",
    /// "remove".
    void addFault(const QString &path, const QString &kind, const QJsonObject &further = {}) const;
    void clearFaults() const;

    /// Changes values in the real answers of all targets that begin with \p path, for as long as faults are
    /// on.
    /// @param values new values by their places, for example "/data/basic_info/stock_code".
    /// @param removed places that are left out.
    void changeAnswers(const QString &path, const QJsonObject &values, const QStringList &removed = {}) const;

    /// The code sent last to an address for "register", "login" or "reset_password"; empty when there is
    /// none.
    QString latestCode(const QString &email, const QString &codeType) const;

    /// Registers an account with all that belongs to it. @return its API key, empty on a refusal.
    QString registerAccount(const QString &username, const QString &email, const QString &password) const;

    /// Logs the demonstration account in on a device. @return the session's token, empty on a refusal.
    QString openSession(const QString &deviceId) const;

    /// Base64 of the password's UTF-8 bytes, as the wire carries it.
    static QString wirePassword(const QString &password);

    /// Puts the service's clock to a time, standing or running.
    void setClock(const QDateTime &time, bool running = false) const;
    void advanceClock(qint64 seconds) const;

    /// Counters: "requests" by "METHOD /path", "statuses", "faults", "news_delivered", "news_published".
    QJsonObject statistics() const;
    /// How many requests of a kind have come in, for example "GET /newsapi/news".
    int requestCount(const QString &label) const;
    /// The last requests, oldest first: "label", "method", "target", "headers", "status", "fault".
    QJsonArray requests() const;
    void clearStatistics() const;

private:
    QJsonObject administrate(const QByteArray &method, const QByteArray &target,
                             const QJsonObject &body) const;
    QString file(const QString &name) const;

    Settings m_settings;
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
    QString m_error;
};

Q_DECLARE_METATYPE(ServiceProcess::Headers)
