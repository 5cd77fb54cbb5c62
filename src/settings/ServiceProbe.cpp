#include "settings/ServiceProbe.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QTimer>

#include <memory>

std::optional<ServiceAnswer> ServiceProbe::get(const QNetworkRequest &request,
                                               std::chrono::milliseconds limit)
{
    QNetworkAccessManager manager;
    // The same way that the program's clients go.
    manager.setProxy(QNetworkProxy::NoProxy);
    const std::unique_ptr<QNetworkReply> reply(manager.get(request));
    QEventLoop loop;
    connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    connect(this, &ServiceProbe::cancelled, &loop, &QEventLoop::quit);
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    bool timedOut = false;
    connect(&timer, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    timer.start(limit);
    if (!reply->isFinished() && !m_cancelled)
        loop.exec();

    const bool answered = reply->isFinished();
    if (!answered)
        reply->abort();
    if (m_cancelled || (!answered && !timedOut))
        return std::nullopt;
    // What is aborted is closed, and can't be read from.
    return ServiceAnswer{reply->error(), reply->errorString(), answered ? reply->readAll() : QByteArray()};
}

void ServiceProbe::cancel()
{
    m_cancelled = true;
    emit cancelled();
}
