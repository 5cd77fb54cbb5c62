#include "support/LogCapture.h"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>

namespace {

QMutex mutex;
QStringList captured;
QtMessageHandler handlerBefore = nullptr;

void capture(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg) {
        const QMutexLocker lock(&mutex);
        captured.append(message);
    }
    if (handlerBefore)
        handlerBefore(type, context, message);
}

} // namespace

LogCapture::LogCapture()
{
    const QMutexLocker lock(&mutex);
    captured.clear();
    handlerBefore = qInstallMessageHandler(capture);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(handlerBefore);
    const QMutexLocker lock(&mutex);
    handlerBefore = nullptr;
}

QStringList LogCapture::lines() const
{
    const QMutexLocker lock(&mutex);
    return captured;
}

int LogCapture::count(const QString &part) const
{
    const QStringList all = lines();
    return static_cast<int>(
        std::count_if(all.begin(), all.end(), [&part](const QString &line) { return line.contains(part); }));
}
