// The NTFS boot sector and the $MFT open: geometry, record 0, its runs and the
// MFT bitmap, over a volume made of the input.
#include "FuzzSupport.h"
#include "ntfs/NtfsVolumeScan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    const DeviceHandle handle = fuzz::device(fuzz::bytes(data, size));
    if (NtfsVolumeScan::canOpen(handle, 0))
        NtfsVolumeScan scanner(QStringLiteral("fuzz"), handle, 0);
    return 0;
}
