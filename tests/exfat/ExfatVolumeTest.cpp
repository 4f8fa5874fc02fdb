#include "exfat/ExfatVolume.h"
#include "fixtures/ExfatImageBuilder.h"
#include "fixtures/Fat32ImageBuilder.h"

#include <gtest/gtest.h>

namespace {
using Entry = ExfatImageBuilder::Entry;
constexpr quint32 kRoot = ExfatImageBuilder::kRoot;

Entry named(const QString& name, bool deleted, bool noFatChain = true)
{
    Entry e;
    e.name = name;
    e.deleted = deleted;
    e.noFatChain = noFatChain;
    return e;
}

struct Found {
    QString path;
    QByteArray content;
};

// Scans an image and reads every file the walk hands out over its cluster runs,
// with the bytes past the valid data length as zeros.
QList<Found> scan(const QByteArray& image, int* corrupt = nullptr)
{
    const auto read = ExfatImageBuilder::readerOf(image);
    ExfatBootSector boot;
    EXPECT_TRUE(ExfatBootSector::locate(read, quint64(image.size()), &boot));
    ExfatVolume volume(boot, read);
    volume.load();
    QList<Found> found;
    volume.walk(
        [&](const QStringList& folder, const ExfatEntrySet& file) {
            QByteArray content;
            for (const ExfatClusterRun& run : volume.clusterRuns(file))
                content += image.mid(qsizetype(boot.clusterOffset(run.first)), qsizetype(run.count) << boot.clusterShift);
            content = content.left(qsizetype(file.validLength)).leftJustified(qsizetype(file.dataLength), '\0', true);
            found.append({(folder + QStringList{file.name}).join('/'), content});
            return true;
        },
        [](quint64) { return true; });
    if (corrupt)
        *corrupt = volume.corruptSets();
    return found;
}
} // namespace

TEST(ExfatVolume, DeletedFilesComeBackFromChainsRunsAndFolders)
{
    ExfatImageBuilder b;
    const QByteArray fragmented = Fat32ImageBuilder::pattern("frag", 3500);
    const QByteArray contiguous = Fat32ImageBuilder::pattern("run", 5000);
    const QByteArray partial = Fat32ImageBuilder::pattern("partial", 4000);
    const QByteArray inFolder = Fat32ImageBuilder::pattern("inside", 1500);
    const QByteArray live = Fat32ImageBuilder::pattern("live", 700);
    b.addFile(kRoot, named("live.txt", false), live);
    // Four clusters out of order: 400, 401, 300, 600.
    b.addFile(kRoot, named("fragmented.bin", true, false), fragmented, {400, 401, 300, 600});
    b.addFile(kRoot, named(QString::fromUtf8("连续 run.dat"), true), contiguous);
    Entry partialEntry = named("partial.log", true);
    partialEntry.validLength = 2500;
    b.addFile(kRoot, partialEntry, partial);
    Entry broken = named("broken.txt", true);
    broken.breakChecksum = true;
    b.addFile(kRoot, broken, live);
    const quint32 folder = b.addDirectory(kRoot, named("gone", true));
    const quint32 sub = b.addDirectory(folder, named("deeper", true));
    b.addFile(sub, named("inside.txt", true, false), inFolder);
    const quint32 kept = b.addDirectory(kRoot, named("kept", false));
    b.addFile(kept, named("live too.txt", false), live);

    int corrupt = 0;
    const QList<Found> found = scan(b.image(), &corrupt);
    QByteArray partialRead = partial.left(2500) + QByteArray(1500, '\0');
    const QList<QPair<QString, QByteArray>> want = {
        {"fragmented.bin", fragmented},
        {QString::fromUtf8("连续 run.dat"), contiguous},
        {"partial.log", partialRead},
        {"gone/deeper/inside.txt", inFolder},
    };
    ASSERT_EQ(found.size(), want.size());
    for (int i = 0; i < want.size(); ++i) {
        EXPECT_EQ(found[i].path, want[i].first);
        EXPECT_TRUE(found[i].content == want[i].second) << want[i].first.toStdString();
    }
    EXPECT_EQ(corrupt, 1) << "the set with the broken checksum";
}

TEST(ExfatVolume, ClusterRunsStayInsideTheHeap)
{
    ExfatImageBuilder b(64);
    b.chain({10, 11, 30, 12});
    const QByteArray image = b.image();
    const auto read = ExfatImageBuilder::readerOf(image);
    ExfatBootSector boot;
    ASSERT_TRUE(ExfatBootSector::locate(read, quint64(image.size()), &boot));
    ExfatVolume volume(boot, read);
    volume.load();
    struct Case {
        const char* why;
        quint32 first;
        quint64 length;
        bool noFatChain;
        QList<QPair<quint32, quint32>> runs;
    };
    const Case cases[] = {
        {"a chain, merged where it is consecutive", 10, 4 * 1024, false, {{10, 2}, {30, 1}, {12, 1}}},
        {"a chain shorter than the size goes on behind its end", 10, 6 * 1024, false, {{10, 2}, {30, 1}, {12, 3}}},
        {"a run cut at the heap's end", 60, 10 * 1024, true, {{60, 6}}},
        {"a first cluster outside the heap", 66, 1024, true, {}},
        {"no content", 20, 0, true, {}},
    };
    for (const Case& c : cases) {
        ExfatEntrySet set;
        set.firstCluster = c.first;
        set.dataLength = c.length;
        set.noFatChain = c.noFatChain;
        QList<QPair<quint32, quint32>> got;
        for (const ExfatClusterRun& r : volume.clusterRuns(set))
            got.append({r.first, r.count});
        EXPECT_EQ(got, c.runs) << c.why;
    }
}
