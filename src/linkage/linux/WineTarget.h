#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>

/// The Wine that a process runs in, as far as it takes to start another program in it.
struct WineTarget
{
    QString loader;                        ///< the program that starts Windows programs
    QString prefix;                        ///< the folder that the session belongs to
    QMap<QString, QByteArray> environment; ///< variables that decide which session a program joins

    /// Reads it off a process: `environ` is the contents of /proc/PID/environ, `executable` the target of
    /// /proc/PID/exe. No value if the process does not run in Wine.
    static std::optional<WineTarget> of(const QByteArray &environ, const QString &executable);
};
