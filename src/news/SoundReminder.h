#pragma once

#include <QObject>
#include <QSoundEffect>
#include <QString>
#include <QTime>

/// Plays a short sound beside a notification. One sound at a time: the next one takes the place of the one
/// that plays. Whatever goes wrong is a line in the log and silence.
class SoundReminder final : public QObject
{
    Q_OBJECT

public:
    explicit SoundReminder(QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(SoundReminder)

    /// Starts to play the WAV file `path`, a path of the file system or of the compiled-in resources
    /// (":/..."), and returns at once. A file that does not exist or that cannot be loaded is logged; the
    /// latter may show itself only after the return.
    void playSound(const QString &path);

private slots:
    /// Plays the sound that is due at this time of day, if any. Nothing in the program calls it.
    void playSoundForTime(QTime time);

private:
    void onStatusChanged();

    QSoundEffect m_soundEffect;
    QString m_path;
    bool m_failureReported = false;
};
