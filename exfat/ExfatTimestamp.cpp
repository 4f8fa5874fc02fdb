#include "exfat/ExfatTimestamp.h"

#include <QDate>

namespace {
constexpr int kFirstYear = 1980;
// Ten-millisecond steps go up to 1990 ms: the odd second of a 2-second stamp.
constexpr quint8 kMaxTenMsSteps = 199;
constexpr quint8 kOffsetValid = 0x80;
constexpr int kOffsetStepMinutes = 15;
// A stamp with no zone is read as the wall clock here, like FAT's stamps.
constexpr qint64 kDefaultOffsetMinutes = 8 * 60;
constexpr qint64 kMsPerMinute = 60 * 1000;

// The offset's seven low bits are a signed count of quarter hours.
qint64 offsetMinutes(quint8 utcOffset)
{
    if (!(utcOffset & kOffsetValid))
        return kDefaultOffsetMinutes;
    const int quarters = (utcOffset & 0x40) ? int(utcOffset & 0x7F) - 0x80 : int(utcOffset & 0x7F);
    return qint64(quarters) * kOffsetStepMinutes;
}
} // namespace

quint64 ExfatTimestamp::toMsecs(quint32 stamp, quint8 tenMsSteps, quint8 utcOffset)
{
    const QDate date(kFirstYear + int(stamp >> 25), int((stamp >> 21) & 15), int((stamp >> 16) & 31));
    const int hour = int((stamp >> 11) & 31);
    const int minute = int((stamp >> 5) & 63);
    const int twoSeconds = int(stamp & 31);
    if (!date.isValid() || hour > 23 || minute > 59 || twoSeconds > 29)
        return 0;
    const qint64 days = QDate(1970, 1, 1).daysTo(date);
    const qint64 seconds = days * 86400 + hour * 3600 + minute * 60 + twoSeconds * 2;
    const qint64 ms = seconds * 1000 + qint64(qMin(tenMsSteps, kMaxTenMsSteps)) * 10
        - offsetMinutes(utcOffset) * kMsPerMinute;
    return ms > 0 ? quint64(ms) : 0;
}
