#include "carving/SignatureTest.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
constexpr uchar kSevenZipMagic[] = {0x37, 0x7A, 0xBC, 0xAF, 0x27, 0x1C};
constexpr uchar kBmpMagic[] = {0x42, 0x4D};
constexpr uchar kGif87Magic[] = {'G', 'I', 'F', '8', '7', 'a'};
constexpr uchar kGif89Magic[] = {'G', 'I', 'F', '8', '9', 'a'};
constexpr uchar kJpgMagic[] = {0xFF, 0xD8, 0xFF};
constexpr uchar kPngMagic[] = {0x89, 0x50, 0x4E, 0x47};
constexpr uchar kTiffBigEndian[] = {0x4D, 0x4D, 0x00, 0x2A};
constexpr uchar kTiffLittleEndian[] = {0x49, 0x49, 0x2A, 0x00};
// Reserved word 0, type 1 (icon) and an image count of exactly one.
constexpr uchar kIcoMagic[] = {0x00, 0x00, 0x01, 0x00, 0x01, 0x00};

// 7z start header: where the next header lies behind it, and how long it is.
constexpr size_t kSevenZipNextHeaderOffset = 0x0C;
constexpr size_t kSevenZipNextHeaderSize = 0x14;
constexpr quint64 kSevenZipStartHeaderBytes = 0x20;
// A stated archive of a gigabyte or more is taken for a corrupt header.
constexpr quint64 kSevenZipCap = 0x40000000;

// BMP file header, and the size field of the information header behind it.
constexpr size_t kBmpFileSize = 0x02;
constexpr size_t kBmpReserved = 0x06;
constexpr size_t kBmpPixelOffset = 0x0A;
constexpr size_t kBmpInfoSizeLow = 0x0E;
constexpr size_t kBmpInfoSizeHigh = 0x0F; // three bytes that are 0 for every known header
constexpr size_t kBmpInfoSizeHighBytes = 3;
// The information header sizes of the known BMP versions.
constexpr uchar kBmpInfoSizes[] = {0x0C, 0x40, 0x28, 0x34, 0x38, 0x6C, 0x7C};
// A file header plus the smallest information header and one pixel byte.
constexpr quint32 kBmpMinFileSize = 0x41;

constexpr quint64 kNtfsJpgBytes = 0x10000;
constexpr quint64 kNtfsFixedBytes = 0x1000;
constexpr quint64 kFat32JpgClusters = 250;

template <size_t N>
bool startsWith(const uchar* block, size_t bytes, const uchar (&magic)[N])
{
    LeReader r(block, bytes);
    return r.matches(0, reinterpret_cast<const char*>(magic), N);
}
} // namespace

CarveLengths SignatureTest::ntfsLengths()
{
    return {kNtfsJpgBytes, kNtfsFixedBytes};
}

CarveLengths SignatureTest::fat32Lengths(quint32 clusterBytes)
{
    return {checked::mulSat(kFat32JpgClusters, clusterBytes), clusterBytes};
}

SignatureHit SignatureTest::test(const uchar* block, size_t bytes, const CarveLengths& lengths)
{
    if (startsWith(block, bytes, kSevenZipMagic))
        return sevenZip(block, bytes);
    if (isBmp(block, bytes))
        return {CarvedKind::Bmp, LeReader(block, bytes).u32(kBmpFileSize)};
    if (startsWith(block, bytes, kGif87Magic) || startsWith(block, bytes, kGif89Magic))
        return {CarvedKind::Gif, lengths.fixed};
    if (startsWith(block, bytes, kJpgMagic))
        return {CarvedKind::Jpg, lengths.jpg};
    if (startsWith(block, bytes, kPngMagic))
        return {CarvedKind::Png, lengths.fixed};
    if (startsWith(block, bytes, kTiffBigEndian) || startsWith(block, bytes, kTiffLittleEndian))
        return {CarvedKind::Tiff, lengths.fixed};
    if (startsWith(block, bytes, kIcoMagic))
        return {CarvedKind::Ico, lengths.fixed};
    return {};
}

SignatureHit SignatureTest::sevenZip(const uchar* block, size_t bytes)
{
    LeReader r(block, bytes);
    const quint64 offset = r.u64(kSevenZipNextHeaderOffset);
    const quint64 size = r.u64(kSevenZipNextHeaderSize);
    uint64_t length = 0;
    // A sum past 64 bits is beyond the cap as well.
    if (!r.ok() || !checked::add(offset, size, &length) || !checked::add(length, kSevenZipStartHeaderBytes, &length)
        || length >= kSevenZipCap)
        return {};
    return {CarvedKind::SevenZip, length};
}

bool SignatureTest::isBmp(const uchar* block, size_t bytes)
{
    if (!startsWith(block, bytes, kBmpMagic))
        return false;
    LeReader r(block, bytes);
    const quint32 fileSize = r.u32(kBmpFileSize);
    const quint32 reserved = r.u32(kBmpReserved);
    const quint32 pixelOffset = r.u32(kBmpPixelOffset);
    const quint8 infoSize = r.u8(kBmpInfoSizeLow);
    const quint64 infoSizeHigh = r.uN(kBmpInfoSizeHigh, kBmpInfoSizeHighBytes);
    if (!r.ok() || reserved != 0 || infoSizeHigh != 0)
        return false;
    bool knownInfoSize = false;
    for (uchar s : kBmpInfoSizes)
        knownInfoSize = knownInfoSize || s == infoSize;
    return knownInfoSize && pixelOffset < fileSize && fileSize >= kBmpMinFileSize;
}
