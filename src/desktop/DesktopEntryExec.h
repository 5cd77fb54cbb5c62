#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The Exec value of a freedesktop.org desktop entry: a command line with quoting rules of its own (version
/// 1.5 of the format, sections "The Exec key" and "Possible value types").
namespace DesktopEntryExec {

/// The value that starts a program without arguments. Empty for a path that the format cannot express: one
/// with an equals sign.
QString valueFor(const QString &programPath);

/// The arguments of a value as they stand in the file, program first. Nothing for a value that the format
/// does not allow, such as one with a quote that is not closed.
std::optional<QStringList> arguments(const QString &value);

} // namespace DesktopEntryExec
