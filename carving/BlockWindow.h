#pragma once
#include "scan/ChunkReader.h"

#include <QtGlobal>
#include <deque>
#include <functional>
#include <limits>
#include <vector>

// Serves the blocks of a volume walk from large reads: a block asked for
// brings in the chunk around it, and the next blocks come from memory. A block
// is handed out only when all of its bytes were read, exactly as if it had been
// read alone; blocks a chunk read did not deliver are read alone on demand.
// The chunks the walk will come to next are read ahead of it (ChunkReader).
class BlockWindow {
public:
    // Returns bytes read (possibly short, 0 at the end of the device) or -1.
    using ReadFn = std::function<qint64(void* buffer, quint64 bytes, quint64 volumeByteOffset)>;
    // Whether the walk will ask for a block; a chunk is not read past its last wanted block.
    using WantedFn = std::function<bool(quint64 block)>;

    struct Layout {
        quint64 blockBytes = 0;  // a power of two
        quint64 firstBlock = 0;  // number of the block at firstOffset
        quint64 firstOffset = 0; // volume byte offset of firstBlock
        quint64 endBlock = 0;    // blocks from here on are never read
    };
    // How chunks are read ahead. Without read, each is read through the
    // window's ReadFn when the walk comes to it.
    struct Ahead {
        ChunkReader::ReadFn read;
        // Told on the walk's thread of each chunk read, as the ReadFn counts its own reads.
        std::function<void(qint64 got, const QList<BadRange>& bad)> count;
        bool secondThread = false;
    };

    static constexpr quint64 kChunkBytes = ChunkReader::kChunkBytes;
    // Chunks looked at ahead of the walk for blocks it will want, per chunk it
    // enters: past a stretch in use this long, reading waits for the walk.
    static constexpr quint64 kPlanChunks = 64;

    BlockWindow(ReadFn read, const Layout& layout, WantedFn wanted, const Ahead& ahead);

    // The block's bytes, valid until the next call, or null when they could
    // not all be read. Blocks are expected in ascending order.
    const uchar* block(quint64 index);
    // The same, and how many bytes from the block's start on are at hand in one piece.
    const uchar* block(quint64 index, size_t* bytes);

    // True when the block lies at or behind a position where the device
    // reported its end: it and every later block can't be read.
    bool pastEnd(quint64 index) const;
    // Blocks from index on that the chunk reads so far brought in (as the walk
    // last entered a chunk): a walk paced by its reads has done that much more
    // of its work.
    quint64 readAhead(quint64 index) const { return index >= m_start && index < m_aheadEnd ? m_aheadEnd - index : 0; }

private:
    struct Span {
        quint64 first = 0;
        quint64 end = 0;
    };
    void load(quint64 index);
    // The blocks of index's chunk a read from index brings in.
    quint64 chunkEnd(quint64 index) const;
    void ask(const Span& span);
    void planAhead();
    const uchar* readAlone(quint64 index);
    bool offsetOf(quint64 index, quint64* offset) const;
    void noteEnd(qint64 got, quint64 offset);

    ReadFn m_read;
    Layout m_layout;
    WantedFn m_wanted;
    std::function<void(qint64, const QList<BadRange>&)> m_count;
    quint64 m_blocksPerChunk;
    ChunkReader m_reader;
    std::deque<Span> m_asked;   // the chunks m_reader holds for the walk, in order
    quint64 m_nextChunk = 0;    // the first chunk not yet looked at for asking
    const uchar* m_data = nullptr; // block m_start's bytes, in the chunk taken last
    std::vector<uchar> m_single;   // a block read alone
    quint64 m_start = 0;    // window [m_start, m_end) of block numbers
    quint64 m_end = 0;
    quint64 m_readEnd = 0;  // blocks below this came whole from the chunk read
    quint64 m_aheadEnd = 0; // m_readEnd, or the end of the chunks read ahead of it
    quint64 m_deviceEnd = std::numeric_limits<quint64>::max();
};
