// The decoders of on-disk structures, fed with hand-made and corrupted bytes.
#include "imaging/NtfsImageBuilder.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
#include "ntfs/RunList.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace {
using Extent = NtfsImageBuilder::Extent;

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray b;
    for (int v : values)
        b.append(char(v));
    return b;
}

const uint8_t* u8(const QByteArray& b) { return reinterpret_cast<const uint8_t*>(b.constData()); }

QList<DataRun> decode(const QByteArray& list, quint64 clusterCount = 1u << 20)
{
    QList<DataRun> runs;
    RunList::decode(u8(list), size_t(list.size()), clusterCount, &runs);
    return runs;
}
} // namespace

TEST(RunList, DecodesEntriesUpToWhatIsSafe)
{
    struct Case {
        const char* what;
        QByteArray list;
        QList<DataRun> expected; // vcnEnd, length, lcn, sparse
    };
    const Case cases[] = {
        {"two runs, the second stepping backwards",
         bytes({0x21, 0x10, 0x00, 0x01, 0x11, 0x08, 0xF0, 0x00}),
         {{0x10, 0x10, 0x100, false}, {0x18, 0x08, 0xF0, false}}},
        {"a sparse run keeps the LCN before it",
         bytes({0x11, 0x04, 0x20, 0x01, 0x10, 0x11, 0x02, 0x10, 0x00}),
         {{4, 4, 0x20, false}, {0x14, 0x10, 0x20, true}, {0x16, 2, 0x30, false}}},
        {"an entry that touches the end has no terminator and is dropped",
         bytes({0x11, 0x04, 0x20, 0x11, 0x04, 0x20}),
         {{4, 4, 0x20, false}}},
        {"a run leaving the volume ends the list",
         bytes({0x11, 0x04, 0x20, 0x31, 0x04, 0x00, 0x00, 0x10, 0x11, 0x01, 0x01, 0x00}),
         {{4, 4, 0x20, false}}},
        {"a negative LCN ends the list", bytes({0x11, 0x04, 0xF0, 0x00}), {}},
        {"a zero length field ends the list", bytes({0x10, 0x20, 0x11, 0x01, 0x01, 0x00}), {}},
        {"a field wider than 8 bytes ends the list", bytes({0x19, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0}), {}},
        {"empty", QByteArray(), {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QList<DataRun> got = decode(c.list);
        ASSERT_EQ(got.size(), c.expected.size());
        for (int i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got[i].vcnEnd, c.expected[i].vcnEnd);
            EXPECT_EQ(got[i].length, c.expected[i].length);
            EXPECT_EQ(got[i].lcn, c.expected[i].lcn);
            EXPECT_EQ(got[i].sparse, c.expected[i].sparse);
        }
    }
}

TEST(RunList, ExtentsCrossRunsAndRunOnBehindTheLast)
{
    DataRun a{10, 10, 100, false}, hole{15, 5, 100, true}, b{20, 5, 50, false};
    const QList<DataRun> runs{a, hole, b};
    struct Case {
        quint64 vcn, count;
        QList<RunList::Extent> expected;
    };
    const Case cases[] = {
        {2, 3, {{102, 3, false}}},
        {8, 4, {{108, 2, false}, {100, 2, true}}},
        {18, 4, {{53, 2, false}, {55, 2, false}}},
        {30, 2, {{65, 2, false}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.vcn);
        const auto got = RunList::extents(runs, c.vcn, c.count);
        ASSERT_EQ(got.size(), c.expected.size());
        for (int i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got[i].lcn, c.expected[i].lcn);
            EXPECT_EQ(got[i].count, c.expected[i].count);
            EXPECT_EQ(got[i].sparse, c.expected[i].sparse);
        }
    }
    EXPECT_TRUE(RunList::extents({}, 0, 4).isEmpty());
}

TEST(MftRecord, HeaderTestsAndFixups)
{
    NtfsImageBuilder b;
    NtfsImageBuilder::Entry e;
    e.names = {{QStringLiteral("a.txt")}};
    const QByteArray good = b.record(e, 77);
    struct Case {
        const char* what;
        int offset;
        quint32 value;
        int width;
        bool accepted;
    };
    const Case cases[] = {
        {"as written", 0, 0x454C4946, 4, true},
        {"signature BAAD", 0, 0x44414142, 4, false},
        {"first attribute at the record's end", 0x14, 1024, 2, false},
        {"bytes in use above the record", 0x18, 1025, 4, false},
        {"bytes allocated 4096", 0x1C, 4096, 4, false},
        {"in-use flag clear", 0x16, 0, 2, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QByteArray rec = good;
        for (int i = 0; i < c.width; ++i)
            rec[c.offset + i] = char((c.value >> (8 * i)) & 0xFF);
        MftRecordInfo info;
        EXPECT_EQ(MftRecord::parseHeader(reinterpret_cast<uint8_t*>(rec.data()), 1024, &info), c.accepted);
        if (c.accepted) {
            EXPECT_EQ(info.recordNumber, 77u);
            EXPECT_EQ(quint8(rec[0x1FE]), 0) << "sector end put back";
            EXPECT_EQ(quint8(rec[0x3FE]), 0);
        }
    }
}

TEST(MftRecord, FindAttributeSkipsDosNamesAndStopsOnBadLengths)
{
    NtfsImageBuilder b;
    NtfsImageBuilder::Entry e;
    e.names = {{QStringLiteral("LONGNA~1.TXT"), 5, NtfsImageBuilder::kDos}, {QStringLiteral("long name.txt")}};
    e.content = QByteArray("data");
    e.resident = true;
    QByteArray rec = b.record(e, 30);
    MftRecordInfo info;
    auto* p = reinterpret_cast<uint8_t*>(rec.data());
    ASSERT_TRUE(MftRecord::parseHeader(p, 1024, &info));
    quint32 remaining = MftRecord::attributeBytes(info, 1024);
    const int name = MftRecord::findAttribute(p, 1024, info.attrOffset, MftRecord::kFileNameType, &remaining);
    ASSERT_GT(name, info.attrOffset) << "the DOS name first in the record is passed over";
    FileNameAttribute fn;
    ASSERT_TRUE(FileNameAttribute::decode(p, 1024, name, remaining, &fn));
    EXPECT_EQ(fn.name, QStringLiteral("long name.txt"));

    // A zero length on the first attribute ends the walk instead of spinning on it.
    qToLittleEndian<quint16>(0, p + info.attrOffset + 4);
    remaining = MftRecord::attributeBytes(info, 1024);
    EXPECT_EQ(MftRecord::findAttribute(p, 1024, info.attrOffset, MftRecord::kDataType, &remaining), -1);
    // A length beyond the bytes in use does too.
    qToLittleEndian<quint16>(2000, p + info.attrOffset + 4);
    remaining = MftRecord::attributeBytes(info, 1024);
    EXPECT_EQ(MftRecord::findAttribute(p, 1024, info.attrOffset, MftRecord::kDataType, &remaining), -1);
}

TEST(FileNameAttribute, NameMustFitItsAttribute)
{
    NtfsImageBuilder b;
    NtfsImageBuilder::Entry e;
    e.names = {{QStringLiteral("照片 😀.jpg"), 42}};
    QByteArray rec = b.record(e, 30);
    MftRecordInfo info;
    auto* p = reinterpret_cast<uint8_t*>(rec.data());
    ASSERT_TRUE(MftRecord::parseHeader(p, 1024, &info));
    quint32 remaining = MftRecord::attributeBytes(info, 1024);
    const int at = MftRecord::findAttribute(p, 1024, info.attrOffset, MftRecord::kFileNameType, &remaining);
    FileNameAttribute fn;
    ASSERT_TRUE(FileNameAttribute::decode(p, 1024, at, remaining, &fn));
    EXPECT_EQ(fn.name, QStringLiteral("照片 😀.jpg"));
    p[at + 0x58] = 200; // a name length that runs out of the attribute
    EXPECT_FALSE(FileNameAttribute::decode(p, 1024, at, remaining, &fn));
    EXPECT_EQ(FileNameAttribute::toMsecs(1000), 0u) << "before 1970 is unknown";
}

TEST(NtfsGeometry, AcceptsRealSizesAndRefusesImpossibleOnes)
{
    struct Case {
        const char* what;
        quint16 sectorBytes;
        quint8 sectorsPerCluster;
        qint8 recordField;
        bool accepted;
        quint32 cluster, record;
    };
    const Case cases[] = {
        {"the common volume", 512, 8, -10, true, 4096, 1024},
        {"4K sectors, 4096-byte records", 4096, 1, -12, true, 4096, 4096},
        {"512-byte clusters, record as 2 clusters", 512, 1, 2, true, 512, 1024},
        {"2 MiB clusters coded as 256-12", 512, 0xF4, -10, true, 2u << 20, 1024},
        {"4 MiB clusters", 512, 0xF3, -10, false, 0, 0},
        {"records of 2048 bytes", 512, 8, -11, false, 0, 0},
        {"sector size 600", 600, 8, -10, false, 0, 0},
        {"sector size 8192", 8192, 1, -10, false, 0, 0},
        {"no sectors per cluster", 512, 0, -10, false, 0, 0},
        {"sectors per cluster 3", 512, 3, -10, false, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QByteArray s(512, '\0');
        std::memcpy(s.data() + 3, "NTFS    ", 8);
        qToLittleEndian<quint16>(c.sectorBytes, s.data() + 0x0B);
        s[0x0D] = char(c.sectorsPerCluster);
        s[0x40] = char(c.recordField);
        qToLittleEndian<quint64>(77, s.data() + 0x30);
        NtfsGeometry g;
        bool signature = false;
        ASSERT_EQ(NtfsGeometry::parse(u8(s), 512, &g, &signature), c.accepted);
        EXPECT_TRUE(signature);
        if (c.accepted) {
            EXPECT_EQ(g.clusterBytes, c.cluster);
            EXPECT_EQ(1u << g.clusterShift, c.cluster);
            EXPECT_EQ(g.recordBytes, c.record);
            EXPECT_EQ(g.mftLcn, 77u);
        }
    }
    QByteArray fat(512, '\0');
    std::memcpy(fat.data() + 3, "MSDOS5.0", 8);
    NtfsGeometry g;
    bool signature = true;
    EXPECT_FALSE(NtfsGeometry::parse(u8(fat), 512, &g, &signature));
    EXPECT_FALSE(signature);
}
