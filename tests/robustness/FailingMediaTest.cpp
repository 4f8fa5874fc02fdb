// Failing media: unreadable sectors, a device that vanishes, a source that
// shrinks. Scans end with their results, bad stretches are reported, and a
// restore marks exactly the files that hold them.
#include "fixtures/CliRunner.h"
#include "fixtures/ScanRun.h"
#include "imaging/SmallVolumes.h"
#include "scan/RestoreReport.h"
#include "scan/device/DeviceHandle.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

namespace {
// Reads fail where they touch a bad range, every read fails after vanishAfter
// reads, and after shrinkAfter reads the source is half its size.
class FaultSource : public ByteSource {
public:
    explicit FaultSource(QByteArray data) : m_data(std::move(data)) {}
    QList<BadRange> bad;
    int vanishAfter = -1;
    int shrinkAfter = -1;

    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override
    {
        const int n = m_reads++;
        errno = EIO;
        if (vanishAfter >= 0 && n >= vanishAfter)
            return -1;
        for (const BadRange& r : bad)
            if (position < r.end() && r.offset < position + bytes)
                return -1;
        const quint64 size = currentSize();
        if (position >= size)
            return 0;
        const quint64 got = qMin(bytes, size - position);
        std::memcpy(buffer, m_data.constData() + position, got);
        return qint64(got);
    }
    quint64 size() const override { return quint64(m_data.size()); }
    quint64 currentSize() const override { return shrinkAfter >= 0 && m_reads > shrinkAfter ? size() / 2 : size(); }

private:
    QByteArray m_data;
    mutable std::atomic<int> m_reads{0};
};

QByteArray pattern(char c, int bytes)
{
    QByteArray b(bytes, c);
    for (int i = 0; i < bytes; i += 97)
        b[i] = char(i / 97);
    return b;
}
} // namespace

TEST(FailingMedia, BadSectorsReadAsZerosAndAreRecordedOncePerRange)
{
    QByteArray data(64 * 1024, 'd');
    struct Case {
        QList<BadRange> bad;
        quint64 position, bytes;
        QList<BadRange> expected; // merged, in view positions
    };
    const Case cases[] = {
        {{{4096, 512}}, 0, 16384, {{4096, 512}}},
        {{{4096, 512}, {4608, 1024}, {10240, 100}}, 0, 65536, {{4096, 1536}, {10240, 512}}},
        {{{0, 512}}, 256, 1024, {{256, 256}}}, // a read that starts inside a bad sector
        {{{60000, 10}}, 0, 4096, {}},
    };
    for (const Case& c : cases) {
        auto source = std::make_shared<FaultSource>(data);
        source->bad = c.bad;
        const DeviceHandle h(source);
        QByteArray out(int(c.bytes), 'x');
        QList<BadRange> bad;
        ASSERT_EQ(h.read(out.data(), c.bytes, c.position, &bad), qint64(c.bytes));
        EXPECT_EQ(bad, c.expected);
        for (quint64 i = 0; i < c.bytes; ++i) {
            bool inBad = false;
            for (const BadRange& r : c.expected)
                inBad = inBad || (c.position + i >= r.offset && c.position + i < r.end());
            ASSERT_EQ(out[int(i)], inBad ? '\0' : 'd') << i;
        }
        EXPECT_FALSE(h.health()->gone());
    }
}

TEST(FailingMedia, VanishedOrShrunkDeviceFailsInsteadOfReadingZeros)
{
    for (const bool vanish : {true, false}) {
        auto source = std::make_shared<FaultSource>(QByteArray(1 << 20, 'd'));
        (vanish ? source->vanishAfter : source->shrinkAfter) = 1;
        const DeviceHandle h(source);
        QByteArray out(1 << 20, 'x');
        EXPECT_EQ(h.read(out.data(), 4096, 0), 4096);
        EXPECT_EQ(h.read(out.data(), quint64(out.size()), 0), -1);
        EXPECT_TRUE(h.health()->gone());
        EXPECT_EQ(h.slice(0, 4096).read(out.data(), 512, 0), -1); // slices share the verdict
    }
}

TEST(FailingMedia, ScanEndsAndRestoreMarksOnlyTheFileWithTheBadSector)
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    const QByteArray hit = pattern('h', 8192), spared = pattern('s', 8192);
    b.addFile(QStringLiteral("hit.bin"), hit);
    b.addFile(QStringLiteral("spared.bin"), spared);
    const QByteArray image = b.build();
    const quint64 at = quint64(image.indexOf(hit.mid(4096, 512)));
    ASSERT_GT(at, 0u);
    ScanRun s(image, Fs::Ntfs, false, [at](quint64 position, quint64 bytes) { return !(position < at + 512 && at < position + bytes); });
    ASSERT_TRUE(s.run());
    QTemporaryDir dir;
    QSignalSpy done(s.scan.get(), &PartScan::undeleteDone);
    ASSERT_TRUE(s.restore(dir.path()));
    ASSERT_EQ(done.count(), 1);
    EXPECT_EQ(done.at(0).at(1).toULongLong(), 1u); // damaged
    EXPECT_EQ(done.at(0).at(2).toULongLong(), 0u); // failed
    EXPECT_EQ(s.scan->badRanges(), QList<BadRange>({{at, 512}}));
    for (const RestoredFile& f : s.scan->restoreReport.files()) {
        SCOPED_TRACE(f.path.toStdString());
        const bool isHit = f.path.endsWith(QLatin1String("hit.bin"));
        EXPECT_EQ(f.outcome, isHit ? RestoredFile::Damaged : RestoredFile::Whole);
        if (isHit) {
            EXPECT_EQ(f.badRanges, QList<BadRange>({{4096, 512}}));
        }
    }
    QByteArray expectHit = hit;
    expectHit.replace(4096, 512, QByteArray(512, '\0'));
    for (const auto& [name, content] : {std::pair{QStringLiteral("spared.bin"), spared}, std::pair{QStringLiteral("hit.bin"), expectHit}}) {
        const QStringList found = CliRunner::filesBelow(dir.path()).filter(name);
        ASSERT_EQ(found.size(), 1);
        EXPECT_EQ(CliRunner::readFile(dir.filePath(found.first())), content);
    }
}

TEST(FailingMedia, ADiskThatGoesEndsTheScanWithoutSpinning)
{
    // NTFS: every read after the fourth fails, until so many sectors in a row
    // failed that the device counts as gone. The FAT volume is too small for
    // that; it is unplugged instead (ENODEV) after its boot sector was read.
    for (const Fs fs : {Fs::Ntfs, Fs::Fat32}) {
        auto reads = std::make_shared<int>(0);
        const int good = fs == Fs::Ntfs ? 4 : 2;
        ScanRun s(fs == Fs::Ntfs ? SmallVolumes::ntfs() : SmallVolumes::fat32(), fs, false,
                  [reads, good](quint64, quint64) { return ++*reads <= good; }, fs == Fs::Ntfs ? EIO : ENODEV);
        EXPECT_TRUE(s.run());
        EXPECT_TRUE(s.scan->deviceFailed());
    }
}
