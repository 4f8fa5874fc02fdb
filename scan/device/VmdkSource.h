#pragma once
#include "scan/device/LibyalSource.h"

#include <QString>
#include <memory>

// A VMware virtual disk (VMDK), through libvmdk: a descriptor file with its
// extent files beside it, or one sparse file that embeds its descriptor.
class VmdkSource : public LibyalSource {
public:
    // Opens the image at path; null with *error set.
    static std::shared_ptr<ByteSource> open(const QString& path, int* error);

private:
    VmdkSource();
};
