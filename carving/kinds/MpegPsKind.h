#pragma once
#include "carving/CarveKind.h"

// MPEG program streams (MPEG-1 and MPEG-2, as on DVDs and old cameras): packs
// and the packets in them, each with its length, to the end code or to the
// last packet when the stream has none.
class MpegPsKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("mpg"); }
    int firstByte() const override { return 0x00; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(16) << 30; // a DVD's worth of video
};
