// Writes the fuzzers' seed inputs below the folder given (tests/fuzz/seeds),
// one folder per target, from the image builders.
#include "imaging/DiskImageBuilder.h"
#include "imaging/SmallVolumes.h"

#include <QDir>
#include <QFile>
#include <cstdio>

namespace {
QString root;

void seed(const char* target, const char* name, const QByteArray& bytes)
{
    const QString dir = root + QLatin1Char('/') + QLatin1String(target);
    QDir().mkpath(dir);
    QFile f(dir + QLatin1Char('/') + QLatin1String(name));
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        std::fprintf(stderr, "cannot write %s/%s\n", target, name);
}

QByteArray withMode(char mode, const QByteArray& image) { return QByteArray(1, mode) + image; }

void mftRecords()
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    NtfsImageBuilder::Entry file;
    file.names = {{QStringLiteral("fragmented.bin")}, {QStringLiteral("FRAGME~1.BIN"), NtfsImageBuilder::kRoot, NtfsImageBuilder::kDos}};
    file.content = QByteArray(2000, 'f');
    file.extents = {{40, 2}, {-1, 1}, {60, 1}};
    file.deleted = true;
    seed("fuzz_mft_record", "fragmented", QByteArray(1, '\0') + b.record(file, 20));
    NtfsImageBuilder::Entry small;
    small.names = {{QStringLiteral("small.txt")}};
    small.content = "resident";
    small.resident = true;
    seed("fuzz_mft_record", "resident", QByteArray(1, '\0') + b.record(small, 21));
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_fuzz_seeds DIR\n");
        return 2;
    }
    root = QString::fromLocal8Bit(argv[1]);
    const QByteArray ntfs = SmallVolumes::ntfs();
    const QByteArray fat = SmallVolumes::fat32();
    const QByteArray disk = SmallVolumes::disk();
    seed("fuzz_ntfs_open", "small", ntfs);
    mftRecords();
    seed("fuzz_fat32_boot_sector", "small", fat.left(Fat32ImageBuilder::kSector));
    Fat32ImageBuilder fb = SmallVolumes::fat32Builder();
    seed("fuzz_fat32_directory", "root", fat.mid(int(fb.clusterOffset(Fat32ImageBuilder::kRoot)), int(fb.clusterBytes())));
    seed("fuzz_fat32_directory", "photos", fat.mid(int(fb.clusterOffset(Fat32ImageBuilder::kRoot + 1)), int(fb.clusterBytes())));
    seed("fuzz_carving_block", "jpg", QByteArray("\xFF\xD8\xFF\xE0", 4) + QByteArray(60, '\0'));
    seed("fuzz_carving_block", "png", QByteArray("\x89PNG\r\n\x1A\n", 8) + QByteArray(56, '\0'));
    seed("fuzz_carving_block", "7z", QByteArray("7z\xBC\xAF\x27\x1C", 6) + QByteArray(58, '\x01'));
    seed("fuzz_carving_block", "bmp", QByteArray("BM\x00\x10\x00\x00\x00\x00\x00\x00\x36\x00\x00\x00\x28", 15) + QByteArray(49, '\0'));
    seed("fuzz_boot_sector_probe", "ntfs", DiskImageBuilder::ntfsBootSector(0x64000));
    seed("fuzz_boot_sector_probe", "fat32", DiskImageBuilder::fat32BootSector(0x20000));
    seed("fuzz_volume_scan", "ntfs-quick", withMode(0, ntfs));
    seed("fuzz_volume_scan", "ntfs-deep", withMode(1, ntfs));
    seed("fuzz_volume_scan", "fat32-quick", withMode(2, fat));
    seed("fuzz_volume_scan", "fat32-deep", withMode(3, fat));
    seed("fuzz_volume_scan", "disk", withMode(4, disk));
    return 0;
}
