#include "scan/ExtentReader.h"

#include <QByteArray>
#include <cstring>

quint64 ExtentReader::stream(const Extents& extents, const ReadAt& read, const Sink& sink)
{
    quint64 failed = 0;
    quint64 fileOffset = 0;
    QByteArray slice;
    for (const Extent& e : extents) {
        if (e.hole) {
            // A hole costs nothing to produce: it goes in one piece.
            sink(fileOffset, nullptr, e.length);
            fileOffset += e.length;
            continue;
        }
        for (quint64 done = 0; done < e.length;) {
            const quint64 bytes = qMin(kSliceBytes, e.length - done);
            if (slice.size() < qsizetype(bytes))
                slice.resize(qsizetype(bytes));
            const qint64 got = read(slice.data(), bytes, e.offset + done);
            const quint64 kept = got > 0 ? quint64(got) : 0;
            if (kept < bytes) {
                ++failed;
                std::memset(slice.data() + kept, 0, size_t(bytes - kept));
            }
            sink(fileOffset, slice.constData(), bytes);
            done += bytes;
            fileOffset += bytes;
        }
    }
    return failed;
}
