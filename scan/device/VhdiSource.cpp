#include "scan/device/VhdiSource.h"
#include "scan/device/FileSource.h"

#include <libvhdi.h>

namespace {
const LibyalCalls kCalls{libvhdi_file_initialize, libvhdi_file_close, libvhdi_file_free,
                         libvhdi_file_get_media_size, libvhdi_file_read_buffer_at_offset};
} // namespace

VhdiSource::VhdiSource() : LibyalSource(kCalls) {}

std::shared_ptr<ByteSource> VhdiSource::open(const QString& path, int* error)
{
    std::shared_ptr<VhdiSource> source(new VhdiSource);
    const QByteArray name = path.toLocal8Bit();
    const auto openFile = [&](intptr_t* file) { return libvhdi_file_open(file, name.constData(), LIBVHDI_OPEN_READ, nullptr); };
    if (!source->start(openFile, error))
        return nullptr;
    source->setRotational(FileSource::onSpinningDisk(path));
    return source;
}
