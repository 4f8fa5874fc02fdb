#include "carving/kinds/Mp3Kind.h"
#include "carving/CarveSource.h"

#include <cstring>

namespace {
constexpr quint64 kId3HeaderBytes = 10, kId3FooterBytes = 10, kId3v1Bytes = 128;
constexpr uchar kId3FooterFlag = 0x10;
constexpr quint64 kFrameHeaderBytes = 4;
constexpr int kMaxFrames = 1 << 26; // frames in a day of audio

// kbit/s by [MPEG-1?][layer 1..3][index]; sample rates by version.
constexpr int kBitrates[2][3][16] = {
    {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}},
    {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
     {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}},
};
constexpr int kSampleRates[4][3] = {{11025, 12000, 8000}, {0, 0, 0}, {22050, 24000, 16000}, {44100, 48000, 32000}};

quint64 syncsafe(const uchar* p) { return quint64(p[0] & 0x7F) << 21 | quint64(p[1] & 0x7F) << 14 | quint64(p[2] & 0x7F) << 7 | (p[3] & 0x7F); }
} // namespace

quint64 Mp3Kind::frameBytes(const uchar* p)
{
    if (p[0] != 0xFF || (p[1] & 0xE0) != 0xE0)
        return 0;
    const int version = (p[1] >> 3) & 3, layerBits = (p[1] >> 1) & 3;
    const int bitrateIndex = p[2] >> 4, rateIndex = (p[2] >> 2) & 3, padding = (p[2] >> 1) & 1;
    if (version == 1 || layerBits == 0 || rateIndex == 3)
        return 0;
    const int layer = 4 - layerBits; // 1..3
    const bool mpeg1 = version == 3;
    const quint64 bitrate = quint64(kBitrates[mpeg1][layer - 1][bitrateIndex]) * 1000;
    const quint64 rate = quint64(kSampleRates[version][rateIndex]);
    if (bitrate == 0 || rate == 0)
        return 0;
    if (layer == 1)
        return (12 * bitrate / rate + padding) * 4;
    const quint64 samples = layer == 3 && !mpeg1 ? 72 : 144;
    return samples * bitrate / rate + padding;
}

bool Mp3Kind::matches(const uchar* head, size_t bytes) const
{
    if (m_tagged)
        return bytes >= kId3HeaderBytes && std::memcmp(head, "ID3", 3) == 0 && head[3] >= 2 && head[3] <= 4
            && (head[6] | head[7] | head[8] | head[9]) < 0x80;
    quint64 pos = 0;
    for (int i = 0; i < kMinUntaggedFrames; ++i) {
        if (pos + kFrameHeaderBytes > bytes)
            return i > 0;
        const quint64 n = frameBytes(head + pos);
        if (n == 0)
            return false;
        pos += n;
    }
    return true;
}

CarveEnd Mp3Kind::findEnd(CarveSource& source) const
{
    quint64 pos = 0;
    if (m_tagged) {
        const uchar* h = source.at(0, kId3HeaderBytes);
        if (!h)
            return {};
        pos = kId3HeaderBytes + syncsafe(h + 6) + (h[5] & kId3FooterFlag ? kId3FooterBytes : 0);
    }
    int frames = 0;
    for (; frames < kMaxFrames; ++frames) {
        const uchar* h = source.at(pos, kFrameHeaderBytes);
        const quint64 n = h ? frameBytes(h) : 0;
        if (n == 0 || n > source.limit() - pos || (frames > 0 && source.otherFileAt(pos)))
            break;
        pos += n;
    }
    source.clearError();
    if (frames == 0)
        return m_tagged ? cutAt(qMin(pos, source.limit())) : CarveEnd{};
    if (source.matches(pos, "TAG", 3))
        pos += kId3v1Bytes;
    source.clearError();
    return whole(pos);
}
