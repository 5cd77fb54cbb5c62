#pragma once

#include <QApplication>
#include <QString>

class QLocalServer;
class QSharedMemory;

/// The program's application object, which keeps the program to one running copy per user session. The first
/// copy holds a shared-memory segment as a marker and listens on a local socket; a copy that finds the marker
/// sends the bytes "SHOW_WINDOW" there, without terminator or reply, and is meant to end at once.
///
/// Nothing guards two copies that start at the same moment: both can find that they are first. Failures to
/// create the marker or to listen are not reported: the copy runs on, and a later one fails to wake it.
class SingleApplication final : public QApplication
{
    Q_OBJECT

public:
    /// Looks for another copy; wakes it if there is one, which takes up to two seconds where that copy does
    /// not answer. The marker's and the socket's names derive from appId, or from the application's name
    /// where appId is empty.
    SingleApplication(int &argc, char **argv, const QString &appId);
    /// Gives up the marker, then the socket.
    ~SingleApplication() override;
    Q_DISABLE_COPY_MOVE(SingleApplication)

    /// True when another copy was found at construction.
    bool isRunning() const { return m_isRunning; }

signals:
    /// Another copy asked for the window.
    void instanceStarted();

public slots:
    /// Emits instanceStarted().
    void showMainWindow();

private slots:
    /// Serves one connection. Waits up to three seconds for its data, which holds up the event loop;
    /// accepted.
    void onNewConnection();

private:
    void wakeOtherCopy() const;
    void becomeFirstCopy();

    QString m_appId;
    QString m_sharedMemoryKey;
    QString m_serverName;
    QSharedMemory *m_sharedMemory = nullptr;
    QLocalServer *m_localServer = nullptr;
    bool m_isRunning = false;
};
