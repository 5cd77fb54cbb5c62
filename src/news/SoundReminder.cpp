#include "news/SoundReminder.h"

#include "news/SoundSchedule.h"

#include <QDebug>
#include <QFileInfo>
#include <QUrl>

SoundReminder::SoundReminder(QObject *parent) : QObject(parent)
{
    m_soundEffect.setParent(this);
    connect(&m_soundEffect, &QSoundEffect::statusChanged, this, &SoundReminder::onStatusChanged);
}

void SoundReminder::playSound(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists()) {
        qWarning() << "Sound file does not exist:" << path;
        return;
    }
    m_path = path;
    m_failureReported = false;
    // For ":/x" this gives "file::/x", which Qt reads from the resources like any local file.
    m_soundEffect.setSource(QUrl::fromLocalFile(file.absoluteFilePath()));
    if (m_soundEffect.status() == QSoundEffect::Error)
        onStatusChanged();
    else
        m_soundEffect.play();
}

void SoundReminder::playSoundForTime(QTime time)
{
    const QString file = SoundSchedule::fileDueAt(time);
    if (!file.isEmpty())
        playSound(file);
}

// Loading goes on in the background, so a failure is mostly seen here and not by playSound() itself.
void SoundReminder::onStatusChanged()
{
    if (m_soundEffect.status() != QSoundEffect::Error || m_failureReported)
        return;
    m_failureReported = true;
    qWarning() << "Failed to load sound file:" << m_path;
}
