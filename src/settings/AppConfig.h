#pragma once

#include "settings/ConfigManager.h"

#include <QPoint>
#include <QSize>
#include <QString>

/// The settings that the main window holds and the settings dialog edits: a plain record. A new record
/// carries a second set of defaults of its own, which differs from ConfigManager's in places; that is meant.
struct AppConfig
{
    QString serverUrl = ConfigManager::defaultServiceEndpoint();
    QString apiKey;
    /// Two units, as meant: this default is in milliseconds, a value taken from the settings in seconds.
    int timeout = 10000;
    /// Seconds.
    int refreshInterval = 60;
    /// Spelt as the settings key is.
    bool enableSepakStock = true;
    bool enableNotification = true;
    bool enableTopmost = false;
    bool enableSound = true;
    bool enableTts = true;
    /// 0.0 to 1.0.
    double ttsVolume = 0.5;
    bool enableAutoStart = false;
    QString notificationPosition = QStringLiteral("bottom_right");
    QPoint windowPosition{100, 100};
    QSize windowSize{1200, 800};
    bool rememberWindowState = true;
    bool darkMode = false;
    bool showNewsDetails = false;

    // Stock page: colour words, font sizes in points.
    QString mainBoardColor = QStringLiteral("red");
    QString gemColor = QStringLiteral("cyan");
    QString starMarketColor = QStringLiteral("blue");
    QString beijingExchangeColor = QStringLiteral("green");
    int basicInfoFontSize = 14;
    int historyStatsFontSize = 12;
    int openingMarketFontSize = 12;
    int stockCodeNameFontSize = 16;
    int limitUpDetailFontSize = 12;

    // Market page: font sizes in points, interval in seconds.
    int marketTitleFontSize = 16;
    int marketLabelFontSize = 12;
    int marketValueFontSize = 14;
    int marketBoardRankingFontSize = 12;
    int marketRefreshInterval = 20;

    // Concept dialog: colours "#rrggbb", width in pixels, font sizes in points.
    QString themeBgColor = QStringLiteral("#2c3e50");
    int themeWidth = 380;
    int themePosition = 1;
    QString themeCardBgColor = QStringLiteral("#34495e");
    int themeSummaryFontSize = 13;
    QString themeNameColor = QStringLiteral("#e74c3c");
    int themeNameFontSize = 15;
    QString themeDescColor = QStringLiteral("#ecf0f1");
    int themeDescFontSize = 13;
    QString themeHotkey;
    QString dynamicHotkey = QStringLiteral("F14");
};
