// Damaged volumes, each made from a small clean one by the builders: every
// scan ends with scanDone inside the time and memory limits (in a child, so a
// crash or an unclamped allocation fails the case alone), or, where the volume
// can't carry a scan at all, with the reason the scanner gives at once.
#include "fat32/Fat32VolumeScan.h"
#include "fixtures/ScanRun.h"
#include "imaging/SmallVolumes.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FoundFile.h"
#include "scan/device/MemorySource.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {
using Damage = std::function<QByteArray()>;

struct Case {
    const char* name;
    Fs fs;
    Damage make;
    const char* fatal = nullptr; // the scanner's reason it can't open (a pattern); null: the scan ends
};

void putLe(QByteArray* image, quint64 offset, quint64 value, int width)
{
    for (int i = 0; i < width; ++i)
        (*image)[qsizetype(offset) + i] = char(value >> (8 * i));
}

QByteArray ntfsWith(quint64 offset, quint64 value, int width)
{
    QByteArray image = SmallVolumes::ntfs();
    putLe(&image, offset, value, width);
    return image;
}

QByteArray fatWith(quint64 offset, quint64 value, int width)
{
    QByteArray image = SmallVolumes::fat32();
    putLe(&image, offset, value, width);
    return image;
}

// Records of the small NTFS volume: 18 is the deleted, non-resident picture.
constexpr quint32 kNoteRecord = 17;
constexpr quint32 kPictureRecord = 18;
constexpr quint32 kFreeSlot = 24;
constexpr quint64 kAllocatedSize = 0x28;
constexpr quint64 kRealSize = 0x30;

// The volume offset of an attribute of a record as the builder placed it.
quint64 attributeAt(const QByteArray& image, quint64 recordOffset, quint32 type)
{
    QByteArray copy = image.mid(qsizetype(recordOffset), 1024);
    auto* raw = reinterpret_cast<uint8_t*>(copy.data());
    MftRecordInfo info;
    if (!MftRecord::parseHeader(raw, 1024, &info))
        return 0;
    quint32 remaining = MftRecord::attributeBytes(info, 1024);
    const int at = MftRecord::findAttribute(raw, 1024, info.attrOffset, type, &remaining);
    return at < 0 ? 0 : recordOffset + quint64(at);
}

// A deleted file whose runs the builder writes as given, without touching clusters.
QByteArray ntfsWithRuns(const QList<NtfsImageBuilder::Extent>& extents, quint64 statedSize = 0)
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    NtfsImageBuilder::Entry e;
    e.names = {{QStringLiteral("wild.bin")}};
    e.content = QByteArray(3000, 'w');
    e.extents = extents;
    e.deleted = true;
    QByteArray image = b.build();
    const quint64 record = b.slotOffset(kFreeSlot);
    image.replace(qsizetype(record), 1024, b.record(e, kFreeSlot));
    if (statedSize) {
        const quint64 data = attributeAt(image, record, MftRecord::kDataType);
        putLe(&image, data + kAllocatedSize, statedSize, 8);
        putLe(&image, data + kRealSize, statedSize, 8);
    }
    return image;
}

QByteArray ntfsParentLoops()
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    const quint32 a = b.addDirectory(QStringLiteral("a"), 21);
    b.addDirectory(QStringLiteral("b"), a);
    b.addFile(QStringLiteral("in-a-loop.txt"), QByteArray(700, 'l'), a);
    const quint32 self = b.addDirectory(QStringLiteral("self"), 23);
    b.addFile(QStringLiteral("in-itself.txt"), QByteArray(700, 's'), self);
    return b.build();
}

QByteArray fatDirectoryLoops()
{
    Fat32ImageBuilder b = SmallVolumes::fat32Builder();
    Fat32ImageBuilder::Entry up;
    up.shortName = "UP";
    up.directory = true;
    up.firstCluster = Fat32ImageBuilder::kRoot;
    b.addEntry(Fat32ImageBuilder::kRoot + 1, up);
    up.shortName = "GONE";
    up.deleted = true;
    up.firstCluster = Fat32ImageBuilder::kRoot + 1;
    b.addEntry(Fat32ImageBuilder::kRoot + 1, up);
    b.setFat(Fat32ImageBuilder::kRoot, Fat32ImageBuilder::kRoot); // the root's chain runs into itself
    return b.image();
}

QByteArray truncated(const QByteArray& image, qsizetype size) { return image.left(size); }

constexpr quint64 kNtfsMft = 4 * 512; // cluster 4 of 512 bytes
const quint64 kFatFirstFat = 32 * 512;

const Case kCases[] = {
    // Truncated images.
    {"NtfsCutInBootSector", Fs::Ntfs, [] { return truncated(SmallVolumes::ntfs(), 300); }, "cannot read boot sector"},
    {"NtfsCutInRecordZero", Fs::Ntfs, [] { return truncated(SmallVolumes::ntfs(), kNtfsMft + 512); }, "cannot read \\$MFT record"},
    {"NtfsCutBehindRecordZero", Fs::Ntfs, [] { return truncated(SmallVolumes::ntfs(), kNtfsMft + 1024); }},
    {"NtfsCutInFileRecords", Fs::Ntfs, [] { return truncated(SmallVolumes::ntfs(), kNtfsMft + 1024 * kPictureRecord + 100); }},
    {"NtfsCutInFileContent", Fs::Ntfs, [] { return truncated(SmallVolumes::ntfs(), 64 * 1024 + 700); }},
    {"FatCutInBootSector", Fs::Fat32, [] { return truncated(SmallVolumes::fat32(), 100); }, "cannot read boot sector"},
    {"FatCutInFat", Fs::Fat32, [] { return truncated(SmallVolumes::fat32(), kFatFirstFat + 200); }},
    {"FatCutInRootDirectory", Fs::Fat32,
     [] { return truncated(SmallVolumes::fat32(), qsizetype(SmallVolumes::fat32Builder().clusterOffset(2) + 100)); }},
    {"FatCutInSubdirectory", Fs::Fat32,
     [] { return truncated(SmallVolumes::fat32(), qsizetype(SmallVolumes::fat32Builder().clusterOffset(3) + 64)); }},
    // Geometry no volume has.
    {"NtfsZeroSectorsPerCluster", Fs::Ntfs, [] { return ntfsWith(0x0D, 0, 1); }, "not a valid ntfs volume"},
    {"NtfsThreeSectorsPerCluster", Fs::Ntfs, [] { return ntfsWith(0x0D, 3, 1); }, "not a valid ntfs volume"},
    {"NtfsMftPastTheEnd", Fs::Ntfs, [] { return ntfsWith(0x30, quint64(1) << 40, 8); }, "cannot read \\$MFT record"},
    {"NtfsVolumeEndsBeforeMft", Fs::Ntfs, [] { return ntfsWith(0x28, 3, 8); }, "cannot read \\$MFT record"},
    {"NtfsVolumeFarLargerThanDevice", Fs::Ntfs, [] { return ntfsWith(0x28, quint64(1) << 60, 8); }},
    {"FatThreeSectorsPerCluster", Fs::Fat32, [] { return fatWith(0x0D, 3, 1); }, "not a valid fat volume"},
    {"FatClusterLargerThanVolume", Fs::Fat32, [] { return fatWith(0x0D, 128, 1); }},
    {"FatPastTheEnd", Fs::Fat32, [] { return fatWith(0x0E, 0xFFFF, 2); }},
    {"FatFarLargerThanVolume", Fs::Fat32, [] { return fatWith(0x24, 0xFFFFFFFF, 4); }},
    {"FatTwoHundredFiftyFiveCopies", Fs::Fat32, [] { return fatWith(0x10, 255, 1); }},
    {"FatNoTotalSectors", Fs::Fat32, [] { return fatWith(0x20, 0, 4); }},
    {"FatRootPastTheEnd", Fs::Fat32, [] { return fatWith(0x2C, 0x0FFFFFF0, 4); }},
    // Record headers and attributes with wild offsets and lengths.
    {"NtfsAttributeOffsetAtRecordEnd", Fs::Ntfs, [] { return ntfsWith(kNtfsMft + 1024 * kNoteRecord + 0x14, 0x3F8, 2); }},
    {"NtfsUsedSizeBeyondRecord", Fs::Ntfs, [] { return ntfsWith(kNtfsMft + 1024 * kPictureRecord + 0x18, 0xFFFFFFFF, 4); }},
    {"NtfsAttributeLengthWild", Fs::Ntfs,
     [] {
         QByteArray image = SmallVolumes::ntfs();
         const quint64 data = attributeAt(image, kNtfsMft + 1024 * kPictureRecord, MftRecord::kDataType);
         putLe(&image, data + 4, 0xFFF8, 4);
         return image;
     }},
    {"NtfsRunListOffsetWild", Fs::Ntfs,
     [] {
         QByteArray image = SmallVolumes::ntfs();
         const quint64 data = attributeAt(image, kNtfsMft + 1024 * kPictureRecord, MftRecord::kDataType);
         putLe(&image, data + 0x20, 0xFFFF, 2);
         return image;
     }},
    // Run lists with enormous lengths and offsets.
    {"NtfsRunOfTwoToTheSixtyTwoClusters", Fs::Ntfs, [] { return ntfsWithRuns({{7, quint64(1) << 62}}); }},
    {"NtfsRunFarPastTheVolume", Fs::Ntfs, [] { return ntfsWithRuns({{qint64(1) << 40, 6}}); }},
    {"NtfsRunsJumpBackAndOverHoles", Fs::Ntfs, [] { return ntfsWithRuns({{200, 2}, {3, 2}, {-1, 4}, {1, 2}}); }},
    {"NtfsHoleOfExabytes", Fs::Ntfs, [] { return ntfsWithRuns({{200, 2}, {-1, quint64(1) << 60}}, quint64(1) << 62); }},
    {"FatDeletedFileOfFourGigabytes", Fs::Fat32,
     [] {
         Fat32ImageBuilder b = SmallVolumes::fat32Builder();
         Fat32ImageBuilder::Entry e;
         e.shortName = "HUGE.BIN";
         e.deleted = true;
         e.size = 0xFFFFFFFF;
         e.firstCluster = 60;
         b.addEntry(Fat32ImageBuilder::kRoot, e);
         return b.image();
     }},
    // Loops.
    {"NtfsParentChainsLoop", Fs::Ntfs, ntfsParentLoops},
    {"FatChainsAndDirectoriesLoop", Fs::Fat32, fatDirectoryLoops},
};

// The child's side: scan, restore and preview, exit 0 when all ended as they should.
[[noreturn]] void scanInChild(const Case& c)
{
    ScanRun::capMemory();
    const QByteArray image = c.make();
    ScanRun s(image, c.fs, true);
    if (!s.run()) {
        std::fprintf(stderr, "scan ended with %d scanDone after %lld ms\n", s.doneSignals, s.elapsedMsecs);
        _exit(1);
    }
    const quint64 volumeBytes = quint64(image.size());
    for (FoundFile* file : s.files()) {
        // A preview buffer is sized by this: never by a length the disk states unchecked.
        const quint64 need = s.scan->fileContent(nullptr, file);
        if (need > volumeBytes + (quint64(1) << 16)) {
            std::fprintf(stderr, "preview of %s wants %llu bytes\n", qPrintable(file->name()), static_cast<unsigned long long>(need));
            _exit(1);
        }
    }
    QTemporaryDir target;
    s.restore(target.path() + QStringLiteral("/out"));
    const QStringList beside = QDir(target.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries);
    if (beside.size() > 1) {
        std::fprintf(stderr, "restore wrote beside its folder\n");
        _exit(1);
    }
    _exit(0);
}

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

class DamagedImage : public testing::TestWithParam<Case> {};

TEST_P(DamagedImage, EndsWithScanDoneOrTheReasonItCannotOpen)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Case& c = GetParam();
    const QByteArray image = c.make();
    const DeviceHandle handle(std::make_shared<MemorySource>(image));
    // The disk search asks this before it builds a scanner: it must foresee the constructor's end.
    EXPECT_EQ(c.fs == Fs::Ntfs ? NtfsVolumeScan::canOpen(handle, 0) : Fat32VolumeScan::canOpen(handle, 0), !c.fatal);
    if (c.fatal) {
        ScanRun s(image, c.fs);
        const QString problem = s.scan->openProblem();
        EXPECT_TRUE(QRegularExpression(QLatin1String(c.fatal)).match(problem).hasMatch()) << problem.toStdString();
        EXPECT_TRUE(s.run());
        EXPECT_TRUE(s.files().isEmpty());
    } else {
        EXPECT_EXIT(scanInChild(c), testing::ExitedWithCode(0), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DamagedImage, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });
} // namespace
