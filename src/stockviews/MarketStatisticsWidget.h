#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/LabelContent.h"

#include <QDateTime>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QTimer;
class StockApiClient;
struct MarketStatisticsUi;

/// The market page: changes of indices, the day's counts, what became of yesterday's boards, the sealing rate
/// and the three highest boards. It asks the service on a timer of its own, whether it is in sight or not,
/// and whenever refreshData() says so; nothing is asked at construction. A failed query is logged and keeps
/// what is on the page.
///
/// In a frameless window the page moves the window by the left button, except at the window's edges.
///
/// Widgets keep the object names of MarketStatisticsUi.
class MarketStatisticsWidget final : public QWidget
{
    Q_OBJECT

public:
    /// The time of now.
    using Clock = std::function<QDateTime()>;

    explicit MarketStatisticsWidget(QWidget *parent = nullptr);
    /// \param clock tells whether a ranking is of a day that is over
    explicit MarketStatisticsWidget(Clock clock, QWidget *parent = nullptr);
    ~MarketStatisticsWidget() override;
    Q_DISABLE_COPY_MOVE(MarketStatisticsWidget)

    /// Takes over the sizes and the refresh interval of the settings; the timer starts anew.
    void applyFontSettings();
    /// Asks for the figures of today.
    void refreshData();
    /// Asks the service that StockApiConfig holds now: a client keeps the one that it was built for. What is
    /// on its way is dropped with the old client.
    void useConfiguredService();

protected:
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private slots:
    void onMarketStatisticsReceived(const MarketStatisticsData &received);
    void onQueryError(const QString &error, const QString &requestType);
    void onRefreshTimerTimeout();

private:
    void connectClient();
    void startRefreshTimer();
    int valuePointSize() const;
    void showFigures(const LabelContents &figures);
    void showCounts();
    void showBoards();
    void showSealing(double rate);
    void showIndices();
    void showRanking(const QList<TopBoardInfo> &topBoards);
    void fillRanking();
    void clearRanking();
    void setUpRanking();
    /// Puts the title, the time and the ranking into the colours of the skin.
    void applySkin();
    bool windowIsFrameless() const;

    std::unique_ptr<MarketStatisticsUi> m_ui;
    QPointer<StockApiClient> m_apiClient;
    QTimer *m_refreshTimer;
    bool m_dragging = false;
    QPoint m_dragStartOffset;
    Clock m_clock;
    std::optional<MarketStatisticsData> m_data; ///< the last that came
    QList<TopBoardInfo> m_ranking;              ///< on show, empty for none
};
