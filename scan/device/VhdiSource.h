#pragma once
#include "scan/device/LibyalSource.h"

#include <QString>
#include <memory>

// A Microsoft virtual hard disk (VHD or VHDX; fixed or dynamic), through libvhdi.
class VhdiSource : public LibyalSource {
public:
    // Opens the image at path; null with *error set.
    static std::shared_ptr<ByteSource> open(const QString& path, int* error);

private:
    VhdiSource();
};
