#pragma once
#include "carving/CarveKind.h"

// RIFF (WAV, AVI, WebP): the size of the RIFF chunk, and for a large AVI the
// AVIX chunks that follow it.
class RiffKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("wav"); }
    int firstByte() const override { return 'R'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(64) << 30; // an OpenDML AVI of many RIFF chunks
};
