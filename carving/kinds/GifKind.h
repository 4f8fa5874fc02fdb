#pragma once
#include "carving/CarveKind.h"

// GIF87a/89a: screen descriptor and colour table, then extension and image
// blocks made of sub-blocks, up to the trailer byte.
class GifKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("gif"); }
    int firstByte() const override { return 'G'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(256) << 20; // long animations stay well below

private:
    static bool skipSubBlocks(CarveSource& source, quint64* pos);
};
