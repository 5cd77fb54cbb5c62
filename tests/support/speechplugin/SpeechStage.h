#pragma once

#include <QList>
#include <QLocale>
#include <QObject>
#include <QStringList>
#include <QTextToSpeech>
#include <QVector>

class StagedSpeechEngine;

/// A speech engine for tests that says nothing and keeps what it was told. It is a real plug-in of
/// QTextToSpeech and stands in for the engines of the system, so code under test runs against the
/// real QTextToSpeech. One stage serves the whole process; its engines are those that QTextToSpeech objects
/// have created and not yet destroyed.
class SpeechStage final : public QObject
{
    Q_OBJECT

public:
    /// What happens when QTextToSpeech asks for an engine.
    enum class Creation
    {
        Works,
        Fails, ///< no engine, with an error text
        Throws ///< an exception, as a broken plug-in of another maker might let through
    };

    /// What an engine never comes back from, like one whose service answers no more.
    enum class Hang
    {
        Never,
        InStop,
        AtItsEnd ///< when it is destroyed
    };

    static SpeechStage &instance();

    /// Makes the staged engine the one of the process. Call it after the application object and ahead of the
    /// first use of QTextToSpeech; ends the process when it comes too late.
    static void install();

    /// Forgets what was said and restores the defaults below.
    void reset();

    /// How the next engines are created.
    Creation creation = Creation::Works;
    /// State of a new engine.
    QTextToSpeech::State firstState = QTextToSpeech::Ready;
    /// Languages that engines offer, and the one that is theirs at first.
    QVector<QLocale> locales{QLocale(QLocale::Chinese, QLocale::China), QLocale(QLocale::English)};
    QLocale locale{QLocale::Chinese, QLocale::China};
    /// Whether engines throw an exception instead of telling their languages.
    bool languagesThrow = false;
    /// Whether an engine speaks as soon as it is told to. False: it stays as it was until the test calls
    /// StagedSpeechEngine::enter(), like an engine that works in another process.
    bool speaksAtOnce = true;

    /// Where engines hang, and with them the thread that called.
    Hang hang = Hang::Never;

    /// Texts in the order in which any engine was told to say them.
    const QStringList &said() const { return m_said; }
    /// How often any engine was told to stop.
    int stopCount() const { return m_stopCount; }
    /// Living engines, oldest first.
    const QList<StagedSpeechEngine *> &engines() const { return m_engines; }
    /// The newest living engine, null without any.
    StagedSpeechEngine *engine() const { return m_engines.isEmpty() ? nullptr : m_engines.last(); }

private:
    friend class StagedSpeechEngine;

    SpeechStage() = default;

    QStringList m_said;
    int m_stopCount = 0;
    QList<StagedSpeechEngine *> m_engines;
};
