#include "support/speechplugin/SpeechStage.h"

#include <QCoreApplication>

// Makes the program itself, into which this is linked, speak by the staged engine, which hangs where the
// environment says.
namespace {

void installHangingSpeech()
{
    SpeechStage::install();
    SpeechStage &stage = SpeechStage::instance();
    // Any state but rest makes the program tell the engine to stop.
    stage.firstState = QTextToSpeech::Speaking;
    const QByteArray where = qgetenv("LARKSPIRE_TEST_SPEECH_HANGS");
    if (where == "in stop")
        stage.hang = SpeechStage::Hang::InStop;
    else if (where == "at its end")
        stage.hang = SpeechStage::Hang::AtItsEnd;
    else if (where != "never")
        qFatal("LARKSPIRE_TEST_SPEECH_HANGS is not understood");
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(installHangingSpeech)
