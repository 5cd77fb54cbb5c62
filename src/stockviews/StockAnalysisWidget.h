#pragma once

#include "linkage/RestartedCopySearch.h"
#include "stockclient/StockRecords.h"
#include "stockviews/PanelQueries.h"
#include "stockviews/StockRenderSettings.h"

#include <QDateTime>
#include <QMargins>
#include <QMetaObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class AuthManager;
class DynamicAnalysisDialog;
class GlobalHotkey;
class LimitUpPopup;
class PlatformOperations;
class ProcessUtils;
class QJsonObject;
class QTimer;
class SpeechManager;
class StockApiClient;
class StockBlacklist;
class StockCodeSender;
class ThemeStocksDialog;
struct StockAnalysisUi;

/// The stock page. Once a second it reads the code that is open in the chosen trading program; when the code
/// has changed, it passes it on to the other program if the linkage mode says so, asks the service for the
/// stock and shows it. Around that loop stand the choice of program, copy and linkage mode, the portals, and
/// the compact mode, which turns the main window into a small frameless panel of this page.
///
/// A read that fails is silent and tried again at the next tick; failures of the service go to the status
/// line; only a missing configuration raises a message box. A program that hangs blocks a send, and with it
/// the page.
///
/// Widgets keep the object names of StockAnalysisUi.
class StockAnalysisWidget final : public QWidget
{
    Q_OBJECT

public:
    /// What the page meets of the outside world.
    struct Surroundings
    {
        std::unique_ptr<PlatformOperations> reading; ///< of the trading programs' memory
        std::unique_ptr<PlatformOperations> sending; ///< of messages to them
        std::function<QDateTime()> clock;
        /// Those of the running system.
        static Surroundings ofTheSystem();
        Surroundings();
        Surroundings(Surroundings &&) noexcept;
        Surroundings &operator=(Surroundings &&) noexcept;
        ~Surroundings();
        Q_DISABLE_COPY(Surroundings)
    };

    explicit StockAnalysisWidget(QWidget *parent = nullptr);
    explicit StockAnalysisWidget(Surroundings surroundings, QWidget *parent = nullptr);
    /// Stores the switch, the interval, the program and the linkage mode.
    ~StockAnalysisWidget() override;
    Q_DISABLE_COPY_MOVE(StockAnalysisWidget)

    void setAuthManager(AuthManager *authManager);
    /// Without one, names are not spoken.
    void setSpeechManager(SpeechManager *speechManager);
    /// Takes over changed sizes, colours and hot keys.
    void reloadSettings();
    /// Goes to the service that the configuration names now; answers of the old one are not waited for.
    void useConfiguredService();

    bool isMonitoring() const { return m_isMonitoring; }
    QString currentStockCode() const { return m_currentStockCode; }

signals:
    /// Part of the interface; nothing emits it.
    void stockCodeChanged(const QString &code);
    /// The stock's name was clicked: news about it are wanted.
    void searchStockNameRequested(const QString &stockName);

private slots:
    void onThemeButtonClicked();
    void onThemeStocksReceived(const QList<ThemeStockInfo> &themes);
    void onRefreshButtonClicked();
    void handleAutoRefresh();
    void onSettingsButtonClicked();
    void onCurrentSoftwareButtonClicked();
    void onSoftwareSwitchButtonClicked();
    void onAutoRefreshToggled(bool enabled);
    void onCompactModeToggled();
    void onLinkageComboBoxChanged(int index);
    void onTdxInstanceChanged(int index);
    void onThsInstanceChanged(int index);
    void onStockInfoReceived(const StockInfo &info);
    void onLimitStatsReceived(const LimitStats &stats);
    void onComprehensiveInfoReceived(const ComprehensiveStockInfo &info);
    void onLimitUpDetailInfoReceived(const LimitUpDetailInfo &info);
    void onQueryError(const QString &error, const QString &requestType);
    void onQueryError(const QString &error);
    void onStockCodeChanged();
    void onStockNameLinkClicked(const QString &link);
    void onSearchStockButtonClicked();
    void onDynamicAnalysisReceived(const QList<DynamicAnalysisRecord> &items);
    void onClsButtonClicked();
    void onLhbButtonClicked();
    void onEastmoneyButtonClicked();
    void onTaogubaButtonClicked();
    void onJiucaiButtonClicked();
    void onAigupiaoButtonClicked();
    void onSinaButtonClicked();
    void onXueqiuButtonClicked();
    void onBlacklistButtonClicked();
    void onCheckBlacklistFinished(bool success, const QJsonObject &answer);
    void onAddToBlacklistFinished(bool success, const QString &message);
    void onRemoveFromBlacklistFinished(bool success, const QString &message);
    void updateBlacklistDisplay();
    void onRecentLimitUpLabelEntered();
    void onRecentLimitUpLabelLeft();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    // Controls.
    void setupConnections();
    void connectClient();
    void readState();
    void showStatus(const QString &text, const QString &style = QString());
    QString successStyle() const;
    void showSoftware();
    bool switchSoftware();
    QString switchedText() const;
    QString versionOf(const QString &software) const;
    void openPortal(const QString &name);
    void updatePortalToolTips();

    // The loop.
    void startAutoRefresh();
    void stopLoop();
    void refuseAutoRefresh(const QString &status);
    void showIndicator(bool on);
    void loadOffset();
    void dropConfigConnections();
    void onHelperConfigReceived(const QJsonObject &config);
    void onHelperConfigFailed(const QString &error);
    QString configuredOffset() const;
    bool readCode(QString &code);
    void sendStockCode(const QString &code, const QString &target);
    void registerHotkeys();
    void unregisterHotkeys();

    // Copies of the trading programs.
    void refreshInstances(const QString &software);
    /// Another program has become the current one.
    void refreshInstancesAfterChange();
    QList<ProcessInstance> instancesOf(const QString &software) const;
    void showInstances(const QString &software, const QList<ProcessInstance> &instances, int chosen);
    /// After a failed read: when the chosen copy has ended and has been started again since the list was
    /// taken, goes over to that.
    void followRestartedInstance();
    void refreshTdxInstances();
    void refreshThsInstances();

    // The display.
    void displayStockInfo(const StockInfo &info);
    void displayLimitStats(const LimitStats &stats);
    void displayOpeningData(const ComprehensiveStockInfo &info);
    void showActivity(double activity);
    StockRenderSettings renderSettings() const;
    void displayPlainCode(const QString &code);
    void clearStockDisplay();
    /// Writes what is on show in the sizes and colours of now.
    void showAgain();
    void speakName(const QString &code, const QString &name);
    void showLimitUpPopup();
    void applySkin();

    // The move analysis.
    /// Asks for the analysis of this code where its panel is open.
    void refreshMoveAnalysis(const QString &code);
    void queryMoveAnalysis(const QString &code);

    // The blacklist.
    void setupBlacklist();
    void connectBlacklistClient();
    void checkBlacklistOfShownStock();
    void onUserChanged();
    void askForRemoval(const QString &question);
    void showAddToBlacklistDialog();

    // The concept panel.
    void queryThemes(const QString &code);
    /// Has the panel follow the stock while it is open.
    void followWithThemeDialog(const QString &code);

    // Compact mode.
    void enterCompactMode();
    void leaveCompactMode();
    void showFrameWidgets(bool visible);
    void changeWindowFlags(Qt::WindowFlags flags, const QRect &place);
    bool resizeWindow(QEvent *event);
    /// Moves the window along with the mouse; false when it is not being dragged.
    bool dragWindow(const QMouseEvent *event);
    bool dragByName(QEvent *event);

    Surroundings m_surroundings;
    std::unique_ptr<StockAnalysisUi> m_ui;
    StockApiClient *m_apiClient = nullptr;
    ProcessUtils *m_processUtils = nullptr;
    StockCodeSender *m_codeSender = nullptr;
    QTimer *m_refreshTimer = nullptr;
    QTimer *m_popupHideTimer = nullptr;
    QPointer<AuthManager> m_authManager;
    QPointer<SpeechManager> m_speechManager;
    GlobalHotkey *m_themeHotkey = nullptr;
    GlobalHotkey *m_analysisHotkey = nullptr;
    LimitUpPopup *m_limitUpPopup = nullptr;
    QPointer<DynamicAnalysisDialog> m_dynamicAnalysisDialog; ///< made on first use
    bool m_analysisFollowsStock = false;                     ///< the last query was for a panel that was open
    PanelQueries m_analysisQueries;
    StockBlacklist *m_blacklist = nullptr;
    qint32 m_userId = 0; ///< whose blacklist it is; 0 for nobody's

    bool m_autoRefreshEnabled = false;
    bool m_isMonitoring = false;
    int m_refreshInterval = 5; ///< seconds; read and written back without effect, which is meant
    QString m_currentSoftware;
    int m_linkageMode = 0;
    QString m_currentStockCode;
    QString m_currentStockName;
    QString m_lastQueriedCode;
    QString m_recentLimitUpDate;
    LimitUpDetailInfo m_limitUpDetail;
    std::optional<StockInfo> m_shownStock;
    QString m_shownPlainCode; ///< of what is no stock
    RestartedCopySearch m_restartedCopySearch;
    QMetaObject::Connection m_configReceived;
    QMetaObject::Connection m_configFailed;

    QPointer<ThemeStocksDialog> m_themeDialog; ///< made for the first answer
    PanelQueries m_themeQueries;
    bool m_themesFollowStock = false; ///< the last question came from a new stock, not from the user

    bool m_compactMode = false;
    bool m_isDragging = false;
    bool m_wasDragged = false;
    QPoint m_pressPosition; ///< on the screen
    QPoint m_dragStartPosition;
    Qt::WindowFlags m_savedWindowFlags;
    QMargins m_savedWindowMargins;
    bool m_isResizing = false;
    int m_resizeEdges = 0;
    QPoint m_resizeStartPos;
    QRect m_resizeStartGeometry;
};
