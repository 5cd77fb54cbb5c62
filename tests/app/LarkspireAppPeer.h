#pragma once

#include "app/LarkspireApp.h"

#include <QTimer>

/// The tests' way into the window where no widget, signal or child object leads.
class LarkspireAppPeer
{
public:
    static void setClock(LarkspireApp &window, const std::function<QDateTime()> &clock)
    {
        window.m_clock = clock;
    }
    static AppConfig &config(LarkspireApp &window) { return window.m_config; }
    static void adoptConfig(LarkspireApp &window, const AppConfig &edited) { window.adoptConfig(edited); }
    static void saveSettings(LarkspireApp &window) { window.saveSettings(); }
    static QSystemTrayIcon *trayIcon(LarkspireApp &window) { return window.m_trayIcon; }
    static QMenu *trayMenu(LarkspireApp &window) { return window.m_trayMenu; }
    static QTimer *refreshTimer(LarkspireApp &window) { return window.m_refreshTimer; }
    static QTimer *speechPumpTimer(LarkspireApp &window) { return window.m_speechPumpTimer; }
    static QTimer *volumeHideTimer(LarkspireApp &window) { return window.m_volumeHideTimer; }
    static bool autoLoginPending(const LarkspireApp &window) { return window.m_autoLoginPending; }
    static QJsonObject userInfo(const LarkspireApp &window) { return window.m_userInfo; }

    static QString lastNewsId(const LarkspireApp &window) { return window.m_lastNewsId; }
    static QDateTime lastNewsTime(const LarkspireApp &window) { return window.m_lastNewsTime; }
    static bool initialLoadDone(const LarkspireApp &window) { return window.m_initialLoadDone; }
    static int totalNewsCount(const LarkspireApp &window) { return window.m_totalNewsCount; }
    static int keywordNewsCount(const LarkspireApp &window) { return window.m_keywordNewsCount; }
    static QStringList &notifiedNewsIds(LarkspireApp &window) { return window.m_notifiedNewsIds; }
    static QDateTime lastUpdateTime(const LarkspireApp &window) { return window.m_lastUpdateTime; }

    static QList<NewsData> &interactiveNews(LarkspireApp &window) { return window.m_interactiveNews; }
    static QList<NewsData> &selectedNews(LarkspireApp &window) { return window.m_selectedNews; }
    static QList<NewsData> &searchResults(LarkspireApp &window) { return window.m_searchResults; }
    static void fillInteractiveRow(LarkspireApp &window, int row, const NewsData &item)
    {
        window.fillInteractiveRow(row, item);
    }
    static void fillSelectedRow(LarkspireApp &window, int row, const NewsData &item)
    {
        window.fillSelectedRow(row, item);
    }
    static void fillSearchRow(LarkspireApp &window, int row, const NewsData &item)
    {
        window.fillSearchRow(row, item);
    }
};
