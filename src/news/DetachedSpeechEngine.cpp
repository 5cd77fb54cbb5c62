#include "news/DetachedSpeechEngine.h"

#include "news/SpeechThread.h"

DetachedSpeechEngine::DetachedSpeechEngine(const QString &engine, QObject *parent,
                                           std::chrono::milliseconds patience)
    : QTextToSpeechEngine(parent)
    , m_thread(SpeechThread::shared(patience))
    , m_speech(std::make_unique<SystemSpeech>(engine).release())
{
    m_speech->moveToThread(m_thread.get());
    connect(m_speech, &SystemSpeech::opened, this, [this] {
        m_opened = true;
        m_offer = m_speech->offer();
        m_speechState = m_offer.state;
        updateState();
    });
    connect(m_speech, &SystemSpeech::stateChanged, this, [this](QTextToSpeech::State state) {
        m_speechState = state;
        updateState();
    });
    connect(m_thread.get(), &SpeechThread::answeringChanged, this, &DetachedSpeechEngine::onAnsweringChanged);
    post([](SystemSpeech &speech) { speech.open(); });
}

DetachedSpeechEngine::~DetachedSpeechEngine()
{
    m_speech->forgetTexts();
    m_thread->post([speech = m_speech] { const std::unique_ptr<SystemSpeech> ended(speech); });
}

QVector<QVoice> DetachedSpeechEngine::availableVoices() const
{
    return m_opened ? QVector<QVoice>{m_offer.voice} : QVector<QVoice>();
}

void DetachedSpeechEngine::say(const QString &text)
{
    if (!m_opened || m_state == QTextToSpeech::BackendError)
        return;
    post([text, round = m_speech->round()](SystemSpeech &speech) { speech.say(text, round); });
}

void DetachedSpeechEngine::stop()
{
    m_speech->forgetTexts();
    post([](SystemSpeech &speech) { speech.stop(); });
}

void DetachedSpeechEngine::pause()
{
    post([](SystemSpeech &speech) { speech.pause(); });
}

void DetachedSpeechEngine::resume()
{
    post([](SystemSpeech &speech) { speech.resume(); });
}

bool DetachedSpeechEngine::setRate(double rate)
{
    m_rate = rate;
    post([rate](SystemSpeech &speech) { speech.setRate(rate); });
    return true;
}

bool DetachedSpeechEngine::setPitch(double pitch)
{
    m_pitch = pitch;
    post([pitch](SystemSpeech &speech) { speech.setPitch(pitch); });
    return true;
}

bool DetachedSpeechEngine::setVolume(double volume)
{
    m_volume = volume;
    post([volume](SystemSpeech &speech) { speech.setVolume(volume); });
    return true;
}

bool DetachedSpeechEngine::setLocale(const QLocale &locale)
{
    Q_UNUSED(locale)
    return false;
}

bool DetachedSpeechEngine::setVoice(const QVoice &voice)
{
    Q_UNUSED(voice)
    return false;
}

void DetachedSpeechEngine::post(const std::function<void(SystemSpeech &)> &call)
{
    m_thread->post([speech = m_speech, call] { call(*speech); });
}

void DetachedSpeechEngine::onAnsweringChanged(bool answering)
{
    if (!answering)
        m_speech->forgetTexts();
    updateState();
}

void DetachedSpeechEngine::updateState()
{
    QTextToSpeech::State state = QTextToSpeech::Paused;
    if (!m_thread->isAnswering())
        state = QTextToSpeech::BackendError;
    else if (m_opened)
        state = m_speechState;
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged(state);
}
