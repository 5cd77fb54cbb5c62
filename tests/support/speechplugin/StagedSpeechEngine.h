#pragma once

#include <QTextToSpeechEngine>

/// One engine of the SpeechStage.
class StagedSpeechEngine final : public QTextToSpeechEngine
{
    Q_OBJECT

public:
    explicit StagedSpeechEngine(QObject *parent = nullptr);
    ~StagedSpeechEngine() override;
    Q_DISABLE_COPY_MOVE(StagedSpeechEngine)

    /// Puts the engine into a state and reports it, as an engine does when it begins, ends or fails.
    void enter(QTextToSpeech::State state);

    QVector<QLocale> availableLocales() const override;
    QVector<QVoice> availableVoices() const override;
    void say(const QString &text) override;
    void stop() override;
    void pause() override;
    void resume() override;
    double rate() const override { return m_rate; }
    bool setRate(double rate) override;
    double pitch() const override { return m_pitch; }
    bool setPitch(double pitch) override;
    QLocale locale() const override { return m_locale; }
    bool setLocale(const QLocale &locale) override;
    double volume() const override { return m_volume; }
    bool setVolume(double volume) override;
    QVoice voice() const override;
    bool setVoice(const QVoice &voice) override;
    QTextToSpeech::State state() const override { return m_state; }

private:
    QTextToSpeech::State m_state;
    QLocale m_locale;
    double m_rate = 0.0;
    double m_pitch = -1.0;
    double m_volume = 0.25;
};
