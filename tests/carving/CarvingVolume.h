#pragma once
#include "carving/CarvingContext.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"

#include <QByteArray>
#include <QStringList>
#include <cstring>
#include <functional>

// Block headers of a few kinds and their near misses.
namespace carvedHeaders {
inline QByteArray le(QByteArray h, int offset, quint64 value, int width)
{
    h.resize(qMax(h.size(), qsizetype(offset + width)), '\0');
    for (int i = 0; i < width; ++i)
        h[offset + i] = char(value >> (8 * i));
    return h;
}
inline QByteArray sevenZip(quint64 nextOffset, quint64 nextSize)
{
    return le(le("7z\xBC\xAF\x27\x1C", 0x0C, nextOffset, 8), 0x14, nextSize, 8);
}
inline QByteArray bmp(quint32 fileSize, quint32 pixelOffset, quint32 infoSize = 0x28, quint32 reserved = 0)
{
    return le(le(le(le("BM", 2, fileSize, 4), 6, reserved, 4), 0x0A, pixelOffset, 4), 0x0E, infoSize, 4);
}
} // namespace carvedHeaders

// An in-memory volume for walks of the carving pass: blocks that start with
// chosen bytes, reads that fail where a test says, and the scanner's side of
// the context (counters, check points, progress).
struct CarvingVolume {
    CarvingVolume(quint64 blocks, quint32 blockBytes, quint64 dataOffset = 0)
        : data(qsizetype(dataOffset + blocks * blockBytes), '\0'), blockBytes(blockBytes), dataOffset(dataOffset) {}

    // Block n lies at dataOffset + n * blockBytes (on FAT32, n is the cluster minus 2).
    void put(quint64 block, const QByteArray& header) { data.replace(qsizetype(dataOffset + block * blockBytes), header.size(), header); }

    CarvingContext context()
    {
        CarvingContext c;
        c.root = &root;
        c.partIndex = 3;
        c.read = [this](void* buffer, quint64 bytes, quint64 offset) -> qint64 {
            ++reads;
            largestRead = qMax(largestRead, bytes);
            if (fails && fails(offset, bytes))
                return -1;
            const quint64 n = offset < quint64(data.size()) ? qMin(bytes, quint64(data.size()) - offset) : 0;
            std::memcpy(buffer, data.constData() + offset, n);
            return qint64(n);
        };
        c.checkPoint = [this] { return ++checks, onCheck && onCheck(); };
        c.scanOne = [this](quint64 done, quint64) { progress.append(int(done)); };
        c.runningNumber = &running;
        c.results = &results;
        c.totalSize = &totalSize;
        c.listed = listed;
        return c;
    }

    FolderNode* extra() const { return root.children.value(0); }

    // One line per carved file, "folder/name size extent", in tree order.
    QStringList listing() const
    {
        QStringList out;
        for (FolderNode* kind : extra()->children) {
            for (FoundFile* f : kind->files) {
                QString extent;
                if (auto* n = dynamic_cast<NtfsFile*>(f))
                    extent = QStringLiteral("lcn%1+%2").arg(n->runs()[0].lcn).arg(n->runs()[0].length);
                else if (auto* fat = dynamic_cast<Fat32File*>(f))
                    extent = QStringLiteral("c%1+%2").arg(fat->firstCluster).arg(fat->carvedClusters);
                out << QStringLiteral("%1/%2 %3%4 %5").arg(kind->name, f->name()).arg(f->size).arg(f->cut ? " cut" : "", extent);
            }
        }
        return out;
    }

    QByteArray data;
    quint32 blockBytes;
    quint64 dataOffset;
    FolderNode root;
    Extents listed;                                           // what the metadata pass found
    std::function<bool(quint64 offset, quint64 bytes)> fails; // true: that read returns -1
    std::function<bool()> onCheck;                            // the scanner's answer at a check point
    quint64 reads = 0, largestRead = 0;
    quint64 running = 0, results = 0, totalSize = 0;
    int checks = 0;
    QList<int> progress;
};
