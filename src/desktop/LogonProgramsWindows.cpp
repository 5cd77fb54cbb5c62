#include "desktop/LogonProgramsWindows.h"

#include <QSettings>

namespace {

QString runKey()
{
    return QStringLiteral("HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run");
}

bool synced(QSettings &settings)
{
    settings.sync();
    return settings.status() == QSettings::NoError;
}

} // namespace

std::unique_ptr<LogonPrograms> LogonPrograms::ofThisSystem()
{
    return std::make_unique<LogonProgramsWindows>();
}

QString LogonProgramsWindows::program(const QString &name) const
{
    return QSettings(runKey(), QSettings::NativeFormat).value(name).toString();
}

bool LogonProgramsWindows::add(const QString &name, const QString &programPath)
{
    QSettings settings(runKey(), QSettings::NativeFormat);
    settings.setValue(name, programPath);
    return synced(settings);
}

bool LogonProgramsWindows::remove(const QString &name)
{
    QSettings settings(runKey(), QSettings::NativeFormat);
    settings.remove(name);
    return synced(settings);
}
