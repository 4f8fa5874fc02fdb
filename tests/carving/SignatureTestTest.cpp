#include "CarvingVolume.h"
#include "carving/SignatureTest.h"

#include <gtest/gtest.h>

using namespace carvedHeaders;

namespace {
constexpr quint32 kCluster = 2048;

SignatureHit testBlock(const QByteArray& header, const CarveLengths& lengths)
{
    QByteArray block(512, '\0');
    block.replace(0, header.size(), header);
    return SignatureTest::test(reinterpret_cast<const uchar*>(block.constData()), size_t(block.size()), lengths);
}
} // namespace

TEST(SignatureTest, KindsAndLengthsPerFileSystem)
{
    struct Case {
        const char* what;
        QByteArray header;
        CarvedKind kind;
        quint64 ntfsSize;
        quint64 fat32Size;
    };
    const Case cases[] = {
        {"7z", sevenZip(1000, 60), CarvedKind::SevenZip, 1092, 1092},
        {"7z with empty next header", sevenZip(0, 0), CarvedKind::SevenZip, 32, 32},
        {"7z one byte under the cap", sevenZip(0x40000000 - 0x20 - 1, 0), CarvedKind::SevenZip, 0x3FFFFFFF, 0x3FFFFFFF},
        {"bmp", bmp(5000, 54), CarvedKind::Bmp, 5000, 5000},
        {"bmp of the smallest size", bmp(65, 64, 0x0C), CarvedKind::Bmp, 65, 65},
        {"bmp v5 header", bmp(70000, 138, 0x7C), CarvedKind::Bmp, 70000, 70000},
        {"gif87a", bytes({'G', 'I', 'F', '8', '7', 'a'}), CarvedKind::Gif, 4096, kCluster},
        {"gif89a", bytes({'G', 'I', 'F', '8', '9', 'a'}), CarvedKind::Gif, 4096, kCluster},
        {"jpg", jpg(), CarvedKind::Jpg, 65536, 250 * kCluster},
        {"png", bytes({0x89, 0x50, 0x4E, 0x47}), CarvedKind::Png, 4096, kCluster},
        {"tiff big-endian", bytes({0x4D, 0x4D, 0x00, 0x2A}), CarvedKind::Tiff, 4096, kCluster},
        {"tiff little-endian", bytes({0x49, 0x49, 0x2A, 0x00}), CarvedKind::Tiff, 4096, kCluster},
        {"ico with one image", bytes({0, 0, 1, 0, 1, 0}), CarvedKind::Ico, 4096, kCluster},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const SignatureHit ntfs = testBlock(c.header, SignatureTest::ntfsLengths());
        EXPECT_EQ(ntfs.kind, c.kind);
        EXPECT_EQ(ntfs.size, c.ntfsSize);
        const SignatureHit fat = testBlock(c.header, SignatureTest::fat32Lengths(kCluster));
        EXPECT_EQ(fat.kind, c.kind);
        EXPECT_EQ(fat.size, c.fat32Size);
    }
}

TEST(SignatureTest, NearMissesAreNoHit)
{
    struct Case {
        const char* what;
        QByteArray header;
    };
    const Case cases[] = {
        {"7z at the cap", sevenZip(0x40000000 - 0x20, 0)},
        {"7z fields that wrap past 64 bits", sevenZip(~quint64(0) - 0x10, 0)},
        {"7z field sum that wraps", sevenZip(~quint64(0), 2)},
        {"7z magic cut short", bytes({0x37, 0x7A, 0xBC, 0xAF, 0x27, 0x1D})},
        {"bmp of size 64", bmp(64, 54)},
        {"bmp whose pixels start at its end", bmp(5000, 5000)},
        {"bmp whose pixels start behind its end", bmp(5000, 6000)},
        {"bmp with a reserved word set", bmp(5000, 54, 0x28, 0x10000)},
        {"bmp with an unknown info header size", bmp(5000, 54, 0x29)},
        {"bmp with an info header of 0x128 bytes", bmp(5000, 54, 0x128)},
        {"bmp with an info header size past 24 bits", bmp(5000, 54, 0x28 | 0x01000000)},
        {"gif88a", bytes({'G', 'I', 'F', '8', '8', 'a'})},
        {"gif89 without the a", bytes({'G', 'I', 'F', '8', '9', 'b'})},
        {"ff d8 fe", bytes({0xFF, 0xD8, 0xFE})},
        {"png with three bytes", bytes({0x89, 0x50, 0x4E, 0x00})},
        {"tiff with another version word", bytes({0x4D, 0x4D, 0x00, 0x2B})},
        {"tiff with mixed byte order", bytes({0x49, 0x49, 0x00, 0x2A})},
        {"ico with two images", bytes({0, 0, 1, 0, 2, 0})},
        {"cursor", bytes({0, 0, 2, 0, 1, 0})},
        {"zeros", bytes({0, 0, 0, 0})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(testBlock(c.header, SignatureTest::ntfsLengths()).found());
    }
}

TEST(SignatureTest, HeaderFieldsPastAShortBlockAreNeverRead)
{
    const QByteArray header = sevenZip(10, 10);
    const QByteArray bmpHeader = bmp(5000, 54);
    const auto* z = reinterpret_cast<const uchar*>(header.constData());
    const auto* b = reinterpret_cast<const uchar*>(bmpHeader.constData());
    EXPECT_TRUE(SignatureTest::test(z, 0x1C, SignatureTest::ntfsLengths()).found());
    EXPECT_FALSE(SignatureTest::test(z, 0x1B, SignatureTest::ntfsLengths()).found());
    EXPECT_FALSE(SignatureTest::test(b, 0x11, SignatureTest::ntfsLengths()).found());
    EXPECT_FALSE(SignatureTest::test(nullptr, 512, SignatureTest::ntfsLengths()).found());
}
