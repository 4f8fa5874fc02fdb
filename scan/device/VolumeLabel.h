#pragma once
#include <QString>
#include <QtGlobal>

// The label of the file system in a byte range of an open device, through libblkid.
class VolumeLabel {
public:
    static QString probe(int fd, quint64 offset, quint64 size);
};
