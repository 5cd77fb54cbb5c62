#include "news/DetachedSpeechPlugin.h"
#include "news/SpeechEngineChoice.h"

#include <QStringList>
#include <QTextToSpeech>
#include <QtPlugin>

Q_IMPORT_PLUGIN(DetachedSpeechPlugin)

QString SpeechEngineChoice::name()
{
    // What Qt takes by itself is the first; the wrapper is no engine of the system.
    QStringList engines = QTextToSpeech::availableEngines();
    engines.removeAll(DetachedSpeechPlugin::name());
    if (engines.isEmpty())
        return DetachedSpeechPlugin::wrappedName(); // which Qt's log then names as missing
    return engines.first() == DetachedSpeechPlugin::wrappedName() ? DetachedSpeechPlugin::name()
                                                                  : engines.first();
}
