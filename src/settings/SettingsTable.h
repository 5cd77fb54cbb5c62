#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QLatin1String>
#include <QPoint>
#include <QSize>
#include <QString>

#include <cstddef>
#include <optional>

/// Every setting of the program, one row each, on one screen. ConfigManager's accessors carry the rows' names
/// (getApiKey and setApiKey for ApiKey) and are the only code that reads or writes them.
namespace SettingsTable {

/// One row: the key in the file, the value that an absent key reads as, and the value that a reset writes.
template <typename T>
struct Setting
{
    QString key;
    T onRead;
    std::optional<T> onReset;
};

/// In the reset column: a reset leaves the key as it stands.
inline constexpr std::nullopt_t kept = std::nullopt;

/// Text of the table.
constexpr QLatin1String operator""_L1(const char *text, std::size_t size)
{
    return QLatin1String(text, static_cast<int>(size));
}

/// The news service's base address on a machine that was never told another one.
inline constexpr QLatin1String defaultServiceEndpoint = "http://127.0.0.1:8888"_L1;

// The two columns of values differ in several rows on purpose.
// clang-format off
//                  name                        key                                     on read                 on reset
inline const Setting<QString>    ApiServerUrl          {"API/ServerUrl"_L1,                    defaultServiceEndpoint, defaultServiceEndpoint};
inline const Setting<QString>    ApiKey                {"API/Key"_L1,                          QString(),              QString()};
inline const Setting<int>        ApiTimeout            {"API/Timeout"_L1,                      10,                     10};      // seconds

inline const Setting<bool>       AutoLogin             {"Auth/AutoLogin"_L1,                   true,                   kept};
inline const Setting<QString>    DeviceId              {"Auth/DeviceId"_L1,                    QString(),              kept};
inline const Setting<QString>    AuthEmail             {"Auth/Email"_L1,                       QString(),              kept};
inline const Setting<QDateTime>  LastLoginTime         {"Auth/LastLoginTime"_L1,               QDateTime(),            kept};
inline const Setting<int>        LoginMethod           {"Auth/LoginMethod"_L1,                 0,                      kept};
inline const Setting<QString>    AuthPassword          {"Auth/Password"_L1,                    QString(),              kept};    // scrambled
inline const Setting<int>        SessionTimeoutHours   {"Auth/SessionTimeoutHours"_L1,         24,                     kept};    // hours
inline const Setting<QString>    SessionToken          {"Auth/SessionToken"_L1,                QString(),              kept};
inline const Setting<QString>    AuthUsername          {"Auth/Username"_L1,                    QString(),              kept};

inline const Setting<int>        RefreshInterval       {"Features/RefreshInterval"_L1,         8,                      60};      // seconds
inline const Setting<bool>       EnableSpeakStock      {"Features/EnableSepakStock"_L1,        true,                   true};    // spelt so in every file
inline const Setting<bool>       EnableNotification    {"Features/EnableNotification"_L1,      true,                   true};
inline const Setting<bool>       EnableSound           {"Features/EnableSound"_L1,             true,                   true};
inline const Setting<bool>       EnableTts             {"Features/TTS"_L1,                     true,                   true};
inline const Setting<double>     TtsVolume             {"Features/TTSVolume"_L1,               0.9,                    0.9};     // 0.0 to 1.0
inline const Setting<bool>       EnableAutoStart       {"Features/EnableAutoStart"_L1,         false,                  false};
inline const Setting<bool>       RememberWindowState   {"Features/RememberWindowState"_L1,     true,                   true};
inline const Setting<bool>       EnableTopmost         {"Features/EnableTopmost"_L1,           false,                  false};
inline const Setting<bool>       ShowNewsDetails       {"Features/ShowNewsDetails"_L1,         false,                  false};
inline const Setting<QString>    NotificationPosition  {"Features/NotificationPosition"_L1,    "bottom_right"_L1,      "bottom_right"_L1};
inline const Setting<bool>       DarkMode              {"Theme/DarkMode"_L1,                   false,                  false};

inline const Setting<QByteArray> WindowGeometry        {"Window/Geometry"_L1,                  QByteArray(),           kept};    // of QWidget::saveGeometry
inline const Setting<QPoint>     WindowPosition        {"Window/Position"_L1,                  QPoint(100, 100),       QPoint(100, 100)};
inline const Setting<QSize>      WindowSize            {"Window/Size"_L1,                      QSize(750, 980),        QSize(1200, 800)};

inline const Setting<QString>    MainBoardColor        {"StockAnalysis/MainBoardColor"_L1,     "orange"_L1,            "red"_L1};
inline const Setting<QString>    GemColor              {"StockAnalysis/GemColor"_L1,           "cyan"_L1,              "cyan"_L1};
inline const Setting<QString>    StarMarketColor       {"StockAnalysis/StarMarketColor"_L1,    "blue"_L1,              "blue"_L1};
inline const Setting<QString>    BeijingExchangeColor  {"StockAnalysis/BeijingExchangeColor"_L1, "green"_L1,           "green"_L1};
inline const Setting<int>        BasicInfoFontSize     {"StockAnalysis/BasicInfoFontSize"_L1,  10,                     14};      // points
inline const Setting<int>        HistoryStatsFontSize  {"StockAnalysis/HistoryStatsFontSize"_L1, 12,                   12};      // points
inline const Setting<int>        OpeningMarketFontSize {"StockAnalysis/OpeningMarketFontSize"_L1, 12,                  12};      // points
inline const Setting<int>        StockCodeNameFontSize {"StockAnalysis/StockCodeNameFontSize"_L1, 14,                  16};      // points
inline const Setting<int>        LimitUpDetailFontSize {"StockAnalysis/LimitUpDetailFontSize"_L1, 12,                  12};      // points
inline const Setting<bool>       StockAutoRefresh      {"StockAnalysis/AutoRefresh"_L1,        false,                  kept};
inline const Setting<int>        StockLinkageMode      {"StockAnalysis/LinkageMode"_L1,        0,                      kept};
inline const Setting<int>        StockRefreshInterval  {"StockAnalysis/RefreshInterval"_L1,    5,                      kept};    // seconds

inline const Setting<int>        MarketTitleFontSize   {"MarketStats/TitleFontSize"_L1,        10,                     16};      // points
inline const Setting<int>        MarketLabelFontSize   {"MarketStats/LabelFontSize"_L1,        12,                     12};      // points
inline const Setting<int>        MarketValueFontSize   {"MarketStats/ValueFontSize"_L1,        12,                     14};      // points
inline const Setting<int>        MarketBoardRankingFontSize{"MarketStats/BoardRankingFontSize"_L1, 11,                 12};      // points
inline const Setting<int>        MarketRefreshInterval {"MarketStats/RefreshInterval"_L1,      20,                     20};      // seconds

inline const Setting<QString>    CurrentSoftware       {"StockHelper/CurrentSoftware"_L1,      "tdx"_L1,               kept};
inline const Setting<QString>    TdxVersion            {"StockHelper/TdxVersion"_L1,           QString(),              kept};
inline const Setting<QString>    ThsVersion            {"StockHelper/ThsVersion"_L1,           QString(),              kept};

inline const Setting<bool>       DynamicManualEdit     {"DynamicAnalysis/EnableManualEdit"_L1, false,                  false};   // never set but by a reset
inline const Setting<QString>    DynamicHotkey         {"DynamicAnalysis/Hotkey"_L1,           "Tab"_L1,               kept};    // a key's name
inline const Setting<int>        DynamicCustomPositionX{"DynamicAnalysisDialog/CustomPositionX"_L1, -1,                kept};    // pixels
inline const Setting<int>        DynamicCustomPositionY{"DynamicAnalysisDialog/CustomPositionY"_L1, -1,                kept};    // pixels

inline const Setting<QString>    ThemeBgColor          {"ThemeDialog/BgColor"_L1,              "#2c3e50"_L1,           kept};
inline const Setting<QString>    ThemeCardBgColor      {"ThemeDialog/CardBgColor"_L1,          "#353535"_L1,           kept};
inline const Setting<QString>    ThemeNameColor        {"ThemeDialog/NameColor"_L1,            "#aaff00"_L1,           kept};
inline const Setting<QString>    ThemeDescColor        {"ThemeDialog/DescColor"_L1,            "#ffaa00"_L1,           kept};
inline const Setting<int>        ThemeNameFontSize     {"ThemeDialog/NameFontSize"_L1,         26,                     kept};    // points
inline const Setting<int>        ThemeDescFontSize     {"ThemeDialog/DescFontSize"_L1,         24,                     kept};    // points
inline const Setting<int>        ThemeSummaryFontSize  {"ThemeDialog/SummaryFontSize"_L1,      16,                     kept};    // points
inline const Setting<int>        ThemeWidth            {"ThemeDialog/Width"_L1,                600,                    kept};    // pixels
inline const Setting<int>        ThemePosition         {"ThemeDialog/Position"_L1,             1,                      kept};
inline const Setting<QString>    ThemeHotkey           {"ThemeDialog/Hotkey"_L1,               "Tab"_L1,               kept};    // a key's name
inline const Setting<int>        ThemeCustomPositionX  {"ThemeDialog/CustomPositionX"_L1,      -1,                     kept};    // pixels
inline const Setting<int>        ThemeCustomPositionY  {"ThemeDialog/CustomPositionY"_L1,      -1,                     kept};    // pixels
// clang-format on

// Reserved: the keys are taken, nothing reads or writes them.
inline const QString reservedTopMostKey = "StockAnalysis/TopMost"_L1;
inline const QString reservedTdxOffsetAddrKey = "StockHelper/TdxOffsetAddr"_L1;
inline const QString reservedThsOffsetAddrKey = "StockHelper/ThsOffsetAddr"_L1;

} // namespace SettingsTable
