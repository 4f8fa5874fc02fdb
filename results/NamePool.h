#pragma once
#include <QStringView>
#include <QtGlobal>
#include <memory>
#include <vector>

// The names of one scan's found files, one after another in chunks. It only
// grows, and a chunk never moves once written: a name handed out stays where
// it is until the pool goes, so a reader that took it under the tree's read
// lock may keep reading it after the scan thread has added more.
class NamePool {
public:
    // Characters per chunk (128 KiB): few allocations, little left unused at the end.
    static constexpr qsizetype kChunkChars = 64 * 1024;
    // The longest name kept: a file name on disk is at most 255 characters,
    // a stream's "file:stream" twice that. Longer ones are cut here.
    static constexpr qsizetype kMaxNameChars = 0xFFFF;

    NamePool() = default;
    NamePool(const NamePool&) = delete;
    NamePool& operator=(const NamePool&) = delete;

    // Copies the name in (cut to kMaxNameChars) and returns where it now
    // lies; null for an empty name. Not thread-safe: called by the one
    // writer, under the tree's write lock where readers exist.
    const char16_t* add(QStringView name);

    // Drops every name: only for a pool whose names nobody reads any more.
    void clear();

    // Bytes held by the chunks.
    quint64 bytes() const { return quint64(m_chunks.size()) * kChunkChars * sizeof(char16_t); }

private:
    std::vector<std::unique_ptr<char16_t[]>> m_chunks;
    qsizetype m_used = kChunkChars; // of the last chunk; full before the first
};
