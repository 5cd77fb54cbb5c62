#pragma once

#include "accounts/AuthTypes.h"
#include "newsclient/NewsRecords.h"
#include "settings/AppConfig.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class ApiClient;
class AuthManager;
class AutoStartManager;
class ConfigDialog;
class CustomNotification;
class CustomTableWidget;
class CustomerServiceDialog;
class EnhancedLoginDialog;
class KeywordManagerDialog;
class LoginDialog;
class LoginMethodDialog;
class MainNewsTable;
class MarketStatisticsWidget;
class QAction;
class QDialog;
class QMenu;
class QMessageBox;
class QNetworkAccessManager;
class QTextBrowser;
class QThread;
class QTimer;
class QUrl;
class SoundReminder;
class SpeechManager;
class StockAnalysisWidget;
class UserInfoDialog;
enum class NewsTableKind;
struct MainWindowUi;

/// The program's one main window and the owner of everything else: it creates every manager and page as a Qt
/// child, holds the running copy of the settings, wires all signals, and runs the news cycle. It is built
/// hidden; a successful login shows it.
///
/// Widgets keep the object names of MainWindowUi, managers are found as children by their type.
class LarkspireApp final : public QMainWindow
{
    Q_OBJECT

public:
    /// Builds everything, reads the settings and starts the automatic login; its answer arrives in the event
    /// loop. The application object and the program's identity must stand.
    LarkspireApp();
    /// Stops the timers, stores the settings and switches speech off.
    ~LarkspireApp() override;
    Q_DISABLE_COPY_MOVE(LarkspireApp)

    /// Brings a hidden, minimised or covered window to the front with the focus, about 200 ms later. With
    /// "Features/RememberWindowState" on, it comes back at its stored place; a window in sight stays where it
    /// is.
    void showAndActivateWindow();

signals:
    /// The user has chosen the end of the program: the settings are stored, speech is switched off next, and
    /// the event loop ends.
    void endBegun();

private slots:
    // The news cycle.
    void onRefreshTimer();
    void onRefreshButtonClicked();
    void onNewsReceived(const QList<NewsData> &newsList, int totalCount);
    void onIncrementalNewsReceived(const QList<NewsData> &newsList);
    void onLatestNewsReceived(const QList<NewsData> &newsList);
    void onApiError(const QString &errorMessage);
    void onNetworkError(const QString &errorMessage);
    void onAuthenticationFailed(const QString &reason);
    void onAuthenticationRequired();
    void onDevicesReceived(const QList<DeviceData> &devices);
    void onDeviceRemoved(const QString &deviceId);
    void onDeviceLimitExceeded(const QString &message);
    void onLoginFinished(bool success, const QString &message);
    void onAuthStatusChanged(AuthStatus status);
    void onSessionExpired();
    void onRefreshIntervalChanged(int interval);

    // The pages.
    void onRefreshInteractivePlatformClicked();
    void onInteractivePlatformNewsReceived(const QList<NewsData> &newsList, int totalCount);
    void onRefreshSelectedNewsClicked();
    void onManageSelectedKeywordsClicked();
    void onSelectedNewsReceived(const QList<NewsData> &newsList, int totalCount);
    void onSearchButtonClicked();
    void onSearchTextChanged(const QString &text);
    void onNewsSearchResult(const QList<NewsData> &newsList, int totalCount);
    void onClearSearchClicked();
    void onNewSearchClicked();

    // The frame.
    void onConfigButtonClicked();
    void onKeywordManagerClicked();
    void onAboutClicked();
    void onWebsiteClicked();
    void onUpdateClicked();
    void onToggleThemeClicked();
    void onExitClicked();
    void onTopMostToggled(bool enabled);
    void onNotificationToggled(bool enabled);
    void onSoundToggled(bool enabled);
    void onTTSToggled(bool enabled);
    void onVolumeChanged(int volume);
    void hideVolumeDisplay();
    void updateVolumeTooltipPosition();
    void onVolumeSliderEnter();
    void onVolumeSliderLeave();
    void onNewsItemClicked(int row, int column);
    void onNewsItemDoubleClicked(int row, int column);
    void onInteractivePlatformItemClicked(int row, int column);
    void onInteractivePlatformItemDoubleClicked(int row, int column);
    void onSelectedNewsItemClicked(int row, int column);
    void onSelectedNewsItemDoubleClicked(int row, int column);
    void onSearchResultItemClicked(int row, int column);
    void onSearchResultItemDoubleClicked(int row, int column);
    void onUserInfoButtonClicked();
    void onCustomerServiceClicked();
    void onLoginClicked();
    void onSelectLoginMethodClicked();
    void onUserInfoReceived(const QJsonObject &userInfo);
    void updateUserStatusDisplay();
    void refreshUserStatusFromAuth();
    void onLoginSuccessful(bool success, const QString &message);
    void onTabChanged(int index);
    void onStockAnalysisTabChanged();
    void onStockCodeChanged(const QString &code);
    void onSearchStockNameRequested(const QString &stockName);
    void onDetailsLinkClicked(const QUrl &link);
    void onTrayIconActivated(QSystemTrayIcon::ActivationReason reason);
    void onTrayMenuTriggered(QAction *action);
    void onTrayMessageClicked();
    void showAboutDialog();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// The tests' way to the clock and to the parts that no signal reaches yet.
    friend class LarkspireAppPeer;

    // Construction and settings.
    void createManagers();
    void readConfig();
    void buildInterface();
    void setupTrayIcon();
    void setupConnections();
    /// The keys that the captions of the menu bar name, with Alt; the captions carry no mark for them.
    void setupMenuKeys();
    void setupTables();
    void applyConfig(bool showWindow);
    void applyTheme(bool dark);
    /// Dresses everything in the configured skin.
    void adoptTheme();
    void themeCustomerService();
    void updateThemeAction();
    void saveSettings();
    /// The record takes the answer of the system's list of programs, and so does the stored setting.
    void mirrorAutoStart();
    /// Reads the settings anew after a reset that was not followed by an OK, and applies them.
    void rereadConfig();
    /// Lets the pages that read settings by themselves read them anew; \p otherService: the service's address
    /// is one of what has changed.
    void tellPagesOfSettings(bool otherService);
    /// Takes over what the settings dialog returned, except the top-most flag and the volume, which it does
    /// not own; stores and applies it.
    void adoptConfig(const AppConfig &edited);
    /// Enters or removes the program at the system's start; on failure says so and restores the old flag.
    void changeAutoStart(bool wasEnabled);
    void restartSpeechPump();

    // The window.
    /// Whether the program may end: asks when it could live on in the tray instead.
    bool confirmExit();
    bool trayVisible() const;
    /// Whether the window was on the screen when a double click on the tray icon began.
    bool shownAtTrayClick() const;
    /// Sets the window flags and puts a window that they have hidden back where it was.
    void changeWindowFlags(Qt::WindowFlags flags);
    void updateTopMostAction(bool enabled);
    void toggleTopMostFromTray();
    void hideToTray();
    /// Takes back what showAndActivateWindow() has still in hand.
    void stayHidden();
    void storePlace();
    /// Stores the geometry of now, unless the window is maximised.
    void storeGeometry();
    /// Hides a window that has just been minimised, where the tray can bring it back.
    void hideMinimized();
    /// Second and third step of showAndActivateWindow().
    void revealWindow();
    void showRestored();
    void raiseWindow();
    void setDetailsVisible(bool visible);
    /// A message at the tray icon; skipped when the icon is absent or hidden.
    void showTrayMessage(const QString &title, const QString &text, QSystemTrayIcon::MessageIcon icon,
                         int durationMs);

    // The news cycle.
    void refreshNews();
    void displayNews(const QList<NewsData> &newsList);
    /// Puts the unknown items of the list in front of the table; false when there is none.
    bool mergeIncrementalNews(const QList<NewsData> &newsList);
    void showFirstRow();
    void processNewsAlerts(const QList<NewsData> &newsList);
    void checkApiConnection();
    /// The interval of the tick in seconds: the configured one, never below ten.
    static int effectiveRefreshInterval(int seconds);
    void startRefreshTimer();
    void setStatusText(const QString &text, const QString &style = QString());

    // Tables and details.
    void fillNewsRow(int row, const NewsData &item);
    void fillInteractiveRow(int row, const NewsData &item);
    void fillSelectedRow(int row, const NewsData &item);
    void fillSearchRow(int row, const NewsData &item);
    void showNewsDetails(const NewsData &item);
    void showInteractiveDetails(const NewsData &item);
    void showSelectedDetails(const NewsData &item);
    void showSearchDetails(const NewsData &item);
    struct NewsView
    {
        CustomTableWidget *table;
        QTextBrowser *details;
    };
    NewsView viewOf(NewsTableKind kind) const;
    void fillRow(NewsTableKind kind, int row, const NewsData &item);
    void showDetails(NewsTableKind kind, const NewsData &item);
    /// Shows the details of the selected rows anew, in the skin of now.
    void redisplayDetails();
    void onItemClicked(NewsTableKind kind, int row);
    void onRowReachedByKey(NewsTableKind kind, int row);
    /// The row of the live table that shows this item.
    int rowOf(const NewsData &item) const;
    void speakTitle(const NewsData &item);

    // The pages.
    void refreshInteractiveNews();
    void refreshSelectedNews();
    void startSearch(const QString &keyword);
    void removeSearchTab();
    void showSearchTab();
    void leaveSearch();
    /// Replaces a page's rows and, with details on, shows the list's first item and selects the first row.
    void showList(NewsTableKind kind, const QList<NewsData> &newsList);
    void makePageCurrent(QWidget *page);

    // The stock page.
    /// Puts the stock page into its place and connects it.
    void addStockPage();

    // The market page.
    /// Puts the market page into its place.
    void addMarketPage();
    void refreshMarketPage();
    /// Lets the market page take over the settings; from another service, if that is what has changed.
    void adoptMarketSettings(bool otherService);

    // The account.
    void startNewsCycle();
    /// Copies key and session token of the login to the news client; false without a key or a client.
    bool passCredentialsToClient();
    /// Opens the dialog that a user without a login needs; nothing when somebody is logged in.
    void showLoginPrompt();
    /// Asks for a login method and opens the login dialog on it.
    void chooseLoginMethod();
    /// \param method a value of LoginMethod
    void openLoginDialog(int method);
    /// Brings a login dialog that is open already to the front; false when there is none.
    bool raiseLoginDialog();
    void closeLoginDialogs();
    /// Puts a dialog that is about to open over the window, or into the middle of the screen while the window
    /// is hidden.
    void placeDialog(QDialog *dialog) const;

    std::unique_ptr<MainWindowUi> m_ui;

    QPointer<QSystemTrayIcon> m_trayIcon;
    QMenu *m_trayMenu = nullptr;
    QAction *m_showAction = nullptr;
    QAction *m_hideAction = nullptr;
    QAction *m_exitAction = nullptr;
    QAction *m_topMostAction = nullptr;

    QTimer *m_refreshTimer = nullptr;
    QTimer *m_speechPumpTimer = nullptr;
    QTimer *m_volumeHideTimer = nullptr;
    QTimer *m_revealTimer = nullptr;
    QTimer *m_raiseTimer = nullptr;

    QPointer<ApiClient> m_apiClient;
    QPointer<SpeechManager> m_speechManager;
    QPointer<SoundReminder> m_soundReminder;
    QPointer<AutoStartManager> m_autoStartManager;
    QPointer<AuthManager> m_authManager;
    QPointer<MarketStatisticsWidget> m_marketStatisticsWidget;
    QPointer<CustomNotification> m_customNotification;
    QPointer<StockAnalysisWidget> m_stockAnalysisWidget;
    QPointer<UserInfoDialog> m_userInfoDialog;
    QPointer<CustomerServiceDialog> m_customerServiceDialog;
    QPointer<LoginDialog> m_loginDialog;
    QPointer<LoginMethodDialog> m_loginMethodDialog;     ///< built on first use
    QPointer<EnhancedLoginDialog> m_enhancedLoginDialog; ///< built on first use
    QPointer<KeywordManagerDialog> m_keywordManager;     ///< the one that runs now, if any
    QPointer<ConfigDialog> m_configDialog;               ///< the one that runs now, if any
    QNetworkAccessManager *m_networkManager = nullptr;
    QThread *m_workerThread = nullptr;

    AppConfig m_config;
    QJsonObject m_userInfo;
    bool m_autoLoginPending = false;
    QPointer<QMessageBox> m_exitQuestion; ///< the one that is open now, if any
    bool m_hiddenByMinimize = false;
    QElapsedTimer m_sinceReturn; ///< from a minimise that had hidden the window
    QElapsedTimer m_sinceTrayClick;
    bool m_shownAtTrayClick = false;

    MainNewsTable *m_mainNews = nullptr;
    QString m_lastNewsId;
    QDateTime m_lastNewsTime;
    QDateTime m_lastUpdateTime;
    bool m_initialLoadDone = false;
    int m_totalNewsCount = 0;
    int m_keywordNewsCount = 0;
    QStringList m_notifiedNewsIds;
    bool m_handlingAuthFailure = false;
    bool m_deviceLimitShown = false;

    QList<NewsData> m_searchResults;
    QList<NewsData> m_interactiveNews;
    QList<NewsData> m_selectedNews;
    QString m_currentSearchKeyword;
    bool m_selectedNewsLoaded = false;
    QDateTime m_lastSelectedRefresh;

    std::function<QDateTime()> m_clock = [] { return QDateTime::currentDateTime(); };
};
