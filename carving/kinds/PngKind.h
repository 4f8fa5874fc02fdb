#pragma once
#include "carving/CarveKind.h"

// PNG: the signature, then chunks (length, type, data, CRC) up to IEND.
class PngKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("png"); }
    int firstByte() const override { return 0x89; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(512) << 20; // far above any photo or scan saved as PNG
};
