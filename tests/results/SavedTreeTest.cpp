#include "results/CarvedFile.h"
#include "results/ExfatFile.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/ResultTree.h"
#include "results/SavedTree.h"

#include <gtest/gtest.h>

namespace {
// A tree with a file of each record type, nested folders and a partial selection.
void fill(FolderNode* root)
{
    auto* ntfs = new NtfsFile;
    ntfs->setName(u"报告.doc:stream");
    ntfs->size = 5000;
    ntfs->setRuns({{2, 2, 77, false}, {4, 2, 0, true}});
    ntfs->setCompressionUnitClusters(16);
    root->addFile(ntfs);
    FolderNode* a = root->addChild("a", 1, false);
    auto* fat = new Fat32File;
    fat->firstCluster = 9;
    fat->carvedClusters = 3;
    fat->cut = true;
    a->addFile(fat);
    FolderNode* b = a->addChild("b", 1, false);
    b->checkState = 1;
    auto* ex = new ExfatFile;
    ex->setExtents({{4096, 100, false}, {0, 50, true}});
    ex->selected = false;
    b->addFile(ex);
    auto* carved = new CarvedFile;
    carved->volumeOffset = 1 << 20;
    carved->modifiedMsecs = 1234567;
    root->addChild("c", 0, true)->addFile(carved);
}
} // namespace

TEST(SavedTree, ReadsBackWhatItWroteAndRefusesEveryCutOfIt)
{
    ResultTree original("vol", true);
    fill(original.root());
    const QByteArray bytes = SavedTree::write(original.root());

    ResultTree copy("vol", true);
    QString why;
    ASSERT_TRUE(SavedTree::read(bytes, copy.root(), &why)) << why.toStdString();
    EXPECT_EQ(SavedTree::write(copy.root()), bytes);
    EXPECT_EQ(copy.files(), original.files());
    EXPECT_EQ(copy.bytes(), original.bytes());
    EXPECT_EQ(copy.folders(), original.folders());
    EXPECT_EQ(copy.root()->children.at(0)->children.at(0)->tree, &copy);
    EXPECT_EQ(SavedTree::write(original.root(), 1), [&] {
        ResultTree one("vol", true);
        fill(one.root());
        delete one.root()->children.takeLast();
        return SavedTree::write(one.root());
    }());

    for (qsizetype n = 0; n < bytes.size(); ++n) {
        ResultTree cut("vol", true);
        EXPECT_FALSE(SavedTree::read(bytes.left(n), cut.root(), &why)) << n;
        EXPECT_TRUE(cut.root()->children.isEmpty() && cut.root()->files.isEmpty());
    }
}
