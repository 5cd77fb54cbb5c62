#include "support/ServiceProcess.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QTcpSocket>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

namespace {

constexpr int readyTimeoutMs = 20000;
constexpr int stopTimeoutMs = 10000;
constexpr int answerTimeoutMs = 20000;

/// A child that ends with the test, even when the test is killed.
class TiedProcess final : public QProcess
{
protected:
    void setupChildProcess() override
    {
#ifdef Q_OS_LINUX
        prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    }
};

QByteArray contentsOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QJsonObject ServiceProcess::Answer::data() const
{
    return object.value(QLatin1String("data")).toObject();
}

QString ServiceProcess::Answer::error() const
{
    return object.value(QLatin1String("error")).toString();
}

bool ServiceProcess::Answer::success() const
{
    return object.value(QLatin1String("success")).toBool();
}

ServiceProcess::ServiceProcess() : ServiceProcess(Settings()) {}

ServiceProcess::ServiceProcess(const Settings &settings) : m_settings(settings)
{
    if (!m_folder.isValid())
        qFatal("No temporary folder for the service: %s", qPrintable(m_folder.errorString()));
    if (m_settings.databaseFile.isEmpty())
        m_settings.databaseFile = file(QStringLiteral("service.sqlite"));
}

ServiceProcess::~ServiceProcess()
{
    if (isRunning() && !stop())
        qWarning("The service did not end properly");
}

QString ServiceProcess::file(const QString &name) const
{
    return m_folder.path() + QLatin1Char('/') + name;
}

bool ServiceProcess::start()
{
    const int portOutside = qEnvironmentVariableIntValue("LARKSPIRE_TEST_SERVICE_PORT");
    if (portOutside != 0) {
        m_port = quint16(portOutside);
        if (!m_settings.clock.isEmpty())
            setClock(QDateTime::fromString(m_settings.clock, QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                     m_settings.clockRuns);
        return true;
    }
    const QString portFile = file(QStringLiteral("port"));
    QFile::remove(portFile);
    QStringList arguments{QStringLiteral("--database"),      m_settings.databaseFile,
                          QStringLiteral("--port"),          QString::number(m_settings.port),
                          QStringLiteral("--port-file"),     portFile,
                          QStringLiteral("--seed"),          QString::number(m_settings.seed),
                          QStringLiteral("--feed-interval"), QString::number(m_settings.feedIntervalSeconds),
                          QStringLiteral("--history"),       QString::number(m_settings.history),
                          QStringLiteral("--rate-limit"),    QString::number(m_settings.rateLimit)};
    if (!m_settings.clock.isEmpty())
        arguments << QStringLiteral("--clock") << m_settings.clock;
    if (m_settings.clockRuns)
        arguments << QStringLiteral("--clock-runs");
    if (!m_settings.oddities)
        arguments << QStringLiteral("--no-oddities");
    if (m_settings.demoAccount)
        arguments << QStringLiteral("--demo-account")
                  << demoEmail() + QLatin1Char(':') + demoPassword() + QLatin1Char(':') + demoApiKey();
    arguments += m_settings.furtherArguments;

    m_error.clear();
    m_process = std::make_unique<TiedProcess>();
    // Files and not pipes: nobody empties a pipe while a test blocks, and a full one would stop the service.
    m_process->setStandardOutputFile(file(QStringLiteral("output")));
    m_process->setStandardErrorFile(file(QStringLiteral("log")), QIODevice::Append);
    m_process->start(QStringLiteral(LARKSPIRE_SERVICE_BINARY), arguments);
    if (!m_process->waitForStarted()) {
        m_error = m_process->errorString();
        return false;
    }
    const QDeadlineTimer deadline(readyTimeoutMs);
    while (!QFile::exists(portFile)) {
        if (m_process->waitForFinished(10) || m_process->state() == QProcess::NotRunning) {
            m_error = QStringLiteral("The service ended at once: ") + log();
            return false;
        }
        if (deadline.hasExpired()) {
            m_error = QStringLiteral("The service did not get ready: ") + log();
            kill();
            return false;
        }
    }
    m_port = contentsOf(portFile).trimmed().toUShort();
    return true;
}

bool ServiceProcess::stop()
{
    if (!isRunning())
        return false;
    m_process->terminate();
    if (!m_process->waitForFinished(stopTimeoutMs)) {
        kill();
        return false;
    }
    return m_process->exitStatus() == QProcess::NormalExit && m_process->exitCode() == 0;
}

void ServiceProcess::kill()
{
    m_process->kill();
    m_process->waitForFinished(stopTimeoutMs);
}

bool ServiceProcess::isRunning() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

QString ServiceProcess::baseUrl() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_port);
}

QString ServiceProcess::log() const
{
    return QString::fromUtf8(contentsOf(file(QStringLiteral("log"))));
}

ServiceProcess::Answer ServiceProcess::request(const QByteArray &method, const QByteArray &target,
                                               const QJsonObject &body, const Headers &headers) const
{
    const bool hasBody = method == "POST" || method == "PUT";
    return send(method, target, hasBody ? QJsonDocument(body).toJson(QJsonDocument::Compact) : QByteArray(),
                headers);
}

ServiceProcess::Answer ServiceProcess::send(const QByteArray &method, const QByteArray &target,
                                            const QByteArray &body, const Headers &headers) const
{
    QByteArray request = method + ' ' + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n";
    for (const auto &header : headers)
        request += header.first + ": " + header.second + "\r\n";
    request += "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
               "\r\n\r\n" + body;

    QTcpSocket socket;
    const QDeadlineTimer deadline(answerTimeoutMs);
    const auto left = [&] { return static_cast<int>(deadline.remainingTime()); };
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    if (!socket.waitForConnected(left()))
        return {};
    socket.write(request);
    QByteArray received;
    while (socket.state() == QAbstractSocket::ConnectedState && !deadline.hasExpired()) {
        socket.waitForReadyRead(left());
        received += socket.readAll();
    }
    received += socket.readAll();
    const int headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return {};
    Answer answer;
    answer.status = received.mid(9, 3).toInt();
    answer.body = received.mid(headEnd + 4);
    answer.object = QJsonDocument::fromJson(answer.body).object();
    return answer;
}

QJsonObject ServiceProcess::administrate(const QByteArray &method, const QByteArray &target,
                                         const QJsonObject &body) const
{
    const Answer answer = request(method, target, body);
    if (answer.status != 200 || !answer.success())
        qWarning("The service refused %s %s: %s", method.constData(), target.constData(),
                 answer.body.constData());
    return answer.object;
}

QJsonObject ServiceProcess::publish(const QJsonObject &item) const
{
    return administrate("POST", "/admin/news", item).value(QLatin1String("data")).toObject();
}

QJsonArray ServiceProcess::publish(const QJsonArray &items) const
{
    return administrate("POST", "/admin/news/batch", {{QStringLiteral("items"), items}})
        .value(QLatin1String("data"))
        .toArray();
}

QJsonObject ServiceProcess::publish(const QString &title, qint64 ageSeconds) const
{
    return publish(
        QJsonObject{{QStringLiteral("title"), title}, {QStringLiteral("age_seconds"), ageSeconds}});
}

void ServiceProcess::publishFromFeed(int count) const
{
    administrate("POST", "/admin/feed", {{QStringLiteral("count"), count}});
}

void ServiceProcess::setFeedInterval(double seconds) const
{
    administrate("POST", "/admin/feed", {{QStringLiteral("interval_seconds"), seconds}});
}

void ServiceProcess::addFault(const QString &path, const QString &kind, const QJsonObject &further) const
{
    QJsonObject fault = further;
    fault.insert(QStringLiteral("path"), path);
    fault.insert(QStringLiteral("kind"), kind);
    administrate("POST", "/admin/faults", fault);
}

void ServiceProcess::changeAnswers(const QString &path, const QJsonObject &values,
                                   const QStringList &removed) const
{
    addFault(
        path, QStringLiteral("change"),
        {{QStringLiteral("set"), values}, {QStringLiteral("remove"), QJsonArray::fromStringList(removed)}});
}

void ServiceProcess::clearFaults() const
{
    administrate("DELETE", "/admin/faults", {});
}

QString ServiceProcess::latestCode(const QString &email, const QString &codeType) const
{
    const QByteArray target = "/admin/codes?email=" + email.toUtf8().toPercentEncoding() +
                              "&code_type=" + codeType.toUtf8().toPercentEncoding();
    const QJsonArray codes = administrate("GET", target, {}).value(QLatin1String("data")).toArray();
    return codes.at(0).toObject().value(QLatin1String("code")).toString();
}

QString ServiceProcess::registerAccount(const QString &username, const QString &email,
                                        const QString &password) const
{
    const QString codeType = QStringLiteral("register");
    request("POST", "/auth/send_verification_code",
            {{QStringLiteral("email"), email}, {QStringLiteral("code_type"), codeType}});
    const Answer answer = request("POST", "/auth/register",
                                  {{QStringLiteral("username"), username},
                                   {QStringLiteral("email"), email},
                                   {QStringLiteral("password"), wirePassword(password)},
                                   {QStringLiteral("verification_code"), latestCode(email, codeType)}});
    return answer.data().value(QLatin1String("api_key")).toString();
}

QString ServiceProcess::openSession(const QString &deviceId) const
{
    return request("POST", "/auth/verify_apikey",
                   {{QStringLiteral("api_key"), demoApiKey()},
                    {QStringLiteral("device_id"), deviceId},
                    {QStringLiteral("device_name"), deviceId},
                    {QStringLiteral("device_type"), QStringLiteral("desktop")}},
                   {{"X-API-Key", demoApiKey().toUtf8()}, {"X-Device-ID", deviceId.toUtf8()}})
        .object.value(QLatin1String("session_token"))
        .toString();
}

QString ServiceProcess::wirePassword(const QString &password)
{
    return QString::fromLatin1(password.toUtf8().toBase64());
}

void ServiceProcess::setClock(const QDateTime &time, bool running) const
{
    administrate("POST", "/admin/clock",
                 {{QStringLiteral("now"), time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))},
                  {QStringLiteral("running"), running}});
}

void ServiceProcess::advanceClock(qint64 seconds) const
{
    administrate("POST", "/admin/clock", {{QStringLiteral("advance_seconds"), seconds}});
}

QJsonObject ServiceProcess::statistics() const
{
    return administrate("GET", "/admin/statistics", {}).value(QLatin1String("data")).toObject();
}

int ServiceProcess::requestCount(const QString &label) const
{
    return statistics().value(QLatin1String("requests")).toObject().value(label).toInt();
}

QJsonArray ServiceProcess::requests() const
{
    return administrate("GET", "/admin/requests", {}).value(QLatin1String("data")).toArray();
}

void ServiceProcess::clearStatistics() const
{
    administrate("DELETE", "/admin/statistics", {});
}
