#include "support/SoundRecorder.h"

#include <QtEndian>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

constexpr int bytesPerFrame = 4;
constexpr int sliceMs = 20;
constexpr double silence = 0.001;

} // namespace

SoundRecorder::~SoundRecorder()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool SoundRecorder::start()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral("parec"),
                    {QStringLiteral("--device=larkspire.monitor"), QStringLiteral("--raw"),
                     QStringLiteral("--format=s16le"), QStringLiteral("--channels=2"),
                     QStringLiteral("--rate=%1").arg(rate), QStringLiteral("--latency-msec=20")});
    if (!m_process.waitForStarted() || !m_process.waitForReadyRead(20000)) {
        qCritical("Nothing can be recorded: %s", qPrintable(m_process.errorString()));
        return false;
    }
    clear();
    return true;
}

QVector<double> SoundRecorder::samples()
{
    m_data += m_process.readAllStandardOutput();
    QVector<double> result;
    result.reserve(m_data.size() / bytesPerFrame);
    for (int at = 0; at + bytesPerFrame <= m_data.size(); at += bytesPerFrame) {
        const auto left = qFromLittleEndian<qint16>(m_data.constData() + at);
        const auto right = qFromLittleEndian<qint16>(m_data.constData() + at + 2);
        result.append((left + right) / 65536.0);
    }
    return result;
}

int SoundRecorder::recordedMs()
{
    return static_cast<int>(samples().size() * 1000LL / rate);
}

QVector<bool> SoundRecorder::loudSlices()
{
    const QVector<double> all = samples();
    constexpr int length = rate * sliceMs / 1000;
    QVector<bool> result;
    for (auto slice = all.begin(); all.end() - slice >= length; slice += length) {
        const double loudest = std::abs(*std::max_element(
            slice, slice + length, [](double a, double b) { return std::abs(a) < std::abs(b); }));
        result.append(loudest > silence);
    }
    return result;
}

int SoundRecorder::loudMs()
{
    return loudSlices().count(true) * sliceMs;
}

int SoundRecorder::silentMsAtEnd()
{
    const QVector<bool> slices = loudSlices();
    const auto lastLoud = std::find(slices.rbegin(), slices.rend(), true);
    return static_cast<int>(lastLoud - slices.rbegin()) * sliceMs;
}

void SoundRecorder::clear()
{
    m_process.readAllStandardOutput();
    m_data.clear();
}

double strengthOfPitch(const QVector<double> &samples, double pitch)
{
    if (samples.isEmpty())
        return 0.0;
    double sine = 0.0;
    double cosine = 0.0;
    for (int i = 0; i < samples.size(); ++i) {
        const double angle = 2.0 * M_PI * pitch * i / SoundRecorder::rate;
        sine += samples.at(i) * std::sin(angle);
        cosine += samples.at(i) * std::cos(angle);
    }
    return 2.0 * std::hypot(sine, cosine) / samples.size();
}
