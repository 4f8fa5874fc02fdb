#include "scan/device/DeviceLayer.h"
#include "scan/device/CombinedDeviceLayer.h"

#include <atomic>

namespace {
std::atomic<DeviceLayer*> installed{nullptr};
}

DeviceLayer& DeviceLayer::instance()
{
    if (DeviceLayer* layer = installed.load())
        return *layer;
    return CombinedDeviceLayer::program();
}

void DeviceLayer::setInstance(DeviceLayer* layer)
{
    installed.store(layer);
}
