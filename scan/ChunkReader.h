#pragma once
#include "scan/device/BadRange.h"

#include <QList>
#include <QtGlobal>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// Reads the chunks a sequential pass asks for ahead of it, on a second thread,
// and hands them over in the order they were asked for. The pass asks for a
// few chunks beyond the one it works on; while it works, the second thread
// reads them. When the pass takes a chunk nobody has begun reading, it reads
// that one itself, so on a fast device both threads read at once.
//
// Without the second thread (a spinning disk, where two readers only make the
// head seek) each chunk is read when it is taken, as a plain loop would.
class ChunkReader {
public:
    // Reads bytes at position; unreadable sectors come back as zeros with their
    // ranges in *bad. Returns bytes read (short or 0 at the end) or -1. With a
    // second thread it is called from both threads at once.
    using ReadFn = std::function<qint64(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad)>;

    struct Chunk {
        quint64 position = 0;
        quint64 bytes = 0; // asked for
        qint64 got = 0;    // what the read returned
        QList<BadRange> bad;
        const uchar* data = nullptr;
    };

    // Memory in flight stays at (depth + 2) chunks: those asked, the one the
    // pass holds, and one the second thread may still be reading after a drop.
    static constexpr quint64 kChunkBytes = quint64(1) << 20;
    static constexpr int kDepth = 4;

    ChunkReader(ReadFn read, bool secondThread, quint64 chunkBytes = kChunkBytes, int depth = kDepth);
    // Waits for a read the second thread is in (never longer than one chunk's read).
    ~ChunkReader();
    ChunkReader(const ChunkReader&) = delete;
    ChunkReader& operator=(const ChunkReader&) = delete;

    quint64 chunkBytes() const { return m_chunkBytes; }
    // Chunks asked for and not yet taken.
    int waiting() const;
    bool canAsk() const { return waiting() < m_depth; }
    // Chunks asked for that are read already and wait to be taken, oldest first.
    int ready() const;
    // Asks for bytes (at most chunkBytes) at position. Ignored when canAsk() is false.
    void ask(quint64 position, quint64 bytes);
    // Whether the next chunk take() returns is the one at position of bytes.
    bool nextIs(quint64 position, quint64 bytes) const;
    // The oldest chunk asked for, read; it stays valid until the next take()
    // or drop(). Null when none was asked for.
    const Chunk* take();
    // Forgets every chunk asked for and not taken.
    void drop();

private:
    enum class State { Free, Asked, Reading, Done, Abandoned };
    struct Slot {
        State state = State::Free;
        Chunk chunk;
        std::vector<uchar> buffer;
    };
    void work();
    void readInto(Slot& slot, std::unique_lock<std::mutex>& lock);
    int freeSlot() const;
    Slot* firstAsked();

    ReadFn m_read;
    const quint64 m_chunkBytes;
    const int m_depth;
    std::vector<Slot> m_slots;
    std::deque<int> m_order; // slots asked for, oldest first
    int m_held = -1;         // the slot the pass holds
    bool m_stop = false;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread; // last: started when everything it uses is built
};
