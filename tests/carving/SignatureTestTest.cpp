#include "CarvingVolume.h"
#include "carving/SignatureTest.h"

#include <gtest/gtest.h>

using namespace carvedHeaders;

TEST(SignatureTest, KindsLengthsAndNearMisses)
{
    constexpr quint32 kCluster = 2048;
    constexpr quint64 kNoHit = 0;
    struct Case {
        QByteArray header;
        CarvedKind kind;
        quint64 ntfsSize; // the fixed NTFS lengths become 250 clusters and one cluster on FAT32
    };
    const Case cases[] = {
        {sevenZip(1000, 60), CarvedKind::SevenZip, 1092},
        {sevenZip(0, 0), CarvedKind::SevenZip, 32},
        {sevenZip(0x40000000 - 0x20 - 1, 0), CarvedKind::SevenZip, 0x3FFFFFFF},
        {sevenZip(0x40000000 - 0x20, 0), CarvedKind::None, kNoHit},
        {sevenZip(~quint64(0), 2), CarvedKind::None, kNoHit}, // a sum that wraps
        {bmp(5000, 54), CarvedKind::Bmp, 5000},
        {bmp(65, 64, 0x0C), CarvedKind::Bmp, 65},
        {bmp(70000, 138, 0x7C), CarvedKind::Bmp, 70000},
        {bmp(64, 54), CarvedKind::None, kNoHit},
        {bmp(5000, 5000), CarvedKind::None, kNoHit},
        {bmp(5000, 54, 0x28, 0x10000), CarvedKind::None, kNoHit},
        {bmp(5000, 54, 0x29), CarvedKind::None, kNoHit},
        {bmp(5000, 54, 0x128), CarvedKind::None, kNoHit},
        {"GIF87a", CarvedKind::Gif, 4096},
        {"GIF89a", CarvedKind::Gif, 4096},
        {"GIF88a", CarvedKind::None, kNoHit},
        {jpg(), CarvedKind::Jpg, 65536},
        {"\xFF\xD8\xFE", CarvedKind::None, kNoHit},
        {png(), CarvedKind::Png, 4096},
        {"\x89PN", CarvedKind::None, kNoHit},
        {QByteArray("MM\0\x2A", 4), CarvedKind::Tiff, 4096},
        {QByteArray("II\x2A\0", 4), CarvedKind::Tiff, 4096},
        {QByteArray("MM\0\x2B", 4), CarvedKind::None, kNoHit},
        {QByteArray("\0\0\1\0\1\0", 6), CarvedKind::Ico, 4096},
        {QByteArray("\0\0\1\0\2\0", 6), CarvedKind::None, kNoHit},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.header.toHex().toStdString());
        QByteArray block(512, '\0');
        block.replace(0, c.header.size(), c.header);
        const auto* bytes = reinterpret_cast<const uchar*>(block.constData());
        const SignatureHit ntfs = SignatureTest::test(bytes, 512, SignatureTest::ntfsLengths());
        const SignatureHit fat = SignatureTest::test(bytes, 512, SignatureTest::fat32Lengths(kCluster));
        EXPECT_EQ(ntfs.kind, c.kind);
        EXPECT_EQ(fat.kind, c.kind);
        EXPECT_EQ(ntfs.size, c.ntfsSize);
        const quint64 fatSize = c.ntfsSize == 65536 ? 250 * kCluster : c.ntfsSize == 4096 ? kCluster : c.ntfsSize;
        EXPECT_EQ(fat.size, fatSize);
    }
    const QByteArray z = sevenZip(10, 10);
    const auto* zBytes = reinterpret_cast<const uchar*>(z.constData());
    EXPECT_TRUE(SignatureTest::test(zBytes, 0x1C, SignatureTest::ntfsLengths()).found());
    EXPECT_FALSE(SignatureTest::test(zBytes, 0x1B, SignatureTest::ntfsLengths()).found()) << "fields past the block";
}
