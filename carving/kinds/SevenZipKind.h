#pragma once
#include "carving/CarveKind.h"

// 7z: the start header says where the end header lies and how long it is.
class SevenZipKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("7z"); }
    int firstByte() const override { return '7'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(16) << 30; // backups of whole folders; a larger figure is a broken header
};
