#pragma once
#include "scan/device/BadRange.h"

#include <QMutex>

// What the reads of one open device have met: the sectors that could not be
// read (zero-filled in what the reads returned), and whether the device has
// gone altogether. Shared by every handle on the device, so a sector found bad
// by the scan is not tried again by the restore.
class ReadHealth {
public:
    // Past this many ranges only the count of bad bytes grows: a device this
    // damaged is imaged with ddrescue, not read range by range.
    static constexpr int kMaxRanges = 4096;
    // This many failed sectors in a row, with no good read between, is a disk
    // that has gone (unplugged, dead controller), not a bad patch.
    static constexpr int kGoneAfter = 256;

    // Returns true when the sector at offset is known bad.
    bool isKnownBad(quint64 offset, quint64 length) const;
    // Counts one failed sector; logs once per new range. Returns true when the
    // device has now gone.
    bool recordBad(quint64 offset, quint64 length);
    void recordGood();
    // A source that shrank or a device that vanished: every later read fails.
    void markGone();

    bool gone() const;
    QList<BadRange> ranges() const;
    quint64 badByteCount() const;

private:
    mutable QMutex m_mutex;
    QList<BadRange> m_ranges;
    quint64 m_badBytes = 0;
    int m_consecutive = 0;
    bool m_gone = false;
};
