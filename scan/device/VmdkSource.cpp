#include "scan/device/VmdkSource.h"
#include "scan/device/FileSource.h"

#include <libvmdk.h>

namespace {
const LibyalCalls kCalls{libvmdk_handle_initialize, libvmdk_handle_close, libvmdk_handle_free,
                         libvmdk_handle_get_media_size, libvmdk_handle_read_buffer_at_offset};
} // namespace

VmdkSource::VmdkSource() : LibyalSource(kCalls) {}

std::shared_ptr<ByteSource> VmdkSource::open(const QString& path, int* error)
{
    std::shared_ptr<VmdkSource> source(new VmdkSource);
    const QByteArray name = path.toLocal8Bit();
    // The descriptor (alone, or embedded in a sparse file) names the extent
    // files that hold the data; they lie beside it.
    const auto openFile = [&](intptr_t* handle) {
        if (libvmdk_handle_open(handle, name.constData(), LIBVMDK_OPEN_READ, nullptr) != 1)
            return -1;
        return libvmdk_handle_open_extent_data_files(handle, nullptr);
    };
    if (!source->start(openFile, error))
        return nullptr;
    source->setRotational(FileSource::onSpinningDisk(path));
    return source;
}
