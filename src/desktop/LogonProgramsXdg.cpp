#include "desktop/LogonProgramsXdg.h"

#include "desktop/DesktopEntryExec.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

/// The plain keys of the group "Desktop Entry"; of a key that stands twice the first counts.
QHash<QString, QString> keysOfEntry(const QString &path)
{
    QHash<QString, QString> keys;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return keys;
    bool inGroup = false;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString &rawLine : lines) {
        const QString line = rawLine.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (!inGroup || equals < 1 || line.startsWith(QLatin1Char('#')))
            continue;
        const QString key = line.left(equals).trimmed();
        if (!keys.contains(key))
            keys.insert(key, line.mid(equals + 1).trimmed());
    }
    return keys;
}

} // namespace

std::unique_ptr<LogonPrograms> LogonPrograms::ofThisSystem()
{
    return std::make_unique<LogonProgramsXdg>(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
            QStringLiteral("/autostart"),
        LogonProgramsXdg::Appearance{QGuiApplication::applicationDisplayName(),
                                     QGuiApplication::desktopFileName()});
}

LogonProgramsXdg::LogonProgramsXdg(const QString &folder, const Appearance &appearance)
    : m_folder(folder), m_appearance(appearance)
{}

QString LogonProgramsXdg::entryPath(const QString &name) const
{
    return m_folder + QLatin1Char('/') + name + QStringLiteral(".desktop");
}

QString LogonProgramsXdg::program(const QString &name) const
{
    const QHash<QString, QString> keys = keysOfEntry(entryPath(name));
    if (keys.value(QStringLiteral("Hidden")) == QLatin1String("true") ||
        keys.value(QStringLiteral("X-GNOME-Autostart-enabled")) == QLatin1String("false"))
        return QString();
    const auto arguments = DesktopEntryExec::arguments(keys.value(QStringLiteral("Exec")));
    return arguments && arguments->size() == 1 ? arguments->first() : QString();
}

bool LogonProgramsXdg::add(const QString &name, const QString &programPath)
{
    const QString exec = DesktopEntryExec::valueFor(programPath);
    if (exec.isEmpty() || !QDir().mkpath(m_folder))
        return false;
    QSaveFile file(entryPath(name));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QString entry = QStringLiteral("[Desktop Entry]\n"
                                   "Type=Application\n"
                                   "Version=1.4\n"
                                   "Name=%1\n")
                        .arg(name);
    if (!m_appearance.chineseName.isEmpty())
        entry += QStringLiteral("Name[zh_CN]=%1\n").arg(m_appearance.chineseName);
    if (!m_appearance.icon.isEmpty())
        entry += QStringLiteral("Icon=%1\n").arg(m_appearance.icon);
    entry += QStringLiteral("Exec=%1\nTerminal=false\n").arg(exec);
    file.write(entry.toUtf8());
    return file.commit();
}

bool LogonProgramsXdg::remove(const QString &name)
{
    QFile entry(entryPath(name));
    return !entry.exists() || entry.remove();
}
