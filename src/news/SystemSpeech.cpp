#include "news/SystemSpeech.h"

#include <utility>

SystemSpeech::SystemSpeech(QString engine) : m_engine(std::move(engine)) {}

void SystemSpeech::open()
{
    try {
        m_tts = new QTextToSpeech(m_engine, this);
        connect(m_tts, &QTextToSpeech::stateChanged, this, &SystemSpeech::stateChanged);
        connect(m_tts, &QTextToSpeech::stateChanged, this, &SystemSpeech::sayNext);
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
    m_texts.enqueue({text, round});
    sayNext();
}

void SystemSpeech::sayNext()
{
    while (m_tts && !m_texts.isEmpty() && m_tts->state() != QTextToSpeech::Speaking) {
        const Text next = m_texts.dequeue();
        if (next.round == m_round)
            m_tts->say(next.text);
    }
}

void SystemSpeech::stop()
{
    m_texts.clear();
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
