#include "carving/kinds/Ole2Kind.h"
#include "carving/CarveSource.h"

#include <QByteArray>
#include <cstring>
#include <vector>

namespace {
constexpr uchar kMagic[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr quint64 kSectorShift = 0x1E, kTableSectors = 0x2C, kFirstDirectorySector = 0x30;
constexpr quint64 kFirstMasterSector = 0x44, kMasterSectors = 0x48, kHeaderMaster = 0x4C;
constexpr quint64 kHeaderMasterEntries = 109;
constexpr quint64 kFree = 0xFFFFFFFF, kLastRegular = 0xFFFFFFFA;
constexpr quint64 kDirectoryEntryBytes = 128;

QByteArray utf16(const char* ascii)
{
    QByteArray out;
    for (const char* c = ascii; *c; ++c)
        out.append(*c).append('\0');
    return out;
}
} // namespace

bool Ole2Kind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= 0x200 && std::memcmp(head, kMagic, sizeof kMagic) == 0 && (head[kSectorShift] == 9 || head[kSectorShift] == 12);
}

QString Ole2Kind::extensionOfDirectory(CarveSource& source, quint64 sector, quint64 sectorBytes)
{
    // The streams that name the kind sit among the first entries, next to the root.
    const uchar* p = source.at((sector + 1) * sectorBytes, size_t(sectorBytes));
    source.clearError();
    if (!p)
        return {};
    const QByteArray names = QByteArray::fromRawData(reinterpret_cast<const char*>(p), int(sectorBytes));
    static const std::pair<const char*, const char*> kStreams[] = {
        {"WordDocument", "doc"}, {"Workbook", "xls"}, {"Book", "xls"}, {"PowerPoint Document", "ppt"}};
    for (const auto& s : kStreams)
        for (quint64 e = 0; e < sectorBytes; e += kDirectoryEntryBytes)
            if (names.mid(int(e), int(std::strlen(s.first) * 2 + 2)) == utf16(s.first) + QByteArray(2, '\0'))
                return QString::fromLatin1(s.second);
    return {};
}

CarveEnd Ole2Kind::findEnd(CarveSource& source) const
{
    const quint64 sectorBytes = quint64(1) << source.le16(kSectorShift);
    const quint64 tableSectors = source.le32(kTableSectors), masterSectors = source.le32(kMasterSectors);
    if (!source.ok() || tableSectors == 0 || tableSectors > kMaxTableSectors || masterSectors > kMaxTableSectors)
        return {};
    // Where the table's sectors lie: 109 in the header, the rest in a chain of master sectors.
    std::vector<quint64> table;
    for (quint64 i = 0; i < kHeaderMasterEntries && table.size() < tableSectors; ++i)
        table.push_back(source.le32(kHeaderMaster + 4 * i));
    quint64 master = source.le32(kFirstMasterSector);
    const quint64 perMaster = sectorBytes / 4 - 1;
    for (quint64 m = 0; m < masterSectors && master <= kLastRegular && table.size() < tableSectors; ++m) {
        const quint64 at = (master + 1) * sectorBytes;
        for (quint64 i = 0; i < perMaster && table.size() < tableSectors; ++i)
            table.push_back(source.le32(at + 4 * i));
        master = source.le32(at + 4 * perMaster);
    }
    if (!source.ok())
        return {};
    // The file ends with the last sector that is not free.
    quint64 lastUsed = 0;
    const quint64 perTable = sectorBytes / 4;
    for (quint64 t = 0; t < table.size(); ++t) {
        if (table[t] > kLastRegular)
            return {};
        const uchar* entries = source.at((table[t] + 1) * sectorBytes, size_t(sectorBytes));
        if (!entries)
            return {};
        for (quint64 i = 0; i < perTable; ++i) {
            const quint64 v = quint64(entries[4 * i]) | quint64(entries[4 * i + 1]) << 8 | quint64(entries[4 * i + 2]) << 16
                | quint64(entries[4 * i + 3]) << 24;
            if (v != kFree)
                lastUsed = t * perTable + i + 1;
        }
    }
    const quint64 length = (lastUsed + 1) * sectorBytes; // the header takes the place of one sector
    if (length > source.limit())
        return {};
    return whole(length, extensionOfDirectory(source, source.le32(kFirstDirectorySector), sectorBytes));
}
