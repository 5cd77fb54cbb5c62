#pragma once

#include "desktop/LogonPrograms.h"

/// The autostart folder of the user's desktop: one desktop entry per program as freedesktop.org
/// lays down.
class LogonProgramsXdg final : public LogonPrograms
{
public:
    /// Works on the entries in the given folder, which need not exist yet. The system's own is "autostart"
    /// under the user's configuration home.
    explicit LogonProgramsXdg(const QString &folder);

    /// An entry that is hidden, switched off by the desktop's own settings, or has arguments, counts as none.
    QString program(const QString &name) const override;
    bool add(const QString &name, const QString &programPath) override;
    bool remove(const QString &name) override;

private:
    QString entryPath(const QString &name) const;

    const QString m_folder;
};
