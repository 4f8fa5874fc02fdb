// The disk search's test of one sector, and the partition table reader over a
// small disk made of the input.
#include "diskscan/BootSectorCandidates.h"
#include "scan/device/MemorySource.h"
#include "scan/device/PartitionTable.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    uchar sector[BootSectorCandidates::kSectorBytes] = {};
    std::memcpy(sector, data, size < sizeof sector ? size : sizeof sector);
    BootSectorCandidates::test(sector, size);
    BootSectorCandidates::exfatChecksumOk(data, size, BootSectorCandidates::kSectorBytes);

    const QByteArray disk(reinterpret_cast<const char*>(data), int(size));
    PartitionTable::read(DeviceHandle(std::make_shared<MemorySource>(disk)));
    return 0;
}
