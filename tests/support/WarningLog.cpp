#include "support/WarningLog.h"

#include <QMutex>
#include <QtGlobal>

namespace {

struct Collected
{
    QMutex mutex;
    QStringList warnings;
    QtMessageHandler previous = nullptr;
};

Collected &collected()
{
    static Collected instance;
    return instance;
}

void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type != QtWarningMsg) {
        if (const QtMessageHandler previous = collected().previous)
            previous(type, context, text);
        return;
    }
    const QMutexLocker locker(&collected().mutex);
    collected().warnings.append(text);
}

} // namespace

WarningLog::WarningLog()
{
    take();
    collected().previous = qInstallMessageHandler(handle);
}

WarningLog::~WarningLog()
{
    qInstallMessageHandler(collected().previous);
}

QStringList WarningLog::take()
{
    const QMutexLocker locker(&collected().mutex);
    QStringList warnings;
    warnings.swap(collected().warnings);
    return warnings;
}
