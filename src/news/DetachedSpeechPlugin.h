#pragma once

#include <QObject>
#include <QString>
#include <QTextToSpeechPlugin>

/// The way by which QTextToSpeech gets a DetachedSpeechEngine. It is linked into the program.
class DetachedSpeechPlugin final : public QObject, public QTextToSpeechPlugin
{
    Q_OBJECT
    Q_INTERFACES(QTextToSpeechPlugin)
    Q_PLUGIN_METADATA(IID "org.qt-project.qt.speech.tts.plugin/5.0" FILE "detachedspeech.json")

public:
    /// Under which QTextToSpeech knows it; the same as in detachedspeech.json.
    static QString name() { return QStringLiteral("larkspire-detached"); }
    /// The engine behind it: that of Speech Dispatcher.
    static QString wrappedName() { return QStringLiteral("speechd"); }

    QTextToSpeechEngine *createTextToSpeechEngine(const QVariantMap &parameters, QObject *parent,
                                                  QString *errorString) const override;
};
