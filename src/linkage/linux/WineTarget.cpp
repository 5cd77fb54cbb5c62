#include "linkage/linux/WineTarget.h"

#include <QDir>
#include <QFileInfo>

namespace {

// What decides which session a program joins, how it speaks with the session's server, and where its windows
// go. Wine's private variables, which it gives to its own children, are not among them.
const char *const sessionVariables[] = {
    "DISPLAY",
    "HOME",
    "LD_LIBRARY_PATH",
    "PATH",
    "USER",
    "WAYLAND_DISPLAY",
    "WINEARCH",
    "WINEDLLPATH",
    "WINEESYNC",
    "WINEFSYNC",
    "WINENTSYNC",
    "WINESERVER",
    "XAUTHORITY",
    "XDG_RUNTIME_DIR",
};

QMap<QString, QByteArray> variablesOf(const QByteArray &environ)
{
    QMap<QString, QByteArray> variables;
    for (const QByteArray &variable : environ.split('\0')) {
        const int equals = variable.indexOf('=');
        if (equals > 0)
            variables.insert(QString::fromLocal8Bit(variable.left(equals)), variable.mid(equals + 1));
    }
    return variables;
}

} // namespace

std::optional<WineTarget> WineTarget::of(const QByteArray &environ, const QString &executable)
{
    const QMap<QString, QByteArray> variables = variablesOf(environ);
    WineTarget target;
    target.loader = QFile::decodeName(variables.value(QStringLiteral("WINELOADER")));
    if (target.loader.isEmpty()) {
        // The preloader of some versions makes room in memory for the loader, which lies beside it.
        const QString preloader = QStringLiteral("-preloader");
        target.loader = executable.endsWith(preloader) ? executable.chopped(preloader.size()) : executable;
        if (!QFileInfo(target.loader).fileName().startsWith(QStringLiteral("wine")))
            return std::nullopt;
    }
    QByteArray prefix = variables.value(QStringLiteral("WINEPREFIX"));
    if (prefix.isEmpty())
        prefix = variables.value(QStringLiteral("HOME")) + "/.wine";
    target.prefix = QDir::cleanPath(QFile::decodeName(prefix));
    for (const char *name : sessionVariables) {
        const auto found = variables.constFind(QString::fromLatin1(name));
        if (found != variables.constEnd())
            target.environment.insert(found.key(), *found);
    }
    target.environment.insert(QStringLiteral("WINEPREFIX"), prefix);
    return target;
}
