#include "scan/device/CombinedDeviceLayer.h"
#include "scan/device/LinuxDeviceLayer.h"

CombinedDeviceLayer& CombinedDeviceLayer::program()
{
    static CombinedDeviceLayer layer(ImageDeviceLayer::defaultFolder());
    return layer;
}

QList<DiskInfo> CombinedDeviceLayer::discover()
{
    return LinuxDeviceLayer::discoverDisks() + ImageDeviceLayer::discover();
}
