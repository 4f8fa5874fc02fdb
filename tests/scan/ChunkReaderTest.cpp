#include "scan/ChunkReader.h"

#include <QByteArray>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>

namespace {
constexpr quint64 kChunk = 4096;

// Numbered bytes; the read at failAt fails, the one at badAt meets a bad sector.
struct Source {
    QByteArray data;
    quint64 failAt = 3 * kChunk, badAt = 5 * kChunk;
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
            const quint64 n = qMin(bytes, quint64(data.size()) - at);
            std::memcpy(buffer, data.constData() + at, n);
            if (at == badAt)
                bad->append({at + 512, 512});
            return qint64(n);
        };
    }
};
} // namespace

TEST(ChunkReader, HandsChunksOverInOrderWithTheirErrorsAndStopsMidWay)
{
    for (bool second : {false, true}) {
        SCOPED_TRACE(second);
        Source s(int(10 * kChunk + 1000)); // the end is not on a chunk boundary
        ChunkReader r(s.fn(), second, kChunk, 3);
        QByteArray joined;
        for (quint64 at = 0, asked = 0; at < quint64(s.data.size()); at += kChunk) {
            for (; r.canAsk() && asked < quint64(s.data.size()); asked += kChunk)
                r.ask(asked, kChunk);
            EXPECT_EQ(r.waiting(), qMin<int>(3, int((s.data.size() - at + kChunk - 1) / kChunk)));
            ASSERT_TRUE(r.nextIs(at, kChunk));
            const ChunkReader::Chunk* c = r.take();
            EXPECT_EQ(c->position, at);
            EXPECT_EQ(c->bad.size(), at == s.badAt ? 1 : 0);
            EXPECT_EQ(c->got, at == s.failAt ? -1 : qMin<qint64>(kChunk, s.data.size() - qint64(at)));
            joined.append(at == s.failAt ? s.data.mid(int(at), int(kChunk)) : QByteArray(reinterpret_cast<const char*>(c->data), int(c->got)));
        }
        EXPECT_EQ(joined, s.data);
        EXPECT_EQ(r.take(), nullptr) << "nothing more was asked for";
        EXPECT_EQ(s.reads, 11);

        // A drop forgets what was asked; the destructor stops with chunks still asked for.
        for (quint64 i = 0; i < 3; ++i)
            r.ask(i * kChunk, kChunk);
        r.drop();
        EXPECT_EQ(r.waiting(), 0);
        r.ask(6 * kChunk, 2 * kChunk);
        const ChunkReader::Chunk* c = r.take();
        EXPECT_EQ(c->bytes, kChunk) << "clamped to a chunk";
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(c->data), int(kChunk)), s.data.mid(int(6 * kChunk), int(kChunk)));
        r.ask(7 * kChunk, kChunk);
        r.ask(8 * kChunk, kChunk);
    }
}
