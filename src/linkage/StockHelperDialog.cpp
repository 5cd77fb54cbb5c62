#include "linkage/StockHelperDialog.h"

#include "linkage/PlatformOperations.h"
#include "linkage/ProcessUtils.h"
#include "linkage/TradingSoftware.h"
#include "newsclient/ServiceWords.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockclient/StockApiConfig.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int PauseBetweenTrialsMs = 100;
constexpr int EqualErrorsMs = 1000;
const QString errorTitle = QStringLiteral("错误");
const QString failedTitle = QStringLiteral("测试失败");
const QString succeededTitle = QStringLiteral("测试成功");
const QString notRunningTitle = QStringLiteral("软件未运行");

} // namespace

StockHelperDialog::StockHelperDialog(PlatformOperations &operations, QWidget *parent)
    : QDialog(parent), m_operations(operations)
{
    m_tdx.software = TradingSoftware::tdx;
    m_tdx.word = TradingSoftware::tdxWord;
    m_ths.software = TradingSoftware::ths;
    m_ths.word = TradingSoftware::thsWord;
    setWindowTitle(QStringLiteral("股票软件联动设置"));
    setWindowFlags((windowFlags() & ~Qt::WindowContextHelpButtonHint) | Qt::WindowStaysOnTopHint);
    resize(450, 350);
    buildForm();

    StockApiConfig::instance()->refreshFromSettings();
    m_apiClient = new StockApiClient(this);
    connect(m_apiClient, &StockApiClient::softwareListReceived, this,
            &StockHelperDialog::onSoftwareListReceived);
    connect(m_apiClient, &StockApiClient::stockHelperConfigReceived, this,
            &StockHelperDialog::onConfigReceived);
    connect(m_apiClient, &StockApiClient::stockHelperConfigSaved, this, &StockHelperDialog::onConfigSaved);
    connect(m_apiClient, &StockApiClient::queryError, this,
            [this](const QString &error) { onQueryError(error); });
}

StockHelperDialog::~StockHelperDialog() = default;

void StockHelperDialog::buildForm()
{
    auto *versionsGroup = new QGroupBox(QStringLiteral("软件配置"), this);
    auto *versions = new QGridLayout(versionsGroup);
    int row = 0;
    for (Side *side : {&m_tdx, &m_ths}) {
        auto *label = new QLabel(side->word + QLatin1Char(':'), versionsGroup);
        side->comboBox = new QComboBox(versionsGroup);
        side->comboBox->setObjectName(side->software + QStringLiteral("ComboBox"));
        side->comboBox->setPlaceholderText(QStringLiteral("请选择偏移地址"));
        side->comboBox->setAccessibleName(side->word);
        side->testButton = new QPushButton(QStringLiteral("测试"), versionsGroup);
        side->testButton->setObjectName(side->software + QStringLiteral("TestButton"));
        side->testButton->setAccessibleName(QStringLiteral("测试") + side->word);
        label->setBuddy(side->comboBox);
        versions->addWidget(label, row, 0);
        versions->addWidget(side->comboBox, row, 1);
        versions->addWidget(side->testButton, row, 2);
        ++row;
    }
    versions->setColumnStretch(1, 1);

    auto *currentGroup = new QGroupBox(QStringLiteral("当前联动软件"), this);
    auto *current = new QVBoxLayout(currentGroup);
    auto *currentLabel = new QLabel(QStringLiteral("选择当前的联动软件:"), currentGroup);
    m_currentSoftwareComboBox = new QComboBox(currentGroup);
    m_currentSoftwareComboBox->setObjectName(QStringLiteral("currentSoftwareComboBox"));
    m_currentSoftwareComboBox->addItems({m_tdx.word, m_ths.word});
    currentLabel->setBuddy(m_currentSoftwareComboBox);
    m_currentVersionLabel = new QLabel(currentGroup);
    m_currentVersionLabel->setObjectName(QStringLiteral("currentVersionLabel"));
    m_currentVersionLabel->setTextFormat(Qt::PlainText);
    current->addWidget(currentLabel);
    current->addWidget(m_currentSoftwareComboBox);
    current->addWidget(m_currentVersionLabel);
    showVersion(QString());

    m_saveButton = new QPushButton(QStringLiteral("保存"), this);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setDefault(true);
    m_closeButton = new QPushButton(QStringLiteral("关闭"), this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_tdx.testButton->setAutoDefault(false);
    m_ths.testButton->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_saveButton);
    buttons->addWidget(m_closeButton);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(versionsGroup);
    layout->addWidget(currentGroup);
    layout->addStretch();
    layout->addLayout(buttons);

    connect(m_tdx.testButton, &QPushButton::clicked, this, &StockHelperDialog::onTdxTestClicked);
    connect(m_ths.testButton, &QPushButton::clicked, this, &StockHelperDialog::onThsTestClicked);
    connect(m_saveButton, &QPushButton::clicked, this, &StockHelperDialog::onSaveClicked);
    connect(m_closeButton, &QPushButton::clicked, this, &StockHelperDialog::onCloseClicked);
    connect(m_currentSoftwareComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &StockHelperDialog::onCurrentSoftwareChanged);
    connect(m_tdx.comboBox, &QComboBox::currentTextChanged, this, &StockHelperDialog::onTdxVersionChanged);
    connect(m_ths.comboBox, &QComboBox::currentTextChanged, this, &StockHelperDialog::onThsVersionChanged);
}

void StockHelperDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_opened)
        return;
    m_opened = true;
    // From the event loop, so that a warning comes up over the dialog and not ahead of it.
    QTimer::singleShot(0, this, &StockHelperDialog::load);
}

void StockHelperDialog::load()
{
    StockApiConfig *config = StockApiConfig::instance();
    config->refreshFromSettings();
    if (config->isValid()) {
        m_apiClient->getStockHelperConfig();
    } else {
        const ConfigManager *settings = ConfigManager::instance();
        m_tdx.version = settings->getTdxVersion();
        m_ths.version = settings->getThsVersion();
        m_currentSoftware = settings->getCurrentSoftware();
        m_tdx.tested = !m_tdx.version.isEmpty();
        m_ths.tested = !m_ths.version.isEmpty();
    }
    if (!config->isValid()) {
        QMessageBox::warning(this, QStringLiteral("需要登录"),
                             QStringLiteral("请先登录云雀资讯\n\n股票分析功能需要有效的登录状态。\n"
                                            "请关闭此对话框，在主程序中登录后再打开。"));
        return;
    }
    m_apiClient->getSoftwareList();
}

void StockHelperDialog::onConfigReceived(const QJsonObject &config)
{
    m_currentSoftware = config.value(QStringLiteral("current_software")).toString();
    m_tdx.version = config.value(QStringLiteral("tdx_version")).toString();
    m_ths.version = config.value(QStringLiteral("ths_version")).toString();
    // A version that was confirmed stays so where the service has none.
    m_tdx.tested = m_tdx.tested || !m_tdx.version.isEmpty();
    m_ths.tested = m_ths.tested || !m_ths.version.isEmpty();
    // Choosing the program shows the version of the settings; what the service says comes last.
    if (m_currentSoftware == m_tdx.software) {
        m_currentSoftwareComboBox->setCurrentIndex(0);
        showVersion(m_tdx.version);
    } else if (m_currentSoftware == m_ths.software) {
        m_currentSoftwareComboBox->setCurrentIndex(1);
        showVersion(m_ths.version);
    }
    // The list may have come first.
    for (const Side *side : {&m_tdx, &m_ths}) {
        if (side->comboBox->currentIndex() < 0)
            selectConfirmed(*side);
    }
}

void StockHelperDialog::onSoftwareListReceived(const SoftwareList &softwareList)
{
    m_tdx.versions = softwareList.tdx;
    m_ths.versions = softwareList.ths;
    for (const Side *side : {&m_tdx, &m_ths})
        side->comboBox->clear();
    for (const Side *side : {&m_tdx, &m_ths}) {
        for (const SoftwareVersion &version : side->versions)
            side->comboBox->addItem(version.version);
        selectConfirmed(*side);
    }
}

void StockHelperDialog::selectConfirmed(const Side &side)
{
    if (side.version.isEmpty())
        return;
    const int index = side.comboBox->findText(side.version, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0)
        side.comboBox->setCurrentIndex(index);
}

void StockHelperDialog::onConfigSaved(bool success)
{
    if (!success)
        storeLocally();
}

void StockHelperDialog::onQueryError(const QString &error)
{
    // Shared by all such dialogs: one failure is reported by several requests.
    static QString lastError;
    static QElapsedTimer sinceLastError;
    if (sinceLastError.isValid() && error == lastError && sinceLastError.elapsed() <= EqualErrorsMs)
        return;
    lastError = error;
    sinceLastError.start();
    QMessageBox::warning(this, errorTitle, ServiceWords::asSent(QStringLiteral("操作失败: ") + error));
}

void StockHelperDialog::showVersion(const QString &version)
{
    if (version.isEmpty()) {
        m_currentVersionLabel->setText(QStringLiteral("当前版本: 未测试"));
        m_currentVersionLabel->setStyleSheet(QStringLiteral("color: #666; font-style: italic;"));
    } else {
        m_currentVersionLabel->setText(QStringLiteral("当前版本: ") + version);
        m_currentVersionLabel->setStyleSheet(QStringLiteral("color: #4CAF50; font-weight: bold;"));
    }
}

void StockHelperDialog::onCurrentSoftwareChanged(int index)
{
    ConfigManager *settings = ConfigManager::instance();
    if (index == 0) {
        m_currentSoftware = m_tdx.software;
        showVersion(settings->getTdxVersion());
    } else if (index == 1) {
        m_currentSoftware = m_ths.software;
        showVersion(settings->getThsVersion());
    }
    settings->setCurrentSoftware(m_currentSoftware);
    settings->sync();
}

void StockHelperDialog::onTdxVersionChanged()
{
    if (m_tdx.comboBox->currentText().isEmpty())
        m_tdx.tested = false;
}

void StockHelperDialog::onThsVersionChanged()
{
    if (m_ths.comboBox->currentText().isEmpty())
        m_ths.tested = false;
}

void StockHelperDialog::onTdxTestClicked()
{
    testChosenVersion(Program::Tdx);
}

void StockHelperDialog::onThsTestClicked()
{
    testChosenVersion(Program::Ths);
}

void StockHelperDialog::testChosenVersion(Program program)
{
    const Side &side = sideOf(program);
    const int index = side.comboBox->currentIndex();
    if (index < 0 && side.versions.isEmpty()) {
        QMessageBox::critical(this, errorTitle, QStringLiteral("没有可用的%1版本").arg(side.word));
        return;
    }
    if (index >= side.versions.size()) {
        QMessageBox::critical(this, errorTitle, QStringLiteral("选中的版本索引无效"));
        return;
    }
    if (index >= 0) {
        TestResult result = NotTested;
        if (testVersion(program, index, result))
            return;
        if (result == NotRunning) {
            QMessageBox::warning(
                this, notRunningTitle,
                QStringLiteral("请确保%1软件正在运行，并进入股票分时图界面。").arg(side.word));
            return;
        }
        const QString question =
            QStringLiteral("当前版本 [%1] 测试失败（版本不匹配）。\n\n是否自动测试其他版本？")
                .arg(side.versions.at(index).version);
        if (QMessageBox::question(this, failedTitle, ServiceWords::asSent(question),
                                  QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes)
            return;
    }
    autoTest(program);
}

bool StockHelperDialog::readCode(Program program, const QString &offset, QString &code, TestResult &result)
{
    ProcessUtils processes(m_operations);
    const bool isTdx = program == Program::Tdx;
    // An offset that is no number fails at the reading, as one of a wrong version does.
    if (isTdx)
        processes.setTdxOffset(offset);
    else
        processes.setThsOffset(offset);
    if (!(isTdx ? processes.attachTdx(0) : processes.attachThs(0))) {
        result = NotRunning;
        return false;
    }
    if (!(isTdx ? processes.readTdxCode(code) : processes.readThsCode(code))) {
        result = WrongVersion;
        return false;
    }
    return true;
}

bool StockHelperDialog::testVersion(Program program, int index, TestResult &result)
{
    result = NotTested;
    Side &side = sideOf(program);
    if (index < 0 || index >= side.versions.size())
        return false;
    const SoftwareVersion version = side.versions.at(index);
    side.comboBox->setCurrentIndex(index);
    QString code;
    if (!readCode(program, version.offsetAddress, code, result)) {
        side.tested = false;
        return false;
    }
    QMessageBox::information(this, succeededTitle,
                             QStringLiteral("成功读取%1股票代码: %2").arg(side.word, code));
    side.tested = true;
    side.version = version.version;
    m_currentSoftware = side.software;
    m_currentSoftwareComboBox->setCurrentIndex(program == Program::Tdx ? 0 : 1);
    showVersion(side.version);
    storeLocally();
    saveConfiguration();
    return true;
}

void StockHelperDialog::autoTest(Program program)
{
    const Side &side = sideOf(program);
    if (side.versions.isEmpty()) {
        QMessageBox::critical(this, errorTitle, QStringLiteral("%1版本列表为空").arg(side.word));
        return;
    }
    QMessageBox progress(this);
    progress.setWindowTitle(QStringLiteral("自动测试中"));
    progress.setStandardButtons(QMessageBox::NoButton);
    progress.setTextFormat(Qt::PlainText);
    progress.setText(QStringLiteral("正在自动测试 %1 版本...\n\n请稍候...").arg(side.word));
    progress.setModal(true);
    const int count = side.versions.size();
    for (int index = 0; index < count; ++index) {
        const QString version = side.versions.at(index).version;
        progress.setText(QStringLiteral("正在自动测试 %1 版本...\n\n当前: [%2]\n进度: %3/%4")
                             .arg(side.word, version, QString::number(index + 1), QString::number(count)));
        progress.show();
        QCoreApplication::processEvents();
        TestResult result = NotTested;
        if (testVersion(program, index, result)) {
            progress.hide();
            // The second message in a row, after that of the test itself; both are meant.
            QMessageBox::information(
                this, succeededTitle,
                ServiceWords::asSent(
                    QStringLiteral("找到匹配的版本：\n\n[%1]\n\n配置已自动保存。").arg(version)));
            return;
        }
        if (result == NotRunning) {
            progress.hide();
            QMessageBox::warning(
                this, notRunningTitle,
                QStringLiteral("检测到 %1 软件未运行或未进入股票分时图界面。\n\n请确保：\n"
                               "1. %1 软件正在运行\n2. 已进入股票分时图界面\n\n然后再重新测试。")
                    .arg(side.word));
            return;
        }
        QThread::msleep(PauseBetweenTrialsMs);
    }
    progress.hide();
    QMessageBox::warning(this, failedTitle,
                         QStringLiteral("已测试所有 %1 个 %2 版本，均未成功。\n\n可能原因：\n"
                                        "1. 您的 %2 版本不在支持列表中\n2. 软件界面状态不正确\n\n建议：\n"
                                        "- 确认已进入股票分时图界面\n- 尝试更新到最新版本的 %2")
                             .arg(QString::number(count), side.word));
}

QString StockHelperDialog::offsetOf(const Side &side)
{
    if (!side.version.isEmpty()) {
        for (const SoftwareVersion &version : side.versions) {
            if (version.version == side.version)
                return version.offsetAddress;
        }
    }
    return {};
}

void StockHelperDialog::storeLocally()
{
    ConfigManager *settings = ConfigManager::instance();
    settings->setTdxVersion(m_tdx.version);
    settings->setThsVersion(m_ths.version);
    settings->setCurrentSoftware(m_currentSoftware);
    settings->sync();
}

void StockHelperDialog::saveConfiguration()
{
    StockApiConfig *config = StockApiConfig::instance();
    if (!config->isValid()) {
        storeLocally();
        return;
    }
    const QString tdxOffset = offsetOf(m_tdx);
    const QString thsOffset = offsetOf(m_ths);
    config->setTdxOffset(tdxOffset);
    config->setThsOffset(thsOffset);
    m_apiClient->saveStockHelperConfig(m_currentSoftware, m_tdx.version, m_ths.version, tdxOffset, thsOffset);
}

void StockHelperDialog::onSaveClicked()
{
    if (!m_tdx.tested && !m_ths.tested) {
        QMessageBox::warning(this, QStringLiteral("保存失败"), QStringLiteral("请先测试至少一个软件版本"));
        return;
    }
    saveConfiguration();
    QMessageBox::information(this, QStringLiteral("保存成功"), QStringLiteral("配置已保存到服务器"));
    accept();
}

void StockHelperDialog::onCloseClicked()
{
    close();
}
