// Every sample file of a kind the pass carves, laid in a volume between zeros
// in front and random bytes and another file's header behind, ends where the
// file does.
#include "carving/CarveKinds.h"
#include "carving/CarveSource.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <cstring>
#include <gtest/gtest.h>

namespace {
constexpr quint32 kBlock = 4096;
const QString kSamples = QStringLiteral("/usr/share/forensics-samples/original-files");

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray randomBytes(int n, quint32 seed)
{
    QRandomGenerator rng(seed);
    QByteArray out(n, '\0');
    rng.fillRange(reinterpret_cast<quint32*>(out.data()), n / 4);
    return out;
}

// Zeros, the file from a block start, random bytes to two blocks past its end, then a PNG's header.
QByteArray volumeWith(const QByteArray& file, const QByteArray& nextHeader)
{
    QByteArray v(kBlock, '\0');
    v += file;
    const int toBlock = int((kBlock - v.size() % kBlock) % kBlock);
    v += randomBytes(toBlock + 2 * int(kBlock), quint32(file.size()));
    return v + nextHeader + QByteArray(int(kBlock), '\0');
}

CarveEnd carveAt(const QByteArray& volume, quint64 offset, const CarveKind** kind)
{
    const CarveKinds& kinds = CarveKinds::all();
    const auto* bytes = reinterpret_cast<const uchar*>(volume.constData());
    *kind = kinds.match(bytes + offset, kBlock);
    if (!*kind)
        return {};
    auto read = [&](void* buffer, quint64 n, quint64 at) -> qint64 {
        const quint64 got = at < quint64(volume.size()) ? qMin<quint64>(n, volume.size() - at) : 0;
        std::memcpy(buffer, bytes + at, got);
        return qint64(got);
    };
    CarveSource source(read, {offset, kBlock, bytes + offset, kBlock, &kinds}, qMin<quint64>((*kind)->maxBytes(), volume.size() - offset));
    return (*kind)->findEnd(source);
}
} // namespace

TEST(CarveKinds, SampleFilesEndWhereTheyEnd)
{
    if (!QDir(kSamples).exists())
        GTEST_SKIP() << "forensics-samples-files is not installed";
    const QByteArray next = readAll(kSamples + "/pic1/debian_logo.png").left(int(kBlock));
    // Formats that have no end of their own to find.
    const QStringList unended = {"xcf", "sh"};
    int carved = 0;
    for (QDirIterator it(kSamples, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        SCOPED_TRACE(path.toStdString());
        const QByteArray file = readAll(path);
        const CarveKind* kind = nullptr;
        const CarveEnd end = carveAt(volumeWith(file, next), kBlock, &kind);
        if (unended.contains(QFileInfo(path).suffix())) {
            EXPECT_EQ(end.length, 0u);
            continue;
        }
        ASSERT_NE(kind, nullptr) << "no kind knows this header";
        EXPECT_EQ(end.length, quint64(file.size()));
        EXPECT_FALSE(end.cut);
        const QString expected = QFileInfo(path).suffix().toLower().replace("mpeg", "mpg");
        EXPECT_EQ(end.extension.isEmpty() ? kind->extension() : end.extension, expected);
        ++carved;
    }
    EXPECT_EQ(carved, 33);
}

TEST(CarveKinds, BrokenStructuresAreCutAtTheLastGoodByte)
{
    if (!QDir(kSamples).exists())
        GTEST_SKIP() << "forensics-samples-files is not installed";
    struct Case {
        const char* file;
        int keep;          // bytes of the file before a block of another file
        quint64 expected;  // the length the finder gives
        bool cut;
    };
    // IMG_1054.JPG: entropy data runs on into the next file's header and is cut at its block.
    // debian.png, debian.wav: a chunk runs over a block where another file begins.
    const Case cases[] = {
        {"pic1/IMG_1054.JPG", 20 * int(kBlock), 20 * kBlock, true},
        {"pic1/debian.png", 5 * int(kBlock), 5 * kBlock, true},
        {"audio1/debian.wav", 30 * int(kBlock), 30 * kBlock, true},
    };
    const QByteArray other = readAll(kSamples + "/pic1/debian_logo.jpg").left(int(kBlock));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const QByteArray file = readAll(kSamples + "/" + c.file);
        const QByteArray volume = QByteArray(int(kBlock), '\0') + file.left(c.keep) + other + file.mid(c.keep + other.size());
        const CarveKind* kind = nullptr;
        const CarveEnd end = carveAt(volume, kBlock, &kind);
        EXPECT_EQ(end.length, c.expected);
        EXPECT_EQ(end.cut, c.cut);
    }
}

TEST(CarveKinds, ExifDateNamesThePhoto)
{
    const QByteArray file = readAll(kSamples + "/pic2/IMG_20191224_234846.jpg");
    if (file.isEmpty())
        GTEST_SKIP() << "forensics-samples-files is not installed";
    const CarveKind* kind = nullptr;
    const CarveEnd end = carveAt(QByteArray(int(kBlock), '\0') + file, kBlock, &kind);
    EXPECT_EQ(end.stem, QStringLiteral("IMG_20191224_234846"));
    EXPECT_EQ(end.modifiedMsecs, quint64(QDateTime(QDate(2019, 12, 24), QTime(23, 48, 46), Qt::UTC).toMSecsSinceEpoch()));
}
