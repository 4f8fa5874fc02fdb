#pragma once
#include <QString>

class DeviceLayer;
class ImageDeviceLayer;
class QTreeWidget;

// The rows of the device page: a bold row per disk, followed by a row per used
// slot of its partition table. All rows are top-level; column 0 keeps the
// partition key "%1|%2" (partition number less 1, letter or "@") under
// Qt::UserRole on a partition row and nothing on a disk row, column 1 the disk
// number.
class DeviceTreeRows {
public:
    static void setupTree(QTreeWidget* tree);
    // Every disk of the layer, by ascending number.
    static void fill(QTreeWidget* tree, DeviceLayer& layer);
    static void addDisk(QTreeWidget* tree, DeviceLayer& layer, int disk);
    // Adds an image file to the layer and its rows to the tree. Returns the new
    // disk number, or -1 with *error set (an errno value).
    static int addImage(QTreeWidget* tree, ImageDeviceLayer& layer, const QString& path, int* error);

    // Model, or the friendly name less its last two words.
    static QString diskName(DeviceLayer& layer, int disk);
    // "%1 GB" from whole MiB, or "%1 MB" from whole KiB below one GiB.
    static QString capacityText(quint64 bytes);

private:
    static void addPartitionRows(QTreeWidget* tree, DeviceLayer& layer, int disk);
};
