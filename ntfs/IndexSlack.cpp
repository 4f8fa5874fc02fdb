#include "ntfs/IndexSlack.h"
#include "scan/LeReader.h"

#include <cstring>

namespace {
constexpr quint32 kIndxSignature = 0x58444E49; // "INDX"
constexpr size_t kUsaOffsetOffset = 0x04;
constexpr size_t kUsaCountOffset = 0x06;
// Fix-ups protect the last two bytes of every 512-byte stride.
constexpr size_t kFixupStride = 512;
// The node header stands at 0x18 in a block, at 0x10 in an $INDEX_ROOT value;
// its offsets count from its own start.
constexpr size_t kBlockNodeOffset = 0x18;
constexpr size_t kRootNodeOffset = 0x10;
constexpr size_t kRootBlockBytesOffset = 0x08;
constexpr size_t kNodeEntriesOffset = 0x00;
constexpr size_t kNodeUsedOffset = 0x04;
constexpr size_t kNodeAllocatedOffset = 0x08;

constexpr size_t kEntryLengthOffset = 0x08;
constexpr size_t kEntryKeyLengthOffset = 0x0A;
constexpr size_t kEntryFlagsOffset = 0x0C;
constexpr size_t kEntryHeaderBytes = 0x10;
constexpr quint16 kSubnodeFlag = 0x01;
constexpr quint16 kLastEntryFlag = 0x02;
// A node entry with a subnode ends in the subnode's 8-byte VCN.
constexpr size_t kSubnodeVcnBytes = 8;
constexpr size_t kEntryAlign = 8;

// The key of a $I30 entry is a $FILE_NAME value.
constexpr size_t kKeyCreatedOffset = 0x08;
constexpr size_t kKeyModifiedOffset = 0x10;
constexpr size_t kKeyChangedOffset = 0x18;
constexpr size_t kKeyAccessedOffset = 0x20;
constexpr size_t kKeyRealSizeOffset = 0x30;
constexpr size_t kKeyFlagsOffset = 0x38;
constexpr size_t kKeyNameLengthOffset = 0x40;
constexpr size_t kKeyNamespaceOffset = 0x41;
constexpr size_t kKeyNameOffset = 0x42;
constexpr quint32 kKeyDirectoryFlag = 0x10000000;
constexpr quint8 kDosNamespace = 2;
constexpr quint8 kMaxNamespace = 3;
constexpr int kReferenceBits = 48;
constexpr quint64 kReferenceMask = (quint64(1) << kReferenceBits) - 1;
// Times of a real entry lie between 1980 and 2100 (FILETIMEs); stale bytes rarely do.
constexpr quint64 kEarliestTime = 119600064000000000ULL;
constexpr quint64 kLatestTime = 157469184000000000ULL;
// A file of 2^56 bytes or more is no file any volume holds.
constexpr quint64 kMaxPlausibleSize = quint64(1) << 56;
// A node lists at most one entry per 0x52 bytes: more steps mean damage.
constexpr int kMaxNodeEntries = int(IndexSlack::kMaxBlockBytes / kEntryHeaderBytes);

constexpr size_t alignUp(size_t v) { return (v + kEntryAlign - 1) & ~(kEntryAlign - 1); }

bool plausibleTime(quint64 t) { return t >= kEarliestTime && t < kLatestTime; }

// The used and allocated ends of a node whose header is at nodeOffset, in bytes from the buffer's start.
bool nodeBounds(LeReader& r, size_t nodeOffset, size_t* entries, size_t* used, size_t* allocated)
{
    *entries = nodeOffset + r.u32(nodeOffset + kNodeEntriesOffset);
    *used = nodeOffset + r.u32(nodeOffset + kNodeUsedOffset);
    *allocated = qMin(r.size(), nodeOffset + r.u32(nodeOffset + kNodeAllocatedOffset));
    return r.ok() && *entries <= *used && *used <= r.size();
}
} // namespace

quint32 IndexSlack::blockBytes(const uint8_t* root, size_t bytes)
{
    LeReader r(root, bytes);
    const quint32 size = r.u32(kRootBlockBytesOffset);
    const bool powerOfTwo = size != 0 && (size & (size - 1)) == 0;
    return r.ok() && powerOfTwo && size >= kMinBlockBytes && size <= kMaxBlockBytes ? size : 0;
}

bool IndexSlack::fixup(uint8_t* block, quint32 bytes)
{
    LeReader r(block, bytes);
    const size_t usa = r.u16(kUsaOffsetOffset);
    const size_t count = r.u16(kUsaCountOffset);
    // One saved pair per stride, behind the sequence number.
    if (!r.ok() || r.u32(0) != kIndxSignature || count != bytes / kFixupStride + 1 || !r.has(usa, count * 2))
        return false;
    for (size_t k = 1; k < count; ++k)
        std::memcpy(block + k * kFixupStride - 2, block + usa + 2 * k, 2);
    return true;
}

void IndexSlack::liveNames(const uint8_t* node, size_t bytes, bool root, QSet<QString>* names)
{
    LeReader r(node, bytes);
    size_t at = 0, used = 0, allocated = 0;
    if (!nodeBounds(r, root ? kRootNodeOffset : kBlockNodeOffset, &at, &used, &allocated))
        return;
    for (int n = 0; n < kMaxNodeEntries && r.has(at, kEntryHeaderBytes) && at < used; ++n) {
        const size_t length = r.u16(at + kEntryLengthOffset);
        const size_t keyBytes = r.u16(at + kEntryKeyLengthOffset);
        if ((r.u16(at + kEntryFlagsOffset) & kLastEntryFlag) || length < kEntryHeaderBytes || length % kEntryAlign)
            return;
        const size_t chars = r.u8(at + kEntryHeaderBytes + kKeyNameLengthOffset);
        const uint8_t* text = r.bytes(at + kEntryHeaderBytes + kKeyNameOffset, chars * 2);
        if (!text || kKeyNameOffset + chars * 2 > keyBytes)
            return;
        QString name(int(chars), Qt::Uninitialized);
        for (size_t i = 0; i < chars; ++i)
            name[int(i)] = QChar(ushort(text[2 * i] | (text[2 * i + 1] << 8)));
        names->insert(name.toLower());
        at += length;
    }
}

QList<IndexSlack::Name> IndexSlack::slackNames(const uint8_t* block, quint32 bytes, bool inUse, quint32 folder,
                                               quint16 folderSequence, int maxNames)
{
    QList<Name> out;
    LeReader r(block, bytes);
    size_t entries = 0, used = 0, allocated = 0;
    if (!nodeBounds(r, kBlockNodeOffset, &entries, &used, &allocated))
        return out;
    // Keys stand 16 bytes behind 8-aligned entry starts; the first one past
    // the used part may follow the end marker, which lies inside it.
    size_t key = alignUp(inUse ? used : entries + kEntryHeaderBytes);
    while (key + kKeyNameOffset <= allocated && out.size() < maxNames) {
        Name name;
        if (key >= entries + kEntryHeaderBytes && plausibleKey(block + key, allocated - key, folder, folderSequence, &name)
            && readReference(block + key - kEntryHeaderBytes, quint16(kKeyNameOffset + 2 * name.name.size()), &name)) {
            out.append(name);
            key = alignUp(key + kKeyNameOffset + 2 * size_t(name.name.size()));
        } else {
            key += kEntryAlign;
        }
    }
    return out;
}

bool IndexSlack::plausibleKey(const uint8_t* key, size_t room, quint32 folder, quint16 folderSequence, Name* out)
{
    LeReader r(key, room);
    const quint64 parent = r.u64(0);
    if (!r.ok() || (parent & kReferenceMask) != folder || quint16(parent >> kReferenceBits) != folderSequence)
        return false;
    const size_t chars = r.u8(kKeyNameLengthOffset);
    const quint8 space = r.u8(kKeyNamespaceOffset);
    const uint8_t* text = r.bytes(kKeyNameOffset, chars * 2);
    // A DOS name has a long twin in the index; folders are no files to list.
    if (!text || chars == 0 || space > kMaxNamespace || space == kDosNamespace || (r.u32(kKeyFlagsOffset) & kKeyDirectoryFlag))
        return false;
    for (const size_t t : {kKeyCreatedOffset, kKeyModifiedOffset, kKeyChangedOffset, kKeyAccessedOffset})
        if (!plausibleTime(r.u64(t)))
            return false;
    QString name(int(chars), Qt::Uninitialized);
    for (size_t i = 0; i < chars; ++i) {
        const ushort c = ushort(text[2 * i] | (text[2 * i + 1] << 8));
        // No name on any NTFS volume holds a control character or a path separator.
        if (c < 0x20 || c == '/' || c == '\\')
            return false;
        name[int(i)] = QChar(c);
    }
    out->name = name;
    out->created = r.u64(kKeyCreatedOffset);
    out->modified = r.u64(kKeyModifiedOffset);
    out->size = r.u64(kKeyRealSizeOffset);
    return out->size < kMaxPlausibleSize;
}

bool IndexSlack::readReference(const uint8_t* header, quint16 keyBytes, Name* name)
{
    LeReader r(header, kEntryHeaderBytes);
    const quint64 reference = r.u64(0);
    const size_t length = r.u16(kEntryLengthOffset);
    const quint16 storedKey = r.u16(kEntryKeyLengthOffset);
    const quint16 flags = r.u16(kEntryFlagsOffset);
    // The end marker moved onto the header of the entry it replaced: the key is whole, the reference lost.
    if (reference == 0 && length == kEntryHeaderBytes && storedKey == 0 && (flags & kLastEntryFlag)) {
        name->referenceKnown = false;
        return true;
    }
    const size_t least = alignUp(kEntryHeaderBytes + keyBytes);
    if (storedKey != keyBytes || length < least || length > least + kSubnodeVcnBytes || length % kEntryAlign
        || (flags & ~(kSubnodeFlag | kLastEntryFlag)) || reference == 0)
        return false;
    name->record = quint32(reference & kReferenceMask);
    name->sequence = quint16(reference >> kReferenceBits);
    name->referenceKnown = (reference & kReferenceMask) <= 0xFFFFFFFFu;
    return name->referenceKnown;
}
