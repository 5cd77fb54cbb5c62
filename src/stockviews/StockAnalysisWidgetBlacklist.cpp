// The blacklist on the stock page: its button, its mark beside the stock's name, and what is asked.

#include "accounts/AuthManager.h"
#include "newsclient/ServiceWords.h"
#include "stockclient/StockApiClient.h"
#include "stockviews/AddToBlacklistDialog.h"
#include "stockviews/BlacklistRules.h"
#include "stockviews/ElidingLabel.h"
#include "stockviews/OpenedBox.h"
#include "stockviews/StockAnalysisUi.h"
#include "stockviews/StockAnalysisWidget.h"
#include "stockviews/StockBlacklist.h"

#include <QIcon>
#include <QPushButton>

void StockAnalysisWidget::setupBlacklist()
{
    m_blacklist = new StockBlacklist(
        m_apiClient, [this] { return m_authManager && m_authManager->isAuthenticated(); }, this);
    connect(m_ui->blacklistButton, &QPushButton::clicked, this,
            &StockAnalysisWidget::onBlacklistButtonClicked);
    connect(m_blacklist, &StockBlacklist::statusShown, this, &StockAnalysisWidget::showStatus);
    connect(m_blacklist, &StockBlacklist::displayChanged, this, &StockAnalysisWidget::updateBlacklistDisplay);
    connect(m_blacklist, &StockBlacklist::removalAsked, this, &StockAnalysisWidget::askForRemoval);
    connect(m_blacklist, &StockBlacklist::additionAsked, this,
            &StockAnalysisWidget::showAddToBlacklistDialog);
    connect(m_blacklist, &StockBlacklist::done, this, [this](const QString &message) {
        openBox(this, QMessageBox::Information, QStringLiteral("成功"), message);
    });
    connect(m_blacklist, &StockBlacklist::failed, this, [this](const QString &message) {
        openBox(this, QMessageBox::Warning, QStringLiteral("失败"), message);
    });
}

void StockAnalysisWidget::connectBlacklistClient()
{
    connect(m_apiClient, &StockApiClient::checkBlacklistFinished, this,
            &StockAnalysisWidget::onCheckBlacklistFinished);
    connect(m_apiClient, &StockApiClient::addToBlacklistFinished, this,
            &StockAnalysisWidget::onAddToBlacklistFinished);
    connect(m_apiClient, &StockApiClient::removeFromBlacklistFinished, this,
            &StockAnalysisWidget::onRemoveFromBlacklistFinished);
}

void StockAnalysisWidget::onUserChanged()
{
    const bool somebody = m_authManager && m_authManager->isAuthenticated();
    const qint32 userId = somebody ? m_authManager->currentUser().userId : 0;
    if (userId == m_userId)
        return; // a confirmed session, not a login
    m_userId = userId;
    m_blacklist->forget();
    if (m_currentStockCode == m_lastQueriedCode)
        m_blacklist->check();
}

void StockAnalysisWidget::checkBlacklistOfShownStock()
{
    m_blacklist->setStock(m_currentStockCode, m_currentStockName);
    // A stock that is shown anew keeps its mark while it is checked anew.
    updateBlacklistDisplay();
    m_blacklist->check();
}

void StockAnalysisWidget::onBlacklistButtonClicked()
{
    m_blacklist->manage();
}

void StockAnalysisWidget::onCheckBlacklistFinished(bool success, const QJsonObject &answer)
{
    m_blacklist->onCheckBlacklistFinished(success, answer);
}

void StockAnalysisWidget::onAddToBlacklistFinished(bool success, const QString &message)
{
    m_blacklist->onAddToBlacklistFinished(success, message);
}

void StockAnalysisWidget::onRemoveFromBlacklistFinished(bool success, const QString &message)
{
    m_blacklist->onRemoveFromBlacklistFinished(success, message);
}

void StockAnalysisWidget::updateBlacklistDisplay()
{
    const bool listed = m_blacklist->isInBlacklist();
    const QString reason = m_blacklist->reason();
    // The button tells the state as it is, if need be that of the stock before until the new one is checked;
    // a name is marked only by what was told of it.
    const LabelContent button =
        listed ? BlacklistRules::listedButton(reason) : BlacklistRules::unlistedButton();
    m_ui->blacklistButton->setText(button.text);
    m_ui->blacklistButton->setToolTip(ServiceWords::asSent(button.toolTip));
    m_ui->blacklistButton->setAccessibleName(button.toolTip);
    if (m_ui->blacklistButton->styleSheet() != *button.style)
        m_ui->blacklistButton->setStyleSheet(*button.style);
    if (!m_blacklist->concerns(m_currentStockCode))
        return;
    const StockRenderSettings settings = renderSettings();
    m_ui->showContent(
        QStringLiteral("companyNameLabel"),
        listed ? BlacklistRules::listedName(m_currentStockName, m_currentStockCode, reason, settings)
               : BlacklistRules::unlistedName(m_currentStockName, m_currentStockCode, settings));
}

void StockAnalysisWidget::askForRemoval(const QString &question)
{
    QMessageBox *box = openBox(this, QMessageBox::Question, QStringLiteral("黑名单管理"), question,
                               QMessageBox::Yes | QMessageBox::No);
    box->button(QMessageBox::Yes)->setText(QStringLiteral("是"));
    box->button(QMessageBox::No)->setText(QStringLiteral("否"));
    // A style's own green and red pictures would speak of rise and fall.
    const QList<QAbstractButton *> answers = box->buttons();
    for (QAbstractButton *answer : answers)
        answer->setIcon(QIcon());
    box->setDefaultButton(QMessageBox::No);
    connect(box, &QMessageBox::finished, m_blacklist, [this](int answer) {
        if (answer == QMessageBox::Yes)
            m_blacklist->remove();
        else
            m_blacklist->keep();
    });
}

void StockAnalysisWidget::showAddToBlacklistDialog()
{
    const StockBlacklist::Stock stock = m_blacklist->askedStock();
    auto *dialog = new AddToBlacklistDialog(stock.name, stock.code, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, m_blacklist, [this, dialog] { m_blacklist->add(dialog->reason()); });
    connect(dialog, &QDialog::rejected, this, [this] {
        // The check is long over, and nothing else has been told since.
        if (m_ui->statusLabel->text() == BlacklistRules::checkingText())
            showStatus(QString());
    });
    dialog->open();
}
