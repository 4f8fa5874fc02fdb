#include "carving/BlockWindow.h"
#include "scan/CheckedMath.h"

BlockWindow::BlockWindow(ReadFn read, const Layout& layout, WantedFn wanted)
    : m_read(std::move(read)), m_layout(layout), m_wanted(std::move(wanted)),
      m_blocksPerChunk(qMax<quint64>(1, kChunkBytes / qMax<quint64>(1, layout.blockBytes))),
      m_buffer(m_blocksPerChunk * layout.blockBytes)
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
        return slot(index);
    return readAlone(index);
}

void BlockWindow::load(quint64 index)
{
    // The window ends on a chunk boundary, so a dense walk reads aligned chunks,
    // and is cut back to the last block the walk will want from it.
    quint64 end = qMin((index / m_blocksPerChunk + 1) * m_blocksPerChunk, m_layout.endBlock);
    while (end > index + 1 && !m_wanted(end - 1))
        --end;
    m_start = index;
    m_end = end;
    m_readEnd = index;
    quint64 offset = 0;
    offsetOf(index, &offset);
    const quint64 bytes = (end - index) * m_layout.blockBytes;
    const qint64 got = m_read(m_buffer.data(), bytes, offset);
    noteEnd(got, offset);
    if (got > 0)
        m_readEnd = index + qMin(quint64(got), bytes) / m_layout.blockBytes;
}

const uchar* BlockWindow::readAlone(quint64 index)
{
    quint64 offset = 0;
    offsetOf(index, &offset);
    uchar* out = slot(index);
    const qint64 got = m_read(out, m_layout.blockBytes, offset);
    noteEnd(got, offset);
    return got >= 0 && quint64(got) == m_layout.blockBytes ? out : nullptr;
}
