#include "fat32/Fat32DirEntry.h"
#include "scan/LeReader.h"

#include <algorithm>

namespace {
constexpr size_t kName = 0x00;
constexpr size_t kNameLength = 8;
constexpr size_t kExtension = 0x08;
constexpr size_t kExtensionLength = 3;
constexpr size_t kAttributes = 0x0B;
constexpr size_t kCaseFlags = 0x0C;
constexpr size_t kClusterHigh = 0x14;
constexpr size_t kWriteTime = 0x16;
constexpr size_t kWriteDate = 0x18;
constexpr size_t kClusterLow = 0x1A;
constexpr size_t kSize = 0x1C;
constexpr char kDeletedLetter = '_';

// Days before each month in a common year; months 12 to 15 don't exist and count 0.
constexpr int kDaysBeforeMonth[16] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 0, 0, 0, 0};
// 1980-01-01 00:00 at UTC+8 plus the one day that the day count leaves out.
constexpr qint64 kEpochOffsetSeconds = 315590400;
constexpr qint64 kSecondsPerDay = 86400;

// The bytes up to the first blank.
size_t blankPadded(const uchar* text, size_t length)
{
    size_t n = 0;
    while (n < length && text[n] != ' ')
        ++n;
    return n;
}

// ASCII capitals to lowercase, the only letters the case flags speak of.
void lowerAscii(char* text, size_t length)
{
    for (size_t i = 0; i < length; ++i)
        if (text[i] >= 'A' && text[i] <= 'Z')
            text[i] = char(text[i] - 'A' + 'a');
}
} // namespace

Fat32DirEntry Fat32DirEntry::decode(const uchar* entry)
{
    LeReader r(entry, kBytes);
    Fat32DirEntry e;
    e.firstByte = r.u8(kName);
    e.attributes = r.u8(kAttributes);
    e.caseFlags = r.u8(kCaseFlags);
    e.firstCluster = (quint32(r.u16(kClusterHigh)) << 16) | r.u16(kClusterLow);
    e.time = r.u16(kWriteTime);
    e.date = r.u16(kWriteDate);
    e.size = r.u32(kSize);
    if (const uchar* name = r.bytes(kName, e.name.size()))
        std::copy(name, name + e.name.size(), e.name.begin());
    return e;
}

QString Fat32DirEntry::shortName() const
{
    char text[kNameLength + 1 + kExtensionLength];
    const size_t base = blankPadded(name.data() + kName, kNameLength);
    std::copy(name.begin() + kName, name.begin() + kName + base, text);
    if (caseFlags & kLowerBase)
        lowerAscii(text, base);
    // The first letter of a deleted entry is gone for good; "_" stands in for it.
    if (isDeleted() && base > 0)
        text[0] = kDeletedLetter;
    size_t length = base;
    if (const size_t ext = blankPadded(name.data() + kExtension, kExtensionLength); ext > 0) {
        text[length++] = '.';
        std::copy(name.begin() + kExtension, name.begin() + kExtension + ext, text + length);
        if (caseFlags & kLowerExtension)
            lowerAscii(text + length, ext);
        length += ext;
    }
    return QString::fromLatin1(text, qsizetype(length));
}

bool Fat32DirEntry::isDotEntry() const
{
    const QString n = shortName();
    return n == QLatin1String(".") || n == QLatin1String("..");
}

quint64 Fat32DirEntry::stampMsecs(quint16 date, quint16 time)
{
    const int years = date >> 9;
    const int month = ((date >> 5) - 1) & 15;
    const int day = date & 31;
    qint64 days = kDaysBeforeMonth[month] + day - 1 + 365 * years + years / 4;
    if (years % 4 == 0 && month < 2)
        days -= 1;
    const qint64 hours = time >> 11;
    const qint64 minutes = (time >> 5) & 63;
    const qint64 seconds = days * kSecondsPerDay + (minutes + hours * 60) * 60 + (time & 31) * 2 + kEpochOffsetSeconds;
    return quint64(seconds) * 1000;
}

bool Fat32DirEntry::startsWithDotEntries(const uchar* cluster, size_t size)
{
    LeReader r(cluster, size);
    const bool dots = r.u8(0) == '.' && r.u8(kBytes) == '.' && r.u8(kBytes + 1) == '.';
    return r.ok() && dots;
}
