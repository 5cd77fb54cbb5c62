#pragma once

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QTextToSpeech>

#include <functional>

/// Reads short texts aloud, one after the other, with the speech engine and the voice that are the system's
/// defaults. While the engine speaks, up to five texts wait; a text that has waited longer than its own
/// expiry is dropped without being spoken, so that nobody hears stale news.
///
/// Without an engine the manager comes up and stays silent; the log says so once, and likewise when the
/// engine's voice is not a Chinese one.
class SpeechManager final : public QObject
{
    Q_OBJECT

public:
    /// Gives the time by which waiting texts age.
    using Clock = std::function<QDateTime()>;

    /// Creates the engine as well, see initialize().
    explicit SpeechManager(QObject *parent = nullptr, Clock clock = &QDateTime::currentDateTime);
    Q_DISABLE_COPY_MOVE(SpeechManager)

    /// Creates an engine of its own and speaks by that from now on. An engine from an earlier call lives on
    /// beside it, as long as the manager does: its return to rest also moves the queue.
    void initialize();

    /// Speaks with an expiry of five seconds.
    void speak(const QString &text);

    /// Speaks the text at once when the engine is at rest, ahead of any waiting text; else queues it for
    /// `expirySeconds`. An empty text says nothing: it makes an engine at rest go on with the queue. A
    /// full-width colon is spoken as a blank.
    void speak(const QString &text, int expirySeconds);

    /// Master switch. Off stops a running text at once and empties the queue.
    void setEnabled(bool enabled);

    /// Volume from 0.0, silent, to 1.0.
    void setVolume(double volume);

private slots:
    void onStateChanged(QTextToSpeech::State newState);
    /// Says the text at once, in place of whatever is running. Nothing in the program calls it; the time is
    /// not read.
    void speakText(const QString &text, const QDateTime &timestamp);

private:
    struct SpeechItem
    {
        QString text;
        QDateTime timestamp;
        int expirySeconds = 0;
    };

    void enqueue(const QString &text, int expirySeconds);
    void processQueue();
    void reportWhatIsMissing();
    void reportMissingEngineOrVoice();

    Clock m_clock;
    bool m_enabled = true;
    QTextToSpeech *m_tts = nullptr;
    QList<SpeechItem> m_queue;
    int m_maxQueueSize = 5;
    int m_defaultExpirySeconds = 5;
    bool m_voicesSeen = false;
    bool m_missingEngineReported = false;
    bool m_missingVoiceReported = false;
};
