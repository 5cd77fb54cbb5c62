#include "settings/ConfigDialog.h"

#include "accounts/DeviceIdentity.h"
#include "settings/ConfigDialogRules.h"
#include "settings/ConfigManager.h"
#include "settings/InputField.h"
#include "settings/ProgramVersion.h"
#include "settings/ServiceProbe.h"
#include "settings/SettingsTable.h"
#include "settings/SkinLightness.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QNetworkRequest>
#include <QPixmap>
#include <QProxyStyle>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace {

const QString pixels = QStringLiteral(" 像素");
const QString seconds = QStringLiteral(" 秒");
const QString backgroundStyle = QStringLiteral("background-color: %1;");
const QString fontColorStyle = QStringLiteral("background-color: %1; color: white;");
const QString configurationFault = QStringLiteral("配置错误");
const QString testConnectionCaption = QStringLiteral("测试连接");
const QString testApiKeyCaption = QStringLiteral("测试API Key");
constexpr int swatchSize = 20;
constexpr int previewWidth = 80;

QLabel *note(const QString &text)
{
    auto *label = new QLabel(text);
    label->setStyleSheet(QStringLiteral("QLabel { color: gray; font-size: 12px; }"));
    label->setWordWrap(true);
    return label;
}

QIcon swatch(const QString &color)
{
    QPixmap pixmap(swatchSize, swatchSize);
    pixmap.fill(QColor(color));
    return QIcon(pixmap);
}

QFormLayout *addGroup(QVBoxLayout *page, const QString &title)
{
    auto *group = new QGroupBox(title);
    page->addWidget(group);
    auto *form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setContentsMargins(9, 6, 9, 6);
    form->setVerticalSpacing(4);
    return form;
}

/// Fusion's tabs with less air beside their captions, so that six of them stand side by side.
class NarrowTabStyle final : public QProxyStyle
{
public:
    NarrowTabStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        constexpr int horizontalSpace = 12;
        return metric == PM_TabBarTabHSpace ? horizontalSpace
                                            : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

void narrowTabs(QTabBar *bar)
{
    // The dark skin's sheet has tabs of its own, which only a sheet can change.
    if (isDarkSkin(bar->palette())) {
        bar->setStyleSheet(QStringLiteral("QTabBar::tab { padding: 6px 5px; margin-right: 0px; }"));
        return;
    }
    auto *style = new NarrowTabStyle;
    style->setParent(bar);
    bar->setStyle(style);
}

/// Puts the fields of several forms on one edge.
void alignFields(const QList<QFormLayout *> &forms)
{
    QList<QWidget *> labels;
    int width = 0;
    for (const QFormLayout *form : forms) {
        for (int row = 0; row < form->rowCount(); ++row) {
            QLayoutItem *item = form->itemAt(row, QFormLayout::LabelRole);
            if (item == nullptr || item->widget() == nullptr)
                continue;
            labels.append(item->widget());
            width = std::max(width, item->widget()->sizeHint().width());
        }
    }
    for (QWidget *label : labels)
        label->setMinimumWidth(width);
}

/// Leaves the box on the item that it holds when there is none with this data.
void selectData(QComboBox *box, const QVariant &data)
{
    const int index = box->findData(data);
    if (index >= 0)
        box->setCurrentIndex(index);
}

/// The same by the item's text.
void selectText(QComboBox *box, const QString &text)
{
    const int index = box->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (index >= 0)
        box->setCurrentIndex(index);
}

/// What comes from outside is shown as it is, whatever marks of rich text it holds.
QString plain(const QString &text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

void translate(QColorDialog &dialog)
{
    const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
    for (QPushButton *button : buttons)
        button->setText(ConfigDialogRules::colorDialogCaption(button->text()));
    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    for (QLabel *label : labels)
        label->setText(ConfigDialogRules::colorDialogCaption(label->text()));
}

} // namespace

ConfigDialog::ConfigDialog(const AppConfig &config, QWidget *parent)
    : QDialog(parent)
    , m_tabs(new QTabWidget(this))
    , m_cardBgColor(SettingsTable::ThemeCardBgColor.onRead)
    , m_descColor(SettingsTable::ThemeDescColor.onRead)
    , m_bgColor(SettingsTable::ThemeBgColor.onRead)
    , m_nameColor(SettingsTable::ThemeNameColor.onRead)
{
    setWindowTitle(QStringLiteral("系统配置"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setModal(true);

    m_tabs->setObjectName(QStringLiteral("tabWidget"));
    narrowTabs(m_tabs->tabBar());
    m_tabs->addTab(buildFeaturesTab(), QStringLiteral("功能配置"));
    m_tabs->addTab(buildStockTab(), QStringLiteral("股票分析设置"));
    m_tabs->addTab(buildMarketTab(), QStringLiteral("行情统计设置"));
    m_tabs->addTab(buildConceptTab(), QStringLiteral("概念对话框设置"));
    m_tabs->addTab(buildServerTab(), QStringLiteral("服务器配置"));
    m_tabs->addTab(buildDeviceTab(), QStringLiteral("设备信息"));

    // The order in which the parts are made is the order of Tab.
    auto *reset = addButton(QStringLiteral("resetButton"), QStringLiteral("恢复默认"));
    auto *buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));
    QPushButton *ok = buttonBox->button(QDialogButtonBox::Ok);
    QPushButton *cancel = buttonBox->button(QDialogButtonBox::Cancel);
    ok->setText(QStringLiteral("确定"));
    ok->setDefault(true);
    cancel->setText(QStringLiteral("取消"));
    cancel->setAutoDefault(false);
    connect(buttonBox, &QDialogButtonBox::accepted, this, &ConfigDialog::accept);
    connect(buttonBox, &QDialogButtonBox::rejected, this, &ConfigDialog::reject);
    connect(reset, &QPushButton::clicked, this, &ConfigDialog::onResetToDefaultsClicked);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(reset);
    buttons->addStretch();
    buttons->addWidget(buttonBox);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addLayout(buttons);
    resize(500, 600);

    for (const Edited &edited : m_edited)
        edited.load();
    m_darkModeCheckBox->setChecked(config.darkMode);
    showDeviceInfo();
    findChild<QCheckBox *>(QStringLiteral("ttsCheckBox"))->setFocus();
}

ConfigDialog::~ConfigDialog() = default;

template <typename Getter, typename Setter, typename Field, typename Shown, typename Show>
void ConfigDialog::edit(Getter getter, Setter setter, Field field, Shown shown, Show show, OnReset onReset)
{
    Edited edited;
    edited.load = [getter, show] { show((ConfigManager::instance()->*getter)()); };
    edited.save = [setter, shown] { (ConfigManager::instance()->*setter)(shown()); };
    edited.read = [field, shown](AppConfig &config) { config.*field = shown(); };
    if (onReset == OnReset::Default)
        edited.reset = [field, show](const AppConfig &config) { show(config.*field); };
    m_edited.push_back(std::move(edited));
}

QWidget *ConfigDialog::buildFeaturesTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    layout->addLayout(form);

    const auto addFlag = [&](const char *name, const QString &text, auto getter, auto setter, auto field) {
        QCheckBox *box = addCheckBox(form, QLatin1String(name), text);
        edit(
            getter, setter, field, [box] { return box->isChecked(); },
            [box](bool on) { box->setChecked(on); });
        return box;
    };
    addFlag("ttsCheckBox", QStringLiteral("启用语音播报功能"), &ConfigManager::getEnableTts,
            &ConfigManager::setEnableTts, &AppConfig::enableTts);
    addFlag("speakStockCheckBox", QStringLiteral("语音播报 股票名称"), &ConfigManager::getEnableSpeakStock,
            &ConfigManager::setEnableSpeakStock, &AppConfig::enableSepakStock);
    addFlag("notificationCheckBox", QStringLiteral("启用系统通知"), &ConfigManager::getEnableNotification,
            &ConfigManager::setEnableNotification, &AppConfig::enableNotification);
    addFlag("soundCheckBox", QStringLiteral("启用提示音"), &ConfigManager::getEnableSound,
            &ConfigManager::setEnableSound, &AppConfig::enableSound);
    addFlag("autoStartCheckBox", QStringLiteral("开机自动启动"), &ConfigManager::getEnableAutoStart,
            &ConfigManager::setEnableAutoStart, &AppConfig::enableAutoStart);
    addFlag("rememberWindowStateCheckBox", QStringLiteral("记住窗口位置和大小"),
            &ConfigManager::getRememberWindowState, &ConfigManager::setRememberWindowState,
            &AppConfig::rememberWindowState);
    m_darkModeCheckBox = addFlag("darkModeCheckBox", QStringLiteral("深色模式"), &ConfigManager::getDarkMode,
                                 &ConfigManager::setDarkMode, &AppConfig::darkMode);
    addFlag("showNewsDetailsCheckBox", QStringLiteral("显示新闻详情"), &ConfigManager::getShowNewsDetails,
            &ConfigManager::setShowNewsDetails, &AppConfig::showNewsDetails);

    QSpinBox *interval = addSpinBox(form, QStringLiteral("refreshIntervalSpinBox"),
                                    QStringLiteral("刷新间隔:"), 10, 300, seconds);
    edit(
        &ConfigManager::getRefreshInterval, &ConfigManager::setRefreshInterval, &AppConfig::refreshInterval,
        [interval] { return interval->value(); }, [interval](int value) { interval->setValue(value); });

    auto *position = new QComboBox(page);
    position->setObjectName(QStringLiteral("notificationPositionComboBox"));
    position->setMaxVisibleItems(11);
    const struct
    {
        QString text;
        QString value;
    } positions[] = {
        {QStringLiteral("左上角"), QStringLiteral("top_left")},
        {QStringLiteral("上中"), QStringLiteral("top_center")},
        {QStringLiteral("右上角"), QStringLiteral("top_right")},
        {QStringLiteral("居中"), QStringLiteral("center")},
        {QStringLiteral("上1/5处"), QStringLiteral("one_fifth")},
        {QStringLiteral("上1/3处"), QStringLiteral("one_third")},
        {QStringLiteral("下1/3处"), QStringLiteral("bottom_one_third")},
        {QStringLiteral("下1/5处"), QStringLiteral("bottom_one_fifth")},
        {QStringLiteral("左下角"), QStringLiteral("bottom_left")},
        {QStringLiteral("下中"), QStringLiteral("bottom_center")},
        {QStringLiteral("右下角"), QStringLiteral("bottom_right")},
    };
    for (const auto &item : positions)
        position->addItem(item.text, item.value);
    form->addRow(QStringLiteral("通知显示位置:"), position);
    edit(
        &ConfigManager::getNotificationPosition, &ConfigManager::setNotificationPosition,
        &AppConfig::notificationPosition, [position] { return position->currentData().toString(); },
        [position](const QString &value) { selectData(position, value); });

    layout->addStretch();
    layout->addWidget(
        note(QStringLiteral("说明：\n• 系统通知：在系统托盘显示通知\n• 语音播报：使用系统TTS朗读新闻标题")));
    return page;
}

QWidget *ConfigDialog::buildStockTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    QFormLayout *colors = addGroup(layout, QStringLiteral("股票代码颜色设置"));
    const auto addColor = [&](const char *name, const QString &label, auto getter, auto setter, auto field) {
        QComboBox *box = addStockColorBox(colors, QLatin1String(name), label);
        edit(
            getter, setter, field, [box] { return box->currentText(); },
            [box](const QString &word) { selectText(box, word); });
        return box;
    };
    m_mainBoardColorComboBox = addColor("mainBoardColorComboBox", QStringLiteral("主板 (00和60开头):"),
                                        &ConfigManager::getMainBoardColor, &ConfigManager::setMainBoardColor,
                                        &AppConfig::mainBoardColor);
    m_gemColorComboBox =
        addColor("gemColorComboBox", QStringLiteral("创业板 (30开头):"), &ConfigManager::getGemColor,
                 &ConfigManager::setGemColor, &AppConfig::gemColor);
    m_starMarketColorComboBox = addColor("starMarketColorComboBox", QStringLiteral("科创板 (68开头):"),
                                         &ConfigManager::getStarMarketColor,
                                         &ConfigManager::setStarMarketColor, &AppConfig::starMarketColor);
    m_beijingExchangeColorComboBox =
        addColor("beijingExchangeColorComboBox", QStringLiteral("北交所 (92开头):"),
                 &ConfigManager::getBeijingExchangeColor, &ConfigManager::setBeijingExchangeColor,
                 &AppConfig::beijingExchangeColor);
    QPushButton *preview = addButton(QStringLiteral("previewColorsButton"), QStringLiteral("预览颜色"));
    colors->addRow(QString(), preview);
    connect(preview, &QPushButton::clicked, this, &ConfigDialog::onPreviewColorsClicked);

    QFormLayout *fonts = addGroup(layout, QStringLiteral("字体大小设置"));
    const auto addSize = [&](const char *name, const QString &label, auto getter, auto setter, auto field) {
        // The suffix says pixels and the value is in points, as meant.
        QSpinBox *box = addSpinBox(fonts, QLatin1String(name), label, 8, 24, pixels);
        edit(
            getter, setter, field, [box] { return box->value(); },
            [box](int value) { box->setValue(value); });
    };
    addSize("stockCodeNameFontSizeSpinBox", QStringLiteral("股票名称字体大小:"),
            &ConfigManager::getStockCodeNameFontSize, &ConfigManager::setStockCodeNameFontSize,
            &AppConfig::stockCodeNameFontSize);
    addSize("basicInfoFontSizeSpinBox", QStringLiteral("基本信息字体大小:"),
            &ConfigManager::getBasicInfoFontSize, &ConfigManager::setBasicInfoFontSize,
            &AppConfig::basicInfoFontSize);
    addSize("historyStatsFontSizeSpinBox", QStringLiteral("历史统计字体大小:"),
            &ConfigManager::getHistoryStatsFontSize, &ConfigManager::setHistoryStatsFontSize,
            &AppConfig::historyStatsFontSize);
    addSize("openingMarketFontSizeSpinBox", QStringLiteral("开盘行情字体大小:"),
            &ConfigManager::getOpeningMarketFontSize, &ConfigManager::setOpeningMarketFontSize,
            &AppConfig::openingMarketFontSize);
    addSize("limitUpDetailFontSizeSpinBox", QStringLiteral("涨停详情字体大小:"),
            &ConfigManager::getLimitUpDetailFontSize, &ConfigManager::setLimitUpDetailFontSize,
            &AppConfig::limitUpDetailFontSize);
    alignFields({colors, fonts});
    layout->addStretch();
    return page;
}

QWidget *ConfigDialog::buildMarketTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    QFormLayout *fonts = addGroup(layout, QStringLiteral("字体大小设置"));
    const auto addNumber = [&](QFormLayout *form, const char *name, const QString &label, int minimum,
                               int maximum, const QString &suffix, auto getter, auto setter, auto field) {
        QSpinBox *box = addSpinBox(form, QLatin1String(name), label, minimum, maximum, suffix);
        edit(
            getter, setter, field, [box] { return box->value(); },
            [box](int value) { box->setValue(value); });
    };
    addNumber(fonts, "marketTitleFontSizeSpinBox", QStringLiteral("标题字体大小:"), 10, 32, pixels,
              &ConfigManager::getMarketTitleFontSize, &ConfigManager::setMarketTitleFontSize,
              &AppConfig::marketTitleFontSize);
    addNumber(fonts, "marketLabelFontSizeSpinBox", QStringLiteral("标签字体大小:"), 8, 24, pixels,
              &ConfigManager::getMarketLabelFontSize, &ConfigManager::setMarketLabelFontSize,
              &AppConfig::marketLabelFontSize);
    addNumber(fonts, "marketValueFontSizeSpinBox", QStringLiteral("数值字体大小:"), 10, 28, pixels,
              &ConfigManager::getMarketValueFontSize, &ConfigManager::setMarketValueFontSize,
              &AppConfig::marketValueFontSize);
    addNumber(fonts, "marketBoardRankingFontSizeSpinBox", QStringLiteral("连板排名字体大小:"), 8, 24, pixels,
              &ConfigManager::getMarketBoardRankingFontSize, &ConfigManager::setMarketBoardRankingFontSize,
              &AppConfig::marketBoardRankingFontSize);
    QFormLayout *refreshing = addGroup(layout, QStringLiteral("刷新设置"));
    addNumber(refreshing, "marketRefreshIntervalSpinBox", QStringLiteral("数据刷新间隔:"), 10, 300, seconds,
              &ConfigManager::getMarketRefreshInterval, &ConfigManager::setMarketRefreshInterval,
              &AppConfig::marketRefreshInterval);
    refreshing->addRow(note(QStringLiteral("设置行情数据自动刷新间隔，最小10秒")));
    alignFields({fonts, refreshing});
    layout->addStretch();
    return page;
}

QWidget *ConfigDialog::buildConceptTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setSpacing(4);
    QFormLayout *looks = addGroup(layout, QStringLiteral("外观设置"));
    const auto addColor = [&](QFormLayout *form, const char *name, const QString &label, QColor &color,
                              const QString &style, const QString &title, auto getter, auto setter,
                              auto field) {
        QLabel *preview = addColorButton(form, QLatin1String(name), label, color, style, title);
        edit(
            getter, setter, field, [&color] { return color.name(); },
            [this, &color, preview, style](const QString &value) {
                // A value that is no colour leaves the one that is held.
                if (QColor::isValidColor(value))
                    color = QColor(value);
                showColor(preview, color, style);
            },
            OnReset::Kept);
    };
    const auto addNumber = [&](QFormLayout *form, const char *name, const QString &label, int minimum,
                               int maximum, const QString &suffix, auto getter, auto setter, auto field) {
        QSpinBox *box = addSpinBox(form, QLatin1String(name), label, minimum, maximum, suffix);
        edit(
            getter, setter, field, [box] { return box->value(); }, [box](int value) { box->setValue(value); },
            OnReset::Kept);
    };
    const auto addHotkey = [&](QFormLayout *form, const char *name, const QString &label, auto getter,
                               auto setter, auto field) {
        QComboBox *box = addHotkeyBox(form, QLatin1String(name), label);
        edit(
            getter, setter, field, [box] { return box->currentData().toString(); },
            [box](const QString &value) { selectData(box, value); }, OnReset::Kept);
    };

    addColor(looks, "themeBgColorButton", QStringLiteral("背景颜色:"), m_bgColor, backgroundStyle,
             QStringLiteral("选择对话框背景颜色"), &ConfigManager::getThemeBgColor,
             &ConfigManager::setThemeBgColor, &AppConfig::themeBgColor);
    addColor(looks, "themeCardBgColorButton", QStringLiteral("卡片背景颜色:"), m_cardBgColor, backgroundStyle,
             QStringLiteral("选择卡片背景颜色"), &ConfigManager::getThemeCardBgColor,
             &ConfigManager::setThemeCardBgColor, &AppConfig::themeCardBgColor);
    addNumber(looks, "themeWidthSpinBox", QStringLiteral("对话框宽度:"), 300, 1800, pixels,
              &ConfigManager::getThemeWidth, &ConfigManager::setThemeWidth, &AppConfig::themeWidth);
    auto *position = new QComboBox(page);
    position->setObjectName(QStringLiteral("themePositionComboBox"));
    position->addItem(QStringLiteral("屏幕左边"), 0);
    position->addItem(QStringLiteral("屏幕中间"), 1);
    position->addItem(QStringLiteral("屏幕右边"), 2);
    looks->addRow(QStringLiteral("默认显示位置:"), position);
    edit(
        &ConfigManager::getThemePosition, &ConfigManager::setThemePosition, &AppConfig::themePosition,
        [position] { return position->currentData().toInt(); },
        [position](int value) { selectData(position, value); }, OnReset::Kept);
    addNumber(looks, "themeSummaryFontSizeSpinBox", QStringLiteral("概念标签字体:"), 10, 30, QString(),
              &ConfigManager::getThemeSummaryFontSize, &ConfigManager::setThemeSummaryFontSize,
              &AppConfig::themeSummaryFontSize);

    QFormLayout *names = addGroup(layout, QStringLiteral("概念名称字体"));
    addColor(names, "themeNameColorButton", QStringLiteral("字体颜色:"), m_nameColor, fontColorStyle,
             QStringLiteral("选择概念名称颜色"), &ConfigManager::getThemeNameColor,
             &ConfigManager::setThemeNameColor, &AppConfig::themeNameColor);
    addNumber(names, "themeNameFontSizeSpinBox", QStringLiteral("字体大小:"), 12, 30, QString(),
              &ConfigManager::getThemeNameFontSize, &ConfigManager::setThemeNameFontSize,
              &AppConfig::themeNameFontSize);

    QFormLayout *descriptions = addGroup(layout, QStringLiteral("描述文字字体"));
    addColor(descriptions, "themeDescColorButton", QStringLiteral("字体颜色:"), m_descColor, fontColorStyle,
             QStringLiteral("选择描述文字颜色"), &ConfigManager::getThemeDescColor,
             &ConfigManager::setThemeDescColor, &AppConfig::themeDescColor);
    addNumber(descriptions, "themeDescFontSizeSpinBox", QStringLiteral("字体大小:"), 10, 30, QString(),
              &ConfigManager::getThemeDescFontSize, &ConfigManager::setThemeDescFontSize,
              &AppConfig::themeDescFontSize);

    QFormLayout *hotkeys = addGroup(layout, QStringLiteral("快捷键"));
    addHotkey(hotkeys, "themeHotkeyComboBox", QStringLiteral("概念题材快捷键:"),
              &ConfigManager::getThemeHotkey, &ConfigManager::setThemeHotkey, &AppConfig::themeHotkey);
    addHotkey(hotkeys, "dynamicHotkeyComboBox", QStringLiteral("异动解析快捷键:"),
              &ConfigManager::getDynamicHotkey, &ConfigManager::setDynamicHotkey, &AppConfig::dynamicHotkey);
    alignFields({looks, names, descriptions, hotkeys});
    layout->addStretch();
    return page;
}

QWidget *ConfigDialog::buildServerTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->addLayout(form);

    m_serverUrlEdit = new InputField(page);
    m_serverUrlEdit->setObjectName(QStringLiteral("serverUrlEdit"));
    m_serverUrlEdit->setPlaceholderText(QStringLiteral("例如: http://192.168.1.10:8888"));
    form->addRow(QStringLiteral("API服务器地址:"), m_serverUrlEdit);
    edit(
        &ConfigManager::getApiServerUrl, &ConfigManager::setApiServerUrl, &AppConfig::serverUrl,
        [this] { return serverAddress(); },
        [this](const QString &address) { m_serverUrlEdit->setText(address); });

    m_apiKeyEdit = new InputField(page);
    m_apiKeyEdit->setObjectName(QStringLiteral("apiKeyEdit"));
    m_apiKeyEdit->setEchoMode(QLineEdit::Password);
    m_apiKeyEdit->setPlaceholderText(QStringLiteral("请输入您的API Key"));
    form->addRow(QStringLiteral("API Key:"), m_apiKeyEdit);
    edit(
        &ConfigManager::getApiKey, &ConfigManager::setApiKey, &AppConfig::apiKey, [this] { return apiKey(); },
        [this](const QString &key) { m_apiKeyEdit->setText(key); });

    m_timeoutSpinBox =
        addSpinBox(form, QStringLiteral("timeoutSpinBox"), QStringLiteral("请求超时时间:"), 5, 30, seconds);
    // The record's default alone is in milliseconds: the reset converts it by itself.
    edit(
        &ConfigManager::getApiTimeout, &ConfigManager::setApiTimeout, &AppConfig::timeout,
        [this] { return m_timeoutSpinBox->value(); },
        [this](int value) { m_timeoutSpinBox->setValue(value); }, OnReset::Kept);

    m_testConnectionButton = addButton(QStringLiteral("testConnectionButton"), testConnectionCaption);
    m_testApiKeyButton = addButton(QStringLiteral("testApiKeyButton"), testApiKeyCaption);
    connect(m_testConnectionButton, &QPushButton::clicked, this, &ConfigDialog::onTestConnectionClicked);
    connect(m_testApiKeyButton, &QPushButton::clicked, this, &ConfigDialog::onTestApiKeyClicked);
    auto *tests = new QHBoxLayout;
    tests->addWidget(m_testConnectionButton);
    tests->addWidget(m_testApiKeyButton);
    tests->addStretch();
    layout->addLayout(tests);
    layout->addWidget(
        note(QStringLiteral("说明：\n• 建议先测试连接，再测试API Key\n• 超时时间建议设置为5-30秒")));
    layout->addStretch();
    return page;
}

QWidget *ConfigDialog::buildDeviceTab()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->addLayout(form);
    m_deviceIdLabel = addDeviceLabel(form, QStringLiteral("deviceIdLabel"), QStringLiteral("设备ID:"));
    m_deviceNameLabel = addDeviceLabel(form, QStringLiteral("deviceNameLabel"), QStringLiteral("设备名称:"));
    m_deviceTypeLabel = addDeviceLabel(form, QStringLiteral("deviceTypeLabel"), QStringLiteral("设备类型:"));
    m_osInfoLabel = addDeviceLabel(form, QStringLiteral("osInfoLabel"), QStringLiteral("操作系统:"));
    QPushButton *refresh =
        addButton(QStringLiteral("refreshDeviceInfoButton"), QStringLiteral("刷新设备信息"));
    connect(refresh, &QPushButton::clicked, this, &ConfigDialog::onRefreshDeviceInfoClicked);
    layout->addWidget(refresh, 0, Qt::AlignLeft);
    layout->addStretch();
    return page;
}

QCheckBox *ConfigDialog::addCheckBox(QFormLayout *form, const QString &name, const QString &text)
{
    auto *box = new QCheckBox(text);
    box->setObjectName(name);
    form->addRow(box);
    return box;
}

QSpinBox *ConfigDialog::addSpinBox(QFormLayout *form, const QString &name, const QString &label, int minimum,
                                   int maximum, const QString &suffix)
{
    auto *box = new QSpinBox;
    box->setObjectName(name);
    box->setRange(minimum, maximum);
    box->setSuffix(suffix);
    form->addRow(label, box);
    return box;
}

QComboBox *ConfigDialog::addStockColorBox(QFormLayout *form, const QString &name, const QString &label)
{
    auto *box = new QComboBox;
    box->setObjectName(name);
    box->setIconSize(QSize(swatchSize, swatchSize));
    for (const ConfigDialogRules::StockColor &color : ConfigDialogRules::stockColors())
        box->addItem(swatch(color.value), color.word, color.value);
    form->addRow(label, box);
    return box;
}

QComboBox *ConfigDialog::addHotkeyBox(QFormLayout *form, const QString &name, const QString &label)
{
    auto *box = new QComboBox;
    box->setObjectName(name);
    box->addItem(QStringLiteral("~ (波浪号)"), QStringLiteral("Tilde"));
    box->addItem(QStringLiteral("Tab"), QStringLiteral("Tab"));
    box->addItem(QStringLiteral("Launch"), QStringLiteral("Launch"));
    box->addItem(QStringLiteral("主页"), QStringLiteral("HomePage"));
    box->addItem(QStringLiteral("搜索"), QStringLiteral("Search"));
    // Spelt so in every settings file.
    box->addItem(QStringLiteral("邮件"), QStringLiteral("LauchMail"));
    for (int number = 13; number <= 24; ++number) {
        const QString key = QStringLiteral("F%1").arg(number);
        box->addItem(key, key);
    }
    form->addRow(label, box);
    return box;
}

QPushButton *ConfigDialog::addButton(const QString &name, const QString &text)
{
    auto *button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QLabel *ConfigDialog::addColorButton(QFormLayout *form, const QString &name, const QString &label,
                                     QColor &color, const QString &previewStyle, const QString &dialogTitle)
{
    QPushButton *button = addButton(name, QStringLiteral("选择颜色"));
    button->setAccessibleName(dialogTitle);
    auto *preview = new QLabel;
    preview->setObjectName(name + QStringLiteral("Preview"));
    preview->setMinimumWidth(previewWidth);
    preview->setFrameStyle(QFrame::Box | QFrame::Plain);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(button);
    row->addWidget(preview);
    row->addStretch();
    auto *caption = new QLabel(label);
    caption->setBuddy(button);
    form->addRow(caption, row);
    connect(button, &QPushButton::clicked, this, [this, &color, preview, previewStyle, dialogTitle] {
        chooseColor(color, preview, previewStyle, dialogTitle);
    });
    return preview;
}

QLabel *ConfigDialog::addDeviceLabel(QFormLayout *form, const QString &name, const QString &label)
{
    auto *value = new QLabel;
    value->setObjectName(name);
    value->setTextFormat(Qt::PlainText);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    value->setWordWrap(true);
    form->addRow(label, value);
    return value;
}

AppConfig ConfigDialog::getConfig() const
{
    AppConfig config;
    for (const Edited &edited : m_edited)
        edited.read(config);
    return config;
}

void ConfigDialog::save()
{
    for (const Edited &edited : m_edited)
        edited.save();
    ConfigManager::instance()->sync();
}

void ConfigDialog::accept()
{
    const QString fault = ConfigDialogRules::savingFault(serverAddress(), apiKey());
    if (!fault.isEmpty()) {
        QMessageBox::warning(this, configurationFault, fault);
        // To the field that is to be mended, wherever the user was.
        m_tabs->setCurrentIndex(m_tabs->indexOf(m_serverUrlEdit->parentWidget()));
        QLineEdit *faulty = ConfigDialogRules::hasWebScheme(serverAddress()) ? m_apiKeyEdit : m_serverUrlEdit;
        faulty->setFocus();
        return;
    }
    save();
    QDialog::accept();
}

QString ConfigDialog::serverAddress() const
{
    return m_serverUrlEdit->text().trimmed();
}

QString ConfigDialog::apiKey() const
{
    return m_apiKeyEdit->text().trimmed();
}

std::optional<ServiceAnswer> ConfigDialog::ask(QPushButton *button, const QString &busyText,
                                               const QString &path,
                                               const std::function<void(QNetworkRequest &)> &identify)
{
    const QUrl url = ConfigDialogRules::serviceUrl(serverAddress(), path);
    const QString unreachable = ConfigDialogRules::unreachableReason(url);
    if (!unreachable.isEmpty())
        return ServiceAnswer{QNetworkReply::ProtocolInvalidOperationError, unreachable, {}};

    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("User-Agent", "LarkspireApp/2.0");
    if (identify)
        identify(request);

    const QString caption = button->text();
    const bool hadFocus = button->hasFocus();
    // Both: a second test would keep the first one from ending.
    m_testConnectionButton->setEnabled(false);
    m_testApiKeyButton->setEnabled(false);
    button->setText(busyText);
    ServiceProbe probe;
    connect(this, &QDialog::finished, &probe, &ServiceProbe::cancel);
    const std::optional<ServiceAnswer> answer =
        probe.get(request, std::chrono::seconds(m_timeoutSpinBox->value()));
    button->setText(caption);
    m_testConnectionButton->setEnabled(true);
    m_testApiKeyButton->setEnabled(true);
    if (hadFocus)
        button->setFocus();
    return answer;
}

void ConfigDialog::onTestConnectionClicked()
{
    const QString fault = ConfigDialogRules::connectionTestFault(serverAddress());
    if (!fault.isEmpty()) {
        QMessageBox::warning(this, configurationFault, fault);
        m_serverUrlEdit->setFocus();
        return;
    }
    const std::optional<ServiceAnswer> answer =
        ask(m_testConnectionButton, QStringLiteral("连接中..."), QStringLiteral("newsapi/health"), {});
    if (!answer)
        return;
    const ConfigDialogRules::TestResult result = ConfigDialogRules::connectionTestResult(*answer);
    if (result.success)
        QMessageBox::information(this, QStringLiteral("连接成功"), plain(result.text));
    else
        QMessageBox::warning(this, QStringLiteral("连接失败"), plain(result.text));
}

void ConfigDialog::onTestApiKeyClicked()
{
    const QString fault = ConfigDialogRules::keyTestFault(serverAddress(), apiKey());
    if (!fault.isEmpty()) {
        QMessageBox::warning(this, configurationFault, fault);
        (serverAddress().isEmpty() ? m_serverUrlEdit : m_apiKeyEdit)->setFocus();
        return;
    }
    const std::optional<ServiceAnswer> answer =
        ask(m_testApiKeyButton, QStringLiteral("测试中..."), QStringLiteral("newsapi/test"),
            [this](QNetworkRequest &request) {
                request.setRawHeader("X-API-Key", apiKey().toUtf8());
                request.setRawHeader("X-Device-ID", DeviceIdentity::deviceId().toUtf8());
                request.setRawHeader("X-Device-Name", DeviceIdentity::deviceName().toUtf8());
                request.setRawHeader("X-Device-Type", DeviceIdentity::deviceType().toUtf8());
                request.setRawHeader("X-OS-Info", DeviceIdentity::osInfo().toUtf8());
                request.setRawHeader("X-App-Version", ProgramVersion::text().toUtf8());
            });
    if (!answer)
        return;
    const ConfigDialogRules::TestResult result = ConfigDialogRules::keyTestResult(*answer);
    if (result.success)
        QMessageBox::information(this, QStringLiteral("验证成功"), plain(result.text));
    else
        QMessageBox::warning(this, QStringLiteral("验证失败"), plain(result.text));
}

void ConfigDialog::showDeviceInfo()
{
    const QString style =
        isDarkSkin(palette())
            ? QStringLiteral(
                  "QLabel { background-color: #2b2b2b; color: white; padding: 5px; border: 1px solid "
                  "#555555; }")
            : QStringLiteral(
                  "QLabel { background-color: #f0f0f0; color: black; padding: 5px; border: 1px solid "
                  "#ccc; }");
    m_deviceIdLabel->setText(DeviceIdentity::deviceId());
    m_deviceNameLabel->setText(DeviceIdentity::deviceName());
    m_deviceTypeLabel->setText(DeviceIdentity::deviceType());
    m_osInfoLabel->setText(DeviceIdentity::osInfo());
    for (QLabel *label : {m_deviceIdLabel, m_deviceNameLabel, m_deviceTypeLabel, m_osInfoLabel})
        label->setStyleSheet(style);
}

void ConfigDialog::onRefreshDeviceInfoClicked()
{
    showDeviceInfo();
    QMessageBox::information(this, QStringLiteral("设备信息"), QStringLiteral("设备信息已刷新"));
}

void ConfigDialog::onResetToDefaultsClicked()
{
    QMessageBox question(QMessageBox::Question, QStringLiteral("确认重置"),
                         QStringLiteral("确定要恢复所有配置到默认值吗？"), QMessageBox::Yes | QMessageBox::No,
                         this);
    question.button(QMessageBox::Yes)->setText(QStringLiteral("是"));
    question.button(QMessageBox::No)->setText(QStringLiteral("否"));
    question.setDefaultButton(QMessageBox::No);
    if (question.exec() != QMessageBox::Yes)
        return;
    ConfigManager::instance()->resetToDefaults();
    m_wasReset = true;
    const AppConfig defaults;
    for (const Edited &edited : m_edited) {
        if (edited.reset)
            edited.reset(defaults);
    }
    m_timeoutSpinBox->setValue(defaults.timeout / 1000);
    save();
    QMessageBox::information(this, QStringLiteral("重置完成"), QStringLiteral("所有配置已恢复到默认值"));
}

void ConfigDialog::onPreviewColorsClicked()
{
    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("股票代码颜色预览"));
    dialog.setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    dialog.setModal(true);
    auto *layout = new QVBoxLayout(&dialog);
    auto *heading = new QLabel(QStringLiteral("股票代码颜色预览"), &dialog);
    heading->setObjectName(QStringLiteral("headingLabel"));
    heading->setStyleSheet(
        QStringLiteral("QLabel { font-size: 16px; font-weight: bold; margin-bottom: 10px; }"));
    layout->addWidget(heading);
    const struct
    {
        const char *name;
        QString text;
        const QComboBox *box;
        QString fallback;
    } samples[] = {
        {"mainBoardSampleLabel", QStringLiteral("主板 (000001 平安银行)"), m_mainBoardColorComboBox,
         QStringLiteral("#FF6B6B")},
        {"gemSampleLabel", QStringLiteral("创业板 (300001 特锐德)"), m_gemColorComboBox,
         QStringLiteral("#4ECDC4")},
        {"starMarketSampleLabel", QStringLiteral("科创板 (688001 华兴源创)"), m_starMarketColorComboBox,
         QStringLiteral("#45B7D1")},
        {"beijingExchangeSampleLabel", QStringLiteral("北交所 (920001 纬达光电)"),
         m_beijingExchangeColorComboBox, QStringLiteral("#96CEB4")},
    };
    for (const auto &sample : samples) {
        auto *label = new QLabel(sample.text, &dialog);
        label->setObjectName(QLatin1String(sample.name));
        label->setStyleSheet(
            QStringLiteral("QLabel { color: %1; font-size: 14px; font-weight: bold; padding: 5px; }")
                .arg(ConfigDialogRules::previewColor(sample.box->currentText(), sample.fallback)));
        layout->addWidget(label);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    buttons->button(QDialogButtonBox::Close)->setText(QStringLiteral("关闭"));
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addStretch();
    layout->addWidget(buttons);
    dialog.exec();
}

void ConfigDialog::showColor(QLabel *preview, const QColor &color, const QString &previewStyle)
{
    preview->setStyleSheet(previewStyle.arg(color.name()));
    preview->setToolTip(color.name());
    preview->setAccessibleName(color.name());
}

void ConfigDialog::chooseColor(QColor &color, QLabel *preview, const QString &previewStyle,
                               const QString &dialogTitle)
{
    QColorDialog dialog(this);
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    dialog.setWindowTitle(dialogTitle);
    dialog.setCurrentColor(color);
    translate(dialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    color = dialog.selectedColor();
    showColor(preview, color, previewStyle);
}
