#pragma once

#include <QString>

/// Which of Qt's speech engines the program speaks by: the one that Qt would take by itself, on Linux wrapped
/// where it has to ask a service that may never answer.
namespace SpeechEngineChoice {

/// Name for the constructor of QTextToSpeech.
QString name();

} // namespace SpeechEngineChoice
