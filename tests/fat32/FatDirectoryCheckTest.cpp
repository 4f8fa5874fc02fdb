#include "fat32/FatDirectoryCheck.h"
#include "imaging/Fat32ImageBuilder.h"

#include <gtest/gtest.h>

namespace {
constexpr quint64 kClusters = 1000;
constexpr quint8 kFile = 0x20;
constexpr quint8 kFolder = 0x10;

QByteArray entry(const char* name11, quint8 attributes = kFile, quint32 cluster = 5)
{
    return Fat32ImageBuilder::rawEntry(QByteArray(name11, 11), attributes, cluster, 100);
}

QByteArray with(QByteArray e, int at, quint16 value)
{
    e[at] = char(value & 0xFF);
    e[at + 1] = char(value >> 8);
    return e;
}

const uchar* bytes(const QByteArray& a) { return reinterpret_cast<const uchar*>(a.constData()); }
QByteArray cluster(const QByteArray& entries) { return entries + QByteArray(512 - entries.size(), '\0'); }
} // namespace

TEST(FatDirectoryCheck, TellsEntriesFromOtherBytes)
{
    struct Case {
        const char* why;
        QByteArray entry;
        bool plausible;
    };
    const Case cases[] = {
        {"a file", entry("REPORT  TXT"), true},
        {"a deleted file", entry("\xE5" "EPORT  TXT"), true},
        {"the dot entries", entry(".          ", kFolder) + entry("..         ", kFolder, 0), true},
        {"a stamp of 2021-06-15 10:30", with(with(entry("A       TXT"), 0x18, 0x52CF), 0x16, 0x53C0), true},
        {"lower case in a short name", entry("report  txt"), false},
        {"a character short names can't hold", entry("REP*RT  TXT"), false},
        {"a name that starts with a blank", entry(" EPORT  TXT"), false},
        {"a cluster beyond the FAT", entry("REPORT  TXT", kFile, kClusters), false},
        {"reserved attribute bits", entry("REPORT  TXT", 0x40 | kFile), false},
        {"month 13", with(entry("A       TXT"), 0x18, (13 << 5) | 1), false},
        {"hour 25", with(entry("A       TXT"), 0x16, 25 << 11), false},
        {"a long-name slot", Fat32ImageBuilder::slot("report.txt", 0x41, false), true},
        {"a deleted slot", Fat32ImageBuilder::slot("report.txt", 0x41, true), true},
        {"a slot numbered 30", Fat32ImageBuilder::slot("report.txt", 0x40 | 30, false), false},
        {"a slot with a cluster", with(Fat32ImageBuilder::slot("report.txt", 1, false), 0x1A, 7), false},
        {"text", QByteArray("Dear Sir, thank you for your let"), false},
    };
    for (const Case& c : cases) {
        bool all = true;
        for (int at = 0; at + 32 <= c.entry.size(); at += 32)
            all = all && FatDirectoryCheck::plausibleEntry(bytes(c.entry) + at, kClusters);
        EXPECT_EQ(all, c.plausible) << c.why;
    }
}

TEST(FatDirectoryCheck, TellsFolderStartsFromLaterClusters)
{
    const QByteArray dots = entry(".          ", kFolder, 7) + entry("..         ", kFolder, 0);
    struct Case {
        const char* why;
        QByteArray data;
        quint32 at;
        bool start;
        bool continuation;
    };
    const Case cases[] = {
        {"dot entries naming the cluster", cluster(dots + entry("A       TXT")), 7, true, false},
        {"dot entries naming another cluster", cluster(dots + entry("A       TXT")), 8, false, false},
        {"entries without dots", cluster(entry("A       TXT") + entry("B       TXT")), 7, false, true},
        {"entries, then a bad one", cluster(entry("A       TXT") + entry("b       txt")), 7, false, false},
        {"zeros", cluster({}), 7, false, false},
        {"text", QByteArray(512, 'x'), 7, false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FatDirectoryCheck::isFolderStart(bytes(c.data), size_t(c.data.size()), c.at, kClusters), c.start) << c.why;
        EXPECT_EQ(FatDirectoryCheck::isFolderContinuation(bytes(c.data), size_t(c.data.size()), kClusters), c.continuation) << c.why;
    }
    EXPECT_EQ(FatDirectoryCheck::parentCluster(bytes(cluster(entry(".          ", kFolder, 7) + entry("..         ", kFolder, 42)))), 42u);
}
