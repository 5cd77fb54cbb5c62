#pragma once

#include <QObject>
#include <QString>

#include <memory>

class LogonPrograms;

/// Enters this program in the list of programs that the system starts when the user logs on, or removes it.
/// The list is the truth; the setting of the same purpose only mirrors it.
class AutoStartManager final : public QObject
{
    Q_OBJECT

public:
    /// Works on the system's list. The application must exist: its name and path are taken once, here.
    explicit AutoStartManager(QObject *parent);
    /// Works on the given list.
    AutoStartManager(std::unique_ptr<LogonPrograms> programs, QObject *parent);
    ~AutoStartManager() override;
    Q_DISABLE_COPY_MOVE(AutoStartManager)

    /// Whether an entry stands under this program's name and points exactly to this program. An entry that
    /// points elsewhere, such as to a program that has moved since, does not count.
    bool isAutoStartEnabled() const;

    /// Writes the entry or removes it. False when the list could not be changed. Nothing is logged.
    bool setAutoStart(bool enable);

private:
    const QString m_appName;
    const QString m_appPath;
    const std::unique_ptr<LogonPrograms> m_programs;
};
