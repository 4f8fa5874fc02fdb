#include "carving/BlockWindow.h"
#include "scan/CheckedMath.h"

namespace {
ChunkReader::ReadFn chunkRead(const BlockWindow::ReadFn& read, const BlockWindow::Ahead& ahead)
{
    if (ahead.read)
        return ahead.read;
    return [read](void* buffer, quint64 bytes, quint64 offset, QList<BadRange>*) { return read(buffer, bytes, offset); };
}
// Chunks read ahead: a few, but on a small volume no more than a small share
// of it, so progress counted from the chunks at hand keeps close to the reads.
int aheadChunks(const BlockWindow::Layout& layout, quint64 blocksPerChunk)
{
    constexpr quint64 kShare = 32;
    const quint64 chunks = layout.endBlock > layout.firstBlock ? (layout.endBlock - layout.firstBlock) / blocksPerChunk : 0;
    return int(qBound<quint64>(1, chunks / kShare, ChunkReader::kDepth));
}
} // namespace

BlockWindow::BlockWindow(ReadFn read, const Layout& layout, WantedFn wanted, const Ahead& ahead)
    : m_read(std::move(read)), m_layout(layout), m_wanted(std::move(wanted)), m_count(ahead.count),
      m_blocksPerChunk(qMax<quint64>(1, kChunkBytes / qMax<quint64>(1, layout.blockBytes))),
      m_reader(chunkRead(m_read, ahead), ahead.read && ahead.secondThread, m_blocksPerChunk * layout.blockBytes,
               aheadChunks(layout, m_blocksPerChunk)),
      m_single(layout.blockBytes)
{
}

bool BlockWindow::offsetOf(quint64 index, quint64* offset) const
{
    uint64_t relative = 0;
    uint64_t absolute = 0;
    const bool ok = index >= m_layout.firstBlock && checked::mul(index - m_layout.firstBlock, m_layout.blockBytes, &relative)
        && checked::add(m_layout.firstOffset, relative, &absolute);
    *offset = absolute;
    return ok;
}

bool BlockWindow::pastEnd(quint64 index) const
{
    quint64 offset = 0;
    return index >= m_layout.endBlock || !offsetOf(index, &offset) || offset >= m_deviceEnd;
}

void BlockWindow::noteEnd(qint64 got, quint64 offset)
{
    // Only an empty read marks the end: a short one may stop at a bad sector.
    if (got == 0)
        m_deviceEnd = qMin(m_deviceEnd, offset);
}

const uchar* BlockWindow::block(quint64 index, size_t* bytes)
{
    const uchar* b = block(index);
    *bytes = !b ? 0 : index < m_readEnd && index >= m_start ? size_t((m_readEnd - index) * m_layout.blockBytes) : size_t(m_layout.blockBytes);
    return b;
}

const uchar* BlockWindow::block(quint64 index)
{
    if (pastEnd(index))
        return nullptr;
    if (index < m_start || index >= m_end)
        load(index);
    if (index < m_readEnd)
        return m_data + (index - m_start) * m_layout.blockBytes;
    return readAlone(index);
}

quint64 BlockWindow::chunkEnd(quint64 index) const
{
    // The window ends on a chunk boundary, so a dense walk reads aligned chunks,
    // and is cut back to the last block the walk will want from it.
    quint64 end = qMin((index / m_blocksPerChunk + 1) * m_blocksPerChunk, m_layout.endBlock);
    while (end > index + 1 && !m_wanted(end - 1))
        --end;
    return end;
}

void BlockWindow::ask(const Span& span)
{
    quint64 offset = 0;
    offsetOf(span.first, &offset);
    m_reader.ask(offset, (span.end - span.first) * m_layout.blockBytes);
    m_asked.push_back(span);
}

void BlockWindow::planAhead()
{
    // Each chunk ahead is read from the first block the walk will want in it
    // to the last, the span load() reads when the walk comes to it.
    for (quint64 looked = 0; looked < kPlanChunks && m_reader.canAsk(); ++looked, ++m_nextChunk) {
        const quint64 chunkStart = qMax(m_nextChunk * m_blocksPerChunk, m_layout.firstBlock);
        const quint64 chunkStop = qMin((m_nextChunk + 1) * m_blocksPerChunk, m_layout.endBlock);
        if (chunkStart >= m_layout.endBlock || pastEnd(chunkStart))
            return;
        quint64 first = chunkStart;
        while (first < chunkStop && !m_wanted(first))
            ++first;
        if (first < chunkStop)
            ask({first, chunkEnd(first)});
    }
}

void BlockWindow::load(quint64 index)
{
    if (m_asked.empty() || m_asked.front().first != index) {
        // The walk went elsewhere than foreseen (past a found file): what was asked for is of no use.
        m_reader.drop();
        m_asked.clear();
        ask({index, chunkEnd(index)});
        m_nextChunk = index / m_blocksPerChunk + 1;
    }
    const Span span = m_asked.front();
    m_asked.pop_front();
    planAhead();
    const ChunkReader::Chunk* chunk = m_reader.take();
    if (m_count)
        m_count(chunk->got, chunk->bad);
    m_data = chunk->data;
    m_start = span.first;
    m_end = span.end;
    m_readEnd = index;
    noteEnd(chunk->got, chunk->position);
    if (chunk->got > 0)
        m_readEnd = index + qMin(quint64(chunk->got), chunk->bytes) / m_layout.blockBytes;
    const int ready = m_reader.ready();
    m_aheadEnd = ready > 0 && m_readEnd == m_end ? m_asked[size_t(ready - 1)].end : m_readEnd;
}

const uchar* BlockWindow::readAlone(quint64 index)
{
    quint64 offset = 0;
    offsetOf(index, &offset);
    const qint64 got = m_read(m_single.data(), m_layout.blockBytes, offset);
    noteEnd(got, offset);
    return got >= 0 && quint64(got) == m_layout.blockBytes ? m_single.data() : nullptr;
}
