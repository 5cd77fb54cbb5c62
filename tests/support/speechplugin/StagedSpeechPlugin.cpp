#include "support/speechplugin/StagedSpeechPlugin.h"

#include "support/speechplugin/SpeechStage.h"
#include "support/speechplugin/StagedSpeechEngine.h"

#include <stdexcept>

QTextToSpeechEngine *StagedSpeechPlugin::createTextToSpeechEngine(const QVariantMap &parameters,
                                                                  QObject *parent, QString *errorString) const
{
    Q_UNUSED(parameters)
    switch (SpeechStage::instance().creation) {
    case SpeechStage::Creation::Works:
        return new StagedSpeechEngine(parent);
    case SpeechStage::Creation::Throws:
        throw std::runtime_error("the staged engine refuses");
    case SpeechStage::Creation::Fails:
        break;
    }
    *errorString = QStringLiteral("the staged engine is out of order");
    return nullptr;
}
