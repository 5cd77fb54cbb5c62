#pragma once

#include "support/RawHttpServer.h"

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QString>
#include <QStringList>

/// A stock service that knows a few stocks and answers as the test says.
class ScriptedStockService final : public QObject
{
    Q_OBJECT

public:
    ScriptedStockService();

    QString url() const { return m_server.url(); }
    RawHttpServer &server() { return m_server; }

    /// The linkage configuration of the user; empty texts for what is not set up.
    QJsonObject linkageConfig;
    /// The "data" of the list of tested versions.
    QJsonObject softwareList;
    /// When set, answers the requests whose path ends so, whatever else would.
    void answerPath(const QByteArray &pathEnd, const RawAnswer &answer)
    {
        m_pathAnswers.insert(pathEnd, answer);
    }
    void forgetAnswers() { m_pathAnswers.clear(); }
    /// The records of single codes; a code without one gets a record of its own making, named "股" and the
    /// code.
    QHash<QString, QJsonObject> records;
    /// The limit-up details of single codes; "NOT FOUND" for the others.
    QHash<QString, QJsonObject> limitUpDetails;
    /// Whether the records are held back until the test releases them.
    bool holdsRecords = false;
    /// Answers the oldest record that is held back, with the record of its code; false when there is none.
    bool releaseOldestRecord();

    /// How many requests are held back.
    int heldCount() const { return m_server.heldRequests().size(); }
    /// Answers the one that has been held back longest; false when there is none.
    bool releaseOldest(const RawAnswer &answer);
    /// Answers the one that came last; false when there is none.
    bool releaseNewest(const RawAnswer &answer);

    /// The targets of all requests for a path that ends so, in the order of arrival.
    QStringList targets(const QByteArray &pathEnd) const;
    /// The bodies of all requests by POST.
    QList<QJsonObject> posted() const;

private:
    RawAnswer answer(const RawRequest &request);
    QJsonObject recordOf(const QString &code) const;

    RawHttpServer m_server;
    QHash<QByteArray, RawAnswer> m_pathAnswers;
};

/// The answer of a service that has what is asked for.
RawAnswer dataAnswer(const QJsonValue &data);
/// The answer of a service that has no such thing.
RawAnswer notFoundAnswer(const QString &error);

/// The "data" of a comprehensive record with believable values, its opening of `day`, "yyyy-MM-dd".
QJsonObject stockRecord(const QString &code, const QString &name, const QString &day);
/// The "data" of a limit-up detail.
QJsonObject limitUpDetail(const QString &code, const QString &name, const QString &day);
