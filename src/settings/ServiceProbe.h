#pragma once

#include "settings/ServiceAnswer.h"

#include <QNetworkRequest>
#include <QObject>

#include <chrono>
#include <optional>

/// Asks the service something once and waits for the answer in an event loop of its own, so that the program
/// goes on meanwhile. For the tests of settings that are not in use yet: it shares nothing with the clients
/// of the running program. Made for one request.
class ServiceProbe final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Sends a GET and waits until the answer is there whole, \p limit has passed (the answer's error is
    /// OperationCanceledError then), or cancel() was called or the program ends (no answer then).
    std::optional<ServiceAnswer> get(const QNetworkRequest &request, std::chrono::milliseconds limit);

public slots:
    /// Gives a request under way up; get() returns.
    void cancel();

signals:
    void cancelled();

private:
    bool m_cancelled = false;
};
