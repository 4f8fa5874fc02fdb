#pragma once
#include <QString>

// What "打开磁盘映像…" accepts: a file that exists and holds a partition table
// or a volume the scanners recognise. The answer is a message for the user,
// empty when the file will do.
class ImageCheck {
public:
    static QString problem(const QString& path);
};
