#pragma once
#include "carving/CarvedFolders.h"
#include "carving/CarvingContext.h"
#include "carving/SignatureTest.h"

struct FoundFile;

// Finds files by their first bytes, block by block, after a volume's metadata
// pass, and files them below "额外文件". Runs on the scanner's thread; the
// scanner emits scanDone afterwards with the counters the pass went on with.
class CarvingPass {
public:
    // Both return false when a check point said stop, true when the walk ended
    // normally. What was found up to a stop stays filed and counted.
    static bool runNtfs(const CarvingContext& context, const NtfsCarvingGeometry& geometry);
    static bool runFat32(const CarvingContext& context, const Fat32CarvingGeometry& geometry);

    // Cluster sizes the pass accepts: a sector at least, and the largest NTFS cluster.
    static constexpr quint64 kMinBlockBytes = 512;
    static constexpr quint64 kMaxBlockBytes = quint64(2) << 20;
    // Steps (bitmap bytes, clusters) between two asks of the scanner's pause-and-stop state.
    static constexpr int kCheckEvery = 1000;

private:
    CarvingPass(const CarvingContext& context, quint32 blockBytes, bool ntfs);

    template <typename Geometry>
    static bool run(const CarvingContext& context, const Geometry& geometry, bool ntfs,
                    bool (CarvingPass::*walk)(const Geometry&));
    static bool contextUsable(const CarvingContext& context);
    bool blockSizeUsable() const;
    bool walkNtfs(const NtfsCarvingGeometry& geometry);
    bool walkFat32(const Fat32CarvingGeometry& geometry);
    bool checkDue();
    void carve(const uchar* block, quint64 blockNumber);
    FoundFile* ntfsRecord(quint64 cluster, quint64 size) const;
    FoundFile* fat32Record(quint64 cluster, quint64 size) const;

    const CarvingContext& m_context;
    quint32 m_blockBytes;
    int m_blockShift;
    bool m_ntfs;
    CarveLengths m_lengths;
    CarvedFolders m_folders;
    quint64 m_clusterEnd = 0; // FAT32: no cluster list reaches this number
    int m_checkCounter = 1;
};
