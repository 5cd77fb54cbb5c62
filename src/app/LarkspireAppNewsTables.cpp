// The news tables of LarkspireApp: the live list and its merges, rows, details, and what clicks do.

#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "news/CustomTableWidget.h"
#include "news/MainNewsTable.h"
#include "news/NewsTables.h"
#include "news/SpeechManager.h"

#include <QCursor>
#include <QLabel>

namespace {

constexpr int SpeechExpirySeconds = 45;

} // namespace

void LarkspireApp::displayNews(const QList<NewsData> &newsList)
{
    m_keywordNewsCount = m_mainNews->replaceAll(newsList, NewsTables::skinOf(m_ui->newsTableWidget));
    m_totalNewsCount = newsList.size();
    m_ui->newsCountLabel->setText(
        QStringLiteral("新闻: %1 (关键词: %2)").arg(m_totalNewsCount).arg(m_keywordNewsCount));
    if (newsList.isEmpty())
        return;

    // The service's order counts here, whatever order is on the screen.
    const NewsData &first = newsList.first();
    m_lastNewsId = first.id;
    m_lastNewsTime = first.publishTime;
    m_initialLoadDone = true;
    if (m_config.showNewsDetails) {
        m_ui->newsTableWidget->selectRow(rowOf(first));
        showNewsDetails(first);
    }
}

int LarkspireApp::rowOf(const NewsData &item) const
{
    const CustomTableWidget *table = m_ui->newsTableWidget;
    for (int row = 0; row < table->rowCount(); ++row) {
        const NewsData candidate = NewsTables::newsAt(table, row);
        if (candidate.id == item.id && candidate.title == item.title &&
            candidate.publishTime == item.publishTime)
            return row;
    }
    return 0;
}

bool LarkspireApp::mergeIncrementalNews(const QList<NewsData> &newsList)
{
    const NewsMerge merge = m_mainNews->mergeInFront(newsList, NewsTables::skinOf(m_ui->newsTableWidget));
    if (!merge.merged)
        return false;
    m_totalNewsCount = merge.rowCount;
    m_keywordNewsCount = merge.keywordCount;
    m_ui->newsCountLabel->setText(QStringLiteral("新闻: %1 (关键词: %2) [+%3]")
                                      .arg(m_totalNewsCount)
                                      .arg(m_keywordNewsCount)
                                      .arg(merge.added));
    m_lastNewsId = newsList.first().id;
    m_lastNewsTime = newsList.first().publishTime;
    processNewsAlerts(newsList);
    return true;
}

void LarkspireApp::showFirstRow()
{
    const QTableWidgetItem *item = m_ui->newsTableWidget->item(0, 0);
    if (!item)
        return;
    showNewsDetails(NewsTables::newsOf(item));
    m_mainNews->selectFirstRow();
}

void LarkspireApp::fillNewsRow(int row, const NewsData &item)
{
    fillRow(NewsTableKind::Main, row, item);
}

void LarkspireApp::fillInteractiveRow(int row, const NewsData &item)
{
    fillRow(NewsTableKind::Interactive, row, item);
}

void LarkspireApp::fillSelectedRow(int row, const NewsData &item)
{
    fillRow(NewsTableKind::Selected, row, item);
}

void LarkspireApp::fillSearchRow(int row, const NewsData &item)
{
    fillRow(NewsTableKind::Search, row, item);
}

void LarkspireApp::showNewsDetails(const NewsData &item)
{
    showDetails(NewsTableKind::Main, item);
}

void LarkspireApp::showInteractiveDetails(const NewsData &item)
{
    showDetails(NewsTableKind::Interactive, item);
}

void LarkspireApp::showSelectedDetails(const NewsData &item)
{
    showDetails(NewsTableKind::Selected, item);
}

void LarkspireApp::showSearchDetails(const NewsData &item)
{
    showDetails(NewsTableKind::Search, item);
}

LarkspireApp::NewsView LarkspireApp::viewOf(NewsTableKind kind) const
{
    switch (kind) {
    case NewsTableKind::Interactive:
        return {m_ui->interactivePlatformTableWidget, m_ui->interactivePlatformDetailsTextEdit};
    case NewsTableKind::Selected:
        return {m_ui->selectedNewsTableWidget, m_ui->selectedNewsDetailsTextEdit};
    case NewsTableKind::Search:
        return {m_ui->searchResultsTableWidget, m_ui->searchDetailsTextEdit};
    case NewsTableKind::Main:
        break;
    }
    return {m_ui->newsTableWidget, m_ui->detailsTextEdit};
}

void LarkspireApp::fillRow(NewsTableKind kind, int row, const NewsData &item)
{
    CustomTableWidget *table = viewOf(kind).table;
    NewsTables::fillRow(table, row, kind, item, NewsTables::skinOf(table));
}

void LarkspireApp::showDetails(NewsTableKind kind, const NewsData &item)
{
    QTextBrowser *details = viewOf(kind).details;
    NewsTables::showDetails(details, kind, item, NewsTables::skinOf(this));
}

void LarkspireApp::redisplayDetails()
{
    if (!m_config.showNewsDetails)
        return;
    for (const NewsTableKind kind :
         {NewsTableKind::Main, NewsTableKind::Interactive, NewsTableKind::Selected, NewsTableKind::Search}) {
        const QList<QTableWidgetItem *> selected = viewOf(kind).table->selectedItems();
        if (!selected.isEmpty())
            showDetails(kind, NewsTables::newsAt(viewOf(kind).table, selected.first()->row()));
    }
}

void LarkspireApp::onItemClicked(NewsTableKind kind, int row)
{
    CustomTableWidget *table = viewOf(kind).table;
    const QTableWidgetItem *first = table->item(row, 0);
    if (!first)
        return;
    const NewsData item = NewsTables::newsOf(first);
    if (m_config.showNewsDetails)
        showDetails(kind, item);
    else
        table->showCustomTooltip(item.title, QCursor::pos());
}

void LarkspireApp::onRowReachedByKey(NewsTableKind kind, int row)
{
    // Without details nothing comes up: the tip of a click belongs to the mouse.
    const QTableWidgetItem *first = viewOf(kind).table->item(row, 0);
    if (first && m_config.showNewsDetails)
        showDetails(kind, NewsTables::newsOf(first));
}

void LarkspireApp::speakTitle(const NewsData &item)
{
    if (m_config.enableTts && m_speechManager)
        m_speechManager->speak(item.title, SpeechExpirySeconds);
}

void LarkspireApp::onNewsItemClicked(int row, int column)
{
    Q_UNUSED(column)
    onItemClicked(NewsTableKind::Main, row);
}

void LarkspireApp::onInteractivePlatformItemClicked(int row, int column)
{
    Q_UNUSED(column)
    onItemClicked(NewsTableKind::Interactive, row);
}

void LarkspireApp::onSelectedNewsItemClicked(int row, int column)
{
    Q_UNUSED(column)
    onItemClicked(NewsTableKind::Selected, row);
}

void LarkspireApp::onSearchResultItemClicked(int row, int column)
{
    Q_UNUSED(column)
    onItemClicked(NewsTableKind::Search, row);
}

void LarkspireApp::onNewsItemDoubleClicked(int row, int column)
{
    Q_UNUSED(column)
    if (const QTableWidgetItem *first = m_ui->newsTableWidget->item(row, 0))
        speakTitle(NewsTables::newsOf(first));
}

// The three others speak the item at this place of their list: after the user has sorted the table that is
// not the row clicked, as meant.

void LarkspireApp::onInteractivePlatformItemDoubleClicked(int row, int column)
{
    Q_UNUSED(column)
    if (row >= 0 && row < m_interactiveNews.size())
        speakTitle(m_interactiveNews.at(row));
}

void LarkspireApp::onSelectedNewsItemDoubleClicked(int row, int column)
{
    Q_UNUSED(column)
    if (row >= 0 && row < m_selectedNews.size())
        speakTitle(m_selectedNews.at(row));
}

void LarkspireApp::onSearchResultItemDoubleClicked(int row, int column)
{
    Q_UNUSED(column)
    if (row >= 0 && row < m_searchResults.size())
        speakTitle(m_searchResults.at(row));
}
