#include "imaging/DiskImageBuilder.h"
#include "scan/device/MemorySource.h"
#include "scan/device/PartitionTable.h"

#include <gtest/gtest.h>
#include <memory>

namespace {
using Slot = DiskImageBuilder::MbrSlot;
constexpr quint64 kMiB = 1024 * 1024;

DriveLayout layoutOf(const DiskImageBuilder& b)
{
    return PartitionTable::read(DeviceHandle(std::make_shared<MemorySource>(b.bytes())));
}

struct Expected {
    quint32 number;
    quint64 startLba;
    quint64 countLba;
    quint8 type;
};

void expectEntries(const DriveLayout& layout, const std::vector<Expected>& want)
{
    ASSERT_EQ(layout.entries.size(), qsizetype(want.size()));
    for (size_t i = 0; i < want.size(); ++i) {
        SCOPED_TRACE(i);
        const PartitionEntry& e = layout.entries[qsizetype(i)];
        EXPECT_EQ(e.partitionNumber, want[i].number);
        EXPECT_EQ(e.startingOffset, want[i].startLba * 512);
        EXPECT_EQ(e.length, want[i].countLba * 512);
        EXPECT_EQ(e.mbrType, want[i].type);
    }
}
} // namespace

TEST(PartitionTable, PrimaryMbrSkipsEmptySlots)
{
    DiskImageBuilder b(8 * kMiB);
    b.writeMbr({{0x07, 2048, 4096}, {}, {0x0C, 8192, 2048}});
    const DriveLayout l = layoutOf(b);
    EXPECT_EQ(l.style, DriveLayout::Mbr);
    expectEntries(l, {{1, 2048, 4096, 0x07}, {3, 8192, 2048, 0x0C}});
}

TEST(PartitionTable, ExtendedChainGivesLogicalPartitionsFromFive)
{
    DiskImageBuilder b(16 * kMiB);
    // Extended partition from LBA 4096; two logical drives linked by their EBRs.
    b.writeMbr({{0x07, 2048, 2048}, {0x0F, 4096, 20000}});
    b.writeEbr(4096, {0x0B, 63, 2000}, {0x05, 4096, 4000});
    b.writeEbr(8192, {0x07, 63, 3000}, {});
    expectEntries(layoutOf(b), {{1, 2048, 2048, 0x07}, {5, 4096 + 63, 2000, 0x0B}, {6, 8192 + 63, 3000, 0x07}});
}

TEST(PartitionTable, LoopingExtendedChainEnds)
{
    DiskImageBuilder b(16 * kMiB);
    b.writeMbr({{0x05, 4096, 20000}});
    b.writeEbr(4096, {0x07, 63, 100}, {0x05, 4000, 100}); // links to 8096
    b.writeEbr(8096, {0x07, 63, 100}, {0x05, 4000, 100}); // links to itself
    const DriveLayout l = layoutOf(b);
    EXPECT_EQ(l.entries.size(), 2);
}

TEST(PartitionTable, GptEntriesGetTypesFromBootSectors)
{
    DiskImageBuilder b(16 * kMiB);
    b.writeGpt({{2048, 6143}, {6144, 10239}, {10240, 12287}});
    b.put(2048 * 512, DiskImageBuilder::ntfsBootSector(4096));
    b.put(6144 * 512, DiskImageBuilder::fat32BootSector(4096));
    const DriveLayout l = layoutOf(b);
    EXPECT_EQ(l.style, DriveLayout::Gpt);
    expectEntries(l, {{1, 2048, 4096, PartitionType::Ntfs},
                      {2, 6144, 4096, PartitionType::Fat32Lba},
                      {3, 10240, 2048, PartitionType::Other}});
}

TEST(PartitionTable, BareVolumesAreOnePartitionOverTheWholeImage)
{
    struct Case {
        QByteArray boot;
        quint8 type;
    };
    const Case cases[] = {{DiskImageBuilder::ntfsBootSector(100), PartitionType::Ntfs},
                          {DiskImageBuilder::fat32BootSector(100), PartitionType::Fat32Lba}};
    for (const Case& c : cases) {
        DiskImageBuilder b(kMiB);
        b.put(0, c.boot);
        const DriveLayout l = layoutOf(b);
        EXPECT_EQ(l.style, DriveLayout::Raw);
        expectEntries(l, {{1, 0, kMiB / 512, c.type}});
    }
}

TEST(PartitionTable, EntriesAreClippedToTheDisk)
{
    DiskImageBuilder b(kMiB);
    b.writeMbr({{0x07, 1024, 0xFFFFFFFF}, {0x07, 0xFFFFFF00, 10}});
    expectEntries(layoutOf(b), {{1, 1024, kMiB / 512 - 1024, 0x07}});
}

TEST(PartitionTable, BlankDiskIsOneVolumeAndShortOneHasNoLayout)
{
    const DriveLayout blank = layoutOf(DiskImageBuilder(kMiB));
    ASSERT_EQ(blank.entries.size(), 1);
    EXPECT_EQ(blank.style, DriveLayout::Raw);
    EXPECT_EQ(blank.entries.first().length, kMiB);
    EXPECT_TRUE(blank.entries.first().fileSystem.isEmpty());
    EXPECT_TRUE(layoutOf(DiskImageBuilder(100)).entries.isEmpty());
}
