#pragma once
#include "carving/CarveKind.h"

// TIFF and the raw photos built on it (CR2, NEF, ARW, DNG): the furthest byte
// that any image file directory, its data, strips, tiles or sub-directories reach.
class TiffKind : public CarveKind {
public:
    explicit TiffKind(bool bigEndian) : m_bigEndian(bigEndian) {}
    QString extension() const override { return QStringLiteral("tiff"); }
    int firstByte() const override { return m_bigEndian ? 'M' : 'I'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(1) << 30; // raw photos and scans stay far below

private:
    bool m_bigEndian;
};
