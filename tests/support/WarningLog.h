#pragma once

#include <QStringList>

/// Keeps the warnings that Qt's message channel is given while it lives, in place of printing them. Other
/// kinds of messages go their usual way. One at a time; the warnings may come from any thread.
class WarningLog
{
public:
    WarningLog();
    ~WarningLog();
    Q_DISABLE_COPY_MOVE(WarningLog)

    /// The warnings since construction or the last call, in order.
    QStringList take();
};
