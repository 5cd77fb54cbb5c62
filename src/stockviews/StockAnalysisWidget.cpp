// Construction of the stock page and the controls around its loop.

#include "stockviews/StockAnalysisWidget.h"

#include "accounts/AuthManager.h"
#include "desktop/GlobalHotkey.h"
#include "linkage/PlatformOperations.h"
#include "linkage/ProcessUtils.h"
#include "linkage/StockCodeSender.h"
#include "linkage/StockHelperDialog.h"
#include "linkage/TradingSoftware.h"
#include "news/SpeechManager.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/DynamicAnalysisDialog.h"
#include "stockviews/ElidingLabel.h"
#include "stockviews/LimitUpPopup.h"
#include "stockviews/NameLabel.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockBlacklist.h"
#include "stockviews/StockPageRules.h"
#include "stockviews/StockPortals.h"
#include "stockviews/ThemeStocksDialog.h"
#include "stockviews/ValueLabel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QNetworkProxy>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalBlocker>
#include <QTimer>

#include <utility>

using TradingSoftware::tdx;
using TradingSoftware::ths;

namespace {

constexpr int TickMs = 1000;
constexpr int PopupHideMs = 500;
constexpr int PathRole = Qt::UserRole + 1; // of a copy's executable; the process id is the item's data
const QString searchScheme = QStringLiteral("search:");

} // namespace

StockAnalysisWidget::Surroundings::Surroundings() = default;
StockAnalysisWidget::Surroundings::Surroundings(Surroundings &&) noexcept = default;
StockAnalysisWidget::Surroundings &
StockAnalysisWidget::Surroundings::operator=(Surroundings &&) noexcept = default;
StockAnalysisWidget::Surroundings::~Surroundings() = default;

StockAnalysisWidget::Surroundings StockAnalysisWidget::Surroundings::ofTheSystem()
{
    Surroundings system;
    system.reading = PlatformOperations::forReading();
    system.sending = PlatformOperations::forSending();
    system.clock = [] { return QDateTime::currentDateTime(); };
    return system;
}

StockAnalysisWidget::StockAnalysisWidget(QWidget *parent)
    : StockAnalysisWidget(Surroundings::ofTheSystem(), parent)
{}

StockAnalysisWidget::StockAnalysisWidget(Surroundings surroundings, QWidget *parent)
    : QWidget(parent)
    , m_surroundings(std::move(surroundings))
    , m_ui(std::make_unique<StockAnalysisUi>())
    , m_apiClient(new StockApiClient(this))
    , m_processUtils(new ProcessUtils(*m_surroundings.reading, this))
    , m_codeSender(new StockCodeSender(*m_surroundings.sending, this))
    , m_refreshTimer(new QTimer(this))
    , m_popupHideTimer(new QTimer(this))
    , m_themeHotkey(new GlobalHotkey(this))
    , m_analysisHotkey(new GlobalHotkey(this))
    , m_limitUpPopup(new LimitUpPopup(this))
{
    m_ui->setupUi(this);
    m_refreshTimer->setInterval(TickMs);
    m_popupHideTimer->setSingleShot(true);
    m_popupHideTimer->setInterval(PopupHideMs);

    readState();
    m_ui->linkageComboBox->setCurrentIndex(m_linkageMode);
    showIndicator(false);
    setupBlacklist();
    setupConnections();
    refreshTdxInstances();
    refreshThsInstances();
    applySkin();
    reloadSettings();
    updatePortalToolTips();
}

StockAnalysisWidget::~StockAnalysisWidget()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setStockAutoRefresh(m_autoRefreshEnabled);
    settings->setStockRefreshInterval(m_refreshInterval);
    settings->setCurrentSoftware(m_currentSoftware);
    settings->setStockLinkageMode(m_linkageMode);
    settings->sync();
    unregisterHotkeys();
    // These work on the surroundings, which go ahead of the children.
    delete m_codeSender;
    delete m_processUtils;
}

void StockAnalysisWidget::connectClient()
{
    connect(m_apiClient, &StockApiClient::stockInfoReceived, this, &StockAnalysisWidget::onStockInfoReceived);
    connect(m_apiClient, &StockApiClient::limitStatsReceived, this,
            &StockAnalysisWidget::onLimitStatsReceived);
    connect(m_apiClient, &StockApiClient::comprehensiveInfoReceived, this,
            &StockAnalysisWidget::onComprehensiveInfoReceived);
    connect(m_apiClient, &StockApiClient::limitUpDetailInfoReceived, this,
            &StockAnalysisWidget::onLimitUpDetailInfoReceived);
    connect(m_apiClient, &StockApiClient::dynamicAnalysisReceived, this,
            &StockAnalysisWidget::onDynamicAnalysisReceived);
    connect(m_apiClient, &StockApiClient::themeStocksReceived, this,
            &StockAnalysisWidget::onThemeStocksReceived);
    connect(m_apiClient, &StockApiClient::queryError, this,
            QOverload<const QString &, const QString &>::of(&StockAnalysisWidget::onQueryError));
    connectBlacklistClient();
}

void StockAnalysisWidget::useConfiguredService()
{
    const bool loadingOffset = static_cast<bool>(m_configReceived);
    // What the old one has under way is about a service that is no longer meant.
    dropConfigConnections();
    delete m_apiClient;
    m_apiClient = new StockApiClient(this);
    m_blacklist->setClient(m_apiClient);
    connectClient();
    if (loadingOffset)
        loadOffset();
}

void StockAnalysisWidget::setupConnections()
{
    connect(m_refreshTimer, &QTimer::timeout, this,
            QOverload<>::of(&StockAnalysisWidget::onStockCodeChanged));
    connect(m_popupHideTimer, &QTimer::timeout, m_limitUpPopup, &LimitUpPopup::hide);

    connectClient();

    connect(m_ui->themeButton, &QPushButton::clicked, this, &StockAnalysisWidget::onThemeButtonClicked);
    connect(m_ui->settingsButton, &QPushButton::clicked, this, &StockAnalysisWidget::onSettingsButtonClicked);
    connect(m_ui->currentSoftwareButton, &QPushButton::clicked, this,
            &StockAnalysisWidget::onCurrentSoftwareButtonClicked);
    connect(m_ui->softwareSwitchButton, &QPushButton::clicked, this,
            &StockAnalysisWidget::onSoftwareSwitchButtonClicked);
    connect(m_ui->compactModeButton, &QPushButton::clicked, this, &StockAnalysisWidget::onCompactModeToggled);
    connect(m_ui->searchStockButton, &QPushButton::clicked, this,
            &StockAnalysisWidget::onSearchStockButtonClicked);
    connect(m_ui->autoRefreshCheckBox, &QCheckBox::toggled, this, &StockAnalysisWidget::onAutoRefreshToggled);
    connect(m_ui->linkageComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &StockAnalysisWidget::onLinkageComboBoxChanged);
    connect(m_ui->tdxInstanceComboBox, QOverload<int>::of(&QComboBox::activated), this,
            &StockAnalysisWidget::onTdxInstanceChanged);
    connect(m_ui->thsInstanceComboBox, QOverload<int>::of(&QComboBox::activated), this,
            &StockAnalysisWidget::onThsInstanceChanged);
    connect(m_ui->companyNameLabel, &QLabel::linkActivated, this,
            &StockAnalysisWidget::onStockNameLinkClicked);
    m_ui->recentLimitUpValueLabel->installEventFilter(this);
    m_ui->companyNameLabel->installEventFilter(this);

    // A hot key does what its button does.
    connect(m_themeHotkey, &GlobalHotkey::activated, m_ui->themeButton, &QPushButton::click);
    connect(m_analysisHotkey, &GlobalHotkey::activated, m_ui->searchStockButton, &QPushButton::click);

    const auto portal = [this](const char *name) {
        return m_ui->portalButtons.value(QString::fromLatin1(name));
    };
    connect(portal("clsButton"), &QPushButton::clicked, this, &StockAnalysisWidget::onClsButtonClicked);
    connect(portal("lhbButton"), &QPushButton::clicked, this, &StockAnalysisWidget::onLhbButtonClicked);
    connect(portal("eastmoneyButton"), &QPushButton::clicked, this,
            &StockAnalysisWidget::onEastmoneyButtonClicked);
    connect(portal("taogubaButton"), &QPushButton::clicked, this,
            &StockAnalysisWidget::onTaogubaButtonClicked);
    connect(portal("jiucaiButton"), &QPushButton::clicked, this, &StockAnalysisWidget::onJiucaiButtonClicked);
    connect(portal("aigupiaoButton"), &QPushButton::clicked, this,
            &StockAnalysisWidget::onAigupiaoButtonClicked);
    connect(portal("sinaButton"), &QPushButton::clicked, this, &StockAnalysisWidget::onSinaButtonClicked);
    connect(portal("xueqiuButton"), &QPushButton::clicked, this, &StockAnalysisWidget::onXueqiuButtonClicked);
}

void StockAnalysisWidget::readState()
{
    const ConfigManager *settings = ConfigManager::instance();
    m_autoRefreshEnabled = settings->getStockAutoRefresh();
    m_refreshInterval = settings->getStockRefreshInterval();
    m_currentSoftware = settings->getCurrentSoftware();
    m_linkageMode = settings->getStockLinkageMode();
    showSoftware();
}

void StockAnalysisWidget::setAuthManager(AuthManager *authManager)
{
    if (m_authManager)
        disconnect(m_authManager, nullptr, this, nullptr);
    m_authManager = authManager;
    if (authManager != nullptr)
        connect(authManager, &AuthManager::authStatusChanged, this, &StockAnalysisWidget::onUserChanged);
    onUserChanged();
}

void StockAnalysisWidget::setSpeechManager(SpeechManager *speechManager)
{
    m_speechManager = speechManager;
}

void StockAnalysisWidget::reloadSettings()
{
    const ConfigManager *settings = ConfigManager::instance();
    StockAnalysisUi::FontSizes sizes;
    sizes.name = settings->getStockCodeNameFontSize();
    sizes.basic = settings->getBasicInfoFontSize();
    sizes.history = settings->getHistoryStatsFontSize();
    sizes.opening = settings->getOpeningMarketFontSize();
    m_ui->setFontSizes(sizes);
    showAgain();
    if (m_dynamicAnalysisDialog)
        m_dynamicAnalysisDialog->reloadSettings();
    // The concept panel takes its look anew with every answer.
    if (!m_currentStockCode.isEmpty())
        followWithThemeDialog(m_currentStockCode);
    if (m_isMonitoring) {
        unregisterHotkeys();
        registerHotkeys();
    }
}

void StockAnalysisWidget::showStatus(const QString &text, const QString &style)
{
    if (m_ui->statusLabel->styleSheet() != style)
        m_ui->statusLabel->setStyleSheet(style);
    m_ui->statusLabel->setText(text);
}

void StockAnalysisWidget::onLinkageComboBoxChanged(int index)
{
    m_linkageMode = index;
    showStatus(QStringLiteral("联动模式已切换为: ") + StockPageRules::linkageModeText(index));
    ConfigManager::instance()->setStockLinkageMode(index);
    ConfigManager::instance()->sync();
}

void StockAnalysisWidget::showSoftware()
{
    if (!StockPageRules::isKnownSoftware(m_currentSoftware))
        m_currentSoftware = tdx;
    m_ui->currentSoftwareButton->setText(StockPageRules::softwareWord(m_currentSoftware));
    m_ui->softwareSwitchButton->setText(StockPageRules::switchButtonText(m_currentSoftware));
    const QString toolTip = StockPageRules::switchButtonToolTip(m_currentSoftware);
    m_ui->softwareSwitchButton->setToolTip(toolTip);
    m_ui->softwareSwitchButton->setAccessibleName(toolTip);
}

QString StockAnalysisWidget::versionOf(const QString &software) const
{
    const ConfigManager *settings = ConfigManager::instance();
    return software == tdx ? settings->getTdxVersion() : settings->getThsVersion();
}

bool StockAnalysisWidget::switchSoftware()
{
    const QString other = StockPageRules::otherSoftware(m_currentSoftware);
    if (versionOf(other).isEmpty()) {
        QMessageBox::warning(
            this, QStringLiteral("无法切换"),
            QStringLiteral("%1 尚未测试通过。\n\n请先在设置中测试 %1 版本，测试通过后才能切换。")
                .arg(StockPageRules::softwareWord(other)));
        return false;
    }
    m_currentSoftware = other;
    showSoftware();
    ConfigManager::instance()->setCurrentSoftware(m_currentSoftware);
    ConfigManager::instance()->sync();
    refreshInstancesAfterChange();
    showStatus(switchedText(), successStyle());
    return true;
}

QString StockAnalysisWidget::switchedText() const
{
    return QStringLiteral("已切换到 %1 (版本: %2)")
        .arg(StockPageRules::softwareWord(m_currentSoftware), versionOf(m_currentSoftware));
}

void StockAnalysisWidget::onCurrentSoftwareButtonClicked()
{
    switchSoftware();
}

void StockAnalysisWidget::onSoftwareSwitchButtonClicked()
{
    if (!switchSoftware())
        return;
    if (m_autoRefreshEnabled && m_isMonitoring)
        return;
    if (m_ui->autoRefreshCheckBox->isChecked())
        startAutoRefresh();
    else
        m_ui->autoRefreshCheckBox->setChecked(true);
    showStatus(switchedText() + QStringLiteral(" 并开启自动刷新"), successStyle());
}

void StockAnalysisWidget::onSettingsButtonClicked()
{
    onAutoRefreshToggled(false);
    const QPointer<StockAnalysisWidget> self(this);
    auto *dialog = new StockHelperDialog(*m_surroundings.reading, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->exec();
    // The program may have ended while the dialog was open.
    if (!self)
        return;
    const QString before = m_currentSoftware;
    readState();
    if (m_currentSoftware != before)
        refreshInstancesAfterChange();
    showStatus(QStringLiteral("设置已更新"));
}

// --- copies of the trading programs ------------------------------------------------------------------------

void StockAnalysisWidget::refreshTdxInstances()
{
    refreshInstances(tdx);
}

void StockAnalysisWidget::refreshThsInstances()
{
    refreshInstances(ths);
}

void StockAnalysisWidget::refreshInstances(const QString &software)
{
    showInstances(software, instancesOf(software), 0);
}

void StockAnalysisWidget::refreshInstancesAfterChange()
{
    if (m_currentSoftware == tdx) {
        refreshTdxInstances();
        m_ui->thsInstanceComboBox->hide();
    } else {
        refreshThsInstances();
        m_ui->tdxInstanceComboBox->hide();
    }
}

QList<ProcessInstance> StockAnalysisWidget::instancesOf(const QString &software) const
{
    return software == tdx ? m_processUtils->listTdxInstances() : m_processUtils->listThsInstances();
}

void StockAnalysisWidget::showInstances(const QString &software, const QList<ProcessInstance> &instances,
                                        int chosen)
{
    QComboBox *box = software == tdx ? m_ui->tdxInstanceComboBox : m_ui->thsInstanceComboBox;
    const QSignalBlocker blocker(box);
    box->clear();
    if (instances.isEmpty()) {
        box->hide();
        box->addItem(QStringLiteral("未找到%1进程").arg(StockPageRules::softwareWord(software)), 0U);
        return;
    }
    for (const ProcessInstance &instance : instances) {
        box->addItem(StockPageRules::instanceText(instance, software), instance.pid);
        box->setItemData(box->count() - 1, instance.exePath, PathRole);
    }
    box->setCurrentIndex(chosen);
    (software == tdx ? m_processUtils->tdxPid : m_processUtils->thsPid) = instances.at(chosen).pid;
    box->setVisible(instances.size() > 1);
}

void StockAnalysisWidget::followRestartedInstance()
{
    const bool isTdx = m_currentSoftware == tdx;
    const QComboBox *box = isTdx ? m_ui->tdxInstanceComboBox : m_ui->thsInstanceComboBox;
    ProcessInstance chosen;
    chosen.pid = isTdx ? m_processUtils->tdxPid : m_processUtils->thsPid;
    if (chosen.pid == 0)
        return; // the first copy counts, whichever it is
    chosen.exePath = box->itemData(box->findData(chosen.pid), PathRole).toString();
    if (m_processUtils->isRunning(chosen) || !m_restartedCopySearch.isDueAfterFailedRead())
        return;
    QList<quint32> listed;
    for (int i = 0; i < box->count(); ++i)
        listed.append(box->itemData(i).toUInt());
    const QList<ProcessInstance> instances = instancesOf(m_currentSoftware);
    const int again = RestartedCopySearch::placeOf(chosen, listed, instances);
    if (again >= 0)
        showInstances(m_currentSoftware, instances, again);
}

void StockAnalysisWidget::onTdxInstanceChanged(int index)
{
    m_processUtils->tdxPid = m_ui->tdxInstanceComboBox->itemData(index).toUInt();
    showStatus(QStringLiteral("已切换通达信实例: ") + m_ui->tdxInstanceComboBox->itemText(index));
}

void StockAnalysisWidget::onThsInstanceChanged(int index)
{
    m_processUtils->thsPid = m_ui->thsInstanceComboBox->itemData(index).toUInt();
    showStatus(QStringLiteral("已切换同花顺实例: ") + m_ui->thsInstanceComboBox->itemText(index));
}

// --- portals and the news search ---------------------------------------------------------------------------

void StockAnalysisWidget::onStockNameLinkClicked(const QString &link)
{
    // The end of a drag of the compact window by its name is no click.
    if (link.startsWith(searchScheme) && !m_wasDragged)
        emit searchStockNameRequested(link.mid(searchScheme.size()));
}

void StockAnalysisWidget::openPortal(const QString &name)
{
    const QUrl page = StockPortals::pageOf(name, m_currentStockCode);
    if (!page.isValid())
        return;
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    const auto restore = qScopeGuard([&before] { QNetworkProxy::setApplicationProxy(before); });
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    QDesktopServices::openUrl(page);
}

void StockAnalysisWidget::updatePortalToolTips()
{
    for (const StockPortals::Portal &portal : StockPortals::all())
        m_ui->portalButtons.value(portal.buttonName)
            ->setToolTip(StockPortals::toolTip(portal, m_currentStockCode));
}

void StockAnalysisWidget::onClsButtonClicked()
{
    openPortal(QStringLiteral("财联社"));
}

void StockAnalysisWidget::onLhbButtonClicked()
{
    openPortal(QStringLiteral("龙虎榜"));
}

void StockAnalysisWidget::onEastmoneyButtonClicked()
{
    openPortal(QStringLiteral("东财股吧"));
}

void StockAnalysisWidget::onTaogubaButtonClicked()
{
    openPortal(QStringLiteral("淘股吧"));
}

void StockAnalysisWidget::onJiucaiButtonClicked()
{
    // Not what its button says; meant.
    openPortal(QStringLiteral("韭菜公社"));
}

void StockAnalysisWidget::onAigupiaoButtonClicked()
{
    openPortal(QStringLiteral("爱股票"));
}

void StockAnalysisWidget::onSinaButtonClicked()
{
    openPortal(QStringLiteral("新浪财经"));
}

void StockAnalysisWidget::onXueqiuButtonClicked()
{
    openPortal(QStringLiteral("雪球"));
}
