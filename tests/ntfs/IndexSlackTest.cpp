// Names left behind the used part of a folder's INDX blocks: listed with no
// content when no record holds their file any more, once, and only when every
// field of the entry is sound.
#include "imaging/NtfsImageBuilder.h"
#include "ntfs/IndexSlack.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/NtfsFile.h"
#include "fixtures/ScanRun.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <random>

namespace {
using Builder = NtfsImageBuilder;
constexpr quint32 kFolder = 20, kLive = 21, kReused = 22, kDeleted = 23;
constexpr int kBlock = 4096;

quint64 ref(quint32 record, quint16 sequence) { return record | quint64(sequence) << 48; }

// "docs" lists kept.txt; its slack holds lost.txt (header under the end
// marker), reused.txt (its record now another file's), deleted.txt (its
// deleted record still there), a stale copy of kept.txt and one with no time.
QByteArray slackVolume()
{
    Builder b;
    const auto resident = [](const char* name, quint32 parent, const char* content, bool deleted, qint64 slot) {
        Builder::Entry e;
        e.names = {{name, parent}};
        e.content = content;
        e.deleted = deleted;
        e.resident = true;
        e.slot = slot;
        return e;
    };
    b.add(resident("kept.txt", kFolder, "kept", false, kLive));
    b.add(resident("other.txt", Builder::kRoot, "other", false, kReused));
    b.add(resident("deleted.txt", kFolder, "deleted", true, kDeleted));
    Builder::Entry folder;
    folder.names = {{"docs", Builder::kRoot}};
    folder.directory = true;
    folder.slot = kFolder;
    folder.indexed = {{"kept.txt", ref(kLive, 1), 4}};
    folder.slack = {{"lost.txt", ref(30, 1), 11}, {"reused.txt", ref(kReused, 3), 12}, {"deleted.txt", ref(kDeleted, 1), 7},
                    {"kept.txt", ref(kLive, 1), 4}, {"notime.txt", ref(31, 1), 5, 0}};
    b.add(folder);
    return b.build();
}

QByteArray indexBlock(const QByteArray& volume)
{
    QByteArray block = volume.mid(volume.indexOf("INDX"), kBlock);
    EXPECT_TRUE(IndexSlack::fixup(reinterpret_cast<uint8_t*>(block.data()), kBlock));
    return block;
}

QStringList slackNames(const QByteArray& block)
{
    QStringList names;
    for (const IndexSlack::Name& n : IndexSlack::slackNames(reinterpret_cast<const uint8_t*>(block.constData()), kBlock, true, kFolder, 1, 100))
        names << n.name + (n.referenceKnown ? QStringLiteral("@%1").arg(n.record) : QString());
    return names;
}
} // namespace

TEST(IndexSlack, NamesWhoseRecordIsGoneAreListedOnceWithoutContent)
{
    const QByteArray volume = slackVolume();
    ScanRun h(new NtfsVolumeScan("vol", memoryVolume(volume), 0));
    ASSERT_TRUE(h.run());
    const auto files = h.byPath<NtfsFile>();
    EXPECT_EQ(files.keys().join(' ').toStdString(), "docs/deleted.txt docs/lost.txt docs/reused.txt");
    EXPECT_EQ(h.content(files.value("docs/deleted.txt")), QByteArray("deleted"));
    for (const char* nameOnly : {"docs/lost.txt", "docs/reused.txt"}) {
        ASSERT_TRUE(files.value(nameOnly)) << nameOnly;
        EXPECT_TRUE(files.value(nameOnly)->nameOnly) << nameOnly;
        EXPECT_TRUE(h.content(files.value(nameOnly)).isEmpty());
    }
    EXPECT_EQ(files.value("docs/lost.txt")->size, 11u);

    QTemporaryDir target;
    ASSERT_TRUE(h.restore(target.path()));
    for (const RestoredFile& f : h.scan->restoreReport.files())
        EXPECT_EQ(f.failure == RestoreFailure::NameOnly, f.path.contains(QLatin1String("docs/lost")) || f.path.contains(QLatin1String("docs/reused")))
            << f.path.toStdString();
    EXPECT_FALSE(QFileInfo::exists(target.path() + "/vol/docs/lost.txt"));
}

TEST(IndexSlack, EntriesThatFailAnyCheckAreLeftOut)
{
    const QByteArray block = indexBlock(slackVolume());
    // Slack starts at 0xA8 (the end marker); reused.txt's entry at 0x110, its key at 0x120.
    constexpr int kEntry = 0x110, kKey = kEntry + 0x10;
    const struct {
        const char* what;
        int at;
        QByteArray bytes;
        const char* expected;
    } cases[] = {
        {"as built", 0, {}, "lost.txt reused.txt@22 deleted.txt@23 kept.txt@21"},
        {"another parent", kKey, QByteArray("\x15", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"the parent's old sequence", kKey + 6, QByteArray("\x02", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"a DOS name", kKey + 0x41, QByteArray("\x02", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"a key length that is not the name's", kEntry + 0x0A, QByteArray("\x50", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"an entry length past its key", kEntry + 8, QByteArray("\xF0", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"a control character", kKey + 0x42, QByteArray("\x07", 1), "lost.txt deleted.txt@23 kept.txt@21"},
        {"a folder", kKey + 0x3B, QByteArray("\x10", 1), "lost.txt deleted.txt@23 kept.txt@21"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QByteArray changed = block;
        changed.replace(c.at, c.bytes.size(), c.bytes);
        EXPECT_EQ(slackNames(changed).join(' ').toStdString(), c.expected);
    }
    // Random bytes anywhere in a block never lead a read outside it.
    std::mt19937 random(14);
    for (int round = 0; round < 2000; ++round) {
        QByteArray noisy = block;
        for (int i = 0; i < 16; ++i)
            noisy[int(random() % kBlock)] = char(random());
        QSet<QString> live;
        IndexSlack::liveNames(reinterpret_cast<const uint8_t*>(noisy.constData()), kBlock, false, &live);
        slackNames(noisy);
    }
}
