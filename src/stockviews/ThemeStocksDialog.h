#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/FloatingPanel.h"
#include "stockviews/ThemePanelLook.h"

#include <QList>
#include <QString>

class QLabel;
class QScrollArea;
class QTimer;
class QVBoxLayout;

/// The floating panel "概念题材": the concepts that a stock belongs to, as a summary of chips at the top and
/// a card with the description of each. Its look is what the settings hold at the moment of filling it; its
/// height follows its contents, up to that of the screen.
class ThemeStocksDialog final : public FloatingPanel
{
    Q_OBJECT

public:
    /// \param position 0 left, 1 middle, 2 right of the screen, for as long as the user has not dragged it
    ThemeStocksDialog(const QString &stockCode, const QString &stockName, int position,
                      QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(ThemeStocksDialog)

    /// The stock that the next list is about.
    void setStockInfo(const QString &stockCode, const QString &stockName);
    /// Takes effect with the next list.
    void setPositionOption(int position) { m_position = position; }
    /// Shows these concepts, in their order, and adapts the height. Runs the event loop for a moment: whoever
    /// calls it has to reckon with anything that may come in there, the end of the panel included.
    void setThemes(const QList<ThemeStockInfo> &themes);

protected:
    QPoint defaultPosition(const QRect &available) const override;

private:
    void removeContent();
    void fill(const QList<ThemeStockInfo> &themes);
    QWidget *makeHeader(const QList<ThemeStockInfo> &themes) const;
    QWidget *makeCard(const ThemeStockInfo &theme) const;
    void adaptHeight();
    void settleLayout();
    void measureAgain();
    /// Heights of all cards, with what lies between and around them, in pixels.
    int contentHeight() const;
    void fitTo(int contentHeight);

    QString m_stockCode;
    QString m_stockName;
    int m_position;
    ThemePanelLook m_look;
    QScrollArea *m_scrollArea;
    QWidget *m_content;
    QVBoxLayout *m_contentLayout;
    QTimer *m_settleTimer;
    int m_firstHeight = 0;
    int m_maximumHeight = 0; ///< of the panel: that of the screen
};
