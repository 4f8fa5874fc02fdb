#include "diskscan/DiskScan.h"
#include "fixtures/ScanRun.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/Fat32ImageBuilder.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"
#include <gtest/gtest.h>

// Previews read through the partition scanners on the test's thread while the
// search builds more of them and files their results.
TEST(ResultTree, PreviewsWhileADiskSearchAppendsPartitions)
{
    constexpr int kVolumes = 3;
    Fat32ImageBuilder b;
    const QByteArray content = DiskImageBuilder::pattern(3000, 1);
    b.addFile(Fat32ImageBuilder::kRoot, {"FILE.TXT", "file.txt", true}, content);
    const QByteArray volume = b.image();
    const quint64 stride = quint64(volume.size()) + (1 << 20);
    DiskImageBuilder disk(kVolumes * stride);
    for (int i = 0; i < kVolumes; ++i)
        disk.put(i * stride + 63 * DiskImageBuilder::kSector, volume);
    ScanRun s(disk.bytes(), Fs::Disk);
    auto* search = static_cast<DiskScan*>(s.scan.get());
    search->start();
    int previewed = 0;
    for (bool running = true; running;) {
        running = !search->wait(1);
        previewed = 0;
        for (int i = 0; i < search->partitionCount(); ++i) {
            PartScan* part = search->partition(i);
            const QList<FoundFile*> files = [&] { TreeLock::Read l(ResultTree::lockOf(part->rootFolder)); return part->rootFolder->files; }();
            for (FoundFile* f : files) {
                QByteArray buffer(qsizetype(f->size), '\0');
                EXPECT_TRUE(part->fileContent(buffer.data(), f) == f->size && buffer == content);
                ++previewed;
            }
        }
    }
    EXPECT_EQ(previewed, kVolumes);
}

TEST(FolderNode, FindsChildrenByNamePastTheIndexThreshold)
{
    // Names that differ in case, a repeated name (the first stays) and a child
    // appended to the list directly, around the size where the hash takes over.
    FolderNode root;
    QList<FolderNode*> made;
    for (int i = 0; i < 40; ++i)
        made.append(root.addChild(QStringLiteral("n%1").arg(i % 20) + (i % 20 == 7 ? QStringLiteral("A") : QString()), 0, true));
    auto* direct = new FolderNode;
    direct->name = QStringLiteral("direct");
    root.children.append(direct);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(root.findChild(made.at(i)->name), made.at(i)) << i;
    EXPECT_EQ(root.findChild(QStringLiteral("direct")), direct);
    EXPECT_EQ(root.findChild(QStringLiteral("n7a")), nullptr);
    EXPECT_EQ(root.obtainChild(QStringLiteral("n3"), 0, true), made.at(3));
}
