#pragma once
#include "carving/CarvingContext.h"
#include "results/DataRun.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"

#include <QByteArray>
#include <QStringList>
#include <cstring>
#include <functional>
#include <initializer_list>

// Block headers of the seven kinds and their near misses.
namespace carvedHeaders {
inline QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int v : values)
        out.append(char(v));
    return out;
}

inline void putLe(QByteArray& out, int offset, quint64 value, int width)
{
    if (out.size() < offset + width)
        out.resize(offset + width, '\0');
    for (int i = 0; i < width; ++i)
        out[offset + i] = char(value >> (8 * i));
}

inline QByteArray sevenZip(quint64 nextOffset, quint64 nextSize)
{
    QByteArray h = bytes({0x37, 0x7A, 0xBC, 0xAF, 0x27, 0x1C, 0, 4});
    putLe(h, 0x0C, nextOffset, 8);
    putLe(h, 0x14, nextSize, 8);
    return h;
}

inline QByteArray bmp(quint32 fileSize, quint32 pixelOffset, int infoSize = 0x28, quint32 reserved = 0)
{
    QByteArray h = bytes({0x42, 0x4D});
    putLe(h, 2, fileSize, 4);
    putLe(h, 6, reserved, 4);
    putLe(h, 0x0A, pixelOffset, 4);
    putLe(h, 0x0E, quint32(infoSize), 4);
    return h;
}

inline QByteArray jpg() { return bytes({0xFF, 0xD8, 0xFF, 0xE0}); }
inline QByteArray png() { return bytes({0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A}); }
} // namespace carvedHeaders

// An in-memory volume for walks of the carving pass: blocks that start with
// chosen bytes, reads that fail or stop short where a test says, and the
// scanner's side of the context (counters, check points, progress).
class CarvingVolume {
public:
    CarvingVolume(quint64 blocks, quint32 blockBytes, quint64 dataOffset = 0)
        : data(qsizetype(dataOffset + blocks * blockBytes), '\0'), blockBytes(blockBytes), dataOffset(dataOffset)
    {
    }

    // Block n at dataOffset + n * blockBytes (on FAT32, n is the cluster minus 2).
    void put(quint64 block, const QByteArray& header)
    {
        std::memcpy(data.data() + dataOffset + block * blockBytes, header.constData(), size_t(header.size()));
    }

    qint64 read(void* buffer, quint64 bytes, quint64 offset)
    {
        ++reads;
        largestRead = qMax(largestRead, bytes);
        if (fails && fails(offset, bytes))
            return -1;
        if (offset >= quint64(data.size()))
            return 0;
        const quint64 n = qMin(qMin(bytes, maxRead), quint64(data.size()) - offset);
        std::memcpy(buffer, data.constData() + offset, n);
        return qint64(n);
    }

    CarvingContext context()
    {
        CarvingContext c;
        c.root = &root;
        c.partIndex = 3;
        c.read = [this](void* b, quint64 n, quint64 o) { return read(b, n, o); };
        c.checkPoint = [this] {
            ++checks;
            return onCheck && onCheck();
        };
        c.scanOne = [this](int done) { progress.append(done); };
        c.runningNumber = &running;
        c.results = &results;
        c.totalSize = &totalSize;
        return c;
    }

    FolderNode* extra() const { return root.children.isEmpty() ? nullptr : root.children.first(); }

    // One line per carved file: "folder/name size extent", in tree order.
    QStringList listing() const
    {
        QStringList out;
        if (!extra())
            return out;
        for (FolderNode* kind : extra()->children) {
            for (FoundFile* f : kind->files)
                out << QStringLiteral("%1/%2 %3 %4").arg(kind->name, f->name).arg(f->size).arg(extent(f, kind->ntfs));
        }
        return out;
    }

    static QString extent(FoundFile* f, bool ntfs)
    {
        if (ntfs) {
            auto* n = static_cast<NtfsFile*>(f);
            const DataRun* r = n->runs.value(0);
            return r ? QStringLiteral("lcn%1+%2/%3").arg(r->lcn).arg(r->length).arg(r->vcnEnd) : QStringLiteral("none");
        }
        auto* fat = static_cast<Fat32File*>(f);
        return fat->clusters.isEmpty() ? QStringLiteral("none")
                                       : QStringLiteral("c%1x%2").arg(fat->clusters.first()).arg(fat->clusters.size());
    }

    QByteArray data;
    quint32 blockBytes;
    quint64 dataOffset;
    FolderNode root;
    std::function<bool(quint64 offset, quint64 bytes)> fails; // true: that read returns -1
    quint64 maxRead = ~quint64(0);                            // longer reads come back short
    quint64 reads = 0;
    quint64 largestRead = 0;
    quint64 running = 0;
    quint64 results = 0;
    quint64 totalSize = 0;
    int checks = 0;
    std::function<bool()> onCheck; // the scanner's answer at a check point: true to stop
    QList<int> progress;
};
