#include "diskscan/BootSectorProbe.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kSignatureOffset = 0x1FE;
constexpr size_t kOemOffset = 3;
constexpr size_t kNtfsTotalSectors = 0x28;
constexpr size_t kFat32TotalSectors = 0x20;
constexpr size_t kFat32TypeOffset = 0x52;
} // namespace

BootSectorProbe::Result BootSectorProbe::test(const uchar* sector)
{
    Result result;
    LeReader r(sector, kSectorBytes);
    if (r.u8(kSignatureOffset) != 0x55 || r.u8(kSignatureOffset + 1) != 0xAA)
        return result;
    if (r.matches(kOemOffset, "NTFS", 4)) {
        result.ntfsCandidate = true;
        result.ntfsSectors = r.u64(kNtfsTotalSectors);
        if (result.ntfsSectors != 0)
            return result;
    }
    if (r.matches(kOemOffset, "MSDOS5.0", 8) && r.matches(kFat32TypeOffset, "FAT32", 5)) {
        result.fat32Candidate = true;
        result.fat32Sectors = r.u32(kFat32TotalSectors);
    }
    return result;
}
