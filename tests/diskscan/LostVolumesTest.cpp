// Disks made by the real tools (tests/fixtures/disks/make-lost-volumes.sh):
// four volumes of four kinds on a disk without a partition table, found by
// their boot sectors, and again by their backups once every first sector is
// zeroed; their deleted files restored byte for byte.
#include "diskscan/DiskScan.h"
#include "results/ResultTree.h"
#include "ntfs/NtfsVolumeScan.h"
#include "scan/device/MemorySource.h"
#include "fixtures/CliRunner.h"
#include "fixtures/SignalWaiter.h"
#include "fixtures/TestPaths.h"
#include "results/FolderNode.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
struct Manifest {
    struct Volume {
        QString kind;
        quint64 startSector;
    };
    struct File {
        QString kind;
        QString path;
        QByteArray sha256;
    };
    QList<Volume> volumes;
    QList<File> files;
};

Manifest readManifest()
{
    Manifest m;
    QFile f(TestPaths::sourceDir() + "/tests/fixtures/disks/lost-volumes.manifest");
    if (!f.open(QIODevice::ReadOnly))
        return m;
    for (const QByteArray& line : f.readAll().split('\n')) {
        const QStringList cols = QString::fromUtf8(line).split('\t');
        if (cols.size() == 4 && cols[0] == "VOLUME")
            m.volumes.append({cols[1], cols[2].toULongLong()});
        else if (cols.size() == 5 && cols[0] == "FILE")
            m.files.append({cols[1], cols[2], cols[4].toLatin1()});
    }
    return m;
}

// The SHA-256 of every file below dir.
QSet<QByteArray> hashesBelow(const QString& dir)
{
    QSet<QByteArray> out;
    QDirIterator it(dir, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (f.open(QIODevice::ReadOnly))
            out.insert(QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256).toHex());
    }
    return out;
}
} // namespace

TEST(LostVolumes, AllFourFoundByTheirBootSectorsOrTheirBackupsAndRestored)
{
    const Manifest manifest = readManifest();
    ASSERT_EQ(manifest.volumes.size(), 4);
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(TestPaths::sourceDir() + "/tests/fixtures/disks/lost-volumes.img.xz", dir.path(), "lost.img");
    ASSERT_FALSE(image.isEmpty());
    QFile file(image);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray intact = file.readAll();
    QByteArray damaged = intact;
    for (const Manifest::Volume& v : manifest.volumes)
        damaged.replace(int(v.startSector * 512), 512, QByteArray(512, '\0'));

    // Opened directly, as a partition, the NTFS volume takes its backup's geometry.
    const Manifest::Volume ntfs = manifest.volumes.at(2);
    ASSERT_EQ(ntfs.kind, "NTFS");
    const DeviceHandle partition = DeviceHandle(std::make_shared<MemorySource>(damaged)).slice(ntfs.startSector * 512, 64 << 20);
    EXPECT_EQ(NtfsVolumeScan("N", partition, 0).volume.geometry.totalSectors, (64u << 20) / 512 - 1);

    for (bool backups : {false, true}) {
        SCOPED_TRACE(backups ? "first sectors zeroed" : "intact");
        ImageDeviceLayer layer;
        DeviceLayer::setInstance(&layer);
        ResultTree tree("disk.img", true);
        auto scan = std::make_unique<DiskScan>(layer.addImageData("disk.img", backups ? damaged : intact));
        scan->rootFolder = tree.root();
        scan->start();
        waitForThread(scan.get());

        QHash<QString, QString> folderOfKind;
        for (const Manifest::Volume& v : manifest.volumes) {
            SCOPED_TRACE(v.kind.toStdString());
            const auto found = std::find_if(scan->foundVolumes.begin(), scan->foundVolumes.end(), [&](const DiskScan::FoundVolume& f) {
                return VolumeCandidate::kindName(f.volume.kind) == v.kind && f.volume.volumeStart == v.startSector * 512;
            });
            // FAT16 keeps no copy of its boot sector: without it nothing names the volume.
            if (backups && v.kind == "FAT16") {
                EXPECT_EQ(found, scan->foundVolumes.end());
                continue;
            }
            ASSERT_NE(found, scan->foundVolumes.end());
            EXPECT_EQ(found->volume.fromBackup, backups);
            if (found->partIndex >= 0)
                folderOfKind[v.kind] = scan->rootFolder->children.at(found->partIndex)->name;
        }
        EXPECT_EQ(scan->foundVolumes.size(), backups ? 3 : 4);

        const QString target = dir.filePath(backups ? "damaged" : "intact");
        scan->setRestoreDir(target);
        scan->start();
        waitForThread(scan.get());
        for (const QString kind : {"NTFS", "FAT32", "FAT16", "exFAT"}) {
            if (backups && kind == "FAT16")
                continue;
            ASSERT_TRUE(folderOfKind.contains(kind)) << kind.toStdString();
            const QSet<QByteArray> restored = hashesBelow(target + "/disk.img/" + folderOfKind[kind]);
            for (const Manifest::File& f : manifest.files) {
                if (f.kind == kind) {
                    EXPECT_TRUE(restored.contains(f.sha256)) << f.path.toStdString();
                }
            }
        }
        scan.reset();
        DeviceLayer::setInstance(nullptr);
    }
}
