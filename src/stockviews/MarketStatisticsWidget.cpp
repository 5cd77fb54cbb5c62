#include "stockviews/MarketStatisticsWidget.h"

#include "settings/ConfigManager.h"
#include "settings/SkinLightness.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/MarketRendering.h"
#include "stockviews/MarketStatisticsUi.h"
#include "stockviews/StockPageRules.h"

#include <QDebug>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QPalette>
#include <QProgressBar>
#include <QTableWidget>
#include <QTimer>

#include <utility>

namespace {

constexpr int RankingRowCount = 3;

void dress(QWidget *widget, const QString &style)
{
    if (widget->styleSheet() != style)
        widget->setStyleSheet(style);
}

QTableWidgetItem *makeItem(const MarketRendering::RankingCell &cell, const QColor &background)
{
    auto *item = new QTableWidgetItem(cell.text);
    item->setTextAlignment(cell.alignment);
    if (background.isValid())
        item->setBackground(background);
    if (cell.foreground.isValid())
        item->setForeground(cell.foreground);
    if (cell.bold) {
        QFont font(item->font());
        font.setBold(true);
        item->setFont(font);
    }
    return item;
}

bool changesTheSkin(const QEvent *event)
{
    return event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange;
}

} // namespace

MarketStatisticsWidget::MarketStatisticsWidget(QWidget *parent)
    : MarketStatisticsWidget([] { return QDateTime::currentDateTime(); }, parent)
{}

MarketStatisticsWidget::MarketStatisticsWidget(Clock clock, QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<MarketStatisticsUi>())
    , m_apiClient(new StockApiClient(this))
    , m_refreshTimer(new QTimer(this))
    , m_clock(std::move(clock))
{
    m_ui->setupUi(this);
    m_ui->boardRankingTable->installEventFilter(this);
    // Dressed from the start: its height depends on it.
    showSealing(0.0);
    connectClient();
    connect(m_refreshTimer, &QTimer::timeout, this, &MarketStatisticsWidget::onRefreshTimerTimeout);
    applyFontSettings();
}

MarketStatisticsWidget::~MarketStatisticsWidget() = default;

void MarketStatisticsWidget::connectClient()
{
    connect(m_apiClient, &StockApiClient::marketStatisticsReceived, this,
            &MarketStatisticsWidget::onMarketStatisticsReceived);
    connect(m_apiClient, &StockApiClient::queryError, this, &MarketStatisticsWidget::onQueryError);
}

void MarketStatisticsWidget::useConfiguredService()
{
    delete m_apiClient;
    m_apiClient = new StockApiClient(this);
    connectClient();
}

void MarketStatisticsWidget::applyFontSettings()
{
    const ConfigManager *settings = ConfigManager::instance();
    m_ui->setFontSizes(settings->getMarketLabelFontSize(), settings->getMarketValueFontSize(),
                       settings->getMarketTitleFontSize());
    setUpRanking();
    applySkin();
    if (m_data) {
        // The figures' styles name the size.
        showCounts();
        showBoards();
        showIndices();
    }
    startRefreshTimer();
}

void MarketStatisticsWidget::startRefreshTimer()
{
    const int configured = ConfigManager::instance()->getMarketRefreshInterval();
    const int seconds = MarketRendering::effectiveRefreshInterval(configured);
    if (seconds != configured)
        qWarning("刷新间隔小于10秒，已调整为10秒");
    m_refreshTimer->stop();
    m_refreshTimer->start(MarketRendering::refreshTimerInterval(configured));
}

void MarketStatisticsWidget::onRefreshTimerTimeout()
{
    refreshData();
}

void MarketStatisticsWidget::refreshData()
{
    if (m_apiClient)
        m_apiClient->getMarketStatistics();
    else
        qWarning("API客户端未设置，无法刷新市场统计");
}

void MarketStatisticsWidget::onQueryError(const QString &error, const QString &requestType)
{
    if (requestType == QLatin1String("marketStatistics"))
        qWarning().noquote() << QStringLiteral("查询市场统计失败:") << error;
}

void MarketStatisticsWidget::onMarketStatisticsReceived(const MarketStatisticsData &received)
{
    m_data = received;
    showCounts();
    m_ui->boardRankingUpdateTimeLabel->setText(MarketRendering::updateTimeText(received.updateTime));
    showRanking(received.topBoards);
    showBoards();
    showIndices();
}

int MarketStatisticsWidget::valuePointSize() const
{
    return m_ui->values.first()->font().pointSize();
}

void MarketStatisticsWidget::showFigures(const LabelContents &figures)
{
    for (auto figure = figures.cbegin(); figure != figures.cend(); ++figure) {
        QLabel *label = m_ui->values.value(figure.key());
        label->setText(figure->text);
        if (figure->style)
            dress(label, *figure->style);
    }
}

void MarketStatisticsWidget::showCounts()
{
    showFigures(MarketRendering::countFigures(*m_data, valuePointSize()));
}

void MarketStatisticsWidget::showBoards()
{
    showFigures(MarketRendering::boardFigures(*m_data, valuePointSize()));
    showSealing(m_data->sealingRate);
}

void MarketStatisticsWidget::showSealing(double rate)
{
    const MarketRendering::SealingContent sealing = MarketRendering::sealingRate(rate);
    QProgressBar *bar = m_ui->sealingRateProgressBar;
    bar->setValue(sealing.value);
    dress(bar, sealing.style);
    QPalette palette = bar->palette();
    if (palette.color(QPalette::Text) != sealing.textColor) {
        palette.setColor(QPalette::Text, sealing.textColor);
        bar->setPalette(palette);
    }
}

void MarketStatisticsWidget::showIndices()
{
    showFigures(MarketRendering::indexFigures(*m_data, valuePointSize()));
}

void MarketStatisticsWidget::showRanking(const QList<TopBoardInfo> &topBoards)
{
    if (topBoards.isEmpty())
        return;
    if (MarketRendering::isStale(topBoards, m_clock())) {
        clearRanking();
        return;
    }
    m_ranking = topBoards;
    setUpRanking();
    m_ui->boardRankingTable->setShowGrid(true);
    fillRanking();
}

void MarketStatisticsWidget::clearRanking()
{
    m_ranking.clear();
    m_ui->boardRankingTable->clearContents();
    m_ui->boardRankingTable->setShowGrid(false);
    m_ui->boardRankingTable->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void MarketStatisticsWidget::setUpRanking()
{
    const int fontSize = ConfigManager::instance()->getMarketBoardRankingFontSize();
    const int section = MarketRendering::sectionSize(fontSize);
    QTableWidget *table = m_ui->boardRankingTable;
    m_ui->setRankingFontSize(fontSize);
    table->setTextElideMode(Qt::ElideNone);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setFocusPolicy(Qt::NoFocus);
    table->setWordWrap(false);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->horizontalHeader()->setDefaultSectionSize(section);
    table->verticalHeader()->setDefaultSectionSize(section);
    for (int row = 0; row < RankingRowCount; ++row)
        table->setRowHeight(row, section);
    table->setMinimumHeight(RankingRowCount * section + table->horizontalHeader()->sizeHint().height() +
                            2 * table->frameWidth());
}

void MarketStatisticsWidget::fillRanking()
{
    QTableWidget *table = m_ui->boardRankingTable;
    const bool dark = isDarkSkin(table->palette());
    for (int row = 0; row < RankingRowCount; ++row) {
        const MarketRendering::RankingRow content = row < m_ranking.size()
                                                        ? MarketRendering::rankingRow(m_ranking.at(row), dark)
                                                        : MarketRendering::RankingRow();
        int column = 0;
        for (const MarketRendering::RankingCell &cell : content.cells)
            table->setItem(row, column++, makeItem(cell, content.background));
    }
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
}

void MarketStatisticsWidget::applySkin()
{
    const bool dark = isDarkSkin(palette());
    dress(m_ui->boardRankingTitleLabel, MarketRendering::rankingTitleStyle(dark));
    dress(m_ui->boardRankingUpdateTimeLabel, MarketRendering::updateTimeStyle(dark));
    if (!m_ranking.isEmpty())
        fillRanking();
}

void MarketStatisticsWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (changesTheSkin(event))
        applySkin();
}

bool MarketStatisticsWidget::eventFilter(QObject *watched, QEvent *event)
{
    // The ranking may learn of another skin later than the page.
    if (watched == m_ui->boardRankingTable && changesTheSkin(event) && !m_ranking.isEmpty())
        fillRanking();
    return QWidget::eventFilter(watched, event);
}

bool MarketStatisticsWidget::windowIsFrameless() const
{
    return window()->windowFlags().testFlag(Qt::FramelessWindowHint);
}

void MarketStatisticsWidget::mousePressEvent(QMouseEvent *event)
{
    m_dragging = false;
    const QWidget *frame = window();
    // A press on an edge goes on to the window, which resizes itself.
    if (!windowIsFrameless() || event->button() != Qt::LeftButton ||
        StockPageRules::edgesAt(frame->mapFromGlobal(event->globalPos()), frame->size()) !=
            StockPageRules::NoEdge) {
        QWidget::mousePressEvent(event);
        return;
    }
    m_dragging = true;
    m_dragStartOffset = event->globalPos() - frame->frameGeometry().topLeft();
    event->accept();
}

void MarketStatisticsWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!windowIsFrameless() || !m_dragging || (event->buttons() & Qt::LeftButton) == 0) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    window()->move(event->globalPos() - m_dragStartOffset);
    event->accept();
}

void MarketStatisticsWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (!windowIsFrameless() || event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    m_dragging = false;
    event->accept();
}
