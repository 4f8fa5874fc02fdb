#include "scan/ChunkReader.h"

ChunkReader::ChunkReader(ReadFn read, bool secondThread, quint64 chunkBytes, int depth)
    : m_read(std::move(read)), m_chunkBytes(qMax<quint64>(chunkBytes, 1)), m_depth(qMax(depth, 1)),
      m_slots(size_t(m_depth + 2))
{
    if (secondThread)
        m_thread = std::thread([this] { work(); });
}

ChunkReader::~ChunkReader()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

int ChunkReader::waiting() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_order.size());
}

int ChunkReader::freeSlot() const
{
    for (size_t i = 0; i < m_slots.size(); ++i) {
        if (m_slots[i].state == State::Free)
            return int(i);
    }
    return -1;
}

int ChunkReader::ready() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    int n = 0;
    while (n < int(m_order.size()) && m_slots[size_t(m_order[size_t(n)])].state == State::Done)
        ++n;
    return n;
}

void ChunkReader::ask(quint64 position, quint64 bytes)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const int i = freeSlot();
        if (int(m_order.size()) >= m_depth || i < 0)
            return;
        Slot& s = m_slots[size_t(i)];
        s.state = State::Asked;
        s.chunk = Chunk{position, qMin(bytes, m_chunkBytes), 0, {}, nullptr};
        m_order.push_back(i);
    }
    m_changed.notify_all();
}

bool ChunkReader::nextIs(quint64 position, quint64 bytes) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_order.empty())
        return false;
    const Chunk& c = m_slots[size_t(m_order.front())].chunk;
    return c.position == position && c.bytes == qMin(bytes, m_chunkBytes);
}

const ChunkReader::Chunk* ChunkReader::take()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_held >= 0)
        m_slots[size_t(m_held)].state = State::Free;
    m_held = -1;
    if (m_order.empty())
        return nullptr;
    const int i = m_order.front();
    Slot& s = m_slots[size_t(i)];
    // Rather than wait, the pass reads the oldest chunk nobody has begun on:
    // this one, or while the other thread reads this one, a later one.
    while (s.state != State::Done) {
        if (Slot* next = firstAsked())
            readInto(*next, lock);
        else
            m_changed.wait(lock);
    }
    m_order.pop_front();
    m_held = i;
    return &s.chunk;
}

void ChunkReader::drop()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int i : m_order) {
        Slot& s = m_slots[size_t(i)];
        // A slot in a read stays taken until the read is over.
        s.state = s.state == State::Reading ? State::Abandoned : State::Free;
    }
    m_order.clear();
}

void ChunkReader::readInto(Slot& slot, std::unique_lock<std::mutex>& lock)
{
    // While Reading, the slot belongs to the thread that reads it alone.
    slot.state = State::Reading;
    lock.unlock();
    if (slot.buffer.size() < m_chunkBytes)
        slot.buffer.resize(size_t(m_chunkBytes));
    Chunk& c = slot.chunk;
    c.bad.clear();
    c.data = slot.buffer.data();
    c.got = m_read(slot.buffer.data(), c.bytes, c.position, &c.bad);
    lock.lock();
    slot.state = slot.state == State::Abandoned ? State::Free : State::Done;
    m_changed.notify_all();
}

ChunkReader::Slot* ChunkReader::firstAsked()
{
    for (int i : m_order) {
        if (m_slots[size_t(i)].state == State::Asked)
            return &m_slots[size_t(i)];
    }
    return nullptr;
}

void ChunkReader::work()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        Slot* next = nullptr;
        m_changed.wait(lock, [this, &next] { return m_stop || (next = firstAsked()); });
        if (m_stop)
            return;
        readInto(*next, lock);
    }
}
