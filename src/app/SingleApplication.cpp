#include "app/SingleApplication.h"

#include "app/PresenceMarker.h"
#include "desktop/WindowActivation.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QSharedMemory>

namespace {

constexpr char wakeUpMessage[] = "SHOW_WINDOW";

} // namespace

SingleApplication::SingleApplication(int &argc, char **argv, const QString &appId)
    : QApplication(argc, argv)
    , m_appId(appId.isEmpty() ? QCoreApplication::applicationName() : appId)
    , m_sharedMemoryKey(m_appId + QStringLiteral("_SharedMemory"))
    , m_serverName(m_appId + QStringLiteral("_LocalServer"))
{
    PresenceMarker::removeOfDeadCopy(m_sharedMemoryKey);
    m_sharedMemory = new QSharedMemory(m_sharedMemoryKey, this);
    m_isRunning = m_sharedMemory->attach(QSharedMemory::ReadWrite);
    if (m_isRunning)
        wakeOtherCopy();
    else
        becomeFirstCopy();
}

SingleApplication::~SingleApplication()
{
    m_sharedMemory->detach();
    delete m_sharedMemory;
    if (m_localServer != nullptr) {
        m_localServer->close();
        delete m_localServer;
    }
}

void SingleApplication::wakeOtherCopy() const
{
    constexpr int limitMs = 1000;
    WindowActivation::letOtherProcessesComeToFront();
    QLocalSocket socket;
    socket.connectToServer(m_serverName, QIODevice::ReadWrite);
    if (!socket.waitForConnected(limitMs))
        return;
    socket.write(wakeUpMessage);
    socket.waitForBytesWritten(limitMs);
    socket.disconnectFromServer();
}

void SingleApplication::becomeFirstCopy()
{
    PresenceMarker::create(*m_sharedMemory);
    m_localServer = new QLocalServer(this);
    connect(m_localServer, &QLocalServer::newConnection, this, &SingleApplication::onNewConnection);
    QLocalServer::removeServer(m_serverName);
    m_localServer->listen(m_serverName);
}

void SingleApplication::showMainWindow()
{
    emit instanceStarted();
}

void SingleApplication::onNewConnection()
{
    constexpr int limitMs = 3000;
    QLocalSocket *const socket = m_localServer->nextPendingConnection();
    if (socket == nullptr)
        return;
    if (socket->waitForReadyRead(limitMs) && socket->readAll() == QByteArray(wakeUpMessage))
        emit instanceStarted();
    socket->disconnectFromServer();
    socket->deleteLater();
}
