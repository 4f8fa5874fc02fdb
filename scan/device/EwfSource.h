#pragma once
#include "scan/device/LibyalSource.h"

#include <QString>
#include <memory>

// An Expert Witness (E01) image, through libewf: the segment files beside the
// first one (.E02, .E03, ...) are found and read as one disk.
class EwfSource : public LibyalSource {
public:
    // Opens the image whose first segment is at path; null with *error set.
    static std::shared_ptr<ByteSource> open(const QString& path, int* error);

private:
    EwfSource();
};
