#include "carving/kinds/RiffKind.h"
#include "carving/CarveSource.h"

#include <cstring>

namespace {
constexpr quint64 kChunkHeaderBytes = 8, kFormOffset = 8, kMinRiffBytes = 12;
constexpr int kMaxRiffChunks = 4096; // AVIX chunks of 1 GiB each, with room

struct Form {
    const char* type;
    const char* extension;
};
constexpr Form kForms[] = {{"WAVE", "wav"}, {"AVI ", "avi"}, {"WEBP", "webp"}};
} // namespace

bool RiffKind::matches(const uchar* head, size_t bytes) const
{
    if (bytes < kMinRiffBytes || std::memcmp(head, "RIFF", 4) != 0)
        return false;
    for (const Form& f : kForms)
        if (std::memcmp(head + kFormOffset, f.type, 4) == 0)
            return true;
    return false;
}

CarveEnd RiffKind::findEnd(CarveSource& source) const
{
    QString extension;
    for (const Form& f : kForms)
        if (source.matches(kFormOffset, f.type, 4))
            extension = QString::fromLatin1(f.extension);
    quint64 pos = 0;
    for (int i = 0; i < kMaxRiffChunks; ++i) {
        const quint64 size = source.le32(pos + 4);
        if (!source.ok() || size < 4)
            break;
        const quint64 next = pos + kChunkHeaderBytes + size;
        if (next > source.limit())
            return cutAt(source.limit(), extension);
        if (const quint64 other = source.otherFileBetween(pos, next))
            return cutAt(other, extension);
        pos = next;
        if (!source.matches(pos, "RIFF", 4) || !source.matches(pos + kFormOffset, "AVIX", 4))
            break;
    }
    source.clearError();
    return pos >= kMinRiffBytes ? whole(pos, extension) : CarveEnd{};
}
