#pragma once

#include <QLocale>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QTextToSpeech>
#include <QVector>
#include <QVoice>

#include <atomic>

/// One of Qt's speech engines, in the thread in which it may wait. It is made on the main thread, moved over,
/// and from then on called there only, but for what is marked otherwise.
class SystemSpeech final : public QObject
{
    Q_OBJECT

public:
    /// What the engine has to offer.
    struct Offer
    {
        QTextToSpeech::State state = QTextToSpeech::BackendError;
        QVector<QLocale> locales;
        QLocale locale;
        QVoice voice;
    };

    /// \param engine by its name among Qt's engines
    explicit SystemSpeech(QString engine);
    Q_DISABLE_COPY_MOVE(SystemSpeech)

    /// Makes the engine, which may last, and emits opened().
    void open();
    /// Says the text, unless texts of this round have been forgotten by now. Who posted it saw an engine at
    /// rest: a text that has begun meanwhile is said to its end first, and not cut off as the engine would.
    void say(const QString &text, int round);
    void stop();
    void pause();
    void resume();
    void setRate(double rate);
    void setPitch(double pitch);
    void setVolume(double volume);

    /// Any thread: the present round of texts.
    int round() const { return m_round; }
    /// Any thread: what has been posted and not been said yet is not to be said any more.
    void forgetTexts() { ++m_round; }

    /// Any thread, after opened(): what was found then.
    const Offer &offer() const { return m_offer; }

signals:
    void opened();
    void stateChanged(QTextToSpeech::State state);

private:
    struct Text
    {
        QString text;
        int round = 0;
    };
    void sayNext();

    QString m_engine;
    QTextToSpeech *m_tts = nullptr;
    Offer m_offer;
    QQueue<Text> m_texts;
    std::atomic<int> m_round = 0;
};
