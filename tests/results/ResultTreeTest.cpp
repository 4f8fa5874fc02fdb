#include "diskscan/DiskScan.h"
#include "fixtures/ScanRun.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/Fat32ImageBuilder.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

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

// A reader keeps the names it took under the read lock while the scan thread
// adds names across many chunks of the pool: a name never moves once written.
TEST(ResultTree, NamesStayPutWhileTheScanFillsChunkAfterChunk)
{
    constexpr int kFiles = 2000; // of 250 characters: some eight chunks, most ending with a gap
    const auto nameOf = [](int i) { return QString::number(i).repeated(250).left(250); };
    ResultTree tree(QStringLiteral("vol"), true);
    FolderNode* root = tree.root();
    std::atomic<bool> done{false};
    QList<QPair<int, QStringView>> held;
    std::thread reader([&] {
        while (!done.load()) {
            TreeLock::Read lock(tree.lock());
            const int n = int(root->files.size());
            if (n > 0 && (held.isEmpty() || held.last().first != n - 1))
                held.append({n - 1, root->files.at(n - 1)->nameView()});
        }
    });
    for (int i = 0; i < kFiles; ++i) {
        auto* file = new NtfsFile;
        // Named before it is added (its own copy moves into the pool), or as it is added.
        if (i % 2) {
            file->setName(nameOf(i));
            root->addFile(file);
        } else {
            root->addFile(file, nameOf(i));
        }
    }
    done = true;
    reader.join();
    for (const auto& [i, view] : held)
        ASSERT_EQ(view, nameOf(i)) << i;
    for (int i = 0; i < kFiles; ++i)
        ASSERT_EQ(root->files.at(i)->nameView(), nameOf(i)) << i;
    EXPECT_GE(tree.names().bytes(), quint64(kFiles) * 250 * sizeof(char16_t));
    // In a folder of no tree a file keeps its own copy.
    FolderNode loose;
    auto* file = new NtfsFile;
    file->setName(nameOf(7));
    loose.addFile(file);
    EXPECT_EQ(file->nameView(), nameOf(7));
}
