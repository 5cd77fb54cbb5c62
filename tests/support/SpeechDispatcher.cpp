#include "support/SpeechDispatcher.h"

#include <QLocalSocket>

#include <algorithm>

SpeechDispatcher::SpeechDispatcher()
{
    connect(&m_server, &QLocalServer::newConnection, this, &SpeechDispatcher::onConnection);
    if (!m_dir.isValid() || !m_server.listen(m_dir.filePath(QStringLiteral("speechd.sock"))))
        qFatal("The speech dispatcher for tests cannot listen: %s", qPrintable(m_server.errorString()));
    moveToThread(&m_thread);
    m_thread.start();
}

SpeechDispatcher::~SpeechDispatcher()
{
    inside([this] {
        m_server.close();
        for (const Client &client : qAsConst(m_clients))
            delete client.socket;
        m_clients.clear();
        moveToThread(m_thread.thread());
    });
    m_thread.quit();
    m_thread.wait();
}

QByteArray SpeechDispatcher::address() const
{
    return "unix_socket:" + m_server.fullServerName().toLocal8Bit();
}

void SpeechDispatcher::setVoices(const QList<QByteArray> &voices)
{
    inside([&] { m_voices = voices; });
}

void SpeechDispatcher::holdAt(const QByteArray &command)
{
    inside([&] {
        m_holdCommand = command;
        m_willHold = true;
    });
}

void SpeechDispatcher::release()
{
    inside([this] {
        m_willHold = false;
        m_held = false;
        work();
    });
}

int SpeechDispatcher::heldCount()
{
    return inside([this] {
        const auto waits = [](const Client &client) {
            return client.socket->state() == QLocalSocket::ConnectedState && client.socket->canReadLine();
        };
        return m_held ? static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(), waits)) : 0;
    });
}

int SpeechDispatcher::clientCount()
{
    return inside([this] { return m_clients.size(); });
}

QStringList SpeechDispatcher::texts()
{
    return inside([this] { return m_texts; });
}

void SpeechDispatcher::finishText()
{
    inside([this] {
        if (!m_spoken.isEmpty())
            report(m_spoken.takeFirst(), "702", "END");
    });
}

int SpeechDispatcher::cancelCount()
{
    return inside([this] { return m_cancelCount; });
}

void SpeechDispatcher::onConnection()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        m_clients.append({socket, false, {}});
        connect(socket, &QLocalSocket::readyRead, this, &SpeechDispatcher::work);
    }
    work();
}

void SpeechDispatcher::work()
{
    for (Client &client : m_clients) {
        while (answer(client)) {
        }
    }
}

bool SpeechDispatcher::answer(Client &client)
{
    if (m_held || !client.socket->canReadLine())
        return false;
    if (m_willHold && !client.inText &&
        client.socket->peek(m_holdCommand.size()).toUpper() == m_holdCommand) {
        m_held = true;
        return false;
    }
    const QByteArray line = client.socket->readLine();
    if (!client.inText) {
        answerCommand(client, line.trimmed().toUpper());
    } else if (line == ".\r\n") {
        takeText(client);
    } else {
        client.text += line;
    }
    return true;
}

void SpeechDispatcher::answerCommand(Client &client, const QByteArray &command)
{
    QByteArray answer = "200 OK\r\n";
    if (command == "LIST OUTPUT_MODULES") {
        answer = "250-staged\r\n250 OK MODULE LIST SENT\r\n";
    } else if (command == "GET OUTPUT_MODULE") {
        answer = "251-staged\r\n251 OK GET RETURNED\r\n";
    } else if (command == "LIST SYNTHESIS_VOICES") {
        answer.clear();
        for (const QByteArray &voice : qAsConst(m_voices))
            answer += "249-" + voice + "\r\n";
        answer += "249 OK VOICE LIST SENT\r\n";
    } else if (command == "SPEAK") {
        client.inText = true;
        answer = "230 OK RECEIVING DATA\r\n";
    } else if (command.startsWith("CANCEL")) {
        ++m_cancelCount;
        answer = "210 OK CANCELED\r\n";
    }
    client.socket->write(answer);
    if (command.startsWith("CANCEL")) {
        while (!m_spoken.isEmpty())
            report(m_spoken.takeFirst(), "703", "CANCELED");
    }
}

void SpeechDispatcher::takeText(Client &client)
{
    m_texts.append(QString::fromUtf8(client.text).trimmed());
    client.text.clear();
    client.inText = false;
    const Spoken spoken{client.socket, m_texts.size()};
    m_spoken.append(spoken);
    client.socket->write("225-" + QByteArray::number(spoken.id) + "\r\n225 OK MESSAGE QUEUED\r\n");
    report(spoken, "701", "BEGIN");
}

void SpeechDispatcher::report(const Spoken &spoken, const QByteArray &code, const QByteArray &event)
{
    spoken.socket->write(code + '-' + QByteArray::number(spoken.id) + "\r\n" + code + "-1\r\n" + code + ' ' +
                         event + "\r\n");
}
