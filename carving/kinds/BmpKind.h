#pragma once
#include "carving/CarveKind.h"

// BMP: the file size of the header, taken when the pixel data the information
// header describes fits in it.
class BmpKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("bmp"); }
    int firstByte() const override { return 'B'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(1) << 30; // a 16k x 16k picture in 32 bits
};
