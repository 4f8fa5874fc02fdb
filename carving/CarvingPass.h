#pragma once
#include "carving/CarvedFolders.h"
#include "carving/CarvingContext.h"

#include <optional>

class CarveKinds;
struct CarveEnd;
struct FoundFile;

// Finds files by their headers on block starts in the blocks a volume's file
// system leaves free, walks each one's structure to its end, and files them
// below "额外文件". A found file is taken to lie in the blocks that follow its
// first one; the walk goes on behind it. Runs on the scanner's thread; the
// scanner emits scanDone afterwards with the counters the pass went on with.
class CarvingPass {
public:
    // Both return false when a check point said stop, true when the walk ended
    // normally. What was found up to a stop stays filed and counted.
    static bool runNtfs(const CarvingContext& context, const NtfsCarvingGeometry& geometry);
    // claims and carve: as in CarvingRegion.
    static bool runFat32(const CarvingContext& context, const Fat32CarvingGeometry& geometry,
                         const CarvingRegion::ClaimFn& claims = {}, bool carve = true);

    // A found file, in the blocks from its first on.
    struct Found {
        quint64 firstBlock = 0;
        quint64 blocks = 0;
    };
    // Makes the file system's record of a found file.
    using RecordFn = std::function<FoundFile*(const Found& found)>;
    // The walk itself, for any file system.
    static bool run(const CarvingContext& context, const CarvingRegion& region, bool ntfsFolders, const RecordFn& record);

    // Cluster sizes the pass accepts: a sector at least, and the largest NTFS cluster.
    static constexpr quint64 kMinBlockBytes = 512;
    static constexpr quint64 kMaxBlockBytes = quint64(2) << 20;
    // Blocks between two asks of the scanner's pause-and-stop state.
    static constexpr int kCheckEvery = 8000;

private:
    CarvingPass(const CarvingContext& context, const CarvingRegion& region, bool ntfs, const RecordFn& record);

    static bool contextUsable(const CarvingContext& context);
    bool blockSizeUsable() const;
    bool walk();
    bool checkDue(quint64 block);
    bool isFree(quint64 block) const { return (!m_region.free || m_region.free(block)) && !isListed(block); }
    bool isListed(quint64 block) const;
    // Carves at a block whose header matched; returns the blocks it covers (0: none).
    quint64 carve(const uchar* head, size_t headBytes, quint64 block);
    quint64 freeBlocksFrom(quint64 block, quint64 blocks) const;
    void file(const CarveEnd& end, quint64 block, quint64 blocks, const QString& fallbackExtension);

    const CarvingContext& m_context;
    const CarvingRegion& m_region;
    const CarveKinds& m_kinds;
    RecordFn m_record;
    std::optional<CarvedFolders> m_folders; // made only when the walk carves
    int m_checkCounter = 1;
};
