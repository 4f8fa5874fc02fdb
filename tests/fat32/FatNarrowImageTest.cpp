// FAT12 and FAT16 volumes written by mkfs.fat and mtools, scanned and restored through ostrel-cli.
#include "PrintQString.h"
#include "fixtures/CliRunner.h"
#include "imaging/Fat32ImageBuilder.h"
#include "fixtures/TestPaths.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(FatNarrowImage, MtoolsDeletionsComeBackWholeOnFat12AndFat16)
{
    struct Deleted {
        QString path;
        const char* tag;
        int size;
    };
    // "many" spans clusters that alternate odd and even: on FAT12 its chain
    // runs through entries that share bytes with their neighbours.
    const Deleted deleted[] = {
        {"_HORT.TXT", "short", 300},
        {"docs/Annual Report 2021.txt", "report", 5000},
        {QString::fromUtf8("docs/résumé 履历.txt"), "resume", 2600},
        {"docs/_.bin", "big", 40000},
        {"many/a file with a long name, number 21.txt", "many21", 100},
        {"_rchive/old letter.txt", "letter", 3000},
        {"_rchive/_019/photo list.txt", "photos", 800},
    };
    for (const char* image : {"fat12-mtools.img.xz", "fat16-mtools.img.xz"}) {
        SCOPED_TRACE(image);
        QTemporaryDir dir;
        const QString path = CliRunner::unxz(TestPaths::sourceDir() + "/tests/fixtures/" + image, dir.path(), "v.img");
        ASSERT_FALSE(path.isEmpty());
        QStringList expected;
        for (const Deleted& d : deleted)
            expected << QStringLiteral("C/%1\t%2\t2021-06-15T02:30:00Z").arg(d.path).arg(d.size);
        expected << "results=7,totalsize=51800";
        EXPECT_EQ(CliRunner::run({"scan", "--images-only", path}).lines, expected);
        const QString target = dir.filePath("out");
        ASSERT_EQ(CliRunner::run({"restore", "--images-only", "--to", target, path}).exitCode, 0);
        for (const Deleted& d : deleted)
            EXPECT_EQ(CliRunner::readFile(target + "/C/" + d.path), Fat32ImageBuilder::pattern(d.tag, d.size)) << d.path.toStdString();
    }
}
