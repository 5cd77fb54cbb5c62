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
/// The answer to a check carries no code: with quick changes of the stock the last answer wins. A new stock
/// does not take the mark away, and a failed check leaves it as it is. What the user is asked, and answers,
/// is about the stock for which the button was pressed, whatever is on show by then.
class StockBlacklist final : public QObject
{
    Q_OBJECT

public:
    struct Stock
    {
        QString code;
        QString name; ///< may be empty
    };

    /// \param client asks the service; it must outlive this object or be replaced by setClient()
    /// \param isLoggedIn without a user nothing is checked, and the button does nothing
    StockBlacklist(StockApiClient *client, std::function<bool()> isLoggedIn, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(StockBlacklist)

    /// Asks another service from now on. Answers of the old client are not waited for.
    void setClient(StockApiClient *client);
    /// Another account, or nobody: the mark of the last one's list goes.
    void forget();

    /// The stock on show. An empty code is none; the name may be empty.
    void setStock(const QString &code, const QString &name);

    /// Checks the stock on show, without a question.
    void check();
    /// What the button does: checks, and then asks whether to remove a listed stock, or for the reason to add
    /// one that is not.
    void manage();

    /// The stock that the user was asked about last.
    Stock askedStock() const { return withItsName(m_asked); }
    /// Puts the stock that was asked about on the list, with a reason that AddToBlacklistDialog has accepted.
    void add(const QString &reason);
    /// Takes the stock that was asked about from the list: the answer yes to removalAsked.
    void remove();
    /// Leaves it on the list: the answer no.
    void keep();

    // The answers of the client, from its signals of these names. They are handed on by whoever owns both.
    void onCheckBlacklistFinished(bool success, const QJsonObject &data);
    void onAddToBlacklistFinished(bool success, const QString &message);
    void onRemoveFromBlacklistFinished(bool success, const QString &message);

    bool isInBlacklist() const { return m_isInBlacklist; }
    /// Whether isInBlacklist() tells of this stock, and not of one that was on show before.
    bool concerns(const QString &code) const { return !code.isEmpty() && m_markedCode == code; }
    /// Why the stock is listed, for display; empty for one that is not.
    QString reason() const { return m_blacklistReason; }

signals:
    /// A line for the status, with its style sheet.
    void statusShown(const QString &text, const QString &style);
    /// The mark of the stock may have changed.
    void displayChanged();
    /// The user is to be asked, with no as the default: remove() or keep().
    void removalAsked(const QString &question);
    /// The user is to be asked for a reason to put askedStock() on the list: add(), or nothing.
    void additionAsked();
    /// Something was done, or could not be done: a box with the service's own words.
    void done(const QString &message);
    void failed(const QString &message);

private:
    void sendCheck();
    Stock withItsName(const Stock &stock) const;
    void showListed();
    void showFailure(const QString &text);

    StockApiClient *m_client;
    std::function<bool()> m_isLoggedIn;
    Stock m_shown;
    Stock m_checked; ///< by the check that was sent last
    Stock m_asked;   ///< what the question or the dialog is about
    Stock m_added;   ///< what was sent last to be added, and to be removed
    Stock m_removed;
    bool m_isInBlacklist = false;
    QString m_markedCode; ///< the stock that was checked when m_isInBlacklist was told
    QString m_blacklistReason;
    bool m_isManualBlacklistCheck = false;
};
