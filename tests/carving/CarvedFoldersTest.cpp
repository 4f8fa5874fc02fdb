#include "carving/CarvedFolders.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"

#include <gtest/gtest.h>

TEST(CarvedFolders, ExtraFolderComesFirstAndKindsRollOverAtTwentyEach)
{
    FolderNode root;
    CarvedFolders folders(&root, 5, false);
    ASSERT_EQ(root.children.size(), 1);
    FolderNode* extra = root.children.first();
    EXPECT_EQ(extra->name, QStringLiteral("额外文件"));
    EXPECT_TRUE(extra->children.isEmpty()) << "kind folders appear with their first file";
    EXPECT_FALSE(extra->ntfs);
    EXPECT_EQ(extra->partIndex, 5);

    for (int i = 0; i < 21; ++i) {
        folders.file(CarvedKind::Jpg, new Fat32File);
        if (i == 3)
            folders.file(CarvedKind::Png, new Fat32File);
    }
    QStringList names;
    QList<int> counts;
    for (FolderNode* f : extra->children) {
        names << f->name;
        counts << int(f->files.size());
        EXPECT_EQ(f->partIndex, 5);
        EXPECT_FALSE(f->ntfs);
        EXPECT_EQ(f->parent, extra);
    }
    EXPECT_EQ(names, QStringList({"JPG文件-00001", "PNG文件-00001", "JPG文件-00002"}));
    EXPECT_EQ(counts, QList<int>({20, 1, 1}));
}

TEST(CarvedFolders, NamesHaveNineDigitsAndNeverRepeat)
{
    FolderNode root;
    CarvedFolders folders(&root, 0, true);
    const QStringList names = {
        folders.takeName(CarvedKind::Jpg, 12345),
        folders.takeName(CarvedKind::Jpg, 12345), // a second hit under the same running number
        folders.takeName(CarvedKind::Tiff, 12346),
        folders.takeName(CarvedKind::SevenZip, 20000),
        folders.takeName(CarvedKind::Bmp, 1234567890),
    };
    EXPECT_EQ(names, QStringList({"F000012345.jpg", "F000012346.jpg", "F000012347.tiff", "F000020000.7z",
                                  "F1234567890.bmp"}));
}
