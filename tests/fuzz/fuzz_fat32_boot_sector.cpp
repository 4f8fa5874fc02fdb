// The FAT32 boot sector: its figures, the FAT size clamp against the device,
// and the scanner's open over a volume made of the input.
#include "FuzzSupport.h"
#include "fat32/Fat32BootSector.h"
#include "fat32/Fat32VolumeScan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    Fat32BootSector boot;
    if (Fat32BootSector::parse(data, size, &boot)) {
        boot.usableFatEntries(size);
        boot.usableFatEntries(~quint64(0));
    }
    const DeviceHandle handle = fuzz::device(fuzz::bytes(data, size));
    if (Fat32VolumeScan::canOpen(handle, 0))
        Fat32VolumeScan scanner(QStringLiteral("fuzz"), handle, 0);
    return 0;
}
