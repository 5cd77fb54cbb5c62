#pragma once

#include <QByteArray>
#include <QList>
#include <QLocalServer>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>

#include <type_traits>

class QLocalSocket;

/// A speech dispatcher for tests, behind a socket of its own: it speaks the dispatcher's protocol as far as
/// Qt's engine uses it, keeps what it is told to say, and can leave its clients without an answer. It works
/// on the thread that made it, which has to run its event loop.
class SpeechDispatcher final : public QObject
{
    Q_OBJECT

public:
    /// Listens. Ends the process when it cannot.
    SpeechDispatcher();
    ~SpeechDispatcher() override;
    Q_DISABLE_COPY_MOVE(SpeechDispatcher)

    /// For the environment variable SPEECHD_ADDRESS of those that are to find it.
    QByteArray address() const;

    /// The voices that the next clients are told, as "name\tlanguage\tvariant"; at first a Chinese and an
    /// English one.
    void setVoices(const QList<QByteArray> &voices);

    /// From the next command that begins so, in any case, no client is answered any more; an empty one is
    /// any.
    void holdAt(const QByteArray &command);
    /// Answers what was held, and everything from now on.
    void release();
    /// How many clients wait for an answer.
    int heldCount();
    int clientCount();

    /// All texts in the order in which they came. A text is being said until finishText().
    QStringList texts();
    void finishText();
    int cancelCount();

private:
    struct Client
    {
        QLocalSocket *socket = nullptr;
        bool inText = false;
        QByteArray text;
    };
    struct Spoken
    {
        QLocalSocket *socket = nullptr;
        int id = 0;
    };

    /// Calls in the dispatcher's thread and waits for the result.
    template <typename Function>
    auto inside(Function function)
    {
        if constexpr (std::is_void_v<decltype(function())>) {
            QMetaObject::invokeMethod(this, function, Qt::BlockingQueuedConnection);
        } else {
            decltype(function()) result{};
            QMetaObject::invokeMethod(
                this, [&] { result = function(); }, Qt::BlockingQueuedConnection);
            return result;
        }
    }
    void onConnection();
    void work();
    bool answer(Client &client);
    void answerCommand(Client &client, const QByteArray &command);
    void takeText(Client &client);
    static void report(const Spoken &spoken, const QByteArray &code, const QByteArray &event);

    QTemporaryDir m_dir;
    QThread m_thread;
    QLocalServer m_server{this};
    QList<QByteArray> m_voices{QByteArrayLiteral("Mandarin\tzh\tnone"),
                               QByteArrayLiteral("English\ten\tnone")};
    QList<Client> m_clients;
    QList<Spoken> m_spoken;
    QStringList m_texts;
    QByteArray m_holdCommand;
    bool m_willHold = false;
    bool m_held = false;
    int m_cancelCount = 0;
};
