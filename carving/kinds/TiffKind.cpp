#include "carving/kinds/TiffKind.h"
#include "carving/CarveSource.h"
#include "carving/kinds/TiffStructure.h"

#include <cstring>

bool TiffKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= 4 && std::memcmp(head, m_bigEndian ? "MM\0\x2A" : "II\x2A\0", 4) == 0;
}

CarveEnd TiffKind::findEnd(CarveSource& source) const
{
    TiffStructure tiff(source, 0);
    if (!tiff.walk())
        return {};
    QString extension;
    const QString make = tiff.make().toUpper();
    if (source.matches(8, "CR\x02", 3))
        extension = QStringLiteral("cr2");
    else if (tiff.hasDngVersion())
        extension = QStringLiteral("dng");
    else if (make.startsWith(QLatin1String("NIKON")))
        extension = QStringLiteral("nef");
    else if (make.startsWith(QLatin1String("SONY")))
        extension = QStringLiteral("arw");
    source.clearError();
    const quint64 length = tiff.extent();
    return length <= source.limit() ? whole(length, extension) : cutAt(source.limit(), extension);
}
