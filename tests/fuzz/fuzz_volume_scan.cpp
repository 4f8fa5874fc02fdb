// A whole scan of a small image in each mode: the first byte picks it (NTFS or
// FAT32, quick or deep, or the search of a whole disk), the rest is the image.
// The scan runs on its thread to scanDone as in the program, then a preview of
// every found file is taken, as the window's preview would.
#include "FuzzSupport.h"
#include "diskscan/DiskScan.h"
#include "results/ResultTree.h"
#include "fat32/Fat32VolumeScan.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FolderNode.h"
#include "scan/device/DeviceLayer.h"
#include "scan/device/ImageDeviceLayer.h"

#include <vector>

namespace {
enum Mode { NtfsQuick, NtfsDeep, Fat32Quick, Fat32Deep, DiskSearch, ModeCount };
// A preview buffer may exceed the volume by a cluster of slack; more is a
// size taken from the disk unclamped.
constexpr quint64 kPreviewSlack = quint64(1) << 21;
// Previews up to this size are taken; larger ones are only sized.
constexpr quint64 kPreviewTaken = quint64(1) << 20;

void previewAll(PartScan* scanner, const FolderNode* folder, quint64 imageBytes)
{
    for (FoundFile* f : folder->files) {
        const quint64 need = scanner->fileContent(nullptr, f);
        if (need > imageBytes + kPreviewSlack)
            __builtin_trap();
        if (need <= kPreviewTaken) {
            std::vector<char> buffer(size_t(need) + 1);
            scanner->fileContent(buffer.data(), f);
        }
    }
    for (const FolderNode* c : folder->children)
        previewAll(scanner, c, imageBytes);
}

void scanVolume(PartScan* scanner, bool deep, quint64 imageBytes)
{
    FolderNode top;
    scanner->rootFolder = top.addChild(QStringLiteral("fuzz"), 0, true);
    scanner->doExtra = deep;
    scanner->fileFilter = QStringLiteral("*");
    scanner->start();
    scanner->wait();
    previewAll(scanner, scanner->rootFolder, imageBytes);
    delete scanner; // frees the volume folder with its tree
    top.children.clear();
}

void searchDisk(const QByteArray& image)
{
    ImageDeviceLayer layer;
    DeviceLayer::setInstance(&layer);
    const int disk = layer.addImageData(QStringLiteral("fuzz.img"), image);
    {
        ResultTree tree(QStringLiteral("fuzz.img"), true);
        DiskScan scan(disk);
        scan.rootFolder = tree.root(); // the search frees it with the partition folders
        scan.start();
        scan.wait();
    }
    DeviceLayer::setInstance(nullptr);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    if (size < 1)
        return 0;
    const int mode = data[0] % ModeCount;
    const QByteArray image = fuzz::bytes(data + 1, size - 1);
    const DeviceHandle handle = fuzz::device(image);
    switch (mode) {
    case NtfsQuick:
    case NtfsDeep:
        if (NtfsVolumeScan::canOpen(handle, 0))
            scanVolume(new NtfsVolumeScan(QStringLiteral("fuzz"), handle, 0), mode == NtfsDeep, quint64(image.size()));
        break;
    case Fat32Quick:
    case Fat32Deep:
        if (Fat32VolumeScan::canOpen(handle, 0))
            scanVolume(new Fat32VolumeScan(QStringLiteral("fuzz"), handle, 0), mode == Fat32Deep, quint64(image.size()));
        break;
    default:
        searchDisk(image);
        break;
    }
    return 0;
}
