#pragma once

#include <QLoggingCategory>
#include <QMutex>
#include <QStringList>

/// Collects the log lines of one category while it lives, from every thread; all others go where they went
/// before. One at a time.
class CategoryLog
{
public:
    /// `category` is a logging category's name.
    explicit CategoryLog(const char *category) : m_category(category)
    {
        s_current = this;
        s_previous = qInstallMessageHandler(&CategoryLog::take);
    }
    ~CategoryLog()
    {
        qInstallMessageHandler(s_previous);
        s_current = nullptr;
    }
    Q_DISABLE_COPY_MOVE(CategoryLog)

    /// The lines so far, oldest first: "warning: text".
    QStringList lines() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }
    /// How many of the lines begin so.
    int count(const QString &beginning) const
    {
        int found = 0;
        for (const QString &line : lines())
            found += line.startsWith(beginning) ? 1 : 0;
        return found;
    }

private:
    static void take(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (qstrcmp(context.category, s_current->m_category) != 0) {
            s_previous(type, context, text);
            return;
        }
        const QString level = type == QtDebugMsg     ? QStringLiteral("debug: ")
                              : type == QtInfoMsg    ? QStringLiteral("info: ")
                              : type == QtWarningMsg ? QStringLiteral("warning: ")
                                                     : QStringLiteral("critical: ");
        const QMutexLocker lock(&s_current->m_mutex);
        s_current->m_lines.append(level + text);
    }

    inline static CategoryLog *s_current = nullptr;
    inline static QtMessageHandler s_previous = nullptr;

    const char *m_category;
    mutable QMutex m_mutex;
    QStringList m_lines;
};
