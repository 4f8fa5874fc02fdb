#include "wizard/ScanClock.h"

#include <QTime>

namespace {
constexpr int kCountdownSeconds = 600;
constexpr int kDaySeconds = 24 * 60 * 60;

QString timeOfDay(int seconds)
{
    const int wrapped = ((seconds % kDaySeconds) + kDaySeconds) % kDaySeconds;
    return QTime(0, 0).addSecs(wrapped).toString(QStringLiteral("HH:mm:ss"));
}
} // namespace

QString ScanClock::elapsedText(int seconds)
{
    return timeOfDay(seconds);
}

QString ScanClock::remainingText(int elapsedSeconds)
{
    return timeOfDay(kCountdownSeconds - elapsedSeconds);
}

int ScanClock::percent(quint64 done, quint64 total)
{
    if (total == 0)
        return 0;
    return int(qMin<quint64>(done * 100 / total, 100));
}
