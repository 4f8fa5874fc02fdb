#include "results/ExtentList.h"
#include "scan/ExtentReader.h"

#include <QByteArray>
#include <gtest/gtest.h>

namespace {
// "o+l" for a stretch on the volume, "-l" for a hole.
QString describe(const Extents& extents)
{
    QStringList out;
    for (const Extent& e : extents)
        out << (e.hole ? QStringLiteral("-%1").arg(e.length) : QStringLiteral("%1+%2").arg(e.offset).arg(e.length));
    return out.join(' ');
}
} // namespace

// Extents are clamped where they are made: to the file's size, and to the
// volume's end, behind which a file reads zeros instead of the next partition.
TEST(ExtentList, ClampsToTheSizeAndTheVolume)
{
    ExtentList within(1000, 150);
    within.add(100, 100);
    within.add(200, 100); // follows on: one piece
    EXPECT_EQ(describe(within.take()), "100+150");

    ExtentList pastEnd(1000, 400);
    pastEnd.add(900, 300);
    pastEnd.addHole(50);
    pastEnd.add(5000, 50);
    EXPECT_EQ(describe(pastEnd.take()), "900+100 -300");

    ExtentList full(1000, 10);
    EXPECT_FALSE(full.add(0, 10));
    EXPECT_FALSE(full.add(500, 10));
    EXPECT_EQ(describe(full.take()), "0+10");
}

TEST(ExtentReader, StreamsInFileOrderAndZeroesWhatFailsToRead)
{
    const QByteArray volume = QByteArray("abcdefghij").repeated(2);
    const Extents extents{{10, 5, false}, {0, 3, true}, {2, 4, false}};
    QByteArray file(12, '?');
    const quint64 failed = ExtentReader::stream(
        extents,
        [&volume](void* buffer, quint64 bytes, quint64 at) -> qint64 {
            if (at == 2)
                return -1;
            memcpy(buffer, volume.constData() + at, bytes);
            return qint64(bytes);
        },
        [&file](quint64 at, const char* data, quint64 bytes) {
            file.replace(int(at), int(bytes), data ? QByteArray(data, int(bytes)) : QByteArray(int(bytes), '0'));
        });
    EXPECT_EQ(file, QByteArray("abcde000") + QByteArray(4, '\0'));
    EXPECT_EQ(failed, 1u);
}
