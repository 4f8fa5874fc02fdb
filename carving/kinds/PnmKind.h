#pragma once
#include "carving/CarveKind.h"

// Binary PBM, PGM and PPM pictures: a text header with width, height and
// largest value, then exactly the pixels it announces.
class PnmKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("ppm"); }
    int firstByte() const override { return 'P'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(1) << 30; // a 16k x 16k picture in 24 bits and more
    static constexpr size_t kMaxHeaderBytes = 1024;         // the header with a few comment lines
};
