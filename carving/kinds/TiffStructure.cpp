#include "carving/kinds/TiffStructure.h"
#include "carving/CarveSource.h"
#include "scan/CheckedMath.h"

#include <algorithm>

namespace {
constexpr quint64 kHeaderBytes = 8;
constexpr quint64 kEntryBytes = 12;
constexpr quint64 kInlineBytes = 4; // values this short sit in the entry itself
constexpr quint64 kTiffMagic = 42;
constexpr int kMaxAsciiBytes = 64; // Make and dates are short

enum Tag : quint64 {
    StripOffsets = 273, StripByteCounts = 279, TileOffsets = 324, TileByteCounts = 325,
    SubIfds = 330, ThumbnailOffset = 513, ThumbnailLength = 514, Make = 271,
    ExifIfd = 34665, GpsIfd = 34853, InteropIfd = 40965, DateTimeOriginal = 36867, DngVersion = 50706,
};

quint64 typeBytes(quint64 type)
{
    // BYTE ASCII SHORT LONG RATIONAL SBYTE UNDEFINED SSHORT SLONG SRATIONAL FLOAT DOUBLE IFD
    static constexpr quint64 kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < std::size(kBytes) ? kBytes[type] : 0;
}

bool isDirectoryTag(quint64 tag)
{
    return tag == SubIfds || tag == ExifIfd || tag == GpsIfd || tag == InteropIfd;
}
} // namespace

TiffStructure::TiffStructure(CarveSource& source, quint64 base) : m_source(source), m_base(base) {}

quint64 TiffStructure::get(quint64 pos, int width)
{
    return m_source.value(m_base + pos, width, m_bigEndian);
}

void TiffStructure::reach(quint64 offset, quint64 bytes)
{
    m_extent = std::max<quint64>(m_extent, checked::addSat(offset, bytes));
}

bool TiffStructure::walk()
{
    if (m_source.matches(m_base, "MM", 2))
        m_bigEndian = true;
    else if (!m_source.matches(m_base, "II", 2))
        return false;
    if (get(2, 2) != kTiffMagic)
        return false;
    std::vector<quint64> pending{get(4, 4)};
    std::vector<quint64> seen;
    reach(0, kHeaderBytes);
    bool first = true;
    while (!pending.empty() && int(seen.size()) < kMaxDirectories) {
        const quint64 offset = pending.back();
        pending.pop_back();
        if (offset < kHeaderBytes || std::find(seen.begin(), seen.end(), offset) != seen.end())
            continue;
        seen.push_back(offset);
        if (!walkDirectory(offset, &pending) && first)
            return false;
        first = false;
    }
    m_source.clearError();
    return !first;
}

bool TiffStructure::readEntry(quint64 pos, Entry* e)
{
    e->tag = get(pos, 2);
    e->type = get(pos + 2, 2);
    e->count = get(pos + 4, 4);
    const quint64 size = typeBytes(e->type);
    e->bytes = checked::mulSat(size, e->count);
    e->dataOffset = e->bytes <= kInlineBytes ? pos + 8 : get(pos + 8, 4);
    return m_source.ok() && size != 0;
}

quint64 TiffStructure::element(const Entry& e, quint64 index)
{
    const quint64 size = typeBytes(e.type);
    return size == 2 || size == 4 ? get(e.dataOffset + index * size, int(size)) : 0;
}

QString TiffStructure::ascii(const Entry& e)
{
    const int n = int(std::min<quint64>(e.count, kMaxAsciiBytes));
    const uchar* p = e.type == 2 ? m_source.at(m_base + e.dataOffset, size_t(n)) : nullptr;
    m_source.clearError();
    return p ? QString::fromLatin1(reinterpret_cast<const char*>(p), int(std::find(p, p + n, 0) - p)) : QString();
}

void TiffStructure::notePieces(const Entry& offsets, const Entry& counts)
{
    const quint64 n = std::min({offsets.count, counts.count, kMaxPieces});
    for (quint64 i = 0; i < n && m_source.ok(); ++i)
        reach(element(offsets, i), element(counts, i));
}

bool TiffStructure::walkDirectory(quint64 offset, std::vector<quint64>* pending)
{
    const quint64 count = get(offset, 2);
    if (!m_source.ok() || count == 0 || count > kMaxEntries)
        return false;
    const quint64 end = offset + 2 + count * kEntryBytes;
    reach(offset, end - offset + 4);
    Entry offsets[2], counts[2], thumb, thumbLength; // [0] strips, [1] tiles
    for (quint64 pos = offset + 2; pos < end; pos += kEntryBytes) {
        Entry e;
        if (!readEntry(pos, &e)) {
            m_source.clearError();
            continue;
        }
        if (e.bytes > kInlineBytes)
            reach(e.dataOffset, e.bytes);
        if (e.tag == StripOffsets || e.tag == TileOffsets)
            offsets[e.tag == TileOffsets] = e;
        else if (e.tag == StripByteCounts || e.tag == TileByteCounts)
            counts[e.tag == TileByteCounts] = e;
        else if (e.tag == ThumbnailOffset)
            thumb = e;
        else if (e.tag == ThumbnailLength)
            thumbLength = e;
        else if (isDirectoryTag(e.tag))
            for (quint64 i = 0; i < std::min<quint64>(e.count, kMaxDirectories); ++i)
                pending->push_back(element(e, i));
        else if (e.tag == Make)
            m_make = ascii(e);
        else if (e.tag == DateTimeOriginal)
            m_dateTimeOriginal = ascii(e);
        else if (e.tag == DngVersion)
            m_dng = true;
    }
    for (int i = 0; i < 2; ++i)
        notePieces(offsets[i], counts[i]);
    if (thumb.count && thumbLength.count)
        reach(element(thumb, 0), element(thumbLength, 0));
    const quint64 next = get(end, 4);
    if (next)
        pending->push_back(next);
    m_source.clearError();
    return true;
}
