#pragma once

#include "desktop/LogonPrograms.h"

/// The autostart folder of the user's desktop: one desktop entry per program as freedesktop.org
/// lays down.
class LogonProgramsXdg final : public LogonPrograms
{
public:
    /// How a desktop's settings show an entry. What is empty is left out.
    struct Appearance
    {
        QString chineseName; ///< beside the entry's own name
        QString icon;        ///< by its name in the icon themes
    };

    /// Works on the entries in the given folder, which need not exist yet. The system's own is "autostart"
    /// under the user's configuration home.
    explicit LogonProgramsXdg(const QString &folder, const Appearance &appearance = {});

    /// An entry that is hidden, switched off by the desktop's own settings, or has arguments, counts as none.
    QString program(const QString &name) const override;
    bool add(const QString &name, const QString &programPath) override;
    bool remove(const QString &name) override;

private:
    QString entryPath(const QString &name) const;

    const QString m_folder;
    const Appearance m_appearance;
};
