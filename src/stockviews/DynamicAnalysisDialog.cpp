#include "stockviews/DynamicAnalysisDialog.h"

#include "settings/ConfigManager.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/DynamicAnalysisEntryDialog.h"
#include "stockviews/DynamicAnalysisText.h"
#include "stockviews/OpenedBox.h"
#include "stockviews/PanelPlacement.h"
#include "stockviews/ThemePanelLook.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <QtMath>

#include <algorithm>
#include <utility>

namespace {

constexpr int RoomOnScreen = 40; // left free of the screen's height
constexpr int RoomBelowText = 8;
constexpr int TextMargin = 10; // the text begins below the title

QWidget *makeManualBar(QPushButton *button)
{
    auto *note = new QLabel(QStringLiteral("可手动录入/修改异动信息"));
    note->setStyleSheet(QStringLiteral("QLabel { color: #2ecc71; font-size: 13px; }"));
    button->setStyleSheet(QStringLiteral(
        "QPushButton { background-color: #1e8449; color: white; border: none; border-radius: 4px;"
        " padding: 4px 12px; font-size: 13px; }"
        "QPushButton:hover, QPushButton:focus { background-color: #196f3d; }"
        "QPushButton:pressed { background-color: #145a32; }"));
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("manualBar"));
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(10, 4, 10, 6);
    layout->addWidget(note, 1);
    layout->addWidget(button);
    bar->hide();
    return bar;
}

} // namespace

DynamicAnalysisDialog::DynamicAnalysisDialog(QWidget *parent, std::function<QDate()> today)
    : FloatingPanel(QStringLiteral("异动解析"),
                    {[] { return ConfigManager::instance()->getDynamicCustomPosition(); },
                     [](const QPoint &place) { ConfigManager::instance()->setDynamicCustomPosition(place); }},
                    parent)
    , m_today(std::move(today))
    , m_browser(new QTextBrowser)
{
    m_browser->setObjectName(QStringLiteral("analysisBrowser"));
    m_browser->setOpenLinks(false);
    m_browser->setOpenExternalLinks(false);
    m_browser->setFrameShape(QFrame::NoFrame);
    m_browser->document()->setDocumentMargin(TextMargin);
    m_browser->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_browser->verticalScrollBar()->setStyleSheet(ThemePanelLook::scrollBarStyle());
    auto *manualButton = new QPushButton(QStringLiteral("录入异动信息"));
    manualButton->setObjectName(QStringLiteral("manualInputButton"));
    manualButton->setAutoDefault(false);
    m_manualBar = makeManualBar(manualButton);
    panelLayout()->addWidget(m_browser, 1);
    panelLayout()->addWidget(m_manualBar);

    connect(m_browser, &QTextBrowser::anchorClicked, this, &DynamicAnalysisDialog::onAnchorClicked);
    connect(manualButton, &QPushButton::clicked, this, &DynamicAnalysisDialog::onManualInputClicked);
    applyStyle();
}

QPoint DynamicAnalysisDialog::defaultPosition(const QRect &available) const
{
    return PanelPlacement::centred(size(), available);
}

void DynamicAnalysisDialog::applyStyle()
{
    const ConfigManager *const settings = ConfigManager::instance();
    const QString ground = settings->getThemeBgColor();
    setPanelColor(ground);
    m_browser->setStyleSheet(
        QStringLiteral(
            "QTextBrowser {   background-color: %1;   border: none;   color: %2;   font-size: %3px;}")
            .arg(ground, settings->getThemeDescColor(), QString::number(settings->getThemeDescFontSize())));
    resize(settings->getThemeWidth(), height());
}

void DynamicAnalysisDialog::setAnalysis(const QString &stockCode, const QString &stockName,
                                        const QString &tradeDate, const QString &title,
                                        const QString &publishTime, const QString &content,
                                        const QString &sourceUrl)
{
    m_record.stockCode = stockCode;
    m_record.stockName = stockName;
    m_record.tradeDate = tradeDate;
    m_record.title = title;
    m_record.publishTime = publishTime;
    m_record.content = content;
    m_record.sourceUrl = sourceUrl;
    reloadSettings();
}

bool DynamicAnalysisDialog::isWaitingForUser() const
{
    const QList<QDialog *> dialogs = findChildren<QDialog *>(QString(), Qt::FindDirectChildrenOnly);
    return std::any_of(dialogs.cbegin(), dialogs.cend(),
                       [](const QDialog *dialog) { return dialog->isVisible(); });
}

void DynamicAnalysisDialog::reloadSettings()
{
    const DynamicAnalysisText::Look look = DynamicAnalysisText::Look::stored();
    m_browser->clear();
    applyStyle();
    m_manualBar->setVisible(look.manualEdit && DynamicAnalysisText::isEmpty(m_record));
    m_browser->setHtml(DynamicAnalysisText::html(m_record, look));
    // At once, so that it appears in its size, and again when everything has been laid out.
    adjustHeight();
    QTimer::singleShot(0, this, &DynamicAnalysisDialog::adjustHeight);
}

void DynamicAnalysisDialog::adjustHeight()
{
    // Measured without a scroll bar: the one of a panel that is still too low would make its text higher.
    const QMargins margins = panelLayout()->contentsMargins();
    QTextDocument *text = m_browser->document();
    m_browser->ensurePolished(); // the style sheet's font counts before it is shown, too
    text->setTextWidth(width() - margins.left() - margins.right());
    const int barHeight = m_manualBar->isHidden() ? 0 : m_manualBar->sizeHint().height();
    const int wanted = qCeil(text->size().height()) + RoomBelowText + frameHeight() + barHeight;
    const int most = availableArea().height() - RoomOnScreen;
    const bool scrolls = wanted > most;
    m_browser->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    const int settled = qMin(wanted, most);
    if (settled > 0 && settled != height())
        resize(width(), settled);
    if (scrolls && isVisible())
        text->setTextWidth(m_browser->viewport()->width());
    updatePosition();
}

// --- entering an analysis by hand --------------------------------------------------------------------------

void DynamicAnalysisDialog::onAnchorClicked(const QUrl &url)
{
    if (url.scheme() == QLatin1String("manual") && url.path() == QLatin1String("edit"))
        onManualInputClicked();
}

void DynamicAnalysisDialog::onManualInputClicked()
{
    if (m_record.stockCode.isEmpty()) {
        openBox(this, QMessageBox::Warning, QStringLiteral("提示"),
                QStringLiteral("当前股票代码为空，无法录入异动信息"));
        return;
    }
    // The panel may go on to another stock while the user writes about this one.
    DynamicAnalysisRecord record = m_record;
    auto *entry = new DynamicAnalysisEntryDialog(record.title, this);
    entry->setAttribute(Qt::WA_DeleteOnClose);
    connect(entry, &QDialog::accepted, this, [this, entry, record]() mutable {
        record.title = entry->title();
        record.content = entry->content();
        record.tradeDate = DynamicAnalysisText::tradeDate(record.publishTime, m_today());
        record.publishTime.clear();
        record.sourceUrl = QStringLiteral("manual");
        save(record);
    });
    entry->show();
}

void DynamicAnalysisDialog::save(const DynamicAnalysisRecord &record)
{
    auto *client = new StockApiClient(this);
    const auto fail = [this, client](const QString &message) {
        client->disconnect(this);
        client->deleteLater();
        openBox(this, QMessageBox::Warning, QStringLiteral("错误"),
                message.isEmpty() ? QStringLiteral("保存失败") : message);
    };
    connect(client, &StockApiClient::dynamicAnalysisSaved, this,
            [this, client, record, fail](bool success, const QString &message) {
                if (!success) {
                    fail(message);
                    return;
                }
                client->disconnect(this);
                client->deleteLater();
                if (record.stockCode == m_record.stockCode)
                    setAnalysis(record.stockCode, record.stockName, record.tradeDate, record.title,
                                record.publishTime, record.content, record.sourceUrl);
            });
    connect(client, &StockApiClient::queryError, this, fail);
    client->saveDynamicAnalysis(record);
}
