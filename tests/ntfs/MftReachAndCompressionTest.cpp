// Where the scan looks for records of an earlier MFT, and how compressed
// streams read: plain, compressed and sparse units, and the initialized size.
#include "ntfs/CompressedStream.h"
#include "ntfs/MftReach.h"
#include "results/NtfsFile.h"

#include <gtest/gtest.h>

namespace {
using Span = MftReach::Span;

QList<DataRun> runs(const QList<Span>& spans, QList<bool> sparse = {})
{
    QList<DataRun> out;
    quint64 vcn = 0;
    for (int i = 0; i < spans.size(); ++i) {
        vcn += spans[i].count;
        out.append(DataRun{vcn, spans[i].count, spans[i].lcn, i < sparse.size() && sparse[i]});
    }
    return out;
}

QString text(const QList<Span>& spans)
{
    QStringList parts;
    for (const Span& s : spans)
        parts.append(QStringLiteral("%1+%2").arg(s.lcn).arg(s.count));
    return parts.join(' ');
}
} // namespace

TEST(MftReach, ReadsBehindEachRunButNeverTheMftTheMirrorOrPastTheVolume)
{
    const struct {
        const char* what;
        QList<Span> mft;
        QList<Span> skip;
        quint64 clusters, min;
        const char* expected;
    } cases[] = {
        {"one run, at least the minimum behind it", {{4, 2}}, {}, 1000, 100, "6+100"},
        {"fifteen times the run when that is more", {{4, 10}}, {}, 1000, 100, "14+150"},
        {"cut at the volume's end", {{4, 10}}, {}, 100, 0, "14+86"},
        {"the mirror is left out", {{4, 2}}, {{10, 1}}, 1000, 30, "6+4 11+25"},
        {"later fragments are not read twice", {{4, 2}, {20, 2}, {1, 1}}, {}, 1000, 0, "6+14 22+14 36+16 2+2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(text(MftReach::plan(runs(c.mft), c.clusters, c.skip, c.min)).toStdString(), c.expected);
    }
}

TEST(CompressedStream, ReadsPlainCompressedAndSparseUnitsAndZerosPastTheInitializedSize)
{
    constexpr quint32 kCluster = 512;
    constexpr int kUnit = 16 * kCluster;
    // Unit 0 stored whole; unit 1 in 9 clusters: one stored 4096-byte LZNT1
    // chunk, then the end; unit 2 sparse; unit 3 stored whole.
    QByteArray volume(64 * kCluster, '\0');
    volume.replace(0, kUnit, QByteArray(kUnit, 'p'));
    const QByteArray chunk = QByteArray("\xFF\x3F", 2) + QByteArray(4096, 'c');
    volume.replace(16 * kCluster, chunk.size(), chunk);
    volume.replace(32 * kCluster, kUnit, QByteArray(kUnit, 'q'));
    NtfsFile file;
    file.setRuns(runs({{0, 16}, {16, 9}, {0, 7}, {0, 16}, {32, 16}}, {false, false, true, true, false}));
    file.setCompressionUnitClusters(16);
    file.size = 4 * kUnit - 100;
    file.initializedSize = 3 * kUnit + 1000;
    QByteArray out(int(file.size), 'x');
    const auto read = [&](void* buffer, quint64 bytes, quint64 at) {
        memcpy(buffer, volume.constData() + at, bytes);
        return qint64(bytes);
    };
    const auto sink = [&](quint64 at, const char* data, quint64 bytes) {
        out.replace(int(at), int(bytes), data ? QByteArray(data, int(bytes)) : QByteArray(int(bytes), '\0'));
    };
    EXPECT_EQ(CompressedStream::stream(file, kCluster, quint64(volume.size()), read, sink), 0u);
    const QByteArray expected = QByteArray(kUnit, 'p') + QByteArray(4096, 'c') + QByteArray(kUnit - 4096, '\0')
        + QByteArray(kUnit, '\0') + QByteArray(1000, 'q') + QByteArray(kUnit - 1100, '\0');
    EXPECT_TRUE(out == expected);
    // An unreadable stored cluster spoils a compressed unit whole, a plain one's clusters only.
    const auto failing = [&](void* buffer, quint64 bytes, quint64 at) { return at == 16 * kCluster || at == 32 * kCluster ? -1 : read(buffer, bytes, at); };
    QStringList damaged, pieces;
    const auto note = [&](quint64 at, quint64 bytes) { damaged << QStringLiteral("%1+%2").arg(at).arg(bytes); };
    EXPECT_EQ(CompressedStream::stream(file, kCluster, quint64(volume.size()), failing, sink, note), 2u);
    EXPECT_EQ(damaged.join(' ').toStdString(), "8192+8192 24576+1000");
    // Stored bytes by unit: a compressed unit's carry what they expand to.
    for (const CompressedStream::Piece& p : CompressedStream::pieces(file, kCluster, quint64(volume.size())))
        pieces << QStringLiteral("%1@%2+%3/%4").arg(p.fileOffset).arg(p.volumeOffset).arg(p.length).arg(p.expandsTo);
    EXPECT_EQ(pieces.join(' ').toStdString(), "0@0+8192/0 8192@8192+4608/8192 24576@16384+1000/0");
}
