#pragma once

#include <QtGlobal>

#include <memory>

/// Ends the program in its own order, with its settings stored, when the system asks its process to end: by
/// SIGTERM, SIGINT or SIGHUP on Unix, where the event loop is left with code 0 by QCoreApplication::quit(). A
/// second signal ends the process at once, should the order hang. On Windows nothing of the kind is sent to a
/// program with windows; what comes there is the end of the session.
///
/// One at a time, on the main thread, for as long as the event loop runs.
class TerminationSignals final
{
public:
    TerminationSignals();
    ~TerminationSignals();
    Q_DISABLE_COPY_MOVE(TerminationSignals)

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
