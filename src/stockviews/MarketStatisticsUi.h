#pragma once

#include <QFont>
#include <QList>
#include <QMap>
#include <QString>

class QGridLayout;
class QHBoxLayout;
class QLabel;
class QProgressBar;
class QTableWidget;
class QVBoxLayout;
class QWidget;

/// The widgets of the market page, with their object names and captions. It holds no rule and no connection.
struct MarketStatisticsUi
{
    /// Builds everything into an empty page. Values show "--", the bar shows 0.
    void setupUi(QWidget *page);

    /// Sets the sizes of captions, values and the ranking's title, in points, and takes what values look like
    /// away. The widths that figures need are kept free, so that no figure moves anything.
    void setFontSizes(int captionSize, int valueSize, int titleSize);
    /// Sets the size of the ranking's font, in points.
    void setRankingFontSize(int fontSize);

    QVBoxLayout *verticalLayout = nullptr;
    QGridLayout *marketStatsLayout = nullptr;
    QGridLayout *boardStatsLayout = nullptr;
    QHBoxLayout *boardRankingTitleLayout = nullptr;

    QList<QLabel *> captions;
    QMap<QString, QLabel *> values; ///< by their object names
    QProgressBar *sealingRateProgressBar = nullptr;
    QLabel *boardRankingTitleLabel = nullptr;
    QLabel *boardRankingUpdateTimeLabel = nullptr;
    QTableWidget *boardRankingTable = nullptr;

private:
    /// A caption with its value beside it.
    struct Cell
    {
        const char *captionName;
        const char *caption;
        const char *valueName;
    };
    struct Row
    {
        Cell left;
        Cell right;
    };

    static QFont sized(int points, QFont::Weight weight = QFont::Normal);
    void addRow(QGridLayout *grid, int row, const Row &cells);
    QLabel *makeCaption(const char *objectName, const QString &text, bool inTheMiddle = false);
    void buildRanking(QWidget *page);
};
