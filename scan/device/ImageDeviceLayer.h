#pragma once
#include "scan/device/DiskListLayer.h"

#include <QByteArray>
#include <QString>
#include <memory>

class ByteSource;

// Disk and volume image files as disks: raw images of a whole disk (MBR or GPT)
// or of a bare volume. The images in a folder are found at start; more can be
// added while the program runs.
class ImageDeviceLayer : public DiskListLayer {
public:
    explicit ImageDeviceLayer(QString folder = QString()) : m_folder(std::move(folder)) {}

    // Adds an image file; returns its disk number, or -1 with *error set.
    int addImageFile(const QString& path, int* error);
    // Adds an image held in memory (tests, fuzzers).
    int addImageData(const QString& name, const QByteArray& data);
    // Adds a disk read through a source of the caller's (tests that watch or pace the reads).
    int addImageSource(const QString& name, std::shared_ptr<ByteSource> source);

    // Describes one image as a disk, or fails with *error set.
    static bool describeFile(const QString& path, DiskInfo* out, int* error);
    static DiskInfo describeSource(const QString& name, std::shared_ptr<ByteSource> source);
    // The regular files of a folder, in name order.
    static QList<DiskInfo> discoverFolder(const QString& folder);
    // The "images" folder beside the executable.
    static QString defaultFolder();

protected:
    QList<DiskInfo> discover() override { return discoverFolder(m_folder); }

private:
    QString m_folder;
};
