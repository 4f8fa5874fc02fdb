#include "cli/SourceSpec.h"

#include <gtest/gtest.h>

TEST(SourceSpec, LettersDisksAndImagePartitions)
{
    struct Case {
        const char* text;
        bool ok;
        SourceSpec::Kind kind;
        char letter;
        int disk;
        const char* image;
        int partition;
    };
    const Case cases[] = {
        {"E", true, SourceSpec::Letter, 'E', -1, "", 0},
        {"e:", true, SourceSpec::Letter, 'E', -1, "", 0},
        {"disk:3", true, SourceSpec::Disk, 0, 3, "", 0},
        {"card.img", true, SourceSpec::Image, 0, -1, "card.img", 0},
        {"card.img@2", true, SourceSpec::Image, 0, -1, "card.img", 2},
        {"/a/b@c/card.img@12", true, SourceSpec::Image, 0, -1, "/a/b@c/card.img", 12},
        {"card.img@0", false, SourceSpec::Image, 0, -1, "", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        SourceSpec s;
        QString error;
        ASSERT_EQ(SourceSpec::parse(QString::fromUtf8(c.text), &s, &error), c.ok);
        if (!c.ok)
            continue;
        EXPECT_EQ(s.kind, c.kind);
        if (c.kind == SourceSpec::Letter) {
            EXPECT_EQ(s.letter, QChar(c.letter));
        }
        EXPECT_EQ(s.disk, c.disk);
        EXPECT_EQ(s.imagePath, QString::fromUtf8(c.image));
        EXPECT_EQ(s.partition, c.partition);
    }
}
