#include "linkage/TestPlatform.h"

#include "linkage/linux/LinuxPlatformOperations.h"
#include "linkage/linux/WinePlatformOperations.h"

#include <QDir>
#include <QProcess>

#include <csignal>

std::unique_ptr<PlatformOperations> TestPlatform::readingOperations()
{
    return PlatformOperations::forReading();
}

std::unique_ptr<PlatformOperations> TestPlatform::sendingOperations()
{
    // As installed with the desktop, but from where it was built.
    return std::make_unique<WinePlatformOperations>(QStringLiteral(WINE_HELPER));
}

bool TestPlatform::pressKeys(quint32 pid, const QStringList &keys)
{
    const QStringList window{QStringLiteral("search"), QStringLiteral("--sync"),
                             QStringLiteral("--all"),  QStringLiteral("--onlyvisible"),
                             QStringLiteral("--pid"),  QString::number(pid),
                             QStringLiteral("--name"), QStringLiteral(".")};
    const QStringList press{QStringLiteral("windowactivate"), QStringLiteral("--sync"),
                            QStringLiteral("key")};
    return QProcess::execute(QStringLiteral("xdotool"), window + press + keys) == 0;
}

void TestPlatform::suspend(quint32 pid)
{
    ::kill(pid_t(pid), SIGSTOP);
}

void TestPlatform::resume(quint32 pid)
{
    ::kill(pid_t(pid), SIGCONT);
}

int TestPlatform::openHandleCount()
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    return int(descriptors.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size());
}
