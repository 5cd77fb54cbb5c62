#include "news/SystemSpeech.h"

#include <utility>

SystemSpeech::SystemSpeech(QString engine) : m_engine(std::move(engine)) {}

void SystemSpeech::open()
{
    try {
        m_tts = new QTextToSpeech(m_engine, this);
        connect(m_tts, &QTextToSpeech::stateChanged, this, &SystemSpeech::stateChanged);
        m_offer.locales = m_tts->availableLocales();
        m_offer.locale = m_tts->locale();
        m_offer.voice = m_tts->voice();
        m_offer.state = m_tts->state();
    } catch (...) {
        m_offer = {};
    }
    emit opened();
}

void SystemSpeech::say(const QString &text, int round)
{
    if (m_tts && round == m_round)
        m_tts->say(text);
}

void SystemSpeech::stop()
{
    if (m_tts)
        m_tts->stop();
}

void SystemSpeech::pause()
{
    if (m_tts)
        m_tts->pause();
}

void SystemSpeech::resume()
{
    if (m_tts)
        m_tts->resume();
}

void SystemSpeech::setRate(double rate)
{
    if (m_tts)
        m_tts->setRate(rate);
}

void SystemSpeech::setPitch(double pitch)
{
    if (m_tts)
        m_tts->setPitch(pitch);
}

void SystemSpeech::setVolume(double volume)
{
    if (m_tts)
        m_tts->setVolume(volume);
}
