#pragma once
#include "results/Extent.h"
#include "scan/device/BadRange.h"

#include <QString>
#include <QtGlobal>
#include <functional>

struct FolderNode;

// What the carving pass needs of the scanner that runs it. The three counters
// go on from the metadata pass and are written back as the pass goes.
struct CarvingContext {
    FolderNode* root = nullptr; // the volume folder; "额外文件" goes below it
    int partIndex = 0;
    // Reads at a byte offset from the start of the volume (the scanner adds its
    // partOffset). Returns bytes read, short or 0 at the end, or -1.
    std::function<qint64(void* buffer, quint64 bytes, quint64 volumeByteOffset)> read;
    // The same for the walk's reads ahead, safe beside read on another thread,
    // with the ranges of unreadable sectors; it counts nothing. countRead then
    // counts each such read on the walk's thread as read counts its own. Empty:
    // the walk reads through read alone, one chunk at a time.
    std::function<qint64(void* buffer, quint64 bytes, quint64 volumeByteOffset, QList<BadRange>* bad)> readAhead;
    std::function<void(qint64 got, const QList<BadRange>& bad)> countRead;
    // Whether a second thread reads ahead: the device takes two reads at once.
    bool secondReader = false;
    // The scanner's pause-and-stop check: waits while paused, true to stop.
    std::function<bool()> checkPoint;
    // Progress of the walk: blocks passed, counting those already read ahead,
    // of the blocks it walks. May be empty.
    std::function<void(quint64 done, quint64 total)> scanOne;
    quint64* runningNumber = nullptr;
    quint64* results = nullptr;
    quint64* totalSize = nullptr;
    // Where the files the metadata pass listed lie on the volume, in ascending
    // order without overlaps: no carved file starts or runs in them.
    Extents listed;
    // Bytes of the volume on the device; no block behind them is walked. 0: unknown.
    quint64 volumeBytes = 0;
    // Whether a found file of this name is of a type the user chose; empty: all are.
    std::function<bool(const QString& name)> accepts;
    // A resumed walk goes on at resumeBlock, over a tree that holds what the
    // walk found before it ("额外文件" included).
    bool resume = false;
    quint64 resumeBlock = 0;
    // Told at each check point the block the walk stands at (every block
    // before it is done and filed) and the block it ends at. May be empty.
    std::function<void(quint64 block, quint64 endBlock)> atCheck;
};

// An NTFS volume as the pass walks it: the clusters clear in the cluster bitmap
// (less those the metadata pass took for the files it listed).
struct NtfsCarvingGeometry {
    quint32 clusterBytes = 4096; // from the boot sector; a power of two
    // Whether a cluster is free; empty: every cluster counts as free.
    std::function<bool(quint64 cluster)> clusterFree;
    quint64 bitmapClusters = 0;  // with clusterFree: the clusters the bitmap describes, no more are walked
    quint64 clusterCount = 0;    // clusters on the volume; 0 with a bitmap: as many as it describes
};

// A FAT32 volume as the pass walks it: the clusters the FAT has an entry for,
// from the first data cluster on, that are free.
struct Fat32CarvingGeometry {
    quint32 clusterBytes = 0; // a power of two
    quint64 dataOffset = 0;   // volume byte offset of cluster 2
    quint64 fatBytes = 0;     // size of one FAT: fatBytes / 4 entries
    // Whether the cluster is free and holds no file the metadata pass listed; empty: all are.
    std::function<bool(quint64 cluster)> clusterFree;
};

// The blocks one walk of the pass covers, whatever the file system: block n
// lies at firstOffset + (n - firstBlock) * blockBytes.
struct CarvingRegion {
    quint32 blockBytes = 0;   // a power of two
    quint64 firstBlock = 0;
    quint64 firstOffset = 0;
    quint64 endBlock = 0;     // blocks from here on are not walked
    // Whether the block may hold a carved file's bytes; empty: every block.
    std::function<bool(quint64 block)> free;
    // Shown each free block in ascending order, with the bytes at hand from its
    // start, before a header is looked for there: true when the file system
    // takes the block for what it found in free space, and no carved file starts
    // in it. Empty: none is taken.
    using ClaimFn = std::function<bool(quint64 block, const uchar* head, size_t bytes)>;
    ClaimFn claims;
    // Whether headers are looked for; without, the walk only shows the blocks to claims.
    bool carve = true;
};
