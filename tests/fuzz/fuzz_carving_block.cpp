// The carving kinds on any bytes: the header tests, and the end finders over
// the bytes as the rest of the volume.
#include "FuzzSupport.h"
#include "carving/CarveKinds.h"
#include "carving/CarveSource.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    const CarveKinds& kinds = CarveKinds::all();
    const CarveKind* kind = kinds.match(data, size);
    if (!kind)
        return 0;
    auto read = [&](void* buffer, quint64 bytes, quint64 offset) -> qint64 {
        const quint64 n = offset < size ? qMin<quint64>(bytes, size - offset) : 0;
        std::memcpy(buffer, data + offset, n);
        return qint64(n);
    };
    CarveSource source(read, {0, 512, nullptr, 0, &kinds}, qMin<quint64>(size, kind->maxBytes()));
    if (kind->findEnd(source).length > size)
        __builtin_trap(); // an end behind the bytes there are
    return 0;
}
