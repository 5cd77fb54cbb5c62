#pragma once

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

/// The program hotkey-holder as a process beside the test; it ends with this object.
class HotkeyHolder
{
public:
    /// Starts it with these arguments. \p program is its file.
    explicit HotkeyHolder(const QStringList &arguments,
                          const QString &program = QCoreApplication::applicationDirPath() +
                                                   QStringLiteral("/hotkey-holder"))
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process, [this] {
            while (m_process.canReadLine())
                m_lines.append(QString::fromUtf8(m_process.readLine()).trimmed());
        });
        m_process.start(program, arguments);
    }
    ~HotkeyHolder() { end(); }
    Q_DISABLE_COPY_MOVE(HotkeyHolder)

    /// What it has said so far.
    QStringList lines() const { return m_lines; }
    /// Waits until it has said this line; false when it does not within the deadline.
    bool says(const QString &line)
    {
        return QTest::qWaitFor([&] { return m_lines.contains(line); }, 20000);
    }
    /// Ends it and waits until it is gone.
    void end()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QStringList m_lines;
};
