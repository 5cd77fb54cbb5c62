#pragma once

#include "news/SystemSpeech.h"

#include <QTextToSpeechEngine>

#include <chrono>
#include <functional>
#include <memory>

class SpeechThread;

/// A speech engine that never keeps its caller waiting: it stands for another one of Qt's engines, which it
/// asks in a thread of its own, the SpeechThread.
///
/// Until the other engine is there the state is Paused: a program queues what it has to say. While the
/// service behind it does not answer, the state is BackendError, and texts that it has not yet taken are
/// dropped, so that nobody hears them late. Once it answers, the state is the other engine's again.
///
/// Language and voice are the system's and stay so.
class DetachedSpeechEngine final : public QTextToSpeechEngine
{
    Q_OBJECT

public:
    /// Far more than the longest list of voices takes.
    static constexpr std::chrono::milliseconds DefaultPatience{30000};

    /// Comes back at once; the other engine is made meanwhile.
    /// \param engine the other engine's name
    /// \param patience how long a call to it may take before the service counts as not answering; engines
    /// that live at the same time share that of the first
    explicit DetachedSpeechEngine(const QString &engine, QObject *parent = nullptr,
                                  std::chrono::milliseconds patience = DefaultPatience);
    /// Stops the speech. Waits for the other engine's end for a second at most.
    ~DetachedSpeechEngine() override;
    Q_DISABLE_COPY_MOVE(DetachedSpeechEngine)

    QVector<QLocale> availableLocales() const override { return m_offer.locales; }
    QVector<QVoice> availableVoices() const override;
    /// Only an engine that is there and answers takes a text.
    void say(const QString &text) override;
    void stop() override;
    void pause() override;
    void resume() override;
    double rate() const override { return m_rate; }
    bool setRate(double rate) override;
    double pitch() const override { return m_pitch; }
    bool setPitch(double pitch) override;
    double volume() const override { return m_volume; }
    bool setVolume(double volume) override;
    QLocale locale() const override { return m_offer.locale; }
    /// Always refused.
    bool setLocale(const QLocale &locale) override;
    QVoice voice() const override { return m_offer.voice; }
    /// Always refused.
    bool setVoice(const QVoice &voice) override;
    QTextToSpeech::State state() const override { return m_state; }

private:
    void post(const std::function<void(SystemSpeech &)> &call);
    void onAnsweringChanged(bool answering);
    void updateState();

    std::shared_ptr<SpeechThread> m_thread;
    /// Lives in the thread and is deleted there.
    SystemSpeech *m_speech;
    SystemSpeech::Offer m_offer;
    bool m_opened = false;
    QTextToSpeech::State m_speechState = QTextToSpeech::Paused;
    QTextToSpeech::State m_state = QTextToSpeech::Paused;
    double m_rate = 0.0;
    double m_pitch = 0.0;
    double m_volume = 1.0;
};
