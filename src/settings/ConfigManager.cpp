#include "settings/ConfigManager.h"

#include "settings/PasswordScrambling.h"

#include <QDir>
#include <QStandardPaths>
#include <QSysInfo>

namespace {

/// Path of the settings file; creates its folder. A folder that can't be created leaves a store in memory.
QString preparedFilePath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QDir(folder).exists())
        QDir().mkpath(folder);
    return folder + QStringLiteral("/larkspire.ini");
}

} // namespace

ConfigManager *ConfigManager::instance()
{
    static auto *const theInstance = new ConfigManager;
    return theInstance;
}

ConfigManager::ConfigManager()
    : m_settings(std::make_unique<QSettings>(preparedFilePath(), QSettings::IniFormat))
{
    m_settings->setIniCodec("UTF-8");
}

ConfigManager::~ConfigManager()
{
    m_settings->sync();
}

int ConfigManager::normalisedApiTimeout(int stored)
{
    if (stored < 1)
        return SettingsTable::ApiTimeout.onRead;
    if (stored <= 100)
        return stored;
    return qBound(5, stored / 1000, 30);
}

void ConfigManager::sync()
{
    m_settings->sync();
}

void ConfigManager::resetToDefaults()
{
    reset(SettingsTable::ApiServerUrl);
    reset(SettingsTable::ApiKey);
    reset(SettingsTable::ApiTimeout);
    reset(SettingsTable::RefreshInterval);
    reset(SettingsTable::EnableSpeakStock);
    reset(SettingsTable::EnableNotification);
    reset(SettingsTable::EnableSound);
    reset(SettingsTable::EnableTts);
    reset(SettingsTable::TtsVolume);
    reset(SettingsTable::EnableAutoStart);
    reset(SettingsTable::RememberWindowState);
    reset(SettingsTable::EnableTopmost);
    reset(SettingsTable::DarkMode);
    reset(SettingsTable::ShowNewsDetails);
    reset(SettingsTable::NotificationPosition);
    reset(SettingsTable::DynamicManualEdit);
    reset(SettingsTable::WindowPosition);
    reset(SettingsTable::WindowSize);
    reset(SettingsTable::MainBoardColor);
    reset(SettingsTable::GemColor);
    reset(SettingsTable::StarMarketColor);
    reset(SettingsTable::BeijingExchangeColor);
    reset(SettingsTable::BasicInfoFontSize);
    reset(SettingsTable::HistoryStatsFontSize);
    reset(SettingsTable::OpeningMarketFontSize);
    reset(SettingsTable::StockCodeNameFontSize);
    reset(SettingsTable::LimitUpDetailFontSize);
    reset(SettingsTable::MarketTitleFontSize);
    reset(SettingsTable::MarketLabelFontSize);
    reset(SettingsTable::MarketValueFontSize);
    reset(SettingsTable::MarketBoardRankingFontSize);
    reset(SettingsTable::MarketRefreshInterval);
    m_settings->sync();
}

int ConfigManager::getApiTimeout()
{
    const int stored = read(SettingsTable::ApiTimeout);
    const int seconds = normalisedApiTimeout(stored);
    if (seconds != stored)
        setApiTimeout(seconds);
    return seconds;
}

QString ConfigManager::getAuthPassword() const
{
    return PasswordScrambling::unscrambled(read(SettingsTable::AuthPassword), passwordKeySource());
}

void ConfigManager::setAuthPassword(const QString &password)
{
    write(SettingsTable::AuthPassword, PasswordScrambling::scrambled(password, passwordKeySource()));
}

QString ConfigManager::passwordKeySource() const
{
    const QString deviceId = getDeviceId();
    return deviceId.isEmpty() ? QString::fromUtf8(QSysInfo::machineUniqueId()) : deviceId;
}

void ConfigManager::setRefreshInterval(int seconds)
{
    write(SettingsTable::RefreshInterval, qMax(seconds, minimumRefreshIntervalSeconds));
}

QPoint ConfigManager::getDynamicCustomPosition() const
{
    return {read(SettingsTable::DynamicCustomPositionX), read(SettingsTable::DynamicCustomPositionY)};
}

void ConfigManager::setDynamicCustomPosition(const QPoint &position)
{
    write(SettingsTable::DynamicCustomPositionX, position.x());
    write(SettingsTable::DynamicCustomPositionY, position.y());
}

QPoint ConfigManager::getThemeCustomPosition() const
{
    return {read(SettingsTable::ThemeCustomPositionX), read(SettingsTable::ThemeCustomPositionY)};
}

void ConfigManager::setThemeCustomPosition(const QPoint &position)
{
    write(SettingsTable::ThemeCustomPositionX, position.x());
    write(SettingsTable::ThemeCustomPositionY, position.y());
}
