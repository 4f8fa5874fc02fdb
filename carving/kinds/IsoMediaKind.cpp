#include "carving/kinds/IsoMediaKind.h"
#include "carving/CarveSource.h"

#include <QByteArray>
#include <cstring>

namespace {
constexpr quint64 kBoxHeaderBytes = 8, kLargeBoxHeaderBytes = 16;
constexpr quint64 kMaxFtypBytes = 4096; // a type box lists a few dozen brands at most
constexpr int kMaxBoxes = 1 << 16;     // top-level boxes; fragmented recordings have thousands
// Boxes that stand at the top level of a file; anything else behind the last
// box belongs to something else.
constexpr const char* kTopLevel[] = {"ftyp", "moov", "mdat", "free", "skip", "wide", "uuid", "meta",
                                     "pdin", "moof", "mfra", "sidx", "styp", "udta", "pnot", "junk", "PICT"};

bool isTopLevel(const uchar* type)
{
    for (const char* t : kTopLevel)
        if (std::memcmp(type, t, 4) == 0)
            return true;
    return false;
}
} // namespace

bool IsoMediaKind::matches(const uchar* head, size_t bytes) const
{
    if (bytes < 12 || std::memcmp(head + 4, "ftyp", 4) != 0)
        return false;
    const quint64 size = quint64(head[0]) << 24 | quint64(head[1]) << 16 | quint64(head[2]) << 8 | head[3];
    return size >= 12 && size <= kMaxFtypBytes;
}

QString IsoMediaKind::extensionOfBrand(const uchar* brand)
{
    const QByteArray b(reinterpret_cast<const char*>(brand), 4);
    if (b == "qt  ")
        return QStringLiteral("mov");
    if (b.startsWith("3gp") || b.startsWith("3g2"))
        return QStringLiteral("3gp");
    if (b == "heic" || b == "heix" || b == "mif1" || b == "msf1" || b == "hevc")
        return QStringLiteral("heic");
    if (b == "M4A ")
        return QStringLiteral("m4a");
    return {};
}

CarveEnd IsoMediaKind::findEnd(CarveSource& source) const
{
    const uchar* brand = source.at(8, 4);
    const QString extension = brand ? extensionOfBrand(brand) : QString();
    quint64 pos = 0;
    bool media = false;
    for (int i = 0; i < kMaxBoxes; ++i) {
        quint64 size = source.be32(pos);
        const uchar* type = source.at(pos + 4, 4);
        if (!type || !isTopLevel(type))
            break;
        quint64 header = kBoxHeaderBytes;
        if (size == 1) {
            size = source.be64(pos + 8);
            header = kLargeBoxHeaderBytes;
        }
        // A size of 0 runs to the end of the file, which carving can't know.
        if (!source.ok() || size < header || size > source.limit() - pos)
            return cutAt(pos, extension);
        if (const quint64 other = source.otherFileBetween(pos, pos + size))
            return cutAt(other, extension);
        media = media || std::memcmp(type, "moov", 4) == 0 || std::memcmp(type, "meta", 4) == 0;
        pos += size;
    }
    source.clearError();
    return media ? whole(pos, extension) : cutAt(pos, extension);
}
