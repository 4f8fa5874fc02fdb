#include "carving/kinds/JpegKind.h"
#include "carving/CarveSource.h"
#include "carving/kinds/TiffStructure.h"

#include <QDateTime>
#include <cstring>

namespace {
constexpr uchar kMarker = 0xFF;
constexpr uchar kSoi = 0xD8, kEoi = 0xD9, kSos = 0xDA, kApp1 = 0xE1, kTem = 0x01;
constexpr uchar kRst0 = 0xD0, kRst7 = 0xD7;
constexpr quint64 kSegmentLengthBytes = 2;
constexpr quint64 kExifHeaderBytes = 6; // "Exif\0\0" before the TIFF header
constexpr int kMaxMarkers = 100000;     // segments and scans of one file; progressive files have dozens

bool standalone(uchar m) { return (m >= kRst0 && m <= kRst7) || m == kTem; }
} // namespace

bool JpegKind::matches(const uchar* head, size_t bytes) const
{
    // SOI followed by the marker of a first segment (APPn, DQT, SOF, COM ...).
    return bytes >= 4 && head[0] == kMarker && head[1] == kSoi && head[2] == kMarker && head[3] >= 0xC0 && head[3] != kMarker;
}

CarveEnd JpegKind::findEnd(CarveSource& source) const
{
    CarveEnd end;
    quint64 pos = 2;
    bool scanned = false;
    for (int i = 0; i < kMaxMarkers; ++i) {
        const quint64 mark = source.u8(pos), m = source.u8(pos + 1);
        if (!source.ok() || mark != kMarker || m == kSoi || m == 0)
            break;
        if (m == kMarker) {
            ++pos; // fill byte
            continue;
        }
        if (m == kEoi) {
            end.length = pos + 2;
            return end;
        }
        if (standalone(uchar(m))) {
            pos += 2;
            continue;
        }
        const quint64 length = source.be16(pos + 2);
        if (!source.ok() || length < kSegmentLengthBytes)
            break;
        if (m == kApp1 && end.stem.isEmpty())
            readExifDate(source, pos, &end);
        pos += 2 + length;
        scanned = scanned || m == kSos;
        if (m == kSos && !scanEntropy(source, &pos))
            break;
    }
    // Without a scan there is no picture, only the header of one.
    if (!scanned)
        return {};
    CarveEnd cut = cutAt(pos);
    cut.stem = end.stem;
    cut.modifiedMsecs = end.modifiedMsecs;
    return cut;
}

bool JpegKind::scanEntropy(CarveSource& source, quint64* pos)
{
    quint64 p = *pos;
    const quint64 block = source.blockBytes();
    while (true) {
        if (source.atBlockStart(p) && (source.otherFileAt(p) || source.zeroBlockAt(p)))
            break;
        size_t available = 0;
        const uchar* w = source.window(p, &available);
        if (!w)
            break;
        const size_t n = size_t(std::min<quint64>(available, block - p % block));
        const void* ff = std::memchr(w, kMarker, n);
        if (!ff) {
            p += n;
            continue;
        }
        p += quint64(static_cast<const uchar*>(ff) - w);
        const quint64 next = source.u8(p + 1);
        if (!source.ok())
            break;
        if (next == 0 || next == kMarker || standalone(uchar(next))) {
            p += next == kMarker ? 1 : 2; // stuffing, fill or restart marker
            continue;
        }
        *pos = p;
        return true;
    }
    *pos = p;
    return false;
}

void JpegKind::readExifDate(CarveSource& source, quint64 segment, CarveEnd* end)
{
    const quint64 exif = segment + 2 + kSegmentLengthBytes;
    if (!source.matches(exif, "Exif\0\0", kExifHeaderBytes)) {
        source.clearError();
        return;
    }
    TiffStructure tiff(source, exif + kExifHeaderBytes);
    tiff.walk();
    source.clearError();
    QDateTime when = QDateTime::fromString(tiff.dateTimeOriginal(), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    if (!when.isValid())
        return;
    // EXIF keeps the camera's local time without a zone: taken as it reads.
    when.setTimeSpec(Qt::UTC);
    end->modifiedMsecs = quint64(std::max<qint64>(0, when.toMSecsSinceEpoch()));
    end->stem = when.toString(QStringLiteral("'IMG_'yyyyMMdd_HHmmss"));
}
