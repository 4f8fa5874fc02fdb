#pragma once
#include <QtGlobal>

// An exFAT time stamp: a packed local date and time in 2-second steps, a
// count of 10 ms steps on top, and the zone's offset from UTC.
class ExfatTimestamp {
public:
    // Ms since 1970-01-01 UTC. Without a valid offset the stamp is taken as
    // the wall clock at UTC+8, as FAT stamps are. 0 for a date that can't exist.
    static quint64 toMsecs(quint32 stamp, quint8 tenMsSteps, quint8 utcOffset);
};
