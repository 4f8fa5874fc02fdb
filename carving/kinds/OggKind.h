#pragma once
#include "carving/CarveKind.h"

// Ogg (Vorbis, Opus, Theora): pages, each sized by its segment table, until
// every stream that began in the file has had its last page.
class OggKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("ogg"); }
    int firstByte() const override { return 'O'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(16) << 30; // long recordings and films
    static constexpr int kMaxStreams = 64;                  // audio, video and subtitle streams of one file
};
