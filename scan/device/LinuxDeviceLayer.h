#pragma once
#include "scan/device/DiskListLayer.h"

// The machine's block devices, from /sys/block. A disk is listed only when it
// can be opened read-only by this user.
class LinuxDeviceLayer : public DiskListLayer {
public:
    static QList<DiskInfo> discoverDisks();

protected:
    QList<DiskInfo> discover() override { return discoverDisks(); }
};
