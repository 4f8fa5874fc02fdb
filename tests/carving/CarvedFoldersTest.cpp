#include "carving/CarvedFolders.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"

#include <gtest/gtest.h>

TEST(CarvedFolders, KindsRollOverAtTwentyEachBelowTheExtraFolder)
{
    FolderNode root;
    CarvedFolders folders(&root, 5, false);
    FolderNode* extra = root.children.value(0);
    ASSERT_NE(extra, nullptr) << "made before any file";
    EXPECT_EQ(extra->name, QStringLiteral("额外文件"));
    for (int i = 0; i < 21; ++i) {
        folders.file("jpg", new Fat32File);
        if (i == 3)
            folders.file("png", new Fat32File);
    }
    QStringList seen;
    for (FolderNode* f : extra->children) {
        seen << QStringLiteral("%1:%2").arg(f->name).arg(f->files.size());
        EXPECT_EQ(f->partIndex, 5);
        EXPECT_FALSE(f->ntfs);
    }
    EXPECT_EQ(seen, QStringList({"JPG文件-00001:20", "PNG文件-00001:1", "JPG文件-00002:1"}));
}

TEST(CarvedFolders, NamesHaveNineDigitsAndNeverRepeat)
{
    FolderNode root;
    CarvedFolders folders(&root, 0, true);
    const QStringList names = {
        folders.takeName("jpg", {}, 12345),
        folders.takeName("jpg", {}, 12345), // a second hit under the same running number
        folders.takeName("tiff", {}, 12346),
        folders.takeName("jpg", "IMG_20191224_234846", 12347),
        folders.takeName("jpg", "IMG_20191224_234846", 12348), // two photos of the same second
        folders.takeName("bmp", {}, 1234567890),
    };
    EXPECT_EQ(names, QStringList({"F000012345.jpg", "F000012346.jpg", "F000012347.tiff", "IMG_20191224_234846.jpg",
                                  "IMG_20191224_234846_1.jpg", "F1234567890.bmp"}));
}
