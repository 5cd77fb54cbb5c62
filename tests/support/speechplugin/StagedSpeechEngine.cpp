#include "support/speechplugin/StagedSpeechEngine.h"

#include "support/speechplugin/SpeechStage.h"

#include <QThread>

#include <stdexcept>

namespace {

void hangIf(SpeechStage::Hang here)
{
    while (SpeechStage::instance().hang == here)
        QThread::sleep(1);
}

} // namespace

StagedSpeechEngine::StagedSpeechEngine(QObject *parent)
    : QTextToSpeechEngine(parent)
    , m_state(SpeechStage::instance().firstState)
    , m_locale(SpeechStage::instance().locale)
{
    SpeechStage::instance().m_engines.append(this);
}

StagedSpeechEngine::~StagedSpeechEngine()
{
    hangIf(SpeechStage::Hang::AtItsEnd);
    SpeechStage::instance().m_engines.removeOne(this);
}

void StagedSpeechEngine::enter(QTextToSpeech::State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

QVector<QLocale> StagedSpeechEngine::availableLocales() const
{
    if (SpeechStage::instance().languagesThrow)
        throw std::runtime_error("the staged engine does not tell its languages");
    return SpeechStage::instance().locales;
}

QVector<QVoice> StagedSpeechEngine::availableVoices() const
{
    return {voice()};
}

void StagedSpeechEngine::say(const QString &text)
{
    SpeechStage::instance().m_said.append(text);
    if (SpeechStage::instance().speaksAtOnce)
        enter(QTextToSpeech::Speaking);
}

void StagedSpeechEngine::stop()
{
    hangIf(SpeechStage::Hang::InStop);
    ++SpeechStage::instance().m_stopCount;
    if (m_state == QTextToSpeech::Speaking || m_state == QTextToSpeech::Paused)
        enter(QTextToSpeech::Ready);
}

void StagedSpeechEngine::pause()
{
    if (m_state == QTextToSpeech::Speaking)
        enter(QTextToSpeech::Paused);
}

void StagedSpeechEngine::resume()
{
    if (m_state == QTextToSpeech::Paused)
        enter(QTextToSpeech::Speaking);
}

bool StagedSpeechEngine::setRate(double rate)
{
    m_rate = rate;
    return true;
}

bool StagedSpeechEngine::setPitch(double pitch)
{
    m_pitch = pitch;
    return true;
}

bool StagedSpeechEngine::setLocale(const QLocale &locale)
{
    m_locale = locale;
    return true;
}

bool StagedSpeechEngine::setVolume(double volume)
{
    m_volume = volume;
    return true;
}

QVoice StagedSpeechEngine::voice() const
{
    return createVoice(QStringLiteral("Staged"), QVoice::Unknown, QVoice::Other, {});
}

bool StagedSpeechEngine::setVoice(const QVoice &voice)
{
    Q_UNUSED(voice)
    return true;
}
