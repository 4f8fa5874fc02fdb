#pragma once
#include "scan/device/ImageDeviceLayer.h"

// The layer the program uses: the machine's disks first, in name order, then
// the image files of the images folder and those added at run time.
class CombinedDeviceLayer : public ImageDeviceLayer {
public:
    explicit CombinedDeviceLayer(QString imageFolder) : ImageDeviceLayer(std::move(imageFolder)) {}
    static CombinedDeviceLayer& program();

protected:
    QList<DiskInfo> discover() override;
};
