#include "wizard/ScanClock.h"

#include <QElapsedTimer>

namespace {
// Below this much work done or time spent, a rate says nothing yet.
constexpr qint64 kMinMeasuredMsecs = 500;
constexpr qint64 kSecondsPerHour = 3600;
} // namespace

ScanClock::ScanClock(Now now) : now(std::move(now)) {}

ScanClock::Now ScanClock::steadyNow()
{
    return [] {
        static QElapsedTimer timer;
        if (!timer.isValid())
            timer.start();
        return timer.elapsed();
    };
}

void ScanClock::start()
{
    startedAt = now();
    pausedAt = -1;
    pausedMsecs = 0;
    done = total = 0;
    doneAt = 0;
}

void ScanClock::setRunning(bool running)
{
    if (!running && pausedAt < 0) {
        pausedAt = now();
    } else if (running && pausedAt >= 0) {
        pausedMsecs += now() - pausedAt;
        pausedAt = -1;
    }
}

void ScanClock::progress(quint64 doneNow, quint64 totalNow)
{
    done = doneNow;
    total = totalNow;
    doneAt = elapsedMsecs();
}

qint64 ScanClock::elapsedMsecs() const
{
    const qint64 end = pausedAt >= 0 ? pausedAt : now();
    return qMax<qint64>(0, end - startedAt - pausedMsecs);
}

qint64 ScanClock::remainingMsecs() const
{
    if (done == 0 || total == 0 || doneAt < kMinMeasuredMsecs)
        return -1;
    if (done >= total)
        return 0;
    const double msecsPerUnit = double(doneAt) / double(done);
    // Time since the last report is already part of what is left.
    const double left = double(total - done) * msecsPerUnit - double(elapsedMsecs() - doneAt);
    return qMax<qint64>(0, qint64(left));
}

QString ScanClock::durationText(qint64 msecs)
{
    if (msecs < 0)
        return QStringLiteral("--:--:--");
    const qint64 seconds = msecs / 1000;
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / kSecondsPerHour, 2, 10, QLatin1Char('0'))
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

int ScanClock::percent(quint64 doneNow, quint64 totalNow)
{
    if (totalNow == 0)
        return 0;
    return int(qMin<quint64>(doneNow * 100 / totalNow, 100));
}
