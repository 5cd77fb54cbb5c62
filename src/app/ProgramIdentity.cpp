#include "app/ProgramIdentity.h"

#include "settings/ProgramVersion.h"

#include <QGuiApplication>

void ProgramIdentity::apply()
{
    QCoreApplication::setApplicationName(QStringLiteral("Larkspire"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("云雀资讯"));
    QCoreApplication::setApplicationVersion(ProgramVersion::text());
    QCoreApplication::setOrganizationName(QStringLiteral("Fernhollow"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("larkspire.example"));
    // The name of the installed desktop entry and of its icon.
    QGuiApplication::setDesktopFileName(QStringLiteral("example.larkspire.larkspire"));
}
