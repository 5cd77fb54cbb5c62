#pragma once

#include <QByteArray>
#include <QProcess>
#include <QVector>

/// Records what the programs of this test play into the null sink of with-sound, and measures it. Mono, the
/// mean of both sides; samples from -1.0 to 1.0.
class SoundRecorder final
{
public:
    static constexpr int rate = 44100;

    SoundRecorder() = default;
    ~SoundRecorder();
    Q_DISABLE_COPY_MOVE(SoundRecorder)

    /// Starts to record and waits until the first samples are there. False, with the reason on standard
    /// error, when they do not come.
    bool start();

    /// Everything so far.
    QVector<double> samples();

    /// Milliseconds so far.
    int recordedMs();

    /// How many milliseconds so far were louder than silence, in slices of 20 ms.
    int loudMs();

    /// How many milliseconds at the end of the recording were silent without a break.
    int silentMsAtEnd();

    /// Forgets what was recorded so far.
    void clear();

private:
    QVector<bool> loudSlices();

    QProcess m_process;
    QByteArray m_data;
};

/// How strongly a pitch in hertz sounds in the samples: the amplitude of that sine, averaged over all of
/// them.
double strengthOfPitch(const QVector<double> &samples, double pitch);
