#include "stockviews/StockBlacklist.h"

#include "stockclient/StockApiClient.h"
#include "stockviews/BlacklistRules.h"

#include <utility>

StockBlacklist::StockBlacklist(StockApiClient *client, std::function<bool()> isLoggedIn, QObject *parent)
    : QObject(parent), m_client(client), m_isLoggedIn(std::move(isLoggedIn))
{
    connect(client, &StockApiClient::checkBlacklistFinished, this, &StockBlacklist::onCheckBlacklistFinished);
    connect(client, &StockApiClient::addToBlacklistFinished, this, &StockBlacklist::onAddToBlacklistFinished);
    connect(client, &StockApiClient::removeFromBlacklistFinished, this,
            &StockBlacklist::onRemoveFromBlacklistFinished);
}

void StockBlacklist::setStock(const QString &code, const QString &name)
{
    m_code = code;
    m_name = name;
}

void StockBlacklist::check()
{
    if (m_code.isEmpty() || !m_isLoggedIn())
        return;
    m_isManualBlacklistCheck = false;
    m_client->checkBlacklist(m_code);
}

void StockBlacklist::manage()
{
    if (!m_isLoggedIn())
        return;
    if (m_code.isEmpty()) {
        showFailure(QStringLiteral("请先查询股票信息"));
        return;
    }
    emit statusShown(QStringLiteral("正在检查黑名单状态..."), BlacklistRules::progressStyle());
    m_isManualBlacklistCheck = true;
    m_client->checkBlacklist(m_code);
}

void StockBlacklist::onCheckBlacklistFinished(bool success, const QJsonObject &data)
{
    if (!success) {
        showFailure(QStringLiteral("检查黑名单状态失败"));
        return;
    }
    m_isInBlacklist = data.value(QLatin1String("in_blacklist")).toBool();
    m_blacklistReason = m_isInBlacklist ? BlacklistRules::shownReason(data) : QString();
    emit displayChanged();
    const bool manual = std::exchange(m_isManualBlacklistCheck, false);
    if (!manual) {
        if (m_isInBlacklist)
            showListed();
    } else if (m_isInBlacklist) {
        emit removalAsked(BlacklistRules::removalQuestion(m_name, m_code, m_blacklistReason));
    } else {
        emit additionAsked();
    }
}

void StockBlacklist::add(const QString &reason)
{
    emit statusShown(QStringLiteral("正在添加到黑名单..."), BlacklistRules::progressStyle());
    m_client->addToBlacklist(m_code, m_name, BlacklistRules::ReasonType, reason);
}

void StockBlacklist::remove()
{
    emit statusShown(QStringLiteral("正在从黑名单移除..."), BlacklistRules::progressStyle());
    m_client->removeFromBlacklist(m_code);
}

void StockBlacklist::keep()
{
    showListed();
}

void StockBlacklist::onAddToBlacklistFinished(bool success, const QString &message)
{
    if (!success) {
        showFailure(QStringLiteral("添加黑名单失败"));
        emit failed(message);
        return;
    }
    m_isInBlacklist = true;
    m_isManualBlacklistCheck = false;
    // So that the reason comes from the service.
    m_client->checkBlacklist(m_code);
    emit statusShown(QStringLiteral("已添加到黑名单: ") + BlacklistRules::stockText(m_name, m_code),
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
    m_isInBlacklist = false;
    m_blacklistReason.clear();
    emit displayChanged();
    emit statusShown(QStringLiteral("已从黑名单移除: ") + BlacklistRules::stockText(m_name, m_code),
                     BlacklistRules::successStyle());
    emit done(message);
}

void StockBlacklist::showListed()
{
    emit statusShown(QStringLiteral("⚠️ 黑名单股票：") + m_blacklistReason,
                     BlacklistRules::failureStyle());
}

void StockBlacklist::showFailure(const QString &text)
{
    emit statusShown(text, BlacklistRules::failureStyle());
}
