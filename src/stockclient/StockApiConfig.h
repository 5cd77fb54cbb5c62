#pragma once

#include <QObject>
#include <QString>

class QJsonObject;

/// The one place in memory that knows where the stock service is, what this device tells it, and which
/// trading program and which versions the user has set up for the linkage. A StockApiClient takes its values
/// from here when it is built.
///
/// The linkage values belong to the account and are kept by the service. They are empty until loadFromServer
/// has been answered or the linkage has been set up. The offsets are never stored on this machine: without
/// the service there are none, and the linkage stays idle. GUI thread only.
class StockApiConfig final : public QObject
{
    Q_OBJECT

public:
    /// The one instance, created at the first call and never deleted.
    static StockApiConfig *instance();

    ~StockApiConfig() override;
    Q_DISABLE_COPY_MOVE(StockApiConfig)

    QString getBaseUrl() const { return m_baseUrl; }
    QString getApiKey() const { return m_apiKey; }
    QString getDeviceId() const { return m_deviceId; }
    QString getDeviceName() const { return m_deviceName; }
    QString getDeviceType() const { return m_deviceType; }
    QString getOsInfo() const { return m_osInfo; }

    /// Hexadecimal, as the service lists it for the version that was tested.
    QString getTdxOffset() const { return m_tdxOffset; }
    QString getThsOffset() const { return m_thsOffset; }
    QString getTdxVersion() const { return m_tdxVersion; }
    QString getThsVersion() const { return m_thsVersion; }
    /// "tdx" or "ths".
    QString getCurrentSoftware() const { return m_currentSoftware; }

    // These change the values in memory only; StockApiClient::saveStockHelperConfig stores them.
    void setTdxOffset(const QString &offset);
    void setThsOffset(const QString &offset);
    void setTdxVersion(const QString &version);
    void setThsVersion(const QString &version);
    void setCurrentSoftware(const QString &software);

    /// Takes the linkage values over from the service's answer, as StockApiClient::stockHelperConfigReceived
    /// hands it on: as they come, empty ones too. A value that it lacks becomes empty.
    void takeLinkage(const QJsonObject &config);

    /// Whether the service can be asked: there is an address, and the settings hold a session token.
    bool isValid() const;

    /// Reads the address, the key and the four device values again.
    void refreshFromSettings();

    /// Fetches the linkage values from the service and takes them over as takeLinkage does. Does nothing
    /// while isValid() is false. On a failure everything stays as it is, and nothing is reported: the values
    /// are asked for again where they are needed.
    void loadFromServer();

signals:
    /// Part of the interface; nothing emits it. Who needs the values reads them when they are needed.
    void configChanged();

private:
    StockApiConfig();

    QString m_baseUrl;
    QString m_apiKey;
    QString m_deviceId;
    QString m_deviceName;
    QString m_deviceType;
    QString m_osInfo;
    QString m_tdxOffset;
    QString m_thsOffset;
    QString m_tdxVersion;
    QString m_thsVersion;
    QString m_currentSoftware;
};
