#pragma once

#include "settings/SettingsTable.h"

#include <QObject>
#include <QSettings>
#include <QVariant>

#include <memory>

/// The program's one persistent store of settings: one INI file per user. SettingsTable.h lists every key
/// with its type, unit and defaults; here stands one get and one set accessor per row.
///
/// A get accessor of an absent key yields the table's default and does not write it. A value of a wrong type
/// converts by QVariant's rules (a text read as a number is 0). A set accessor changes the value in memory;
/// QSettings writes it back in its own time, sync() at once. A file that can't be read or written is no
/// error: the values live in memory then. Nothing here emits anything. GUI thread only.
class ConfigManager final : public QObject
{
    Q_OBJECT

public:
    /// The one instance, created at the first call and never deleted. The application's name and organisation
    /// must be set by then: the file's folder derives from them.
    static ConfigManager *instance();

    ~ConfigManager() override;
    Q_DISABLE_COPY_MOVE(ConfigManager)

    /// The news service's base address when none is stored.
    static QString defaultServiceEndpoint() { return SettingsTable::defaultServiceEndpoint; }

    /// Seconds to use for a stored request time limit. 1 to 100 stand; less becomes 10; more is taken for
    /// milliseconds, turned into whole seconds and brought into 5 to 30.
    static int normalisedApiTimeout(int stored);

    /// The smallest refresh interval that setRefreshInterval() stores, in seconds.
    static constexpr int minimumRefreshIntervalSeconds = 5;

    /// Writes what is pending to the file and takes in what others have written. For the end of a batch of
    /// writes: it costs some milliseconds.
    void sync();

    /// Writes the table's reset values and syncs. Keys without a reset value (login, concept dialog, linkage,
    /// hot keys, window geometry) stay as they are.
    void resetToDefaults();

    // News service
    QString getApiServerUrl() const { return read(SettingsTable::ApiServerUrl); }
    void setApiServerUrl(const QString &url) { write(SettingsTable::ApiServerUrl, url); }
    QString getApiKey() const { return read(SettingsTable::ApiKey); }
    void setApiKey(const QString &key) { write(SettingsTable::ApiKey, key); }
    /// Request time limit in seconds. Repairs the stored value where normalisedApiTimeout() changes it.
    int getApiTimeout();
    void setApiTimeout(int seconds) { write(SettingsTable::ApiTimeout, seconds); }

    // Login
    bool getAutoLogin() const { return read(SettingsTable::AutoLogin); }
    void setAutoLogin(bool enabled) { write(SettingsTable::AutoLogin, enabled); }
    QString getDeviceId() const { return read(SettingsTable::DeviceId); }
    /// Also changes the key of the stored password: a password that is to stay readable is to be set again.
    void setDeviceId(const QString &deviceId) { write(SettingsTable::DeviceId, deviceId); }
    QString getAuthEmail() const { return read(SettingsTable::AuthEmail); }
    void setAuthEmail(const QString &email) { write(SettingsTable::AuthEmail, email); }
    QDateTime getLastLoginTime() const { return read(SettingsTable::LastLoginTime); }
    void setLastLoginTime(const QDateTime &time) { write(SettingsTable::LastLoginTime, time); }
    int getLoginMethod() const { return read(SettingsTable::LoginMethod); }
    void setLoginMethod(int method) { write(SettingsTable::LoginMethod, method); }
    /// The password in clear; stored scrambled under the stored device id, or under the machine's unique id
    /// where no device id is stored. Empty when there is none, or neither id.
    QString getAuthPassword() const;
    void setAuthPassword(const QString &password);
    int getSessionTimeoutHours() const { return read(SettingsTable::SessionTimeoutHours); }
    void setSessionTimeoutHours(int hours) { write(SettingsTable::SessionTimeoutHours, hours); }
    QString getSessionToken() const { return read(SettingsTable::SessionToken); }
    void setSessionToken(const QString &token) { write(SettingsTable::SessionToken, token); }
    QString getAuthUsername() const { return read(SettingsTable::AuthUsername); }
    void setAuthUsername(const QString &username) { write(SettingsTable::AuthUsername, username); }

    // Features
    /// Seconds; unbounded, since a file may have been edited by hand.
    int getRefreshInterval() const { return read(SettingsTable::RefreshInterval); }
    /// Stores at least minimumRefreshIntervalSeconds.
    void setRefreshInterval(int seconds);
    bool getEnableSpeakStock() const { return read(SettingsTable::EnableSpeakStock); }
    void setEnableSpeakStock(bool enabled) { write(SettingsTable::EnableSpeakStock, enabled); }
    bool getEnableNotification() const { return read(SettingsTable::EnableNotification); }
    void setEnableNotification(bool enabled) { write(SettingsTable::EnableNotification, enabled); }
    bool getEnableSound() const { return read(SettingsTable::EnableSound); }
    void setEnableSound(bool enabled) { write(SettingsTable::EnableSound, enabled); }
    bool getEnableTts() const { return read(SettingsTable::EnableTts); }
    void setEnableTts(bool enabled) { write(SettingsTable::EnableTts, enabled); }
    /// 0.0 to 1.0.
    double getTtsVolume() const { return read(SettingsTable::TtsVolume); }
    void setTtsVolume(double volume) { write(SettingsTable::TtsVolume, volume); }
    bool getEnableAutoStart() const { return read(SettingsTable::EnableAutoStart); }
    void setEnableAutoStart(bool enabled) { write(SettingsTable::EnableAutoStart, enabled); }
    bool getRememberWindowState() const { return read(SettingsTable::RememberWindowState); }
    void setRememberWindowState(bool enabled) { write(SettingsTable::RememberWindowState, enabled); }
    bool getEnableTopmost() const { return read(SettingsTable::EnableTopmost); }
    void setEnableTopmost(bool enabled) { write(SettingsTable::EnableTopmost, enabled); }
    bool getShowNewsDetails() const { return read(SettingsTable::ShowNewsDetails); }
    void setShowNewsDetails(bool shown) { write(SettingsTable::ShowNewsDetails, shown); }
    QString getNotificationPosition() const { return read(SettingsTable::NotificationPosition); }
    void setNotificationPosition(const QString &name) { write(SettingsTable::NotificationPosition, name); }
    bool getDarkMode() const { return read(SettingsTable::DarkMode); }
    void setDarkMode(bool dark) { write(SettingsTable::DarkMode, dark); }

    // Main window
    QByteArray getWindowGeometry() const { return read(SettingsTable::WindowGeometry); }
    void setWindowGeometry(const QByteArray &geometry) { write(SettingsTable::WindowGeometry, geometry); }
    QPoint getWindowPosition() const { return read(SettingsTable::WindowPosition); }
    void setWindowPosition(const QPoint &position) { write(SettingsTable::WindowPosition, position); }
    QSize getWindowSize() const { return read(SettingsTable::WindowSize); }
    void setWindowSize(const QSize &size) { write(SettingsTable::WindowSize, size); }

    // Stock page; colours are colour words, font sizes are in points
    QString getMainBoardColor() const { return read(SettingsTable::MainBoardColor); }
    void setMainBoardColor(const QString &word) { write(SettingsTable::MainBoardColor, word); }
    QString getGemColor() const { return read(SettingsTable::GemColor); }
    void setGemColor(const QString &word) { write(SettingsTable::GemColor, word); }
    QString getStarMarketColor() const { return read(SettingsTable::StarMarketColor); }
    void setStarMarketColor(const QString &word) { write(SettingsTable::StarMarketColor, word); }
    QString getBeijingExchangeColor() const { return read(SettingsTable::BeijingExchangeColor); }
    void setBeijingExchangeColor(const QString &word) { write(SettingsTable::BeijingExchangeColor, word); }
    int getBasicInfoFontSize() const { return read(SettingsTable::BasicInfoFontSize); }
    void setBasicInfoFontSize(int points) { write(SettingsTable::BasicInfoFontSize, points); }
    int getHistoryStatsFontSize() const { return read(SettingsTable::HistoryStatsFontSize); }
    void setHistoryStatsFontSize(int points) { write(SettingsTable::HistoryStatsFontSize, points); }
    int getOpeningMarketFontSize() const { return read(SettingsTable::OpeningMarketFontSize); }
    void setOpeningMarketFontSize(int points) { write(SettingsTable::OpeningMarketFontSize, points); }
    int getStockCodeNameFontSize() const { return read(SettingsTable::StockCodeNameFontSize); }
    void setStockCodeNameFontSize(int points) { write(SettingsTable::StockCodeNameFontSize, points); }
    int getLimitUpDetailFontSize() const { return read(SettingsTable::LimitUpDetailFontSize); }
    void setLimitUpDetailFontSize(int points) { write(SettingsTable::LimitUpDetailFontSize, points); }
    bool getStockAutoRefresh() const { return read(SettingsTable::StockAutoRefresh); }
    void setStockAutoRefresh(bool enabled) { write(SettingsTable::StockAutoRefresh, enabled); }
    int getStockLinkageMode() const { return read(SettingsTable::StockLinkageMode); }
    void setStockLinkageMode(int mode) { write(SettingsTable::StockLinkageMode, mode); }
    int getStockRefreshInterval() const { return read(SettingsTable::StockRefreshInterval); }
    void setStockRefreshInterval(int seconds) { write(SettingsTable::StockRefreshInterval, seconds); }

    // Market page; font sizes are in points
    int getMarketTitleFontSize() const { return read(SettingsTable::MarketTitleFontSize); }
    void setMarketTitleFontSize(int points) { write(SettingsTable::MarketTitleFontSize, points); }
    int getMarketLabelFontSize() const { return read(SettingsTable::MarketLabelFontSize); }
    void setMarketLabelFontSize(int points) { write(SettingsTable::MarketLabelFontSize, points); }
    int getMarketValueFontSize() const { return read(SettingsTable::MarketValueFontSize); }
    void setMarketValueFontSize(int points) { write(SettingsTable::MarketValueFontSize, points); }
    int getMarketBoardRankingFontSize() const { return read(SettingsTable::MarketBoardRankingFontSize); }
    void setMarketBoardRankingFontSize(int points)
    {
        write(SettingsTable::MarketBoardRankingFontSize, points);
    }
    int getMarketRefreshInterval() const { return read(SettingsTable::MarketRefreshInterval); }
    void setMarketRefreshInterval(int seconds) { write(SettingsTable::MarketRefreshInterval, seconds); }

    // Linkage with the trading programs
    QString getCurrentSoftware() const { return read(SettingsTable::CurrentSoftware); }
    void setCurrentSoftware(const QString &software) { write(SettingsTable::CurrentSoftware, software); }
    QString getTdxVersion() const { return read(SettingsTable::TdxVersion); }
    void setTdxVersion(const QString &version) { write(SettingsTable::TdxVersion, version); }
    QString getThsVersion() const { return read(SettingsTable::ThsVersion); }
    void setThsVersion(const QString &version) { write(SettingsTable::ThsVersion, version); }

    // Stock move analysis
    bool getDynamicManualEdit() const { return read(SettingsTable::DynamicManualEdit); }
    QString getDynamicHotkey() const { return read(SettingsTable::DynamicHotkey); }
    void setDynamicHotkey(const QString &keyName) { write(SettingsTable::DynamicHotkey, keyName); }
    /// Pixels; (-1, -1) while the user has not placed the dialog.
    QPoint getDynamicCustomPosition() const;
    void setDynamicCustomPosition(const QPoint &position);

    // Concept dialog; colours are "#rrggbb", font sizes in points, the width in pixels
    QString getThemeBgColor() const { return read(SettingsTable::ThemeBgColor); }
    void setThemeBgColor(const QString &color) { write(SettingsTable::ThemeBgColor, color); }
    QString getThemeCardBgColor() const { return read(SettingsTable::ThemeCardBgColor); }
    void setThemeCardBgColor(const QString &color) { write(SettingsTable::ThemeCardBgColor, color); }
    QString getThemeNameColor() const { return read(SettingsTable::ThemeNameColor); }
    void setThemeNameColor(const QString &color) { write(SettingsTable::ThemeNameColor, color); }
    QString getThemeDescColor() const { return read(SettingsTable::ThemeDescColor); }
    void setThemeDescColor(const QString &color) { write(SettingsTable::ThemeDescColor, color); }
    int getThemeNameFontSize() const { return read(SettingsTable::ThemeNameFontSize); }
    void setThemeNameFontSize(int points) { write(SettingsTable::ThemeNameFontSize, points); }
    int getThemeDescFontSize() const { return read(SettingsTable::ThemeDescFontSize); }
    void setThemeDescFontSize(int points) { write(SettingsTable::ThemeDescFontSize, points); }
    int getThemeSummaryFontSize() const { return read(SettingsTable::ThemeSummaryFontSize); }
    void setThemeSummaryFontSize(int points) { write(SettingsTable::ThemeSummaryFontSize, points); }
    int getThemeWidth() const { return read(SettingsTable::ThemeWidth); }
    void setThemeWidth(int pixels) { write(SettingsTable::ThemeWidth, pixels); }
    int getThemePosition() const { return read(SettingsTable::ThemePosition); }
    void setThemePosition(int position) { write(SettingsTable::ThemePosition, position); }
    QString getThemeHotkey() const { return read(SettingsTable::ThemeHotkey); }
    void setThemeHotkey(const QString &keyName) { write(SettingsTable::ThemeHotkey, keyName); }
    /// Pixels; (-1, -1) while the user has not placed the dialog.
    QPoint getThemeCustomPosition() const;
    void setThemeCustomPosition(const QPoint &position);

private:
    ConfigManager();

    template <typename T>
    T read(const SettingsTable::Setting<T> &setting) const
    {
        return m_settings->value(setting.key, QVariant::fromValue(setting.onRead)).template value<T>();
    }
    template <typename T>
    void write(const SettingsTable::Setting<T> &setting, const T &value)
    {
        m_settings->setValue(setting.key, QVariant::fromValue(value));
    }
    template <typename T>
    void reset(const SettingsTable::Setting<T> &setting)
    {
        write(setting, setting.onReset.value());
    }
    QString passwordKeySource() const;

    const std::unique_ptr<QSettings> m_settings;
};
