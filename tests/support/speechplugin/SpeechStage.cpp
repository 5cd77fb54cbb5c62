#include "support/speechplugin/SpeechStage.h"

#include <QCoreApplication>
#include <QStringList>

SpeechStage &SpeechStage::instance()
{
    static SpeechStage stage;
    return stage;
}

void SpeechStage::install()
{
    // Among several engines QTextToSpeech's default is the first in the order of a hash, another one at every
    // run. It looks for engines once in a process: at that moment it is to see the staged one alone.
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({QStringLiteral(LARKSPIRE_TEST_PLUGINS)});
    QStringList engines = QTextToSpeech::availableEngines();
    QCoreApplication::setLibraryPaths(paths);
    // Linked into the program, and no engine by itself.
    engines.removeAll(QStringLiteral("larkspire-detached"));
    if (engines != QStringList{QStringLiteral("staged")})
        qFatal("The staged speech engine is not the only one: %s",
               qPrintable(engines.join(QStringLiteral(", "))));
}

void SpeechStage::reset()
{
    const SpeechStage fresh;
    creation = fresh.creation;
    firstState = fresh.firstState;
    locales = fresh.locales;
    locale = fresh.locale;
    languagesThrow = fresh.languagesThrow;
    speaksAtOnce = fresh.speaksAtOnce;
    hang = fresh.hang;
    m_said.clear();
    m_stopCount = 0;
}
