// The listing's time stamps are formatted by hand; they must read exactly as
// QDateTime's ISO dates, leap days and centuries included.
#include "cli/TreeReport.h"

#include <QDateTime>
#include <gtest/gtest.h>

TEST(TreeReport, IsoTimeIsQtsIsoDateInEveryYear)
{
    EXPECT_EQ(TreeReport::isoTime(0), QString());
    const auto qt = [](quint64 ms) { return QDateTime::fromMSecsSinceEpoch(qint64(ms), Qt::UTC).toString(Qt::ISODate); };
    // 2000-02-29, 2000-03-01, 2100-03-01, the last second of 9999 and the first of 10000.
    for (quint64 s : {951782399ull, 951782400ull, 951868800ull, 4107542399ull, 4107542400ull, 253402300799ull, 253402300800ull})
        for (quint64 ms : {s * 1000, s * 1000 + 999})
            EXPECT_EQ(TreeReport::isoTime(ms), qt(ms)) << ms;
    // Uneven steps of a little over 36 days, from 1970 to past year 10000.
    for (quint64 ms = 1; ms < 254000000000000ull; ms += 3114123001ull)
        ASSERT_EQ(TreeReport::isoTime(ms), qt(ms)) << ms;
}
