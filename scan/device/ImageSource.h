#pragma once
#include "scan/device/ByteSource.h"

#include <QString>
#include <memory>

// Opens an image file as the disk it holds. A container (E01, VHD, VHDX, VMDK,
// QCOW2) is read through its library, chosen by the file's signature whatever
// its name; the first piece of a split raw image opens the whole set; any
// other file is the raw bytes of a disk or a volume.
class ImageSource {
public:
    enum class Format { Raw, Ewf, Vhdi, Vmdk, Qcow };

    // The image at path; null with *error set (an errno value).
    static std::shared_ptr<ByteSource> open(const QString& path, int* error);
    // The format the file's signature names.
    static Format formatOf(const ByteSource& file);
    // The name the image goes by: its file name, or a split set's common name.
    static QString displayName(const QString& path);
    // Whether the file is a later part of an image that opens from another
    // file beside it (a split piece, an E01 segment), so lists leave it out.
    static bool isContinuation(const QString& path);
};
