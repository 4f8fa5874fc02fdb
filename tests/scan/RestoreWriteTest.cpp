#include "fixtures/ScanRun.h"
#include "imaging/SmallVolumes.h"
#include "results/FoundFile.h"
#include "scan/device/TargetDir.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
QList<QPair<TargetDir::FileOp, int>> ops; // filled on the restore's thread, read after it ended
} // namespace

// A restored file is opened once, dated through the descriptor it was made
// with, and not cut to length when its writes reached its size; a second
// restore into the same folder replaces each file, again with one open.
TEST(RestoreWrite, EachFileOpenedOnceAndDatedOnThatOpen)
{
    TargetDir::setFileOpObserverForTests([](TargetDir::FileOp op, int fd) { ops.append({op, fd}); });
    for (const Fs fs : {Fs::Ntfs, Fs::Fat32}) {
        ScanRun s(fs == Fs::Ntfs ? SmallVolumes::ntfs() : SmallVolumes::fat32(), fs);
        ASSERT_TRUE(s.run());
        const QList<FoundFile*> files = s.files();
        const auto dated = std::count_if(files.begin(), files.end(), [](FoundFile* f) { return f->modifiedMsecs > 0; });
        QTemporaryDir target;
        for (int round = 0; round < 2; ++round) {
            ops.clear();
            ASSERT_TRUE(s.restore(target.path()));
            int counts[3] = {0, 0, 0}, created = -1;
            for (const auto& [op, fd] : ops) {
                ++counts[int(op)];
                created = op == TargetDir::FileOp::Create ? fd : created;
                EXPECT_EQ(fd, created);
            }
            EXPECT_EQ(counts[int(TargetDir::FileOp::Create)], files.size());
            EXPECT_EQ(counts[int(TargetDir::FileOp::SetDate)], dated);
            EXPECT_EQ(counts[int(TargetDir::FileOp::Resize)], 0);
        }
    }
    TargetDir::setFileOpObserverForTests(nullptr);
}
