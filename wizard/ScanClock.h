#pragma once
#include <QString>
#include <QtGlobal>
#include <functional>

// The figures of the scan page: time spent, and time left estimated from the
// scan's own measured speed. Pauses don't count as scan time. The clock is
// injected, so an estimate can be checked without waiting.
class ScanClock {
public:
    using Now = std::function<qint64()>; // milliseconds, steady

    explicit ScanClock(Now now = steadyNow());

    void start();
    void setRunning(bool running);
    // Work done of the work there is, in the scan's own units.
    void progress(quint64 done, quint64 total);

    qint64 elapsedMsecs() const;
    // Work left over the rate measured so far; -1 before there is a rate.
    qint64 remainingMsecs() const;

    // A duration as "HH:mm:ss" (hours may pass 24); "--:--:--" for an unknown one.
    static QString durationText(qint64 msecs);
    static QString elapsedText(int seconds) { return durationText(qint64(seconds) * 1000); }
    // done of total in percent, truncated; 0 for a total that isn't positive.
    static int percent(quint64 done, quint64 total);
    static Now steadyNow();

private:
    Now now;
    qint64 startedAt = 0;
    qint64 pausedAt = -1;   // -1 while running
    qint64 pausedMsecs = 0; // in earlier pauses
    quint64 done = 0;
    quint64 total = 0;
    qint64 doneAt = 0; // scan time when `done` was reported
};
