#include "stockviews/MarketStatisticsUi.h"

#include <QFont>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

constexpr int SideMargin = 2;
constexpr int ColumnSpacing = 8;
constexpr int RowSpacing = 3;
constexpr int BlockSpacing = 8;
constexpr int PairSpacing = 12; // between a value and the caption right of it
constexpr int ColumnCount = 4;
constexpr int RankingRows = 3;
// What the ground of a value takes beside the text: padding and border.
constexpr int GroundWidth = 10;
constexpr int GroundHeight = 6;

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

QString unknown()
{
    return QStringLiteral("--");
}

QGridLayout *makeGrid(const char *objectName)
{
    auto *grid = new QGridLayout;
    grid->setObjectName(latin(objectName));
    grid->setHorizontalSpacing(ColumnSpacing);
    grid->setVerticalSpacing(RowSpacing);
    // More width is air for the values.
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    return grid;
}

} // namespace

QFont MarketStatisticsUi::sized(int points, QFont::Weight weight)
{
    QFont font;
    font.setPointSize(points);
    font.setWeight(weight);
    return font;
}

void MarketStatisticsUi::setupUi(QWidget *page)
{
    page->setObjectName(QStringLiteral("MarketStatisticsTab"));
    page->setWindowTitle(QStringLiteral("行情统计"));
    verticalLayout = new QVBoxLayout(page);
    verticalLayout->setObjectName(QStringLiteral("verticalLayout"));
    verticalLayout->setContentsMargins(SideMargin, 0, SideMargin, 0);
    verticalLayout->setSpacing(BlockSpacing);

    const Row marketRows[] = {
        {{"dowJonesLabel", "道琼斯指", "dowJonesValue"}, {"nasdaqLabel", "纳指", "nasdaqValue"}},
        {{"hsiLabel", "恒生指数", "hsiValue"}, {"hstechLabel", "恒生科技", "hstechValue"}},
        {{"a50Label", "富时A50", "a50Value"}, {"bse50Label", "北证50", "bse50Value"}},
        {{"shanghaiLabel", "上证指数", "shanghaiValue"}, {"cybLabel", "创业板指", "cybValue"}},
        {{"riseCountLabel", "🟥上涨", "riseCountValue"},
         {"fallCountLabel", "🟩下跌", "fallCountValue"}},
        {{"limitUpCountLabel", "⭕️涨停", "limitUpCountValue"},
         {"limitDownCountLabel", "⛔️跌停", "limitDownCountValue"}},
        {{"consecutiveBoardCountLabel", "🎯连板", "consecutiveBoardCountValue"},
         {"brokenBoardCountLabel", "💥炸板", "brokenBoardCountValue"}},
    };
    const Row boardRows[] = {
        {{"yesterdayBoardCountLabel", "昨日连板数", "yesterdayBoardCountValue"},
         {"boardPromotionRateLabel", "连板晋级率", "boardPromotionRateValue"}},
        {{"boardOpenPremiumRateLabel", "连板开盘溢价", "boardOpenPremiumRateValue"},
         {"boardPremiumRateLabel", "连板溢价", "boardPremiumRateValue"}},
        {{"firstBoardOpenPremiumRateLabel", "首板开盘溢价", "firstBoardOpenPremiumRateValue"},
         {"firstBoardPremiumRateLabel", "首板溢价", "firstBoardPremiumRateValue"}},
    };

    marketStatsLayout = makeGrid("marketStatsLayout");
    verticalLayout->addLayout(marketStatsLayout);
    for (const Row &row : marketRows)
        addRow(marketStatsLayout, marketStatsLayout->count() / ColumnCount, row);

    const int sealingRow = marketStatsLayout->count() / ColumnCount;
    marketStatsLayout->addWidget(makeCaption("sealingRateLabel", QStringLiteral("封板率")), sealingRow, 0);
    sealingRateProgressBar = new QProgressBar;
    sealingRateProgressBar->setObjectName(QStringLiteral("sealingRateProgressBar"));
    sealingRateProgressBar->setFormat(QStringLiteral("%p%"));
    sealingRateProgressBar->setTextVisible(true);
    sealingRateProgressBar->setValue(0);
    sealingRateProgressBar->setAccessibleName(QStringLiteral("封板率"));
    marketStatsLayout->addWidget(sealingRateProgressBar, sealingRow, 1, 1, ColumnCount - 1);

    boardStatsLayout = makeGrid("boardStatsLayout");
    verticalLayout->addLayout(boardStatsLayout);
    for (const Row &row : boardRows)
        addRow(boardStatsLayout, boardStatsLayout->count() / ColumnCount, row);
    buildRanking(page);
    verticalLayout->addStretch();
}

QLabel *MarketStatisticsUi::makeCaption(const char *objectName, const QString &text, bool inTheMiddle)
{
    auto *caption = new QLabel(text);
    caption->setObjectName(latin(objectName));
    caption->setTextFormat(Qt::PlainText);
    if (inTheMiddle)
        caption->setContentsMargins(PairSpacing, 0, 0, 0);
    captions.append(caption);
    return caption;
}

void MarketStatisticsUi::addRow(QGridLayout *grid, int row, const Row &cells)
{
    int column = 0;
    for (const Cell &cell : {cells.left, cells.right}) {
        grid->addWidget(makeCaption(cell.captionName, QString::fromUtf8(cell.caption), column > 0), row,
                        column);
        auto *value = new QLabel(unknown());
        value->setObjectName(latin(cell.valueName));
        value->setTextFormat(Qt::PlainText);
        // On one edge, where signs and digits come and go on the left.
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setAccessibleName(QString::fromUtf8(cell.caption));
        values.insert(value->objectName(), value);
        grid->addWidget(value, row, column + 1);
        column += 2;
    }
}

void MarketStatisticsUi::buildRanking(QWidget *page)
{
    const int row = boardStatsLayout->count() / ColumnCount;
    boardRankingTitleLayout = new QHBoxLayout;
    boardRankingTitleLayout->setObjectName(QStringLiteral("boardRankingTitleLayout"));
    boardRankingTitleLabel = new QLabel(QStringLiteral("连板前3名股票行情"));
    boardRankingTitleLabel->setObjectName(QStringLiteral("boardRankingTitleLabel"));
    boardRankingUpdateTimeLabel = new QLabel(QStringLiteral("更新时间: --"));
    boardRankingUpdateTimeLabel->setObjectName(QStringLiteral("boardRankingUpdateTimeLabel"));
    boardRankingUpdateTimeLabel->setTextFormat(Qt::PlainText);
    boardRankingUpdateTimeLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    boardRankingTitleLayout->addWidget(boardRankingTitleLabel);
    boardRankingTitleLayout->addStretch();
    boardRankingTitleLayout->addWidget(boardRankingUpdateTimeLabel);
    boardRankingTitleLayout->setContentsMargins(0, BlockSpacing, 0, 0);
    boardStatsLayout->addLayout(boardRankingTitleLayout, row, 0, 1, ColumnCount);

    const QStringList headers{QStringLiteral("连板"), QStringLiteral("股票"), QStringLiteral("涨幅"),
                              QStringLiteral("开盘"), QStringLiteral("最低"), QStringLiteral("最高")};
    boardRankingTable = new QTableWidget(RankingRows, headers.size(), page);
    boardRankingTable->setObjectName(QStringLiteral("boardRankingTable"));
    boardRankingTable->setHorizontalHeaderLabels(headers);
    // Captions stand on the edge that their columns stand on.
    boardRankingTable->horizontalHeaderItem(1)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int column = 2; column < headers.size(); ++column)
        boardRankingTable->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    boardRankingTable->setSortingEnabled(false);
    boardRankingTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    boardRankingTable->setMinimumSize(400, 130);
    boardRankingTable->setMaximumSize(1000, 200);
    // As high as its rows: what is free lies below it.
    boardRankingTable->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    boardRankingTable->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    boardRankingTable->setAccessibleName(boardRankingTitleLabel->text());
    boardRankingTable->horizontalHeader()->setSectionsClickable(false);
    boardRankingTable->horizontalHeader()->setHighlightSections(false);
    boardRankingTable->verticalHeader()->hide();
    for (QHeaderView *header : {boardRankingTable->horizontalHeader(), boardRankingTable->verticalHeader()})
        header->setMinimumSectionSize(1);
    boardStatsLayout->addWidget(boardRankingTable, row + 1, 0, 1, ColumnCount);
}

void MarketStatisticsUi::setFontSizes(int captionSize, int valueSize, int titleSize)
{
    const QFont captionFont = sized(captionSize);
    int leftWidth = 0;
    int rightWidth = 0;
    for (QLabel *caption : qAsConst(captions)) {
        caption->setFont(captionFont);
        int &columnWidth = caption->contentsMargins().left() > 0 ? rightWidth : leftWidth;
        columnWidth = qMax(columnWidth, caption->sizeHint().width());
    }
    // Captions and values of the two grids stand below each other.
    for (QGridLayout *grid : {marketStatsLayout, boardStatsLayout}) {
        grid->setColumnMinimumWidth(0, leftWidth);
        grid->setColumnMinimumWidth(2, rightWidth);
    }

    const QFontMetrics widest(sized(valueSize, QFont::Bold));
    const int width = qMax(widest.horizontalAdvance(QStringLiteral("-88.88%")),
                           widest.horizontalAdvance(QStringLiteral("100.00%")));
    const int height = widest.height() + GroundHeight;
    const QFont valueFont = sized(valueSize);
    for (QLabel *value : qAsConst(values)) {
        // A style sheet's font would outlive the one that is set.
        value->setStyleSheet(QString());
        value->setFont(valueFont);
        value->setMinimumSize(width, height);
    }
    // The one on a ground: such a label also indents its text by half an x.
    const int onGround = width + GroundWidth + widest.horizontalAdvance(QLatin1Char('x')) / 2;
    marketStatsLayout->setColumnMinimumWidth(3, onGround);
    boardStatsLayout->setColumnMinimumWidth(3, onGround);

    const QFont timeFont = sized(titleSize);
    boardRankingTitleLabel->setFont(sized(titleSize, QFont::Bold));
    boardRankingUpdateTimeLabel->setFont(timeFont);
    boardRankingUpdateTimeLabel->setMinimumWidth(
        QFontMetrics(timeFont).horizontalAdvance(QStringLiteral("更新时间: 88:88:88")));
}

void MarketStatisticsUi::setRankingFontSize(int fontSize)
{
    boardRankingTable->setFont(sized(fontSize));
    QHeaderView *header = boardRankingTable->horizontalHeader();
    header->setFont(sized(fontSize, QFont::Bold));
    // The captions are written in the viewport's font, which an application style sheet keeps from following.
    header->viewport()->setFont(header->font());
}
