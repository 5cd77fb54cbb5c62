#pragma once

#include "stockclient/StockRecords.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPair>
#include <QString>

class QNetworkAccessManager;
class QTimer;
class QUrl;

/// The program's client of the stock service: stocks, the day's limit-up stocks, concepts, move analyses, the
/// market's figures, the user's blacklist and the linkage configuration. Each page that asks owns one.
///
/// Address and device values are taken from StockApiConfig once, at construction: a client keeps the service
/// that it was built for. The session token is read from the settings at each request.
///
/// Every operation is asynchronous and answers by its signal, or by queryError. Requests may overlap, and
/// each answer is read for what it is. There is one time limit for the whole client, ten seconds after the
/// last request was sent, which any answer ends; it is meant to be that simple. A request that runs into it
/// is reported and goes on: its answer counts however late it comes. Only where more requests are open than
/// there are connections, the oldest that have waited for a minute are given up, in silence, for those
/// behind.
class StockApiClient final : public QObject
{
    Q_OBJECT

public:
    explicit StockApiClient(QObject *parent = nullptr);
    ~StockApiClient() override;
    Q_DISABLE_COPY_MOVE(StockApiClient)

    // Arguments stand in the address as they are: codes are digits, dates are "yyyy-MM-dd", and an empty date
    // asks for the latest day.

    /// Asks for the user's linkage configuration: stockHelperConfigReceived.
    void getStockHelperConfig();
    /// Stores the user's linkage configuration: stockHelperConfigSaved. \p currentSoftware is "tdx" or "ths",
    /// the offsets are hexadecimal.
    void saveStockHelperConfig(const QString &currentSoftware, const QString &tdxVersion,
                               const QString &thsVersion, const QString &tdxOffset, const QString &thsOffset);
    /// Asks for the tested versions of the trading programs: softwareListReceived.
    void getSoftwareList();
    /// Asks for all that is shown of one stock: comprehensiveInfoReceived.
    void getComprehensiveInfo(const QString &stockCode, const QString &date = QString());
    /// Asks for a stock's limit-up day: limitUpDetailInfoReceived.
    void getLimitUpDetailInfo(const QString &stockCode, const QString &date = QString());
    /// Asks for the concepts that a stock belongs to: themeStocksReceived.
    void getThemeStocks(const QString &stockCode);
    /// Asks for the analyses of a stock's move: dynamicAnalysisReceived.
    void getDynamicAnalysis(const QString &stockCode, const QString &date = QString());
    /// Stores an analysis: dynamicAnalysisSaved.
    void saveDynamicAnalysis(const DynamicAnalysisRecord &record);
    /// Asks for the figures of the whole market: marketStatisticsReceived.
    void getMarketStatistics(const QString &date = QString());
    /// Asks whether a stock is on the user's blacklist: checkBlacklistFinished.
    void checkBlacklist(const QString &stockCode);
    /// Puts a stock on the user's blacklist: addToBlacklistFinished. \p reasonType is a number of the
    /// service's list of reasons; an empty \p customReason is not sent.
    void addToBlacklist(const QString &stockCode, const QString &stockName, int reasonType,
                        const QString &customReason = QString());
    /// Takes a stock from the user's blacklist: removeFromBlacklistFinished.
    void removeFromBlacklist(const QString &stockCode);

signals:
    // stockInfoReceived, limitStatsReceived and searchStockFinished stand for answers to requests that this
    // client does not send.
    void stockInfoReceived(const StockInfo &info);
    void limitStatsReceived(const LimitStats &stats);
    void softwareListReceived(const SoftwareList &softwareList);
    void comprehensiveInfoReceived(const ComprehensiveStockInfo &info);
    void limitUpDetailInfoReceived(const LimitUpDetailInfo &info);
    /// \p config has the texts "tdx_offset_addr", "ths_offset_addr", "tdx_version", "ths_version" and
    /// "current_software", as the service sent them.
    void stockHelperConfigReceived(const QJsonObject &config);
    /// A refusal comes with queryError ahead of it.
    void stockHelperConfigSaved(bool success);
    /// \p data has "in_blacklist" (bool), "reason_text" and "custom_reason"; it is empty without success.
    void checkBlacklistFinished(bool success, const QJsonObject &data);
    void addToBlacklistFinished(bool success, const QString &message);
    void removeFromBlacklistFinished(bool success, const QString &message);
    void searchStockFinished(bool success, const QJsonArray &results);
    void marketStatisticsReceived(const MarketStatisticsData &data);
    void themeStocksReceived(const QList<ThemeStockInfo> &themes);
    void dynamicAnalysisReceived(const QList<DynamicAnalysisRecord> &items);
    void dynamicAnalysisSaved(bool success, const QString &message);
    /// A request has failed, in words for the user. \p requestType names the operation, such as
    /// "comprehensiveInfo", "limitUpDetailInfo" or "marketStatistics"; it is empty for a time-out and for
    /// some unreadable answers.
    void queryError(const QString &error, const QString &requestType = QString());

private slots:
    void onNetworkReplyFinished();
    void onNetworkError(QNetworkReply::NetworkError error);
    void onTimeout();

private:
    friend class StockApiClientPeer; // the tests shorten the time limits and reach the answers without a
                                     // request

    using Properties = QList<QPair<const char *, QString>>;

    QNetworkRequest createRequest(const QString &path) const;
    bool isRefused(const QNetworkRequest &request, const QString &requestType = QString());
    void get(const QNetworkRequest &request, const QString &requestType, const Properties &properties = {});
    void track(QNetworkReply *reply, const QString &requestType, const Properties &properties = {});
    /// Gives up overdue requests as long as there are more requests than connections.
    void makeRoom();
    void giveUp(QNetworkReply *reply);

    void parse(const QString &requestType, const QByteArray &body);
    bool parseEnvelope(const QByteArray &body, const QString &requestType, QJsonObject &envelope);
    bool parseFinished(const QByteArray &body, const QString &requestType, QJsonObject &envelope);
    void parseStockInfo(const QByteArray &body);
    void parseLimitStats(const QByteArray &body);
    void parseSoftwareList(const QByteArray &body);
    void parseComprehensiveInfo(const QByteArray &body);
    void parseLimitUpDetailInfo(const QByteArray &body);
    void parseConfigLoad(const QByteArray &body);
    void parseConfigSave(const QByteArray &body);
    void parseCheckBlacklist(const QByteArray &body);
    void parseAddToBlacklist(const QByteArray &body);
    void parseRemoveFromBlacklist(const QByteArray &body);
    void parseSearchStock(const QByteArray &body);
    void parseMarketStatistics(const QByteArray &body);
    void parseThemeStocks(const QByteArray &body);
    void parseDynamicAnalysis(const QByteArray &body);
    void parseDynamicAnalysisSave(const QByteArray &body);

    QNetworkAccessManager *m_networkManager;
    QString m_baseUrl;
    QString m_apiKey; ///< held and not sent: the session token identifies the user here
    QString m_deviceId;
    QString m_deviceName;
    QString m_deviceType;
    QString m_osInfo;
    QTimer *m_timeoutTimer;
    int m_overdueMs = 60000;
};
