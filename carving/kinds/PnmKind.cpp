#include "carving/kinds/PnmKind.h"
#include "carving/CarveSource.h"
#include "scan/CheckedMath.h"

#include <cctype>

namespace {
constexpr quint64 kMaxDimension = 1 << 20; // pixels on one side
constexpr quint64 kMaxValue = 65535;

bool isSpace(uchar c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Reads the next decimal number of the header, passing white space and comments.
bool number(const uchar* p, size_t n, size_t* at, quint64* value)
{
    while (*at < n && (isSpace(p[*at]) || p[*at] == '#')) {
        if (p[*at] == '#')
            while (*at < n && p[*at] != '\n')
                ++*at;
        else
            ++*at;
    }
    const size_t start = *at;
    *value = 0;
    while (*at < n && std::isdigit(p[*at]) && *at - start < 7)
        *value = *value * 10 + (p[(*at)++] - '0');
    return *at > start && *at < n && isSpace(p[*at]);
}
} // namespace

bool PnmKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= 8 && head[0] == 'P' && head[1] >= '4' && head[1] <= '6' && isSpace(head[2]);
}

CarveEnd PnmKind::findEnd(CarveSource& source) const
{
    size_t n = 0;
    const uchar* p = source.window(0, &n);
    n = qMin(n, kMaxHeaderBytes);
    size_t at = 2;
    quint64 width = 0, height = 0, maxValue = 1;
    const bool bitmap = p && p[1] == '4';
    if (!p || !number(p, n, &at, &width) || !number(p, n, &at, &height) || (!bitmap && !number(p, n, &at, &maxValue)))
        return {};
    if (width == 0 || height == 0 || width > kMaxDimension || height > kMaxDimension || maxValue == 0 || maxValue > kMaxValue)
        return {};
    const quint64 channels = p[1] == '6' ? 3 : 1, sampleBytes = maxValue > 255 ? 2 : 1;
    const quint64 row = bitmap ? (width + 7) / 8 : width * channels * sampleBytes;
    const quint64 length = checked::addSat(at + 1, checked::mulSat(row, height)); // one white-space byte ends the header
    return length <= source.limit() ? whole(length, QString::fromLatin1(bitmap ? "pbm" : channels == 1 ? "pgm" : "ppm")) : CarveEnd{};
}
