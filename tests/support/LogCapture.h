#pragma once

#include <QStringList>
#include <QtGlobal>

/// Keeps the warnings and errors of the log for as long as it lives, so that a test can say which lines came
/// and how often. They still go where they went before. One at a time; for the main thread.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    Q_DISABLE_COPY_MOVE(LogCapture)

    /// Lines of the levels warning, critical and fatal, in order.
    QStringList lines() const;

    /// How many lines contain the text.
    int count(const QString &part) const;
};
