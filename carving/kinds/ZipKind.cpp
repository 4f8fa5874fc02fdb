#include "carving/kinds/ZipKind.h"
#include "carving/CarveSource.h"

#include <QByteArray>
#include <cstring>

namespace {
constexpr char kLocal[] = "PK\x03\x04", kCentral[] = "PK\x01\x02", kEnd[] = "PK\x05\x06";
constexpr char kZip64End[] = "PK\x06\x06", kZip64Locator[] = "PK\x06\x07", kDescriptor[] = "PK\x07\x08";
constexpr quint64 kLocalBytes = 30, kCentralBytes = 46, kEndBytes = 22, kZip64LocatorBytes = 20;
constexpr quint64 kFlags = 6, kCompressedSize = 18, kNameLength = 26, kExtraLength = 28;
constexpr quint64 kCentralNameLength = 28, kEndCommentLength = 20, kZip64EndSize = 4;
constexpr quint64 kDataDescriptorFlag = 0x08;
constexpr int kMaxRecords = 1 << 20; // entries of one archive, local and central
constexpr int kMaxNameBytes = 256;   // enough to tell the documents' parts apart

bool at(CarveSource& s, quint64 pos, const char* sig) { return s.matches(pos, sig, 4); }
} // namespace

bool ZipKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= kLocalBytes && std::memcmp(head, kLocal, 4) == 0;
}

QString ZipKind::extensionOfEntry(CarveSource& source, quint64 entry, const QByteArray& name)
{
    if (name == "mimetype") {
        const quint64 data = entry + kLocalBytes + name.size() + source.le16(entry + kExtraLength);
        const uchar* p = source.at(data, 64);
        const QByteArray type = p ? QByteArray(reinterpret_cast<const char*>(p), 64) : QByteArray();
        source.clearError();
        static const std::pair<const char*, const char*> kTypes[] = {
            {"application/vnd.oasis.opendocument.text", "odt"}, {"application/vnd.oasis.opendocument.spreadsheet", "ods"},
            {"application/vnd.oasis.opendocument.presentation", "odp"}, {"application/epub+zip", "epub"}};
        for (const auto& t : kTypes)
            if (type.startsWith(t.first))
                return QString::fromLatin1(t.second);
    }
    if (name.startsWith("word/"))
        return QStringLiteral("docx");
    if (name.startsWith("xl/"))
        return QStringLiteral("xlsx");
    if (name.startsWith("ppt/"))
        return QStringLiteral("pptx");
    return {};
}

bool ZipKind::findDescriptorEnd(CarveSource& source, quint64* pos)
{
    // The sizes follow the data: look for the next record's signature.
    quint64 p = *pos;
    while (!source.otherFileAt(p) || p == *pos) {
        size_t available = 0;
        const uchar* w = source.window(p, &available);
        if (!w || available < 4)
            return false;
        const void* hit = std::memchr(w, 'P', available - 3);
        if (!hit) {
            p += available - 3;
            continue;
        }
        p += quint64(static_cast<const uchar*>(hit) - w);
        if (at(source, p, kDescriptor) || at(source, p, kLocal) || at(source, p, kCentral)) {
            // A descriptor with its signature holds CRC and sizes: 16 bytes, 24 with ZIP64.
            *pos = at(source, p, kDescriptor) ? p + 16 : p;
            return true;
        }
        ++p;
    }
    return false;
}

bool ZipKind::skipLocalEntry(CarveSource& source, quint64* pos, QString* extension)
{
    const quint64 flags = source.le16(*pos + kFlags), compressed = source.le32(*pos + kCompressedSize);
    const quint64 nameLength = source.le16(*pos + kNameLength), extraLength = source.le16(*pos + kExtraLength);
    const uchar* name = source.at(*pos + kLocalBytes, size_t(qMin<quint64>(nameLength, kMaxNameBytes)));
    if (!name)
        return false;
    if (extension->isEmpty())
        *extension = extensionOfEntry(source, *pos, QByteArray(reinterpret_cast<const char*>(name), int(qMin<quint64>(nameLength, kMaxNameBytes))));
    quint64 next = *pos + kLocalBytes + nameLength + extraLength;
    if ((flags & kDataDescriptorFlag) && compressed == 0)
        return findDescriptorEnd(source, &next) && (*pos = next, true);
    // Entries' data is compressed: a block start with another file's header is not theirs.
    if (source.otherFileBetween(*pos, next + compressed))
        return false;
    *pos = next + compressed;
    return true;
}

CarveEnd ZipKind::findEnd(CarveSource& source) const
{
    QString extension;
    quint64 pos = 0;
    for (int i = 0; i < kMaxRecords && source.ok(); ++i) {
        quint64 next = pos;
        if (at(source, pos, kLocal)) {
            if (!skipLocalEntry(source, &next, &extension))
                break;
        } else if (at(source, pos, kCentral)) {
            next += kCentralBytes + source.le16(pos + kCentralNameLength) + source.le16(pos + kCentralNameLength + 2)
                + source.le16(pos + kCentralNameLength + 4);
        } else if (at(source, pos, kZip64End)) {
            next += 12 + source.le64(pos + kZip64EndSize);
        } else if (at(source, pos, kZip64Locator)) {
            next += kZip64LocatorBytes;
        } else if (at(source, pos, kEnd)) {
            const quint64 end = pos + kEndBytes + source.le16(pos + kEndCommentLength);
            if (source.ok() && end <= source.limit())
                return whole(end, extension);
            break;
        } else {
            break;
        }
        if (!source.ok() || next > source.limit())
            break;
        pos = next;
    }
    return cutAt(pos, extension);
}
