#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QString>

/// What became of one request to the service.
struct ServiceAnswer
{
    QNetworkReply::NetworkError error = QNetworkReply::NoError; ///< OperationCanceledError at the time limit
    QString errorString;
    QByteArray body; ///< what arrived of the reply's body, also beside an error
};
