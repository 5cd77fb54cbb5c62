#include "app/LarkspireApp.h"

#include "accounts/AuthManager.h"
#include "accounts/CustomerServiceDialog.h"
#include "accounts/DeviceIdentity.h"
#include "accounts/LoginDialog.h"
#include "accounts/UserInfoDialog.h"
#include "app/MainWindowUi.h"
#include "app/WindowRules.h"
#include "desktop/AutoStartManager.h"
#include "news/CustomNotification.h"
#include "news/CustomTableWidget.h"
#include "news/EmptyListHint.h"
#include "news/KeywordManagerDialog.h"
#include "news/MainNewsTable.h"
#include "news/NewsTables.h"
#include "news/SoundReminder.h"
#include "news/SpeechManager.h"
#include "newsclient/ApiClient.h"
#include "settings/ConfigManager.h"
#include "settings/MainWindowSkin.h"
#include "settings/ProgramVersion.h"
#include "settings/ThemeManager.h"
#include "stockviews/MarketStatisticsWidget.h"
#include "stockviews/StockAnalysisWidget.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDebug>
#include <QDir>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSlider>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTextBrowser>
#include <QThread>
#include <QTimer>
#include <QToolTip>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto SpeechPumpInterval = 2000ms;
constexpr auto RaiseStepDelay = 100ms;
constexpr int SpeechNoticeMs = 3000;

void setupSplitter(QSplitter *splitter)
{
    splitter->setSizes({200, 800});
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
}

} // namespace

LarkspireApp::LarkspireApp() : m_ui(std::make_unique<MainWindowUi>())
{
    setWindowTitle(QStringLiteral("云雀资讯"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/app.ico")));
    setVisible(false);

    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    if (!QDir().mkpath(folder))
        qWarning() << "Could not create the settings folder" << folder;

    m_config.darkMode = ConfigManager::instance()->getDarkMode();
    ThemeManager::instance()->setTheme(m_config.darkMode ? ThemeManager::DarkTheme
                                                         : ThemeManager::LightTheme);

    createManagers();
    readConfig();
    statusBar()->showMessage(QStringLiteral("SpeechManager initialized"), SpeechNoticeMs);
    // The manager has an engine since its construction; this second one takes over, as meant.
    m_speechManager->initialize();

    buildInterface();
    setupTrayIcon();
    setupConnections();
    setupTables();
    setupSplitter(m_ui->mainVerticalSplitter);
    addStockPage();
    addMarketPage();

    applyConfig(false);
    applyTheme(m_config.darkMode);
    updateThemeAction();
    themeCustomerService();

    m_autoLoginPending = true;
    m_authManager->autoLogin();
}

LarkspireApp::~LarkspireApp()
{
    // Children live a little longer than this part of the window; none of them may call back into it.
    const QList<QObject *> descendants = findChildren<QObject *>();
    for (QObject *descendant : descendants)
        descendant->disconnect(this);

    m_refreshTimer->stop();
    m_speechPumpTimer->stop();
    m_volumeHideTimer->stop();
    m_revealTimer->stop();
    m_raiseTimer->stop();
    // Ahead of the speech: its service may hang, and the process is then ended from outside.
    saveSettings();
    if (m_speechManager)
        m_speechManager->setEnabled(false);
    if (m_workerThread) {
        m_workerThread->quit();
        m_workerThread->wait(0);
    }
}

void LarkspireApp::createManagers()
{
    m_apiClient = new ApiClient(this);
    m_refreshTimer = new QTimer(this);
    m_speechPumpTimer = new QTimer(this);
    m_volumeHideTimer = new QTimer(this);
    m_revealTimer = new QTimer(this);
    m_raiseTimer = new QTimer(this);
    for (QTimer *timer : {m_revealTimer, m_raiseTimer}) {
        timer->setSingleShot(true);
        timer->setInterval(RaiseStepDelay);
    }
    m_networkManager = new QNetworkAccessManager(this);
    m_speechManager = new SpeechManager(this, [this] { return m_clock(); });
    m_soundReminder = new SoundReminder(this);
    m_autoStartManager = new AutoStartManager(this);
    m_authManager = new AuthManager(this);
    m_authManager->loadStoredCredentials();
    m_marketStatisticsWidget = new MarketStatisticsWidget([this] { return m_clock(); }, this);
    m_stockAnalysisWidget = new StockAnalysisWidget(this);
    m_stockAnalysisWidget->setAuthManager(m_authManager);
    m_customNotification = new CustomNotification(this);
    m_userInfoDialog = new UserInfoDialog(this);
    m_customerServiceDialog = new CustomerServiceDialog(this, m_config.darkMode);
    m_loginDialog = new LoginDialog(this, m_config.darkMode);
    m_userInfoDialog->setCustomerServiceDialog(m_customerServiceDialog);
    m_loginDialog->setApiClient(m_apiClient);
    m_stockAnalysisWidget->setSpeechManager(m_speechManager);
}

void LarkspireApp::readConfig()
{
    ConfigManager *settings = ConfigManager::instance();
    m_config.serverUrl = settings->getApiServerUrl();
    m_config.apiKey = settings->getApiKey();
    m_config.timeout = settings->getApiTimeout();
    m_config.refreshInterval = settings->getRefreshInterval();
    m_config.enableSepakStock = settings->getEnableSpeakStock();
    m_config.enableNotification = settings->getEnableNotification();
    m_config.enableSound = settings->getEnableSound();
    m_config.enableTts = settings->getEnableTts();
    m_config.ttsVolume = settings->getTtsVolume();
    m_config.enableAutoStart = settings->getEnableAutoStart();
    m_config.enableTopmost = settings->getEnableTopmost();
    m_config.windowPosition = settings->getWindowPosition();
    m_config.windowSize = settings->getWindowSize();
    m_config.rememberWindowState = settings->getRememberWindowState();
    m_config.showNewsDetails = settings->getShowNewsDetails();
    m_config.notificationPosition = settings->getNotificationPosition();

    // What the system really starts wins over what was stored.
    m_config.enableAutoStart = m_autoStartManager->isAutoStartEnabled();
}

void LarkspireApp::buildInterface()
{
    m_ui->setupUi(this);
    setDetailsVisible(m_config.showNewsDetails);
    // A tab on demand: the page stays alive without one.
    m_ui->mainTabWidget->removeTab(m_ui->mainTabWidget->indexOf(m_ui->searchPage));

    const QByteArray geometry = ConfigManager::instance()->getWindowGeometry();
    if (m_config.rememberWindowState && !geometry.isEmpty())
        restoreGeometry(geometry);
    else
        resize(m_config.windowSize);
}

void LarkspireApp::setupMenuKeys()
{
    const std::pair<Qt::Key, QMenu *> keys[] = {{Qt::Key_F, m_ui->menuFile},
                                                {Qt::Key_T, m_ui->menuTool},
                                                {Qt::Key_U, m_ui->menuUser},
                                                {Qt::Key_H, m_ui->menuHelp}};
    for (const auto &[key, menu] : keys) {
        auto *shortcut = new QShortcut(QKeySequence(static_cast<int>(Qt::ALT) + key), m_ui->menubar);
        connect(shortcut, &QShortcut::activated, menu,
                [this, opened = menu] { m_ui->menubar->setActiveAction(opened->menuAction()); });
    }
    m_ui->actionCustomerService->setShortcut(QKeySequence(static_cast<int>(Qt::ALT) + Qt::Key_C));
}

void LarkspireApp::setupConnections()
{
    connect(m_refreshTimer, &QTimer::timeout, this, &LarkspireApp::onRefreshTimer);
    connect(m_volumeHideTimer, &QTimer::timeout, this, &LarkspireApp::hideVolumeDisplay);
    connect(m_revealTimer, &QTimer::timeout, this, &LarkspireApp::revealWindow);
    connect(m_raiseTimer, &QTimer::timeout, this, &LarkspireApp::raiseWindow);

    connect(m_apiClient, &ApiClient::newsReceived, this, &LarkspireApp::onNewsReceived);
    connect(m_apiClient, &ApiClient::incrementalNewsReceived, this, &LarkspireApp::onIncrementalNewsReceived);
    connect(m_apiClient, &ApiClient::latestNewsReceived, this, &LarkspireApp::onLatestNewsReceived);
    connect(m_apiClient, &ApiClient::interactivePlatformNewsReceived, this,
            &LarkspireApp::onInteractivePlatformNewsReceived);
    connect(m_apiClient, &ApiClient::selectedNewsReceived, this, &LarkspireApp::onSelectedNewsReceived);
    connect(m_apiClient, &ApiClient::newsSearchResult, this, &LarkspireApp::onNewsSearchResult);
    connect(m_apiClient, &ApiClient::errorOccurred, this, &LarkspireApp::onApiError);
    connect(m_apiClient, &ApiClient::networkError, this, &LarkspireApp::onNetworkError);
    connect(m_apiClient, &ApiClient::authenticationFailed, this, &LarkspireApp::onAuthenticationFailed);
    connect(m_apiClient, &ApiClient::authenticationRequired, this, &LarkspireApp::onAuthenticationRequired);
    connect(m_apiClient, &ApiClient::devicesReceived, this, &LarkspireApp::onDevicesReceived);
    connect(m_apiClient, &ApiClient::deviceRemoved, this, &LarkspireApp::onDeviceRemoved);
    connect(m_apiClient, &ApiClient::deviceLimitExceeded, this, &LarkspireApp::onDeviceLimitExceeded);
    connect(m_apiClient, &ApiClient::sessionExpired, this, &LarkspireApp::onSessionExpired);
    connect(m_apiClient, &ApiClient::userInfoReceived, this, &LarkspireApp::onUserInfoReceived);
    connect(m_apiClient, &ApiClient::emailCodeVerified, this, &LarkspireApp::onLoginSuccessful);

    connect(m_authManager, &AuthManager::loginFinished, this, &LarkspireApp::onLoginFinished);
    connect(m_authManager, &AuthManager::authStatusChanged, this, &LarkspireApp::onAuthStatusChanged);
    connect(m_authManager, &AuthManager::sessionExpired, this, &LarkspireApp::onSessionExpired);

    // At the end of a session the system may end the process before the destructor has its turn.
    connect(qApp, &QGuiApplication::commitDataRequest, this, &LarkspireApp::saveSettings,
            Qt::DirectConnection);

    connect(m_customNotification, &CustomNotification::notificationClicked, this,
            &LarkspireApp::showAndActivateWindow);

    setupMenuKeys();
    connect(m_ui->actionExit, &QAction::triggered, this, &LarkspireApp::onExitClicked);
    connect(m_ui->actionConfig, &QAction::triggered, this, &LarkspireApp::onConfigButtonClicked);
    connect(m_ui->actionKeywordManager, &QAction::triggered, this, &LarkspireApp::onKeywordManagerClicked);
    connect(m_ui->actionAbout, &QAction::triggered, this, &LarkspireApp::onAboutClicked);
    connect(m_ui->actionWebsite, &QAction::triggered, this, &LarkspireApp::onWebsiteClicked);
    connect(m_ui->actionUpdate, &QAction::triggered, this, &LarkspireApp::onUpdateClicked);
    connect(m_ui->actionUserInfo, &QAction::triggered, this, &LarkspireApp::onUserInfoButtonClicked);
    connect(m_ui->actionCustomerService, &QAction::triggered, this, &LarkspireApp::onCustomerServiceClicked);
    connect(m_ui->actionToggleTheme, &QAction::triggered, this, &LarkspireApp::onToggleThemeClicked);
    connect(m_ui->actionLogin, &QAction::triggered, this, &LarkspireApp::onLoginClicked);
    connect(m_ui->actionSelectLoginMethod, &QAction::triggered, this,
            &LarkspireApp::onSelectLoginMethodClicked);

    connect(m_ui->refreshInteractivePlatformButton, &QPushButton::clicked, this,
            &LarkspireApp::onRefreshInteractivePlatformClicked);
    connect(m_ui->refreshSelectedNewsButton, &QPushButton::clicked, this,
            &LarkspireApp::onRefreshSelectedNewsClicked);
    connect(m_ui->manageSelectedKeywordsButton, &QPushButton::clicked, this,
            &LarkspireApp::onManageSelectedKeywordsClicked);
    connect(m_ui->userInfoButton, &QPushButton::clicked, this, &LarkspireApp::onUserInfoButtonClicked);
    connect(m_ui->refreshButton, &QPushButton::clicked, this, &LarkspireApp::onRefreshButtonClicked);
    connect(m_ui->searchButton, &QPushButton::clicked, this, &LarkspireApp::onSearchButtonClicked);
    connect(m_ui->searchLineEdit, &QLineEdit::returnPressed, this, &LarkspireApp::onSearchButtonClicked);
    connect(m_ui->searchLineEdit, &QLineEdit::textChanged, this, &LarkspireApp::onSearchTextChanged);
    connect(m_ui->topMostCheckBox, &QCheckBox::toggled, this, &LarkspireApp::onTopMostToggled);
    connect(m_ui->ttsCheckBox, &QCheckBox::toggled, this, &LarkspireApp::onTTSToggled);
    connect(m_ui->volumeSlider, &QSlider::valueChanged, this, &LarkspireApp::onVolumeChanged);
    m_ui->volumeSlider->installEventFilter(this);

    connect(m_ui->mainTabWidget, &QTabWidget::currentChanged, this, &LarkspireApp::onTabChanged);
    connect(m_ui->mainTabWidget, &QTabWidget::currentChanged, this, &LarkspireApp::onStockAnalysisTabChanged);

    connect(m_ui->newsTableWidget, &QTableWidget::cellClicked, this, &LarkspireApp::onNewsItemClicked);
    connect(m_ui->newsTableWidget, &QTableWidget::cellDoubleClicked, this,
            &LarkspireApp::onNewsItemDoubleClicked);
    connect(m_ui->interactivePlatformTableWidget, &QTableWidget::cellClicked, this,
            &LarkspireApp::onInteractivePlatformItemClicked);
    connect(m_ui->interactivePlatformTableWidget, &QTableWidget::cellDoubleClicked, this,
            &LarkspireApp::onInteractivePlatformItemDoubleClicked);
    connect(m_ui->selectedNewsTableWidget, &QTableWidget::cellClicked, this,
            &LarkspireApp::onSelectedNewsItemClicked);
    connect(m_ui->selectedNewsTableWidget, &QTableWidget::cellDoubleClicked, this,
            &LarkspireApp::onSelectedNewsItemDoubleClicked);
    connect(m_ui->searchResultsTableWidget, &QTableWidget::cellClicked, this,
            &LarkspireApp::onSearchResultItemClicked);
    connect(m_ui->searchResultsTableWidget, &QTableWidget::cellDoubleClicked, this,
            &LarkspireApp::onSearchResultItemDoubleClicked);

    for (const NewsTableKind kind :
         {NewsTableKind::Main, NewsTableKind::Interactive, NewsTableKind::Selected, NewsTableKind::Search}) {
        connect(viewOf(kind).table, &CustomTableWidget::rowReachedByKey, this,
                [this, kind](int row) { onRowReachedByKey(kind, row); });
    }

    for (QTextBrowser *view : {m_ui->detailsTextEdit, m_ui->interactivePlatformDetailsTextEdit,
                               m_ui->selectedNewsDetailsTextEdit, m_ui->searchDetailsTextEdit})
        connect(view, &QTextBrowser::anchorClicked, this, &LarkspireApp::onDetailsLinkClicked);

    if (m_trayIcon) {
        connect(m_trayIcon, &QSystemTrayIcon::activated, this, &LarkspireApp::onTrayIconActivated);
        connect(m_trayIcon, &QSystemTrayIcon::messageClicked, this, &LarkspireApp::onTrayMessageClicked);
        connect(m_trayMenu, &QMenu::triggered, this, &LarkspireApp::onTrayMenuTriggered);
    }
}

void LarkspireApp::setupTables()
{
    for (const NewsTableKind kind :
         {NewsTableKind::Main, NewsTableKind::Interactive, NewsTableKind::Selected, NewsTableKind::Search}) {
        const NewsView view = viewOf(kind);
        NewsTables::setUpTable(view.table, kind);
        NewsTables::setUpDetailsView(view.details);
    }
    m_mainNews = new MainNewsTable(m_ui->newsTableWidget);
    new EmptyListHint(m_ui->newsTableWidget, QStringLiteral("最新的新闻会显示在这里"));
    new EmptyListHint(m_ui->interactivePlatformTableWidget, QStringLiteral("互动平台的新闻会显示在这里"));
    new EmptyListHint(m_ui->selectedNewsTableWidget, QStringLiteral("命中自选关键词的新闻会显示在这里"));
    new EmptyListHint(m_ui->searchResultsTableWidget, QStringLiteral("没有搜索结果"));
    for (QSplitter *splitter :
         {m_ui->interactivePlatformSplitter, m_ui->selectedNewsSplitter, m_ui->searchRightSplitter})
        setupSplitter(splitter);
}

void LarkspireApp::applyConfig(bool showWindow)
{
    setDetailsVisible(m_config.showNewsDetails);
    m_ui->topMostCheckBox->setChecked(m_config.enableTopmost);
    m_ui->ttsCheckBox->setChecked(m_config.enableTts);
    {
        // The slider shows whole percents; the exact volume stays in the configuration.
        const QSignalBlocker blocker(m_ui->volumeSlider);
        m_ui->volumeSlider->setValue(static_cast<int>(WindowRules::usableVolume(m_config.ttsVolume) * 100));
    }
    m_ui->volumeValueLabel->setText(QString::number(m_ui->volumeSlider->value()));
    m_ui->volumeValueLabel->hide();
    m_ui->volumeValueLabel->setParent(this);
    m_ui->volumeValueLabel->raise();

    m_ui->connectionLabel->setTextFormat(Qt::RichText);
    setWindowFlag(Qt::WindowStaysOnTopHint, m_config.enableTopmost);
    if (showWindow)
        showRestored();

    if (m_apiClient) {
        m_apiClient->setBaseUrl(m_config.serverUrl);
        m_apiClient->setTimeout(m_config.timeout * 1000);
        if (!m_config.apiKey.isEmpty())
            m_apiClient->setApiKey(m_config.apiKey);
        m_apiClient->setDeviceInfo(DeviceIdentity::deviceId(), DeviceIdentity::deviceName(),
                                   DeviceIdentity::deviceType(), DeviceIdentity::osInfo(),
                                   ProgramVersion::text());
    }
    m_refreshTimer->setInterval(WindowRules::refreshTimerInterval(m_config.refreshInterval));
    if (m_customNotification)
        m_customNotification->setPosition(m_config.notificationPosition);
    if (m_speechManager) {
        m_speechManager->setEnabled(m_config.enableTts);
        m_speechManager->setVolume(WindowRules::usableVolume(m_config.ttsVolume));
    }
    restartSpeechPump();
}

void LarkspireApp::restartSpeechPump()
{
    m_speechPumpTimer->stop();
    m_speechPumpTimer->disconnect();
    connect(m_speechPumpTimer, &QTimer::timeout, this, [this] {
        // An empty text makes the manager look at its queue.
        if (m_config.enableTts && m_speechManager)
            m_speechManager->speak(QString());
    });
    m_speechPumpTimer->start(SpeechPumpInterval);
}

void LarkspireApp::applyTheme(bool dark)
{
    ThemeManager::instance()->setTheme(dark ? ThemeManager::DarkTheme : ThemeManager::LightTheme);
    if (m_loginDialog)
        m_loginDialog->setDarkTheme(dark);
    if (dark) {
        QApplication::setPalette(MainWindowSkin::darkPalette());
        QToolTip::setPalette(MainWindowSkin::darkToolTipPalette());
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
    } else {
        QApplication::setPalette(QApplication::style()->standardPalette());
        QToolTip::setPalette(QApplication::palette());
        qApp->setStyleSheet(QString());
    }
}

void LarkspireApp::themeCustomerService()
{
    if (m_customerServiceDialog)
        m_customerServiceDialog->setDarkTheme(m_config.darkMode);
}

void LarkspireApp::onToggleThemeClicked()
{
    m_config.darkMode = !m_config.darkMode;
    applyTheme(m_config.darkMode);
    themeCustomerService();
    ConfigManager::instance()->setDarkMode(m_config.darkMode);
    ConfigManager::instance()->sync();
    updateThemeAction();
    redisplayDetails();
}

void LarkspireApp::updateThemeAction()
{
    m_ui->actionToggleTheme->setText(m_config.darkMode ? QStringLiteral("换肤(深色)")
                                                       : QStringLiteral("换肤(浅色)"));
}

void LarkspireApp::saveSettings()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setApiServerUrl(m_config.serverUrl);
    settings->setApiTimeout(m_config.timeout);
    settings->setRefreshInterval(m_config.refreshInterval);
    settings->setEnableSpeakStock(m_config.enableSepakStock);
    settings->setEnableNotification(m_config.enableNotification);
    settings->setEnableSound(m_config.enableSound);
    settings->setEnableTts(m_config.enableTts);
    settings->setTtsVolume(m_config.ttsVolume);
    settings->setEnableAutoStart(m_config.enableAutoStart);
    settings->setEnableTopmost(m_config.enableTopmost);
    settings->setRememberWindowState(m_config.rememberWindowState);
    settings->setDarkMode(m_config.darkMode);
    settings->setShowNewsDetails(m_config.showNewsDetails);
    settings->setNotificationPosition(m_config.notificationPosition);
    if (m_config.rememberWindowState)
        settings->setWindowGeometry(saveGeometry());
    settings->sync();
}

void LarkspireApp::adoptConfig(const AppConfig &edited)
{
    const AppConfig previous = m_config;
    m_config = edited;
    // The dialog does not own these two.
    m_config.enableTopmost = previous.enableTopmost;
    m_config.ttsVolume = previous.ttsVolume;
    if (m_config.enableAutoStart != previous.enableAutoStart)
        changeAutoStart(previous.enableAutoStart);

    saveSettings();
    applyConfig(true);
    tellPagesOfSettings(m_config.serverUrl != previous.serverUrl);
    if (m_config.darkMode != previous.darkMode)
        adoptTheme();
    checkApiConnection();
}

void LarkspireApp::adoptTheme()
{
    applyTheme(m_config.darkMode);
    themeCustomerService();
    updateThemeAction();
    redisplayDetails();
}

void LarkspireApp::changeAutoStart(bool wasEnabled)
{
    if (!m_autoStartManager || m_autoStartManager->setAutoStart(m_config.enableAutoStart))
        return;
    qWarning("Failed to update auto start setting");
    m_config.enableAutoStart = wasEnabled;
    const QString state = wasEnabled ? QStringLiteral("已启用") : QStringLiteral("已禁用");
    QMessageBox::warning(this, QStringLiteral("设置失败"),
                         QStringLiteral("开机自启动设置失败，可能需要管理员权限。\n当前状态：%1").arg(state));
}

void LarkspireApp::setDetailsVisible(bool visible)
{
    for (QGroupBox *groupBox : {m_ui->detailsGroupBox, m_ui->interactivePlatformDetailsGroupBox,
                                m_ui->selectedNewsDetailsGroupBox, m_ui->searchDetailsGroupBox})
        groupBox->setVisible(visible);
}

void LarkspireApp::onKeywordManagerClicked()
{
    if (m_keywordManager) {
        // The tray's menu works while the manager is open.
        m_keywordManager->raise();
        m_keywordManager->activateWindow();
        return;
    }
    KeywordManagerDialog dialog(m_apiClient, this);
    m_keywordManager = &dialog;
    placeDialog(&dialog);
    dialog.exec();
}

void LarkspireApp::onNotificationToggled(bool enabled)
{
    m_config.enableNotification = enabled;
    ConfigManager::instance()->setEnableNotification(enabled);
}

void LarkspireApp::onSoundToggled(bool enabled)
{
    m_config.enableSound = enabled;
    ConfigManager::instance()->setEnableSound(enabled);
}

void LarkspireApp::onTTSToggled(bool enabled)
{
    m_config.enableTts = enabled;
    ConfigManager::instance()->setEnableTts(enabled);
    if (!m_speechManager) {
        QMessageBox::warning(this, QStringLiteral("错误"), QStringLiteral("语音管理器未初始化"));
        return;
    }
    m_speechManager->setEnabled(enabled);
}
