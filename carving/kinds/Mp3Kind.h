#pragma once
#include "carving/CarveKind.h"

// MP3: an ID3v2 tag (when there is one), the MPEG audio frames, each found by
// the length its header gives, and an ID3v1 tag behind them.
class Mp3Kind : public CarveKind {
public:
    explicit Mp3Kind(bool tagged) : m_tagged(tagged) {}
    QString extension() const override { return QStringLiteral("mp3"); }
    int firstByte() const override { return m_tagged ? 'I' : 0xFF; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(1) << 30; // a day of audio at 96 kbit/s
    // Frames in a row that make an untagged block start an MP3: a lone frame
    // header is too easily met by chance.
    static constexpr int kMinUntaggedFrames = 8;

    // The length of the frame whose header is at p, or 0 when it is none.
    static quint64 frameBytes(const uchar* p);

private:
    bool m_tagged;
};
