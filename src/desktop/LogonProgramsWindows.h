#pragma once

#include "desktop/LogonPrograms.h"

/// The Run key of the current user's registry. A value's data is the bare path, without quotes or arguments.
class LogonProgramsWindows final : public LogonPrograms
{
public:
    QString program(const QString &name) const override;
    bool add(const QString &name, const QString &programPath) override;
    bool remove(const QString &name) override;
};
