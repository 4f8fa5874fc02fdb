// One directory cluster: short entries, long-name slots and the "." test, as
// the directory walk reads them, and the checks that tell directory clusters in free space.
#include "FuzzSupport.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/Fat32LongName.h"
#include "fat32/FatDirectoryCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    Fat32DirEntry::startsWithDotEntries(data, size);
    constexpr quint64 kClusters = 1000; // a small volume: most cluster numbers lie beyond it
    FatDirectoryCheck::isFolderStart(data, size, 2, kClusters);
    FatDirectoryCheck::isFolderContinuation(data, size, kClusters);
    Fat32LongName pending;
    for (size_t at = 0; at + Fat32DirEntry::kBytes <= size; at += Fat32DirEntry::kBytes) {
        const Fat32DirEntry entry = Fat32DirEntry::decode(data + at);
        if (entry.isSlot()) {
            pending.add(data + at);
            continue;
        }
        const QString name = pending.count() > 0 ? pending.take() : entry.shortName();
        Fat32DirEntry::stampMsecs(entry.date, entry.time);
        if (name.size() > 2 * Fat32LongName::kMaxSlots * Fat32LongName::kUnitsPerSlot)
            __builtin_trap(); // a name longer than its slots can hold
    }
    return 0;
}
