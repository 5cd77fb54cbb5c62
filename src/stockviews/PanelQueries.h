#pragma once

#include <QSet>
#include <QString>

/// The stocks that a panel of the stock page has asked the service about and has no answer for: tells the
/// answer for the stock on show from that for one which was left meanwhile, and must not stand under another
/// one's name.
class PanelQueries final
{
public:
    void noteQuery(const QString &code);
    /// The stock that was asked about last; empty before the first.
    QString lastCode() const { return m_lastCode; }

    /// Takes in an answer.
    /// \param answered the stock that it names. Empty for a list of nothing, which names none: it is taken
    /// for
    ///                 that of the stock on show for as long as that one's is to come.
    /// \param shown    the stock on show
    /// \return whether it is about a stock that was left
    bool takeIsOfStockLeft(const QString &answered, const QString &shown);

private:
    QSet<QString> m_underWay;
    QString m_lastCode;
};
