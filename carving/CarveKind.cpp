#include "carving/CarveKind.h"

QString CarveKind::folderLabel(const QString& extension)
{
    // "7z" keeps its small z, as the archive's own name has it.
    const QString base = extension == QLatin1String("7z") ? extension : extension.toUpper();
    return base + QStringLiteral("文件-%1");
}

CarveEnd CarveKind::whole(quint64 length, QString extension)
{
    CarveEnd end;
    end.length = length;
    end.extension = std::move(extension);
    return end;
}

CarveEnd CarveKind::cutAt(quint64 length, QString extension)
{
    CarveEnd end = whole(length, std::move(extension));
    end.cut = length > 0;
    return end;
}
