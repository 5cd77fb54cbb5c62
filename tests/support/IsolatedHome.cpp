#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

IsolatedHome::IsolatedHome()
{
    if (!m_dir.isValid())
        qFatal("No temporary folder for the test's home: %s", qPrintable(m_dir.errorString()));
    const struct
    {
        const char *variable;
        QString folder;
    } places[] = {
        {"HOME", QString()},
        {"XDG_CONFIG_HOME", QStringLiteral("/config")},
        {"XDG_DATA_HOME", QStringLiteral("/data")},
        {"XDG_CACHE_HOME", QStringLiteral("/cache")},
        {"XDG_STATE_HOME", QStringLiteral("/state")},
    };
    for (const auto &place : places) {
        const QString folder = m_dir.path() + place.folder;
        QDir().mkpath(folder);
        qputenv(place.variable, folder.toUtf8());
    }
#ifdef Q_OS_WIN
    // Windows asks no variable where a user's data lie: Qt's own place for tests takes theirs.
    QStandardPaths::setTestModeEnabled(true);
#endif
}

void setProgramIdentity()
{
    QCoreApplication::setApplicationName(QStringLiteral("Larkspire"));
    QCoreApplication::setOrganizationName(QStringLiteral("Fernhollow"));
}

QString settingsFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/larkspire.ini");
}

void clearSettings()
{
    QSettings settings(settingsFilePath(), QSettings::IniFormat);
    settings.clear();
    settings.sync();
}

void pauseLeakCheck()
{
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable();
#endif
}

void resumeLeakCheck()
{
#ifdef __SANITIZE_ADDRESS__
    __lsan_enable();
#endif
}
