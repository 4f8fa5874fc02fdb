#include "scan/device/QcowSource.h"
#include "scan/device/FileSource.h"

#include <libqcow.h>

namespace {
const LibyalCalls kCalls{libqcow_file_initialize, libqcow_file_close, libqcow_file_free,
                         libqcow_file_get_media_size, libqcow_file_read_buffer_at_offset};
} // namespace

QcowSource::QcowSource() : LibyalSource(kCalls) {}

std::shared_ptr<ByteSource> QcowSource::open(const QString& path, int* error)
{
    std::shared_ptr<QcowSource> source(new QcowSource);
    const QByteArray name = path.toLocal8Bit();
    const auto openFile = [&](intptr_t* file) { return libqcow_file_open(file, name.constData(), LIBQCOW_OPEN_READ, nullptr); };
    if (!source->start(openFile, error))
        return nullptr;
    source->setRotational(FileSource::onSpinningDisk(path));
    return source;
}
