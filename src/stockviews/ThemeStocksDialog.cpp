#include "stockviews/ThemeStocksDialog.h"

#include "settings/ConfigManager.h"
#include "stockviews/ChipLayout.h"
#include "stockviews/ElidingLabel.h"
#include "stockviews/PanelPlacement.h"
#include "stockviews/ParagraphLabel.h"
#include "stockviews/StockRenderSettings.h"
#include "stockviews/StockRendering.h"
#include "stockviews/TextPlate.h"

#include <QCoreApplication>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace {

constexpr int chipSpacing = 4;
constexpr int roundsToSettle = 3;
constexpr int secondMeasureMs = 100;
constexpr int scrollBarWidth = 10;

ParagraphLabel *makeParagraph(const QString &objectName, const QString &text, const QString &style)
{
    auto *label = new ParagraphLabel(text);
    label->setObjectName(objectName);
    label->setStyleSheet(style);
    return label;
}

} // namespace

ThemeStocksDialog::ThemeStocksDialog(const QString &stockCode, const QString &stockName, int position,
                                     QWidget *parent)
    : FloatingPanel(QStringLiteral("概念题材"),
                    {[] { return ConfigManager::instance()->getThemeCustomPosition(); },
                     [](const QPoint &place) { ConfigManager::instance()->setThemeCustomPosition(place); }},
                    parent)
    , m_stockCode(stockCode)
    , m_stockName(stockName)
    , m_position(position)
    , m_scrollArea(new QScrollArea)
    , m_content(new QWidget)
    , m_contentLayout(new QVBoxLayout(m_content))
    , m_settleTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("themeStocksDialog"));
    m_content->setObjectName(QStringLiteral("themeContent"));
    m_contentLayout->setContentsMargins(0, 2, 0, 2);
    m_contentLayout->setSpacing(0);
    m_scrollArea->setObjectName(QStringLiteral("themeScrollArea"));
    m_scrollArea->setWidgetResizable(true);
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A list of one line may be lower than a scroll area likes to be.
    m_scrollArea->setMinimumSize(1, 1);
    m_scrollArea->setWidget(m_content);
    m_scrollArea->verticalScrollBar()->setStyleSheet(ThemePanelLook::scrollBarStyle());
    m_content->setAttribute(Qt::WA_StyledBackground);
    m_content->setAutoFillBackground(false);
    panelLayout()->addWidget(m_scrollArea, 1);

    m_settleTimer->setSingleShot(true);
    m_settleTimer->setInterval(secondMeasureMs);
    connect(m_settleTimer, &QTimer::timeout, this, &ThemeStocksDialog::measureAgain);
}

void ThemeStocksDialog::setStockInfo(const QString &stockCode, const QString &stockName)
{
    m_stockCode = stockCode;
    m_stockName = stockName;
}

QPoint ThemeStocksDialog::defaultPosition(const QRect &available) const
{
    return PanelPlacement::byOption(m_position, size(), available);
}

void ThemeStocksDialog::setThemes(const QList<ThemeStockInfo> &themes)
{
    const QPointer<ThemeStocksDialog> self(this);
    // One repaint, with everything in its place.
    setUpdatesEnabled(false);
    fill(themes);
    adaptHeight();
    if (self)
        setUpdatesEnabled(true);
}

void ThemeStocksDialog::fill(const QList<ThemeStockInfo> &themes)
{
    m_look = ThemePanelLook::stored();
    setPanelColor(m_look.bgColor);
    m_scrollArea->setStyleSheet(m_look.scrollAreaStyle());
    m_content->setStyleSheet(m_look.contentStyle());
    removeContent();
    m_contentLayout->addWidget(makeHeader(themes));
    for (const ThemeStockInfo &theme : themes)
        m_contentLayout->addWidget(makeCard(theme));
    // Takes what is left over, so that each card has the height that it needs and no more.
    m_contentLayout->addStretch(1);
    m_scrollArea->verticalScrollBar()->setValue(0);
}

void ThemeStocksDialog::removeContent()
{
    while (m_contentLayout->count() > 0) {
        const std::unique_ptr<QLayoutItem> item(m_contentLayout->takeAt(0));
        delete item->widget();
    }
}

QWidget *ThemeStocksDialog::makeHeader(const QList<ThemeStockInfo> &themes) const
{
    auto *card = new QFrame;
    card->setObjectName(QStringLiteral("themeHeaderCard"));
    card->setStyleSheet(m_look.cardStyle());
    auto *layout = new QVBoxLayout(card);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(8);
    const QString color = StockRendering::getMarketColor(m_stockCode, StockRenderSettings::stored(0));
    ParagraphLabel *heading =
        makeParagraph(QStringLiteral("themeHeaderLabel"), ThemePanelLook::heading(m_stockName, m_stockCode),
                      m_look.headingStyle(color));
    // The colours of the boards are chosen for the page; some are hard to tell from a card.
    heading->setPlate(TextPlate::plateFor(QColor(color), QColor(m_look.cardBgColor)));
    layout->addWidget(heading);
    if (themes.isEmpty()) {
        QLabel *nothing = makeParagraph(QStringLiteral("themeNothingLabel"), ThemePanelLook::nothingText(),
                                        m_look.nothingStyle());
        nothing->setAlignment(Qt::AlignCenter);
        layout->addWidget(nothing);
        return card;
    }
    auto *chips = new ChipLayout(chipSpacing);
    for (const ThemeStockInfo &theme : themes) {
        auto *chip = new ElidingLabel(theme.sectorName, card);
        chip->setObjectName(QStringLiteral("themeChip"));
        chip->setAlignment(Qt::AlignCenter);
        chip->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        chip->setStyleSheet(m_look.chipStyle());
        chip->ensurePolished();
        chip->setFixedHeight(ThemePanelLook::chipHeight(chip->fontMetrics().height()));
        chips->addWidget(chip);
    }
    layout->addLayout(chips);
    return card;
}

QWidget *ThemeStocksDialog::makeCard(const ThemeStockInfo &theme) const
{
    auto *card = new QFrame;
    card->setObjectName(QStringLiteral("themeCard"));
    card->setStyleSheet(m_look.cardStyle());
    auto *layout = new QVBoxLayout(card);
    layout->setContentsMargins(10, 6, 10, 6);
    layout->setSpacing(0);
    layout->addWidget(makeParagraph(QStringLiteral("themeNameLabel"), theme.sectorName, m_look.nameStyle()));
    layout->addWidget(makeParagraph(QStringLiteral("themeDescLabel"), ThemePanelLook::description(theme),
                                    m_look.descriptionStyle()));
    return card;
}

void ThemeStocksDialog::adaptHeight()
{
    const QPointer<ThemeStocksDialog> self(this);
    m_settleTimer->stop();
    m_maximumHeight = availableArea().height();
    m_content->setMaximumHeight(QWIDGETSIZE_MAX);
    settleLayout();
    for (int round = 0; round < roundsToSettle; ++round) {
        // A click that comes in here is for the panel as it will be.
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        if (!self)
            return;
    }
    m_firstHeight = contentHeight();
    fitTo(m_firstHeight);
    m_settleTimer->start();
}

void ThemeStocksDialog::settleLayout()
{
    const QMargins margins = panelLayout()->contentsMargins();
    int contentWidth = m_look.width - margins.left() - margins.right();
    int height = m_contentLayout->totalHeightForWidth(contentWidth);
    if (height + frameHeight() > m_maximumHeight) {
        contentWidth -= scrollBarWidth;
        height = m_contentLayout->totalHeightForWidth(contentWidth);
    }
    // With the panel itself at its size, nothing stretches the cards while they are measured.
    fitTo(height);
    panelLayout()->activate();
    // A scroll area that is not shown yet leaves its contents alone.
    m_content->resize(contentWidth, height);
    m_contentLayout->activate();
}

int ThemeStocksDialog::contentHeight() const
{
    int sum = 0;
    int visibleItems = 0;
    for (int i = 0; i < m_contentLayout->count(); ++i) {
        const QWidget *card = m_contentLayout->itemAt(i)->widget();
        if (card == nullptr || card->isHidden())
            continue;
        sum += card->height() < 1 ? card->sizeHint().height() : card->height();
        ++visibleItems;
    }
    const QMargins margins = m_contentLayout->contentsMargins();
    return sum + m_contentLayout->spacing() * std::max(0, visibleItems - 1) + margins.top() +
           margins.bottom();
}

void ThemeStocksDialog::fitTo(int contentHeight)
{
    const int height = contentHeight + frameHeight();
    // Left to itself, a bar that is there makes the texts narrower and so high enough to keep it.
    m_scrollArea->setVerticalScrollBarPolicy(height > m_maximumHeight ? Qt::ScrollBarAlwaysOn
                                                                      : Qt::ScrollBarAlwaysOff);
    resize(m_look.width, std::min(height, m_maximumHeight));
    updatePosition();
}

void ThemeStocksDialog::measureAgain()
{
    const int height = contentHeight();
    if (height < 1 || height >= m_firstHeight)
        return;
    m_content->setMaximumHeight(height);
    fitTo(height);
}
