#include "scan/device/EwfSource.h"
#include "scan/device/FileSource.h"

#include <libewf.h>

namespace {
const LibyalCalls kCalls{libewf_handle_initialize, libewf_handle_close, libewf_handle_free,
                         libewf_handle_get_media_size, libewf_handle_read_random};

// Opens the segment files libewf finds beside the first one. libewf finds
// them by the first one's extension (.E01, .e01, .s01 ...): a renamed image
// opens as its one segment.
int openSegments(libewf_handle_t* handle, QByteArray first)
{
    char** names = nullptr;
    int count = 0;
    if (libewf_glob(first.constData(), size_t(first.size()), LIBEWF_FORMAT_UNKNOWN, &names, &count, nullptr) != 1 || count < 1) {
        char* const alone[] = {first.data()};
        return libewf_handle_open(handle, alone, 1, LIBEWF_OPEN_READ, nullptr);
    }
    const int result = libewf_handle_open(handle, names, count, LIBEWF_OPEN_READ, nullptr);
    libewf_glob_free(names, count, nullptr);
    return result;
}
} // namespace

EwfSource::EwfSource() : LibyalSource(kCalls) {}

std::shared_ptr<ByteSource> EwfSource::open(const QString& path, int* error)
{
    std::shared_ptr<EwfSource> source(new EwfSource);
    const QByteArray name = path.toLocal8Bit();
    if (!source->start([&](intptr_t* handle) { return openSegments(handle, name); }, error))
        return nullptr;
    source->setRotational(FileSource::onSpinningDisk(path));
    return source;
}
