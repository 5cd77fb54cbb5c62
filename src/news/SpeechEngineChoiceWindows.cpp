#include "news/SpeechEngineChoice.h"

// No name: the choice is Qt's.
QString SpeechEngineChoice::name()
{
    return {};
}
