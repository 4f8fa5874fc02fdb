#pragma once
#include <QString>
#include <QtGlobal>

// The figures of the scan page: the two time labels and the progress bar.
class ScanClock {
public:
    // A duration as "HH:mm:ss", wrapping at 24 hours.
    static QString elapsedText(int seconds);
    // Ten minutes less the elapsed time, as a time of day: it goes on from
    // 23:59:59 once the ten minutes are over. No estimate from the scan.
    static QString remainingText(int elapsedSeconds);
    // done of total in percent, truncated; 0 for a total that isn't positive.
    static int percent(quint64 done, quint64 total);
};
