// The pages of LarkspireApp beside the live list, and what leads to them. Each shows a list that arrives
// whole from one request; the pages take no part in the news cycle, its merges or its alerts.

#include "app/LarkspireApp.h"
#include "app/MainWindowUi.h"
#include "news/ConnectionStatusText.h"
#include "news/CustomTableWidget.h"
#include "news/NewsTables.h"
#include "newsclient/ApiClient.h"

#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QTabWidget>
#include <QTextBrowser>

namespace {

constexpr int PageLimit = 100;
constexpr int FallbackPageIndex = 1;
constexpr qint64 SelectedNewsAgeSeconds = 300;

} // namespace

void LarkspireApp::onTabChanged(int index)
{
    if (index == 0)
        return;
    const QWidget *page = m_ui->mainTabWidget->widget(index);
    if (page == m_ui->marketStatisticsPage) {
        refreshMarketPage();
    } else if (page == m_ui->interactivePlatformPage) {
        refreshInteractiveNews();
    } else if (page == m_ui->selectedNewsPage) {
        refreshSelectedNews();
        // The line above has just set both, so each visit asks once. It stands here as meant.
        const bool old = m_lastSelectedRefresh.isValid() &&
                         m_lastSelectedRefresh.secsTo(m_clock()) > SelectedNewsAgeSeconds;
        if (!m_selectedNewsLoaded || old)
            refreshSelectedNews();
    }
}

void LarkspireApp::refreshInteractiveNews()
{
    if (!m_apiClient) {
        QMessageBox::warning(this, QStringLiteral("刷新失败"), QStringLiteral("API客户端未初始化"));
        return;
    }
    setStatusText(QStringLiteral("正在刷新互动平台新闻..."));
    m_ui->progressBar->show();
    m_apiClient->getInteractivePlatformNews(1, PageLimit);
}

void LarkspireApp::refreshSelectedNews()
{
    if (!m_apiClient) {
        QMessageBox::warning(this, QStringLiteral("刷新失败"), QStringLiteral("API客户端未初始化"));
        return;
    }
    setStatusText(QStringLiteral("正在刷新自选新闻..."));
    m_ui->progressBar->show();
    m_selectedNewsLoaded = true;
    m_lastSelectedRefresh = m_clock();
    m_apiClient->getSelectedNews(1, PageLimit);
}

void LarkspireApp::onRefreshInteractivePlatformClicked()
{
    refreshInteractiveNews();
}

void LarkspireApp::onRefreshSelectedNewsClicked()
{
    refreshSelectedNews();
}

void LarkspireApp::onManageSelectedKeywordsClicked()
{
    // Nothing is refreshed after it: the marks follow with later fetches.
    onKeywordManagerClicked();
}

void LarkspireApp::showList(NewsTableKind kind, const QList<NewsData> &newsList)
{
    CustomTableWidget *table = viewOf(kind).table;
    NewsTables::replaceRows(table, kind, newsList, NewsTables::skinOf(table));
    if (newsList.isEmpty() || !m_config.showNewsDetails)
        return;
    // The details are those of the list's first item, also where the user's sorting has put another row
    // first.
    showDetails(kind, newsList.first());
    table->selectRow(0);
}

void LarkspireApp::makePageCurrent(QWidget *page)
{
    const int index = m_ui->mainTabWidget->indexOf(page);
    m_ui->mainTabWidget->setCurrentIndex(index >= 0 ? index : FallbackPageIndex);
}

// A reply pulls the user to its page, wherever he has gone since; that is meant. Coming to the front
// refreshes the page once more; the reply to that finds it in front already, and there it ends.

void LarkspireApp::onInteractivePlatformNewsReceived(const QList<NewsData> &newsList, int totalCount)
{
    Q_UNUSED(totalCount)
    m_interactiveNews = newsList;
    showList(NewsTableKind::Interactive, newsList);
    m_ui->interactivePlatformCountLineEdit->setText(QString::number(newsList.size()));
    makePageCurrent(m_ui->interactivePlatformPage);
    setStatusText(QStringLiteral("互动平台新闻已更新 (%1 条)").arg(newsList.size()));
    m_ui->progressBar->hide();
}

void LarkspireApp::onSelectedNewsReceived(const QList<NewsData> &newsList, int totalCount)
{
    Q_UNUSED(totalCount)
    m_selectedNews = newsList;
    showList(NewsTableKind::Selected, newsList);
    m_ui->selectedNewsCountLineEdit->setText(QString::number(newsList.size()));
    makePageCurrent(m_ui->selectedNewsPage);
    setStatusText(QStringLiteral("自选新闻已更新 (%1 条)").arg(newsList.size()));
    m_ui->progressBar->hide();
}

void LarkspireApp::onSearchButtonClicked()
{
    const QString text = m_ui->searchLineEdit->text().trimmed();
    if (text.isEmpty())
        refreshNews();
    else
        startSearch(text);
}

void LarkspireApp::onSearchStockNameRequested(const QString &stockName)
{
    startSearch(stockName);
}

void LarkspireApp::startSearch(const QString &keyword)
{
    if (!m_apiClient) {
        QMessageBox::warning(this, QStringLiteral("搜索失败"), QStringLiteral("API客户端未初始化"));
        return;
    }
    m_currentSearchKeyword = keyword;
    showSearchTab();
    setStatusText(QStringLiteral("正在搜索: ") + keyword);
    m_ui->progressBar->show();
    m_apiClient->searchNews(keyword);
}

void LarkspireApp::showSearchTab()
{
    QTabWidget *tabs = m_ui->mainTabWidget;
    if (tabs->indexOf(m_ui->searchPage) < 0)
        tabs->addTab(m_ui->searchPage, QStringLiteral("搜索结果"));
    tabs->setCurrentWidget(m_ui->searchPage);
}

void LarkspireApp::removeSearchTab()
{
    const int index = m_ui->mainTabWidget->indexOf(m_ui->searchPage);
    if (index >= 0)
        m_ui->mainTabWidget->removeTab(index);
}

void LarkspireApp::leaveSearch()
{
    // In this order: without its current tab the widget would bring another page to the front, and that page
    // would refresh itself.
    m_ui->mainTabWidget->setCurrentIndex(0);
    removeSearchTab();
}

void LarkspireApp::onNewsSearchResult(const QList<NewsData> &newsList, int totalCount)
{
    Q_UNUSED(totalCount)
    m_ui->progressBar->hide();
    setStatusText(QStringLiteral("搜索完成，找到 %1 条结果").arg(newsList.size()));
    m_ui->connectionLabel->setText(ConnectionStatusText::connected());
    m_searchResults = newsList;
    showList(NewsTableKind::Search, newsList);
    showSearchTab();
}

// The next two are slots without a control; once there, the search tab stays until the program ends.

void LarkspireApp::onClearSearchClicked()
{
    m_searchResults.clear();
    m_currentSearchKeyword.clear();
    m_ui->searchResultsTableWidget->setRowCount(0);
    m_ui->searchDetailsTextEdit->clear();
    leaveSearch();
}

void LarkspireApp::onNewSearchClicked()
{
    leaveSearch();
    m_ui->searchLineEdit->clear();
    m_ui->searchLineEdit->setFocus();
}

// The next three are connected and empty on purpose.

void LarkspireApp::onSearchTextChanged(const QString &text)
{
    Q_UNUSED(text)
}

void LarkspireApp::onStockAnalysisTabChanged() {}

void LarkspireApp::onStockCodeChanged(const QString &code)
{
    Q_UNUSED(code)
}
