#include "stockviews/StockAnalysisUi.h"

#include "newsclient/ServiceWords.h"
#include "stockviews/ElidingLabel.h"
#include "stockviews/NameLabel.h"
#include "stockviews/StockPortals.h"
#include "stockviews/ValueLabel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int PageMargin = 9;
constexpr int MinimumWidth = 300;
constexpr int MinimumHeight = 550;
constexpr int ActionButtonSize = 24;
constexpr int ControlHeight = 24;
constexpr int IndicatorSize = 12;
constexpr int ActivityBarHeight = 16;
constexpr int PortalsPerRow = 4;
constexpr qreal CaptionPointSize = 9.0;
constexpr qreal SmallestSettledPointSize = 8.0;
// What the coloured ground of a value takes beside the text.
constexpr int GroundWidth = 8;
constexpr int GroundHeight = 2;

template <typename Kind, typename... Arguments>
Kind *make(const QString &objectName, Arguments... arguments)
{
    auto *object = new Kind(arguments...);
    object->setObjectName(objectName);
    return object;
}

QPushButton *makeButton(const QString &objectName, const QString &text, QWidget *page,
                        const QString &toolTip = {})
{
    auto *button = make<QPushButton>(objectName, text, page);
    button->setFixedHeight(ControlHeight);
    button->setFocusPolicy(Qt::TabFocus);
    // Padding of a skin would leave no room for the text.
    button->setStyleSheet(QStringLiteral("QPushButton { padding: 0px; }"));
    if (!toolTip.isEmpty()) {
        button->setToolTip(toolTip);
        button->setAccessibleName(toolTip);
    }
    return button;
}

/// One cell of the grid: the caption and, beside it, the value.
struct Cell
{
    int row;
    int column; ///< of the caption
    const char *valueName;
    const char *caption;
};

// Read from top to bottom as the questions come: how big, how strong, what today. Related cells are
// neighbours.
constexpr Cell basicCells[] = {
    {2, 0, "marketCapValueLabel", "市值Z"},
    {2, 2, "floatSharesValueLabel", "流通股Z"},
    {3, 0, "netProfitValueLabel", "净利润"},
    {3, 2, "yoyValueLabel", "同比"},
};
constexpr Cell historyCells[] = {
    {4, 0, "firstBoardCountValueLabel", "首板次数"},
    {4, 2, "firstBoardBreakoutValueLabel", "首板炸板次"},
    {5, 0, "twoConsecutiveBoardValueLabel", "2连板次数"},
    {5, 2, "consecutiveBreakoutValueLabel", "连炸次数"},
    {6, 0, "highestConsecutiveValueLabel", "最高连板"},
    {6, 2, "firstBoardClosingRateValueLabel", "首板封板率"},
    {7, 0, "recentLimitUpValueLabel", "最近涨停"},
    {7, 2, "recentBreakoutValueLabel", "最近炸板"},
    {8, 0, "thirtyDayGainValueLabel", "30天最大涨"},
    {8, 2, "increase5dValueLabel", "5日涨幅"},
    {9, 0, "preRiseValueLabel", "昨日涨幅"},
    {9, 2, "rsiValueLabel", "RSI指标"},
    {10, 0, "ma5ConsecutiveDaysValueLabel", "站上5日线"},
    {10, 2, "priceTrendValueLabel", "价格趋势"},
};
constexpr Cell openingCells[] = {
    {12, 0, "openingGainValueLabel", "开盘涨幅"},
    {12, 2, "openingAmountValueLabel", "开盘金额"},
    {13, 0, "openingTurnoverValueLabel", "开盘换手Z"},
    {13, 2, "auctionVolumeRatioValueLabel", "竞价量昨比"},
};
constexpr int LimitPriceRow = 11;
constexpr int ActivityRow = 14;
constexpr int Ma5StatusRow = 15;
constexpr int TrendRow = 16;

// The longest that values say every day; the column is made for these, what is longer is written smaller.
const QString everydayText = QStringLiteral("9天前涨停");

qreal largestFitting(const QFont &base, qreal configured, const QSize &room)
{
    QFont font = base;
    font.setBold(true);
    qreal points = configured;
    while (points > SmallestSettledPointSize) {
        font.setPointSizeF(points);
        const QFontMetrics metrics(font);
        if (metrics.horizontalAdvance(everydayText) + GroundWidth <= room.width() &&
            metrics.height() + GroundHeight <= room.height())
            return points;
        points -= 0.5;
    }
    return SmallestSettledPointSize;
}

} // namespace

void StockAnalysisUi::setupUi(QWidget *page)
{
    page->setMinimumSize(MinimumWidth, MinimumHeight);
    pageLayout = new QVBoxLayout(page);
    pageLayout->setContentsMargins(PageMargin, PageMargin, PageMargin, PageMargin);
    pageLayout->setSpacing(4);
    buildControlGroup(page);
    buildHeader(page);
    buildGrid(page);
    buildNavigation(page);
    pageLayout->addStretch();
}

void StockAnalysisUi::buildControlGroup(QWidget *page)
{
    controlGroup = make<QGroupBox>(QStringLiteral("controlGroup"), page);
    // Flat on both skins: a frame and a title would cost the height of two rows.
    // Without it the margins that a style sheet of the application has given the new box stay.
    controlGroup->ensurePolished();
    controlGroup->setStyleSheet(QStringLiteral("QGroupBox#controlGroup { border: none; margin-top: 0px; "
                                               "padding-top: 0px; background-color: transparent; }"));
    themeButton = makeButton(QStringLiteral("themeButton"), QStringLiteral("概念"), page,
                             QStringLiteral("查看股票的概念题材"));
    settingsButton = makeButton(QStringLiteral("settingsButton"), QStringLiteral("设置"), page,
                                QStringLiteral("股票软件联动设置"));
    currentSoftwareButton = makeButton(QStringLiteral("currentSoftwareButton"), QStringLiteral("通达信"),
                                       page, QStringLiteral("当前联动软件，点击切换"));
    linkageComboBox = make<QComboBox>(QStringLiteral("linkageComboBox"), page);
    linkageComboBox->addItems({QStringLiteral("不联动"), QStringLiteral("通➜同"), QStringLiteral("同➜通"),
                               QStringLiteral("通➜通")});
    linkageComboBox->setToolTip(QStringLiteral("联动模式"));
    tdxInstanceComboBox = make<QComboBox>(QStringLiteral("tdxInstanceComboBox"), page);
    tdxInstanceComboBox->setToolTip(QStringLiteral("通达信实例"));
    thsInstanceComboBox = make<QComboBox>(QStringLiteral("thsInstanceComboBox"), page);
    thsInstanceComboBox->setToolTip(QStringLiteral("同花顺实例"));
    for (QComboBox *box : {linkageComboBox, tdxInstanceComboBox, thsInstanceComboBox}) {
        box->setFixedHeight(ControlHeight);
        box->setAccessibleName(box->toolTip());
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(4);
    }
    tdxInstanceComboBox->hide();
    thsInstanceComboBox->hide();
    autoRefreshCheckBox =
        make<QCheckBox>(QStringLiteral("autoRefreshCheckBox"), QStringLiteral("自动刷新"), page);
    autoRefreshIndicator = make<QLabel>(QStringLiteral("autoRefreshIndicator"), page);
    autoRefreshIndicator->setFixedSize(IndicatorSize, IndicatorSize);
    statusLabel = make<ElidingLabel>(QStringLiteral("statusLabel"),
                                     QStringLiteral("开启自动刷新，跟随交易软件中的股票"), page);

    auto *choices = new QHBoxLayout;
    choices->setSpacing(4);
    for (QPushButton *button : {themeButton, settingsButton, currentSoftwareButton})
        choices->addWidget(button, 3);
    choices->addWidget(linkageComboBox, 5);
    auto *state = new QHBoxLayout;
    state->setSpacing(4);
    state->addWidget(autoRefreshCheckBox);
    state->addWidget(autoRefreshIndicator);
    state->addWidget(statusLabel, 1);
    auto *layout = new QVBoxLayout(controlGroup);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addLayout(choices);
    layout->addWidget(tdxInstanceComboBox);
    layout->addWidget(thsInstanceComboBox);
    layout->addLayout(state);
    pageLayout->addWidget(controlGroup);
}

void StockAnalysisUi::buildHeader(QWidget *page)
{
    companyNameLabel = make<NameLabel>(QStringLiteral("companyNameLabel"), page);
    searchStockButton = makeButton(QStringLiteral("searchStockButton"), QStringLiteral("异"), page,
                                   QStringLiteral("点击查看异动解析"));
    blacklistButton = makeButton(QStringLiteral("blacklistButton"), QStringLiteral("黑"), page,
                                 QStringLiteral("黑名单管理"));
    softwareSwitchButton = makeButton(QStringLiteral("softwareSwitchButton"), QStringLiteral("通"), page);
    compactModeButton = makeButton(QStringLiteral("compactModeButton"), QStringLiteral("简"), page,
                                   QStringLiteral("切换精简模式"));
    stockActionButtonsLayout = make<QHBoxLayout>(QStringLiteral("stockActionButtonsLayout"));
    stockActionButtonsLayout->setSpacing(2);
    for (QPushButton *button :
         {searchStockButton, blacklistButton, softwareSwitchButton, compactModeButton}) {
        button->setFixedWidth(ActionButtonSize);
        stockActionButtonsLayout->addWidget(button);
    }
}

ElidingLabel *StockAnalysisUi::addCaption(QWidget *page, int row, int column, const QString &objectName,
                                          const QString &text)
{
    auto *caption = make<ElidingLabel>(objectName, text, page);
    caption->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    caption->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed); // of the width that all captions get
    QFont font = caption->font();
    font.setPointSizeF(CaptionPointSize);
    caption->setFont(font);
    caption->setSmallestPointSize(ValueLabel::SmallestPointSize);
    grid->addWidget(caption, row, column);
    m_captions.insert(objectName, caption);
    return caption;
}

void StockAnalysisUi::buildGrid(QWidget *page)
{
    grid = make<QGridLayout>(QStringLiteral("stockGrid"));
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(2);
    pageLayout->addLayout(grid);

    auto *header = new QHBoxLayout;
    header->setSpacing(4);
    header->addWidget(companyNameLabel, 1);
    header->addLayout(stockActionButtonsLayout);
    grid->addLayout(header, 0, 0, 1, 4);

    regionLabel = make<ElidingLabel>(QStringLiteral("regionLabel"), QString(), page);
    industryLabel = make<ElidingLabel>(QStringLiteral("industryLabel"), QString(), page);
    businessLabel = make<ElidingLabel>(QStringLiteral("businessLabel"), QString(), page);
    auto *description = new QHBoxLayout;
    description->setSpacing(4);
    description->addWidget(regionLabel, 2);
    description->addWidget(industryLabel, 4);
    description->addWidget(businessLabel, 7);
    grid->addLayout(description, 1, 0, 1, 4);

    const auto addCell = [this, page](const Cell &cell, QMap<QString, ValueLabel *> &group) {
        const QString name = QString::fromLatin1(cell.valueName);
        // The caption of a value is named after it: "rsiLabel" of "rsiValueLabel".
        QString captionName = name;
        captionName.replace(QStringLiteral("ValueLabel"), QStringLiteral("Label"));
        addCaption(page, cell.row, cell.column, captionName, QString::fromUtf8(cell.caption));
        auto *value = make<ValueLabel>(name, page);
        value->setAccessibleName(QString::fromUtf8(cell.caption));
        grid->addWidget(value, cell.row, cell.column + 1);
        group.insert(name, value);
    };
    for (const Cell &cell : basicCells)
        addCell(cell, basicValues);
    for (const Cell &cell : historyCells)
        addCell(cell, historyValues);
    for (const Cell &cell : openingCells)
        addCell(cell, openingValues);
    netProfitLabel = m_captions.value(QStringLiteral("netProfitLabel"));
    ma5ConsecutiveDaysLabel = m_captions.value(QStringLiteral("ma5ConsecutiveDaysLabel"));
    recentLimitUpValueLabel = historyValues.value(QStringLiteral("recentLimitUpValueLabel"));

    // Two prices do not fit into one column.
    const QString limitPriceName = QStringLiteral("limitupPriceValueLabel");
    addCaption(page, LimitPriceRow, 0, QStringLiteral("limitupPriceLabel"), QStringLiteral("今开/涨停"));
    auto *limitPrice = make<ValueLabel>(limitPriceName, page);
    limitPrice->setAccessibleName(QStringLiteral("今开/涨停"));
    grid->addWidget(limitPrice, LimitPriceRow, 1, 1, 3);
    openingValues.insert(limitPriceName, limitPrice);

    addCaption(page, ActivityRow, 0, QStringLiteral("marketActivityLabel"), QStringLiteral("市场活跃度"));
    marketActivityProgressBar = make<QProgressBar>(QStringLiteral("marketActivityProgressBar"), page);
    marketActivityProgressBar->setRange(0, 100);
    marketActivityProgressBar->setFixedHeight(ActivityBarHeight);
    marketActivityProgressBar->setAccessibleName(QStringLiteral("市场活跃度"));
    grid->addWidget(marketActivityProgressBar, ActivityRow, 1, 1, 3);

    ma5StatusLabel = make<ValueLabel>(QStringLiteral("ma5StatusLabel"), page);
    grid->addWidget(ma5StatusLabel, Ma5StatusRow, 0, 1, 4);
    trendSignalsLabel = make<QLabel>(QStringLiteral("trendSignalsLabel"), page);
    trendSignalsLabel->setTextFormat(Qt::RichText);
    trendSignalsLabel->setTextInteractionFlags(Qt::NoTextInteraction);
    trendSignalsLabel->setAlignment(Qt::AlignCenter);
    trendSignalsLabel->setWordWrap(true);
    trendSignalsLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    grid->addWidget(trendSignalsLabel, TrendRow, 0, 1, 4);

    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    for (QLabel *label : std::initializer_list<QLabel *>{companyNameLabel, regionLabel, industryLabel,
                                                         businessLabel, ma5StatusLabel, trendSignalsLabel})
        m_labels.insert(label->objectName(), label);
    for (ElidingLabel *label : qAsConst(m_captions))
        m_labels.insert(label->objectName(), label);
    for (const QMap<QString, ValueLabel *> &group : {basicValues, historyValues, openingValues}) {
        for (ValueLabel *label : group)
            m_labels.insert(label->objectName(), label);
    }
}

void StockAnalysisUi::buildNavigation(QWidget *page)
{
    stockNavigationLayout = make<QGridLayout>(QStringLiteral("stockNavigationLayout"));
    stockNavigationLayout->setSpacing(2);
    int position = 0;
    for (const StockPortals::Portal &portal : StockPortals::all()) {
        QPushButton *button = makeButton(portal.buttonName, portal.buttonText, page);
        stockNavigationLayout->addWidget(button, position / PortalsPerRow, position % PortalsPerRow);
        stockNavigationLayout->setColumnStretch(position % PortalsPerRow, 1);
        portalButtons.insert(portal.buttonName, button);
        ++position;
    }
    pageLayout->addLayout(stockNavigationLayout);
}

void StockAnalysisUi::setFontSizes(const FontSizes &sizes)
{
    m_sizes = sizes;
    QFont font = companyNameLabel->font();
    font.setPointSize(sizes.name);
    companyNameLabel->setFont(font);
    companyNameLabel->setFixedHeight(qMax(ActionButtonSize, QFontMetrics(font).height()));

    font = regionLabel->font();
    font.setPointSize(sizes.basic);
    // Their styles come with a size of their own, and go with it.
    font.setPointSize(qMax(sizes.basic, sizes.name));
    const int height = QFontMetrics(font).height();
    font.setPointSize(sizes.basic);
    for (ElidingLabel *label : {regionLabel, industryLabel, businessLabel}) {
        label->setFont(font);
        label->setFixedHeight(height);
    }

    for (ValueLabel *label : qAsConst(basicValues))
        label->setConfiguredPointSize(sizes.basic);
    for (ValueLabel *label : qAsConst(historyValues))
        label->setConfiguredPointSize(sizes.history);
    for (ValueLabel *label : qAsConst(openingValues))
        label->setConfiguredPointSize(sizes.opening);
    ma5StatusLabel->setConfiguredPointSize(sizes.opening);

    // Room for two lines, whatever it says: the signals of one stock must not push the rows of the next.
    font = trendSignalsLabel->font();
    font.setPointSizeF(SmallestSettledPointSize + 1);
    font.setBold(true);
    trendSignalsLabel->setFont(font);
    trendSignalsLabel->setFixedHeight(2 * QFontMetrics(font).height() + GroundHeight);

    QFont captionFont = netProfitLabel->font();
    const QFontMetrics captionMetrics(captionFont);
    int captionWidth = 0;
    for (const char *text : {"30天最大涨", "首板封板率", "竞价量昨比", "开盘换手Z"})
        captionWidth = qMax(captionWidth, captionMetrics.horizontalAdvance(QString::fromUtf8(text)));
    for (ElidingLabel *caption : qAsConst(m_captions))
        caption->setFixedWidth(captionWidth + 2);
    // The rows take their new heights now; what is written in them is fitted to these.
    pageLayout->activate();
    fitValues();
}

void StockAnalysisUi::fitValues()
{
    // The cells of a group are of one size.
    const auto fitting = [](const QWidget *cell, int points) {
        return largestFitting(cell->font(), points, cell->size());
    };
    const qreal basic = fitting(basicValues.first(), m_sizes.basic);
    const qreal history = fitting(recentLimitUpValueLabel, m_sizes.history);
    const qreal opening =
        fitting(openingValues.value(QStringLiteral("openingGainValueLabel")), m_sizes.opening);
    for (ValueLabel *label : qAsConst(basicValues))
        label->setPointSize(basic);
    for (ValueLabel *label : qAsConst(historyValues))
        label->setPointSize(history);
    for (ValueLabel *label : qAsConst(openingValues))
        label->setPointSize(opening);
    ma5StatusLabel->setPointSize(opening);
}

void StockAnalysisUi::setDarkSkin(bool dark)
{
    const QColor grey = dark ? QColor(0xA9, 0xAE, 0xB3) : QColor(0x5A, 0x60, 0x66);
    for (ElidingLabel *caption : qAsConst(m_captions)) {
        QPalette palette = caption->palette();
        palette.setColor(QPalette::WindowText, grey);
        caption->setPalette(palette);
    }
}

void StockAnalysisUi::showContents(const LabelContents &contents)
{
    for (auto content = contents.cbegin(); content != contents.cend(); ++content)
        showContent(content.key(), content.value());
}

void StockAnalysisUi::showContent(const QString &name, const LabelContent &content)
{
    QLabel *label = m_labels.value(name);
    if (label == nullptr)
        return;
    const QString style = content.style.value_or(label->styleSheet());
    if (auto *value = qobject_cast<ValueLabel *>(label)) {
        value->showValue(content.text, style);
    } else {
        if (label->styleSheet() != style)
            label->setStyleSheet(style);
        if (label->text() != content.text)
            label->setText(content.text);
    }
    label->setToolTip(ServiceWords::asSent(content.toolTip));
}
