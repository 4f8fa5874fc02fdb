// The whole-disk search meets boot sectors that belong to no volume it can
// open: the backup of a lost NTFS volume whose $MFT lies elsewhere, a FAT32
// sector with a cluster size no volume has. It passes over them and goes on
// to the volume behind them.
#include "diskscan/DiskScan.h"
#include "fat32/Fat32VolumeScan.h"
#include "imaging/DiskImageBuilder.h"
#include "fixtures/ScanRun.h"
#include "imaging/SmallVolumes.h"
#include "ntfs/NtfsVolumeScan.h"
#include "scan/device/MemorySource.h"

#include <gtest/gtest.h>

namespace {
constexpr quint64 kSector = DiskImageBuilder::kSector;
// A stated length above the search's smallest NTFS volume, so the candidate gets looked at.
constexpr quint64 kLargeNtfsSectors = 0x100000;

QByteArray strayNtfs()
{
    QByteArray s = DiskImageBuilder::ntfsBootSector(kLargeNtfsSectors);
    s[0x40] = char(-10); // 1024-byte records: the geometry is good, the $MFT it names is not there
    s[0x30] = 2;
    return s;
}

QByteArray strayFat32()
{
    QByteArray s = SmallVolumes::fat32().left(int(kSector));
    std::memcpy(s.data() + 3, "MSDOS5.0", 8);
    s[0x0D] = 3; // three sectors a cluster
    return s;
}

} // namespace

TEST(StrayBootSector, SearchPassesOverItAndFindsTheVolumeBehind)
{
    struct Case {
        const char* name;
        QByteArray sector;
        bool ntfs;
    };
    const Case cases[] = {{"NTFS backup without its MFT", strayNtfs(), true},
                          {"FAT32 with three sectors a cluster", strayFat32(), false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QByteArray disk = SmallVolumes::disk();
        disk.replace(int(8 * kSector), int(kSector), c.sector);
        const DeviceHandle handle(std::make_shared<MemorySource>(disk));
        EXPECT_FALSE(c.ntfs ? NtfsVolumeScan::canOpen(handle, 8 * kSector) : Fat32VolumeScan::canOpen(handle, 8 * kSector));

        ScanRun s(disk, Fs::Disk);
        EXPECT_TRUE(s.run());
        const auto* search = static_cast<DiskScan*>(s.scan.get());
        ASSERT_EQ(search->partitionCount(), 1);
        EXPECT_TRUE(search->partition(0)->inherits("Fat32VolumeScan"));
        EXPECT_EQ(search->partition(0)->partOffset, SmallVolumes::kDiskVolumeLba * kSector);
        EXPECT_EQ(search->totalResults, 2u);
    }
}
