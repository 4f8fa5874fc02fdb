#include "scan/ChunkReader.h"

#include <QByteArray>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>

namespace {
constexpr quint64 kChunk = 4096;

// A source of sourceBytes numbered bytes whose read at failAt fails and whose
// read at badAt comes back with a bad range, as DeviceHandle reports them.
struct Source {
    QByteArray data;
    quint64 failAt = ~quint64(0), badAt = ~quint64(0);
    std::atomic<int> reads{0};

    explicit Source(int bytes) : data(bytes, '\0')
    {
        for (int i = 0; i < bytes; ++i)
            data[i] = char(i * 7 + i / 251);
    }
    ChunkReader::ReadFn fn()
    {
        return [this](void* buffer, quint64 bytes, quint64 at, QList<BadRange>* bad) -> qint64 {
            ++reads;
            if (at == failAt)
                return -1;
            const quint64 n = at < quint64(data.size()) ? qMin(bytes, quint64(data.size()) - at) : 0;
            std::memcpy(buffer, data.constData() + at, n);
            if (at == badAt)
                bad->append({at + 512, 512});
            return qint64(n);
        };
    }
};
} // namespace

TEST(ChunkReader, HandsChunksOverInOrderWithTheirErrors)
{
    for (bool second : {false, true}) {
        SCOPED_TRACE(second);
        Source s(int(10 * kChunk + 1000)); // the end is not on a chunk boundary
        s.failAt = 3 * kChunk;
        s.badAt = 5 * kChunk;
        ChunkReader r(s.fn(), second, kChunk, 3);
        quint64 asked = 0;
        QByteArray joined;
        for (quint64 at = 0; at < quint64(s.data.size()); at += kChunk) {
            for (; r.canAsk() && asked < quint64(s.data.size()); asked += kChunk)
                r.ask(asked, kChunk);
            EXPECT_LE(r.waiting(), 3);
            ASSERT_TRUE(r.nextIs(at, kChunk));
            const ChunkReader::Chunk* c = r.take();
            ASSERT_TRUE(c);
            EXPECT_EQ(c->position, at);
            EXPECT_EQ(c->bad.size(), at == s.badAt ? 1 : 0);
            if (at == s.failAt) {
                EXPECT_EQ(c->got, -1);
                joined.append(s.data.mid(int(at), int(kChunk)));
            } else {
                EXPECT_EQ(c->got, qMin<qint64>(kChunk, s.data.size() - qint64(at)));
                joined.append(reinterpret_cast<const char*>(c->data), int(c->got));
            }
        }
        EXPECT_EQ(joined, s.data);
        EXPECT_EQ(r.take(), nullptr) << "nothing more was asked for";
        EXPECT_EQ(s.reads, 11);
    }
}

TEST(ChunkReader, DropsWhatWasAskedAndStopsMidWay)
{
    for (bool second : {false, true}) {
        SCOPED_TRACE(second);
        Source s(int(64 * kChunk));
        {
            ChunkReader r(s.fn(), second, kChunk, 4);
            for (quint64 i = 0; i < 6; ++i)
                r.ask(i * kChunk, kChunk);
            EXPECT_EQ(r.waiting(), 4) << "no more than depth";
            ASSERT_EQ(r.take()->position, 0u);
            r.drop();
            EXPECT_EQ(r.waiting(), 0);
            EXPECT_FALSE(r.nextIs(kChunk, kChunk));
            r.ask(40 * kChunk, 2 * kChunk);
            const ChunkReader::Chunk* c = r.take();
            EXPECT_EQ(c->position, 40 * kChunk);
            EXPECT_EQ(c->bytes, kChunk) << "clamped to a chunk";
            EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(c->data), int(kChunk)), s.data.mid(int(40 * kChunk), int(kChunk)));
            for (quint64 i = 50; i < 54; ++i)
                r.ask(i * kChunk, kChunk); // left waiting: the destructor stops the thread in the middle
        }
        EXPECT_LE(s.reads, 10);
    }
}
