#pragma once
#include "carving/CarveKind.h"

// ISO base media files (MP4, MOV, 3GP, HEIC): a chain of top-level boxes from
// ftyp on, with 32- or 64-bit sizes, to the last box of the file. The major
// brand picks the extension.
class IsoMediaKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("mp4"); }
    int firstByte() const override { return 0x00; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(64) << 30; // hours of 4K video from a camera

private:
    static QString extensionOfBrand(const uchar* brand);
};
