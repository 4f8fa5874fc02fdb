#pragma once
#include <QtGlobal>
#include <functional>
#include <vector>

class CarveKinds;

// The bytes of one candidate file, from its first block on, as far as a kind
// may let it grow. An end finder walks the file's structure through it: every
// read is bounds-checked against that limit and fails softly (sticky, like
// LeReader), so a finder runs its reads and tests ok() once per step.
class CarveSource {
public:
    // Returns bytes read (possibly short, 0 at the end of the device) or -1.
    using ReadFn = std::function<qint64(void* buffer, quint64 bytes, quint64 volumeByteOffset)>;

    struct Origin {
        quint64 volumeOffset = 0;     // where the candidate's first byte lies
        quint32 blockBytes = 0;       // the walk's block: files start on its boundaries
        const uchar* head = nullptr;  // bytes already read from the start on, may be null
        size_t headBytes = 0;
        const CarveKinds* kinds = nullptr; // to see another file's header at a block start
    };

    CarveSource(ReadFn read, const Origin& origin, quint64 limit);

    quint64 limit() const { return m_limit; }
    quint32 blockBytes() const { return m_origin.blockBytes; }
    bool ok() const { return m_ok; }
    void clearError() { m_ok = true; }

    // n bytes at pos (n up to kMaxSpan), or null (and failed) when they lie
    // past the limit or could not be read.
    const uchar* at(quint64 pos, size_t n);
    // The bytes from pos on that are at hand in one piece (at least one), for
    // scans; null at the limit or when unreadable.
    const uchar* window(quint64 pos, size_t* available);

    quint64 u8(quint64 pos) { return value(pos, 1, false); }
    quint64 be16(quint64 pos) { return value(pos, 2, true); }
    quint64 be32(quint64 pos) { return value(pos, 4, true); }
    quint64 be64(quint64 pos) { return value(pos, 8, true); }
    quint64 le16(quint64 pos) { return value(pos, 2, false); }
    quint64 le32(quint64 pos) { return value(pos, 4, false); }
    quint64 le64(quint64 pos) { return value(pos, 8, false); }
    quint64 value(quint64 pos, int width, bool bigEndian);
    bool matches(quint64 pos, const char* text, size_t n);

    // True when pos is a block start other than the first at which another
    // file's header lies: a structure that runs on there was cut short.
    bool otherFileAt(quint64 pos);
    // The first block start in (from, to) at which another file's header lies, or 0.
    quint64 otherFileBetween(quint64 from, quint64 to);
    // True when the block at pos (a block start) holds nothing but zeros.
    bool zeroBlockAt(quint64 pos);
    bool atBlockStart(quint64 pos) const { return pos > 0 && pos % m_origin.blockBytes == 0; }

    static constexpr size_t kMaxSpan = 64 * 1024;          // the largest record a finder asks for whole
    static constexpr size_t kChunkBytes = size_t(1) << 20; // reads ahead in steps this large

private:
    bool load(quint64 pos, size_t n);

    ReadFn m_read;
    Origin m_origin;
    quint64 m_limit;
    std::vector<uchar> m_cache;
    quint64 m_cacheStart = 0;
    size_t m_cacheBytes = 0;
    bool m_ok = true;
};
