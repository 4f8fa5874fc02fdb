#pragma once
#include "carving/CarveKind.h"

// ICO: the directory of images; the file ends with the furthest image.
class IcoKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("ico"); }
    int firstByte() const override { return 0x00; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(16) << 20; // dozens of 256-pixel images in 32 bits
    static constexpr quint64 kMaxImages = 64;             // sizes times depths an icon holds
};
