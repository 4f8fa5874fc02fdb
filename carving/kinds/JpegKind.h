#pragma once
#include "carving/CarveKind.h"

// JPEG: marker segments up to a scan, the entropy-coded data of the scan (with
// its FF00 stuffing and restart markers) up to the next marker, and so on
// through the scans of a progressive file, to the end-of-image marker. The
// EXIF block's thumbnail sits inside its segment and never ends the file.
class JpegKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("jpg"); }
    int firstByte() const override { return 0xFF; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(128) << 20; // above the largest camera and panorama photos

private:
    static bool scanEntropy(CarveSource& source, quint64* pos);
    static void readExifDate(CarveSource& source, quint64 segment, CarveEnd* end);
};
