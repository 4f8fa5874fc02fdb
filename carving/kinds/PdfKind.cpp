#include "carving/kinds/PdfKind.h"
#include "carving/CarveSource.h"

#include <QByteArray>
#include <QList>
#include <cstring>

namespace {
constexpr char kEof[] = "%%EOF";
constexpr size_t kEofBytes = 5;
constexpr size_t kLinearizedWindow = 1024;  // the linearization dictionary is the first object
constexpr quint64 kEofSlack = 64;           // the stated length ends just behind the %%EOF
} // namespace

bool PdfKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= 8 && std::memcmp(head, "%PDF-", 5) == 0 && head[5] >= '1' && head[5] <= '2';
}

quint64 PdfKind::afterEof(CarveSource& source, quint64 eof)
{
    quint64 end = eof + kEofBytes;
    for (int i = 0; i < 2; ++i) { // the line end behind it: CR, LF or both
        const quint64 c = source.u8(end);
        if (!source.ok() || (c != '\r' && c != '\n') || (i == 1 && c == '\r'))
            break;
        ++end;
    }
    source.clearError();
    return end;
}

quint64 PdfKind::linearizedLength(CarveSource& source)
{
    size_t available = 0;
    const uchar* w = source.window(0, &available);
    const QByteArray head = QByteArray::fromRawData(reinterpret_cast<const char*>(w), int(qMin(available, kLinearizedWindow)));
    const int lin = head.indexOf("/Linearized");
    const int l = lin < 0 ? -1 : head.indexOf("/L ", lin);
    if (l < 0)
        return 0;
    bool ok = false;
    const quint64 length = head.mid(l + 3, 20).split(' ').value(0).trimmed().toULongLong(&ok);
    if (!ok || length < kEofBytes || length > source.limit())
        return 0;
    // Trust it only when a %%EOF closes the file there.
    const quint64 from = length > kEofSlack ? length - kEofSlack : 0;
    const uchar* tail = source.at(from, size_t(length - from));
    source.clearError();
    if (!tail)
        return 0;
    const QByteArray t = QByteArray::fromRawData(reinterpret_cast<const char*>(tail), int(length - from));
    return t.contains(kEof) ? length : 0;
}

CarveEnd PdfKind::findEnd(CarveSource& source) const
{
    if (const quint64 length = linearizedLength(source))
        return whole(length);
    quint64 last = 0, p = 0;
    const quint64 block = source.blockBytes();
    while (!(source.atBlockStart(p) && (source.otherFileAt(p) || source.zeroBlockAt(p)))) {
        size_t available = 0;
        const uchar* w = source.window(p, &available);
        if (!w)
            break;
        // Scans a block at a time, with the few bytes a %%EOF across its end needs.
        const size_t n = size_t(qMin<quint64>(available, block - p % block));
        const QByteArray chunk = QByteArray::fromRawData(reinterpret_cast<const char*>(w), int(qMin(available, n + kEofBytes - 1)));
        for (int at = chunk.indexOf(kEof); at >= 0 && quint64(at) < n; at = chunk.indexOf(kEof, at + 1))
            last = p + quint64(at);
        p += n;
    }
    source.clearError();
    return last ? whole(afterEof(source, last)) : cutAt(p);
}
