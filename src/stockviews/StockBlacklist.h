#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>

class StockApiClient;

/// The user's blacklist as the stock page uses it: whether the stock on show is listed and why, and the way
/// from the button over the check to a question or to the dialog. The list itself is kept by the service, for
/// the account.
///
/// The answer to a check carries no code: with quick changes of the stock the last answer wins, and a new
/// stock keeps the mark of the old one until its own check is answered. A failed check leaves the mark as it
/// is.
class StockBlacklist final : public QObject
{
    Q_OBJECT

public:
    /// \param client asks the service; it must outlive this object
    /// \param isLoggedIn without a user nothing is checked, and the button does nothing
    StockBlacklist(StockApiClient *client, std::function<bool()> isLoggedIn, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(StockBlacklist)

    /// The stock on show. An empty code is none; the name may be empty.
    void setStock(const QString &code, const QString &name);

    /// Checks the stock on show, without a question.
    void check();
    /// What the button does: checks, and then asks whether to remove a listed stock, or for the reason to add
    /// one that is not.
    void manage();

    /// Puts the stock on show on the list, with a reason that AddToBlacklistDialog has accepted.
    void add(const QString &reason);
    /// Takes the stock on show from the list: the answer yes to removalAsked.
    void remove();
    /// Leaves the stock on the list: the answer no.
    void keep();

    bool isInBlacklist() const { return m_isInBlacklist; }
    /// Why the stock is listed, for display; empty for one that is not.
    QString reason() const { return m_blacklistReason; }

signals:
    /// A line for the status, with its style sheet.
    void statusShown(const QString &text, const QString &style);
    /// The mark of the stock may have changed.
    void displayChanged();
    /// The user is to be asked, with no as the default: remove() or keep().
    void removalAsked(const QString &question);
    /// The user is to be asked for a reason: add(), or nothing.
    void additionAsked();
    /// Something was done, or could not be done: a box with the service's own words.
    void done(const QString &message);
    void failed(const QString &message);

private:
    void onCheckBlacklistFinished(bool success, const QJsonObject &data);
    void onAddToBlacklistFinished(bool success, const QString &message);
    void onRemoveFromBlacklistFinished(bool success, const QString &message);
    void showListed();
    void showFailure(const QString &text);

    StockApiClient *m_client;
    std::function<bool()> m_isLoggedIn;
    QString m_code;
    QString m_name;
    bool m_isInBlacklist = false;
    QString m_blacklistReason;
    bool m_isManualBlacklistCheck = false;
};
