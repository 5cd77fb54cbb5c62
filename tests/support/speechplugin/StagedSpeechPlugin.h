#pragma once

#include <QObject>
#include <QTextToSpeechPlugin>

/// The way by which QTextToSpeech gets engines of the SpeechStage.
class StagedSpeechPlugin final : public QObject, public QTextToSpeechPlugin
{
    Q_OBJECT
    Q_INTERFACES(QTextToSpeechPlugin)
    Q_PLUGIN_METADATA(IID "org.qt-project.qt.speech.tts.plugin/5.0" FILE "staged.json")

public:
    QTextToSpeechEngine *createTextToSpeechEngine(const QVariantMap &parameters, QObject *parent,
                                                  QString *errorString) const override;
};
