#pragma once

#include <QString>

#include <memory>

/// The current user's list of programs that the system starts at logon: one entry per name.
class LogonPrograms
{
public:
    virtual ~LogonPrograms() = default;

    /// The real list of the system that this program was built for.
    static std::unique_ptr<LogonPrograms> ofThisSystem();

    /// The path of the program that starts under a name; empty when none does. An entry that hands the
    /// program arguments does not yield the bare path.
    virtual QString program(const QString &name) const = 0;

    /// Makes the program start under the name, in place of one that did so far. False when that failed.
    virtual bool add(const QString &name, const QString &programPath) = 0;

    /// Takes the name's entry away. True also when there was none; false when it is still there.
    virtual bool remove(const QString &name) = 0;

protected:
    LogonPrograms() = default;
    Q_DISABLE_COPY_MOVE(LogonPrograms)
};
