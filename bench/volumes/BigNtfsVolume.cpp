// Writes an NTFS volume with many files to an image file, sparse, for the
// benchmark: ntfs-3g takes hours to make a million files.
//
//   ostrel-bench-ntfs IMAGE [FILES [GIB]]
//
// FILES files (default 1,000,000) in folders of kFilesPerFolder under the
// root; every fourth file is deleted, every kNonResidentEvery-th lies in
// clusters outside the MFT, the others in their records. The names of the
// deleted files go to IMAGE.deleted, one path a line. With GIB the volume is
// that large (at least what the files need), the rest of it free clusters.
#include "imaging/NtfsImageBuilder.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>
#include <cstdio>

namespace {
constexpr quint32 kFilesPerFolder = 1000;
constexpr quint32 kDeletedEvery = 4;
constexpr quint32 kNonResidentEvery = 32;
constexpr quint32 kDefaultFiles = 1000000;
constexpr quint32 kMaxFiles = 20000000; // a 20 GiB MFT is past any benchmark
constexpr quint32 kSystemRecords = 16;
constexpr quint32 kResidentBytes = 120;  // fits the record beside the name
constexpr quint32 kNonResidentBytes = 6000; // two clusters, the second one partly
constexpr quint64 kSpareClusters = 4096;
constexpr quint64 kMaxGib = 16 * 1024; // 16 TiB: the largest image file ext4 takes

QByteArray contentOf(quint32 file, quint32 bytes)
{
    const QByteArray line = QByteArray("benchmark file ") + QByteArray::number(file) + '\n';
    return line.repeated(int(bytes / line.size() + 1)).left(int(bytes));
}

quint64 ceilDiv(quint64 a, quint64 b) { return (a + b - 1) / b; }
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: ostrel-bench-ntfs IMAGE [FILES [GIB]]\n");
        return 2;
    }
    const quint32 files = args.size() > 2 ? qBound(1u, args.at(2).toUInt(), kMaxFiles) : kDefaultFiles;
    const quint32 folders = quint32(ceilDiv(files, kFilesPerFolder));
    const quint32 records = kSystemRecords + folders + files;

    NtfsImageGeometry geo;
    const quint64 mftClusters = ceilDiv(quint64(records) * geo.recordBytes, geo.clusterBytes);
    const quint64 dataClusters = ceilDiv(files, kNonResidentEvery) * ceilDiv(kNonResidentBytes, geo.clusterBytes);
    geo.totalClusters = mftClusters + dataClusters + kSpareClusters;
    const quint64 gib = args.size() > 3 ? qMin(args.at(3).toULongLong(), kMaxGib) : 0;
    geo.totalClusters = qMax(geo.totalClusters, (gib << 30) / geo.clusterBytes);

    QFile image(args.at(1));
    QFile deleted(args.at(1) + QStringLiteral(".deleted"));
    if (!image.open(QIODevice::WriteOnly | QIODevice::Truncate) || !deleted.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        std::fprintf(stderr, "can't write %s\n", qPrintable(args.at(1)));
        return 1;
    }
    image.resize(qint64(geo.totalClusters * geo.clusterBytes));
    QTextStream deletedNames(&deleted);

    NtfsImageBuilder b(geo, records);
    b.setToolReadable(true);
    b.setSink([&image](quint64 offset, const QByteArray& bytes) {
        image.seek(qint64(offset));
        image.write(bytes);
    });
    for (quint32 f = 0; f < folders; ++f) {
        const QString folderName = QStringLiteral("d%1").arg(f, 4, 10, QLatin1Char('0'));
        const quint32 folder = b.addDirectory(folderName, NtfsImageBuilder::kRoot, false);
        for (quint32 i = f * kFilesPerFolder; i < qMin(files, (f + 1) * kFilesPerFolder); ++i) {
            NtfsImageBuilder::Entry e;
            const QString name = QStringLiteral("f%1.txt").arg(i, 7, 10, QLatin1Char('0'));
            e.names = {{name, folder}};
            e.deleted = i % kDeletedEvery == kDeletedEvery - 1;
            e.resident = i % kNonResidentEvery != 0;
            e.content = contentOf(i, e.resident ? kResidentBytes : kNonResidentBytes);
            b.add(e);
            if (e.deleted)
                deletedNames << folderName << '/' << name << '\n';
        }
    }
    b.build();
    return image.error() == QFileDevice::NoError ? 0 : 1;
}
