#include "stockclient/StockApiClient.h"

#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace {

constexpr int timeLimitMs = 10000;
constexpr int firstClientErrorStatus = 400;
constexpr int lastClientErrorStatus = 499;
constexpr int connectionsPerService = 6; // of a network manager; further requests wait for one of these

constexpr char requestTypeProperty[] = "requestType";
constexpr char stockCodeProperty[] = "stockCode";
constexpr char stockNameProperty[] = "stockName";
constexpr char errorProcessedProperty[] = "errorProcessed";
constexpr char overdueProperty[] = "overdue";

QString notCreatedText()
{
    return QStringLiteral("无法创建网络请求");
}

/// Only the storing of an analysis tells its type when no request can be made.
QString typeOfRefusal(const QString &requestType)
{
    return requestType == QLatin1String("dynamicAnalysisSave") ? requestType : QString();
}

QString unreadableText(const QJsonParseError &error)
{
    return QStringLiteral("JSON解析错误: ") + error.errorString();
}

QString textOf(const QJsonObject &object, QLatin1String key)
{
    return object.value(key).toString();
}

bool successOf(const QJsonObject &object)
{
    return object.value(QLatin1String("success")).toBool();
}

QString errorOf(const QJsonObject &object)
{
    return textOf(object, QLatin1String("error"));
}

QJsonObject dataOf(const QJsonObject &object)
{
    return object.value(QLatin1String("data")).toObject();
}

QJsonArray dataListOf(const QJsonObject &object)
{
    return object.value(QLatin1String("data")).toArray();
}

/// The service's own words in the body of a failure, else \p message.
QString wordsOf(const QByteArray &body, const QString &message)
{
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    const QString error = errorOf(object);
    const QString words = error.isEmpty() ? textOf(object, QLatin1String("message")) : error;
    return words.isEmpty() ? message : words;
}

QByteArray bodyOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString withDate(const QString &path, const QString &key, const QString &date)
{
    return date.isEmpty() ? path : path + key + date;
}

/// What an operation that changes the blacklist tells: whether it went well, and the words for it.
struct Outcome
{
    bool success = false;
    QString message;
};

Outcome outcomeOf(const QByteArray &body)
{
    QJsonParseError parseError{};
    const QJsonObject object = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError)
        return {false, QStringLiteral("解析响应失败")};
    const bool success = successOf(object);
    const QString message = object.value(QLatin1String("message")).toString(QStringLiteral("操作完成"));
    return {success, success ? message : object.value(QLatin1String("error")).toString(message)};
}

} // namespace

StockApiClient::StockApiClient(QObject *parent)
    : QObject(parent), m_networkManager(new QNetworkAccessManager(this)), m_timeoutTimer(new QTimer(this))
{
    StockRecords::registerMetaTypes();
    m_networkManager->setProxy(QNetworkProxy::NoProxy);
    m_timeoutTimer->setSingleShot(true);
    m_timeoutTimer->setInterval(timeLimitMs);
    connect(m_timeoutTimer, &QTimer::timeout, this, &StockApiClient::onTimeout);

    const StockApiConfig *const config = StockApiConfig::instance();
    m_baseUrl = config->getBaseUrl();
    m_apiKey = config->getApiKey();
    m_deviceId = config->getDeviceId();
    m_deviceName = config->getDeviceName();
    m_deviceType = config->getDeviceType();
    m_osInfo = config->getOsInfo();
}

StockApiClient::~StockApiClient() = default;

// Operations

void StockApiClient::getStockHelperConfig()
{
    get(createRequest(QStringLiteral("/stockhelper/config")), QStringLiteral("configLoad"));
}

void StockApiClient::saveStockHelperConfig(const QString &currentSoftware, const QString &tdxVersion,
                                           const QString &thsVersion, const QString &tdxOffset,
                                           const QString &thsOffset)
{
    const QJsonObject body = {{QStringLiteral("current_software"), currentSoftware},
                              {QStringLiteral("tdx_version"), tdxVersion},
                              {QStringLiteral("ths_version"), thsVersion},
                              {QStringLiteral("tdx_offset_addr"), tdxOffset},
                              {QStringLiteral("ths_offset_addr"), thsOffset}};
    const QNetworkRequest request = createRequest(QStringLiteral("/stockhelper/config"));
    track(m_networkManager->post(request, bodyOf(body)), QStringLiteral("configSave"));
}

void StockApiClient::getSoftwareList()
{
    get(createRequest(QStringLiteral("/stockhelper/software_list")), QStringLiteral("softwareList"));
}

void StockApiClient::getComprehensiveInfo(const QString &stockCode, const QString &date)
{
    const QString path = QStringLiteral("/stockhelper/stock/comprehensive?code=") + stockCode;
    get(createRequest(withDate(path, QStringLiteral("&date="), date)), QStringLiteral("comprehensiveInfo"),
        {{stockCodeProperty, stockCode}});
}

void StockApiClient::getLimitUpDetailInfo(const QString &stockCode, const QString &date)
{
    const QString path = QStringLiteral("/stockhelper/limit_up_stock?code=") + stockCode;
    get(createRequest(withDate(path, QStringLiteral("&date="), date)), QStringLiteral("limitUpDetailInfo"),
        {{stockCodeProperty, stockCode}});
}

void StockApiClient::getThemeStocks(const QString &stockCode)
{
    get(createRequest(QStringLiteral("/stockhelper/theme_stocks?code=") + stockCode),
        QStringLiteral("themeStocks"), {{stockCodeProperty, stockCode}});
}

void StockApiClient::getDynamicAnalysis(const QString &stockCode, const QString &date)
{
    const QString path = QStringLiteral("/newsapi/dynamic_analysis?stock_code=") + stockCode;
    const QNetworkRequest request = createRequest(withDate(path, QStringLiteral("&trade_date="), date));
    if (!isRefused(request))
        get(request, QStringLiteral("dynamicAnalysis"), {{stockCodeProperty, stockCode}});
}

void StockApiClient::saveDynamicAnalysis(const DynamicAnalysisRecord &record)
{
    const QString requestType = QStringLiteral("dynamicAnalysisSave");
    const QNetworkRequest request = createRequest(QStringLiteral("/newsapi/dynamic_analysis/save"));
    if (!isRefused(request, requestType))
        track(m_networkManager->post(request, bodyOf(StockRecords::dynamicAnalysisToJson(record))),
              requestType);
}

void StockApiClient::getMarketStatistics(const QString &date)
{
    const QString path = QStringLiteral("/stockhelper/market/statistics");
    const QNetworkRequest request = createRequest(withDate(path, QStringLiteral("?date="), date));
    if (!isRefused(request))
        get(request, QStringLiteral("marketStatistics"));
}

void StockApiClient::checkBlacklist(const QString &stockCode)
{
    const QNetworkRequest request =
        createRequest(QStringLiteral("/stockhelper/blacklist/check/") + stockCode);
    if (!isRefused(request))
        get(request, QStringLiteral("checkBlacklist"), {{stockCodeProperty, stockCode}});
}

void StockApiClient::addToBlacklist(const QString &stockCode, const QString &stockName, int reasonType,
                                    const QString &customReason)
{
    const QNetworkRequest request = createRequest(QStringLiteral("/stockhelper/blacklist"));
    if (isRefused(request))
        return;
    QJsonObject body = {{QStringLiteral("stock_code"), stockCode},
                        {QStringLiteral("stock_name"), stockName},
                        {QStringLiteral("reason_type"), reasonType}};
    if (!customReason.isEmpty())
        body.insert(QStringLiteral("custom_reason"), customReason);
    track(m_networkManager->post(request, bodyOf(body)), QStringLiteral("addToBlacklist"),
          {{stockCodeProperty, stockCode}, {stockNameProperty, stockName}});
}

void StockApiClient::removeFromBlacklist(const QString &stockCode)
{
    const QNetworkRequest request = createRequest(QStringLiteral("/stockhelper/blacklist/") + stockCode);
    if (isRefused(request))
        return;
    track(m_networkManager->deleteResource(request), QStringLiteral("removeFromBlacklist"),
          {{stockCodeProperty, stockCode}});
}

// Sending

QNetworkRequest StockApiClient::createRequest(const QString &path) const
{
    QNetworkRequest request(QUrl(m_baseUrl + path, QUrl::TolerantMode));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("User-Agent", "LarkspireApp/2.0");
    const auto setHeader = [&request](const char *name, const QString &value) {
        if (!value.isEmpty())
            request.setRawHeader(name, value.toUtf8());
    };
    setHeader("X-Device-ID", m_deviceId);
    setHeader("X-Device-Name", m_deviceName);
    setHeader("X-Device-Type", m_deviceType);
    setHeader("X-OS-Info", m_osInfo);
    setHeader("X-Session-Token", ConfigManager::instance()->getSessionToken());
    return request;
}

bool StockApiClient::isRefused(const QNetworkRequest &request, const QString &requestType)
{
    if (request.url().isValid())
        return false;
    emit queryError(notCreatedText(), typeOfRefusal(requestType));
    return true;
}

void StockApiClient::get(const QNetworkRequest &request, const QString &requestType,
                         const Properties &properties)
{
    track(m_networkManager->get(request), requestType, properties);
}

void StockApiClient::track(QNetworkReply *reply, const QString &requestType, const Properties &properties)
{
    if (!reply) {
        emit queryError(notCreatedText(), typeOfRefusal(requestType));
        return;
    }
    reply->setProperty(requestTypeProperty, requestType);
    for (const auto &property : properties)
        reply->setProperty(property.first, property.second);
    connect(reply, &QNetworkReply::finished, this, &StockApiClient::onNetworkReplyFinished);
    connect(reply, &QNetworkReply::errorOccurred, this, &StockApiClient::onNetworkError);
    QTimer::singleShot(m_overdueMs, reply, [this, reply] {
        reply->setProperty(overdueProperty, true);
        makeRoom();
    });
    makeRoom();
    m_timeoutTimer->start();
}

// Settling

void StockApiClient::makeRoom()
{
    QList<QNetworkReply *> open = m_networkManager->findChildren<QNetworkReply *>(); // the oldest first
    open.erase(std::remove_if(open.begin(), open.end(),
                              [](const QNetworkReply *reply) { return reply->isFinished(); }),
               open.end());
    int surplus = open.size() - connectionsPerService;
    for (QNetworkReply *reply : qAsConst(open)) {
        if (surplus > 0 && reply->property(overdueProperty).toBool()) {
            giveUp(reply);
            --surplus;
        }
    }
}

void StockApiClient::giveUp(QNetworkReply *reply)
{
    qWarning("Giving up a request to the stock service that got no answer: %s",
             qUtf8Printable(reply->url().toString(QUrl::RemoveQuery)));
    reply->disconnect(this); // it must neither be reported nor stop the watch over a newer request
    reply->abort();
    reply->deleteLater();
}

void StockApiClient::onTimeout()
{
    emit queryError(QStringLiteral("请求超时"));
}

void StockApiClient::onNetworkError(QNetworkReply::NetworkError error)
{
    m_timeoutTimer->stop();
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply || reply->property(errorProcessedProperty).toBool())
        return;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= firstClientErrorStatus && status <= lastClientErrorStatus)
        return; // the service's own answer, which onNetworkReplyFinished reads
    const QString message =
        wordsOf(reply->readAll(),
                QStringLiteral("网络错误 [%1]: %2").arg(QString::number(error), reply->errorString()));
    reply->setProperty(errorProcessedProperty, true);
    reply->deleteLater();
    emit queryError(message, reply->property(requestTypeProperty).toString());
}

void StockApiClient::onNetworkReplyFinished()
{
    m_timeoutTimer->stop();
    auto *const reply = qobject_cast<QNetworkReply *>(sender());
    if (!reply)
        return;
    reply->deleteLater();
    const QString requestType = reply->property(requestTypeProperty).toString();
    if (reply->error() == QNetworkReply::NoError) {
        parse(requestType, reply->readAll());
        return;
    }
    if (reply->property(errorProcessedProperty).toBool())
        return;
    const QString message =
        wordsOf(reply->readAll(), QStringLiteral("网络请求失败: %1").arg(reply->errorString()));
    reply->setProperty(errorProcessedProperty, true);
    emit queryError(message, requestType);
}

// Reading

void StockApiClient::parse(const QString &requestType, const QByteArray &body)
{
    struct Branch
    {
        QLatin1String requestType;
        void (StockApiClient::*parse)(const QByteArray &body) = nullptr;
    };
    // "stockInfo", "limitStats" and "searchStock" have no operation: their receiving side alone stands here.
    static const Branch chain[] = {
        {QLatin1String("stockInfo"), &StockApiClient::parseStockInfo},
        {QLatin1String("limitStats"), &StockApiClient::parseLimitStats},
        {QLatin1String("softwareList"), &StockApiClient::parseSoftwareList},
        {QLatin1String("comprehensiveInfo"), &StockApiClient::parseComprehensiveInfo},
        {QLatin1String("limitUpDetailInfo"), &StockApiClient::parseLimitUpDetailInfo},
        {QLatin1String("configLoad"), &StockApiClient::parseConfigLoad},
        {QLatin1String("configSave"), &StockApiClient::parseConfigSave},
        {QLatin1String("checkBlacklist"), &StockApiClient::parseCheckBlacklist},
        {QLatin1String("addToBlacklist"), &StockApiClient::parseAddToBlacklist},
        {QLatin1String("removeFromBlacklist"), &StockApiClient::parseRemoveFromBlacklist},
        {QLatin1String("searchStock"), &StockApiClient::parseSearchStock},
        {QLatin1String("marketStatistics"), &StockApiClient::parseMarketStatistics},
        {QLatin1String("themeStocks"), &StockApiClient::parseThemeStocks},
        {QLatin1String("dynamicAnalysis"), &StockApiClient::parseDynamicAnalysis},
        {QLatin1String("dynamicAnalysisSave"), &StockApiClient::parseDynamicAnalysisSave},
    };
    for (const Branch &branch : chain) {
        if (requestType == branch.requestType) {
            (this->*branch.parse)(body);
            return;
        }
    }
}

/// The part that most answers share. Returns false when the failure has been reported, as of \p requestType.
bool StockApiClient::parseEnvelope(const QByteArray &body, const QString &requestType, QJsonObject &envelope)
{
    QJsonParseError parseError{};
    envelope = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError) {
        emit queryError(unreadableText(parseError), requestType);
        return false;
    }
    if (!successOf(envelope)) {
        emit queryError(errorOf(envelope), requestType);
        return false;
    }
    return true;
}

/// As parseEnvelope, for operations whose own signal tells the failure too: an answer that cannot be read is
/// told by that signal alone.
bool StockApiClient::parseFinished(const QByteArray &body, const QString &requestType, QJsonObject &envelope)
{
    QJsonParseError parseError{};
    envelope = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError)
        return false;
    const bool success = successOf(envelope);
    if (!success)
        emit queryError(errorOf(envelope), requestType);
    return success;
}

void StockApiClient::parseStockInfo(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, {}, envelope))
        emit stockInfoReceived(StockRecords::stockInfoFromJson(dataOf(envelope)));
}

void StockApiClient::parseLimitStats(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, {}, envelope))
        emit limitStatsReceived(StockRecords::limitStatsFromJson(dataOf(envelope)));
}

void StockApiClient::parseSoftwareList(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, {}, envelope))
        emit softwareListReceived(StockRecords::softwareListFromJson(dataOf(envelope)));
}

void StockApiClient::parseComprehensiveInfo(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, {}, envelope))
        emit comprehensiveInfoReceived(StockRecords::comprehensiveInfoFromJson(dataOf(envelope)));
}

void StockApiClient::parseLimitUpDetailInfo(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, QStringLiteral("limitUpDetailInfo"), envelope))
        emit limitUpDetailInfoReceived(StockRecords::limitUpDetailFromJson(dataOf(envelope)));
}

void StockApiClient::parseConfigLoad(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, {}, envelope))
        emit stockHelperConfigReceived(dataOf(envelope));
}

void StockApiClient::parseConfigSave(const QByteArray &body)
{
    QJsonParseError parseError{};
    const QJsonObject object = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError) {
        emit queryError(unreadableText(parseError));
        return;
    }
    const bool success = successOf(object);
    if (!success)
        emit queryError(errorOf(object));
    emit stockHelperConfigSaved(success);
}

void StockApiClient::parseCheckBlacklist(const QByteArray &body)
{
    QJsonObject envelope;
    const bool success = parseFinished(body, QStringLiteral("checkBlacklist"), envelope);
    emit checkBlacklistFinished(success, success ? dataOf(envelope) : QJsonObject());
}

void StockApiClient::parseAddToBlacklist(const QByteArray &body)
{
    const Outcome outcome = outcomeOf(body);
    emit addToBlacklistFinished(outcome.success, outcome.message);
}

void StockApiClient::parseRemoveFromBlacklist(const QByteArray &body)
{
    const Outcome outcome = outcomeOf(body);
    emit removeFromBlacklistFinished(outcome.success, outcome.message);
}

void StockApiClient::parseSearchStock(const QByteArray &body)
{
    QJsonObject envelope;
    const bool success = parseFinished(body, QStringLiteral("searchStock"), envelope);
    emit searchStockFinished(success, success ? dataListOf(envelope) : QJsonArray());
}

void StockApiClient::parseMarketStatistics(const QByteArray &body)
{
    const QString requestType = QStringLiteral("marketStatistics");
    QJsonParseError parseError{};
    const QJsonObject object = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError)
        emit queryError(QStringLiteral("解析市场统计数据失败"), requestType);
    else if (!successOf(object))
        emit queryError(errorOf(object), requestType);
    else
        emit marketStatisticsReceived(StockRecords::marketStatisticsFromJson(dataOf(object)));
}

void StockApiClient::parseThemeStocks(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, QStringLiteral("themeStocks"), envelope))
        emit themeStocksReceived(StockRecords::themeStocksFromJson(dataListOf(envelope)));
}

void StockApiClient::parseDynamicAnalysis(const QByteArray &body)
{
    QJsonObject envelope;
    if (parseEnvelope(body, QStringLiteral("dynamicAnalysis"), envelope))
        emit dynamicAnalysisReceived(StockRecords::dynamicAnalysisFromJson(dataListOf(envelope)));
}

void StockApiClient::parseDynamicAnalysisSave(const QByteArray &body)
{
    QJsonParseError parseError{};
    const QJsonObject object = QJsonDocument::fromJson(body, &parseError).object();
    if (parseError.error != QJsonParseError::NoError) {
        emit dynamicAnalysisSaved(false, unreadableText(parseError));
        return;
    }
    const bool success = successOf(object);
    const QString error = errorOf(object);
    emit dynamicAnalysisSaved(success, success && error.isEmpty() ? QStringLiteral("保存成功") : error);
}
