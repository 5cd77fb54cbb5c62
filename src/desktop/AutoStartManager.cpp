#include "desktop/AutoStartManager.h"

#include "desktop/LogonPrograms.h"

#include <QCoreApplication>
#include <QDir>

namespace {

QString entryName()
{
    const QString name = QCoreApplication::applicationName();
    return name.isEmpty() ? QStringLiteral("LarkspireApp") : name;
}

} // namespace

AutoStartManager::AutoStartManager(QObject *parent) : AutoStartManager(LogonPrograms::ofThisSystem(), parent)
{}

AutoStartManager::AutoStartManager(std::unique_ptr<LogonPrograms> programs, QObject *parent)
    : QObject(parent)
    , m_appName(entryName())
    , m_appPath(QCoreApplication::applicationFilePath())
    , m_programs(std::move(programs))
{}

AutoStartManager::~AutoStartManager() = default;

bool AutoStartManager::isAutoStartEnabled() const
{
    const QString program = m_programs->program(m_appName);
    if (program.isEmpty())
        return false;
    return QDir::toNativeSeparators(program) == QDir::toNativeSeparators(m_appPath);
}

bool AutoStartManager::setAutoStart(bool enable)
{
    return enable ? m_programs->add(m_appName, QDir::toNativeSeparators(m_appPath))
                  : m_programs->remove(m_appName);
}
