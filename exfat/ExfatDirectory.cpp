#include "exfat/ExfatDirectory.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kBitmapFlags = 0x01;
constexpr quint8 kSecondBitmap = 0x01; // the bitmap of the second FAT, on TexFAT volumes only
constexpr size_t kBitmapFirstCluster = 0x14;
constexpr size_t kBitmapLength = 0x18;
constexpr size_t kEntry = ExfatEntrySet::kEntryBytes;
} // namespace

ExfatDirectory ExfatDirectory::read(const uchar* data, size_t bytes)
{
    ExfatDirectory dir;
    const size_t count = bytes / kEntry;
    for (size_t i = 0; i < count;) {
        const uchar* entry = data + i * kEntry;
        const quint8 type = entry[0];
        if (type == ExfatEntrySet::kEndOfDirectory)
            break;
        if (type == kBitmap && !dir.bitmapCluster) {
            LeReader r(entry, kEntry);
            if (!(r.u8(kBitmapFlags) & kSecondBitmap)) {
                dir.bitmapCluster = r.u32(kBitmapFirstCluster);
                dir.bitmapBytes = r.u64(kBitmapLength);
            }
        }
        if (!ExfatEntrySet::isFileEntry(type)) {
            ++i;
            continue;
        }
        ExfatEntrySet set;
        if (ExfatEntrySet::decode(entry, count - i, &set) == ExfatEntrySet::Outcome::Corrupt) {
            // The entries after a broken set may still start a good one.
            ++dir.corruptSets;
            ++i;
            continue;
        }
        dir.sets.append(set);
        i += size_t(set.entryCount);
    }
    return dir;
}
