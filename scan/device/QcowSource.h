#pragma once
#include "scan/device/LibyalSource.h"

#include <QString>
#include <memory>

// A QEMU copy-on-write image (QCOW or QCOW2), through libqcow.
class QcowSource : public LibyalSource {
public:
    // Opens the image at path; null with *error set.
    static std::shared_ptr<ByteSource> open(const QString& path, int* error);

private:
    QcowSource();
};
