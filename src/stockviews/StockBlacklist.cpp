#include "stockviews/StockBlacklist.h"

#include "stockclient/StockApiClient.h"
#include "stockviews/BlacklistRules.h"

#include <utility>

StockBlacklist::StockBlacklist(StockApiClient *client, std::function<bool()> isLoggedIn, QObject *parent)
    : QObject(parent), m_client(client), m_isLoggedIn(std::move(isLoggedIn))
{}

void StockBlacklist::setClient(StockApiClient *client)
{
    m_client = client;
    m_isManualBlacklistCheck = false;
}

void StockBlacklist::forget()
{
    m_isInBlacklist = false;
    m_blacklistReason.clear();
    m_isManualBlacklistCheck = false;
    emit displayChanged();
    m_markedCode.clear();
}

void StockBlacklist::setStock(const QString &code, const QString &name)
{
    m_shown = {code, name};
}

StockBlacklist::Stock StockBlacklist::withItsName(const Stock &stock) const
{
    // The name may have come in the meantime.
    return stock.name.isEmpty() && stock.code == m_shown.code ? m_shown : stock;
}

void StockBlacklist::sendCheck()
{
    m_checked = m_shown;
    m_client->checkBlacklist(m_shown.code);
}

void StockBlacklist::check()
{
    if (m_shown.code.isEmpty() || !m_isLoggedIn()) {
        m_checked = {};
        return;
    }
    m_isManualBlacklistCheck = false;
    sendCheck();
}

void StockBlacklist::manage()
{
    if (!m_isLoggedIn())
        return;
    if (m_shown.code.isEmpty()) {
        showFailure(QStringLiteral("请先查询股票信息"));
        return;
    }
    emit statusShown(BlacklistRules::checkingText(), BlacklistRules::progressStyle());
    m_isManualBlacklistCheck = true;
    sendCheck();
}

void StockBlacklist::onCheckBlacklistFinished(bool success, const QJsonObject &data)
{
    if (!success) {
        showFailure(QStringLiteral("检查黑名单状态失败"));
        return;
    }
    // An answer to no check of ours can only be meant for the stock on show.
    if (m_checked.code.isEmpty())
        m_checked = m_shown;
    m_isInBlacklist = data.value(QLatin1String("in_blacklist")).toBool();
    m_markedCode = m_checked.code;
    m_blacklistReason = m_isInBlacklist ? BlacklistRules::shownReason(data) : QString();
    emit displayChanged();
    if (!std::exchange(m_isManualBlacklistCheck, false)) {
        if (m_isInBlacklist)
            showListed();
        return;
    }
    m_asked = withItsName(m_checked);
    if (m_isInBlacklist)
        emit removalAsked(BlacklistRules::removalQuestion(m_asked.name, m_asked.code, m_blacklistReason));
    else
        emit additionAsked();
}

void StockBlacklist::add(const QString &reason)
{
    m_added = askedStock();
    emit statusShown(QStringLiteral("正在添加到黑名单..."), BlacklistRules::progressStyle());
    m_client->addToBlacklist(m_added.code, m_added.name, BlacklistRules::ReasonType, reason);
}

void StockBlacklist::remove()
{
    m_removed = askedStock();
    emit statusShown(QStringLiteral("正在从黑名单移除..."), BlacklistRules::progressStyle());
    m_client->removeFromBlacklist(m_removed.code);
}

void StockBlacklist::keep()
{
    if (m_isInBlacklist && concerns(m_asked.code))
        showListed();
}

void StockBlacklist::onAddToBlacklistFinished(bool success, const QString &message)
{
    if (!success) {
        showFailure(QStringLiteral("添加黑名单失败"));
        emit failed(message);
        return;
    }
    if (m_added.code == m_shown.code) {
        m_isInBlacklist = true;
        m_markedCode = m_added.code;
        m_isManualBlacklistCheck = false;
        // So that the reason comes from the service.
        sendCheck();
    }
    emit statusShown(QStringLiteral("已添加到黑名单: ") +
                         BlacklistRules::stockText(m_added.name, m_added.code),
                     BlacklistRules::successStyle());
    emit done(message);
}

void StockBlacklist::onRemoveFromBlacklistFinished(bool success, const QString &message)
{
    if (!success) {
        showFailure(QStringLiteral("移除黑名单失败"));
        emit failed(message);
        return;
    }
    // The stock on show by now may be another one, with a mark of its own.
    if (concerns(m_removed.code)) {
        m_isInBlacklist = false;
        m_blacklistReason.clear();
        emit displayChanged();
    }
    emit statusShown(QStringLiteral("已从黑名单移除: ") +
                         BlacklistRules::stockText(m_removed.name, m_removed.code),
                     BlacklistRules::successStyle());
    emit done(message);
}

void StockBlacklist::showListed()
{
    // Under another stock the line would be taken for that one's.
    if (!concerns(m_shown.code))
        return;
    emit statusShown(QStringLiteral("⚠️ 黑名单股票：") + m_blacklistReason,
                     BlacklistRules::failureStyle());
}

void StockBlacklist::showFailure(const QString &text)
{
    emit statusShown(text, BlacklistRules::failureStyle());
}
