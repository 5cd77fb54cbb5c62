#include "news/DetachedSpeechPlugin.h"

#include "news/DetachedSpeechEngine.h"

QTextToSpeechEngine *DetachedSpeechPlugin::createTextToSpeechEngine(const QVariantMap &parameters,
                                                                    QObject *parent,
                                                                    QString *errorString) const
{
    Q_UNUSED(parameters)
    Q_UNUSED(errorString)
    return new DetachedSpeechEngine(wrappedName(), parent);
}
