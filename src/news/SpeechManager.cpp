#include "news/SpeechManager.h"

#include "news/SpeechEngineChoice.h"

#include <QDebug>
#include <QLocale>
#include <QVector>

#include <algorithm>
#include <utility>

SpeechManager::SpeechManager(QObject *parent, Clock clock) : QObject(parent), m_clock(std::move(clock))
{
    initialize();
}

void SpeechManager::initialize()
{
    // Engines are plug-ins of other makers; none of them may take the program down.
    try {
        m_tts = new QTextToSpeech(SpeechEngineChoice::name(), this);
        m_tts->setRate(0.3);
        m_tts->setPitch(0.0);
        m_tts->setVolume(1.0);
        connect(m_tts, &QTextToSpeech::stateChanged, this, &SpeechManager::onStateChanged);
    } catch (...) {
        qWarning() << "Exception occurred while initializing QTextToSpeech";
        m_tts = nullptr;
    }
    reportWhatIsMissing();
}

void SpeechManager::speak(const QString &text)
{
    speak(text, m_defaultExpirySeconds);
}

void SpeechManager::speak(const QString &text, int expirySeconds)
{
    if (!m_enabled || !m_tts)
        return;
    if (text.isEmpty()) {
        if (m_tts->state() == QTextToSpeech::Ready && !m_queue.isEmpty())
            processQueue();
        return;
    }
    QString spoken = text;
    spoken.replace(QStringLiteral("："), QStringLiteral(" "));
    // Meant as it is: an engine at rest says a new text ahead of those that wait.
    if (m_tts->state() == QTextToSpeech::Ready)
        m_tts->say(spoken);
    else
        enqueue(spoken, expirySeconds);
}

void SpeechManager::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (enabled)
        return;
    if (m_tts && m_tts->state() != QTextToSpeech::Ready)
        m_tts->stop();
    m_queue.clear();
}

void SpeechManager::setVolume(double volume)
{
    if (m_tts)
        m_tts->setVolume(volume);
}

void SpeechManager::onStateChanged(QTextToSpeech::State newState)
{
    // An engine that comes up by itself shows only now what it has.
    if (newState == QTextToSpeech::BackendError || !m_voicesSeen)
        reportWhatIsMissing();
    if (newState == QTextToSpeech::Ready)
        processQueue();
}

void SpeechManager::speakText(const QString &text, const QDateTime &timestamp)
{
    Q_UNUSED(timestamp)
    if (!m_tts || !m_enabled)
        return;
    m_tts->stop();
    m_tts->say(text);
}

void SpeechManager::enqueue(const QString &text, int expirySeconds)
{
    if (!m_enabled)
        return;
    const QDateTime now = m_clock();
    while (!m_queue.isEmpty()) {
        const SpeechItem head = m_queue.first();
        if (m_queue.size() >= m_maxQueueSize) {
            m_queue.removeFirst();
            // Meant as it is: the log names the text that comes in, not the one that goes.
            qWarning() << "Speech queue is full, dropping message:" << text;
        }
        if (head.timestamp.secsTo(now) <= head.expirySeconds)
            break;
        // Meant as it is: when a full queue has just lost its expired head, the next text goes with it.
        if (!m_queue.isEmpty())
            m_queue.removeFirst();
    }
    m_queue.append({text, now, expirySeconds});
}

void SpeechManager::processQueue()
{
    while (m_enabled && m_tts && !m_queue.isEmpty() && m_tts->state() == QTextToSpeech::Ready) {
        const SpeechItem item = m_queue.takeFirst();
        if (item.timestamp.secsTo(m_clock()) > item.expirySeconds)
            continue;
        if (m_tts->state() != QTextToSpeech::Ready)
            m_tts->stop();
        m_tts->say(item.text);
        return;
    }
}

void SpeechManager::reportWhatIsMissing()
{
    if (!m_tts)
        return;
    // An engine that cannot tell what it has may speak all the same.
    try {
        reportMissingEngineOrVoice();
    } catch (...) {
        qWarning() << "The speech engine does not say which voices it has";
    }
}

void SpeechManager::reportMissingEngineOrVoice()
{
    if (m_tts->state() == QTextToSpeech::BackendError) {
        if (!std::exchange(m_missingEngineReported, true))
            qWarning() << "No speech engine is available: news will not be read aloud";
        return;
    }
    // Not up yet; its next state tells more.
    if (m_tts->state() == QTextToSpeech::Paused)
        return;
    m_voicesSeen = true;
    // Mandarin goes by "cmn" in some engines; QLocale does not know that and makes C of it.
    const QVector<QLocale> locales = m_tts->availableLocales();
    const bool offered = std::any_of(locales.begin(), locales.end(), [](const QLocale &locale) {
        return locale.language() == QLocale::Chinese || locale.language() == QLocale::C;
    });
    const QLocale current = m_tts->locale();
    if (offered && current.language() == QLocale::Chinese)
        return;
    if (std::exchange(m_missingVoiceReported, true))
        return;
    if (offered)
        qWarning()
            << "The default voice of the speech engine is not Chinese, news will be read in the voice of"
            << current.name();
    else
        qWarning() << "The speech engine offers no Chinese voice, news will not be read properly";
}
