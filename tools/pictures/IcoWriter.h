#pragma once
#include <QImage>
#include <QList>
#include <QString>

// Writes a Windows icon file with one 32-bit image per size, largest first.
class IcoWriter {
public:
    static bool write(const QString& path, const QList<QImage>& images);
};
