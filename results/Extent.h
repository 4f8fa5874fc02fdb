#pragma once
#include <QList>
#include <QtGlobal>

// A stretch of a found file's content: `length` bytes from byte `offset` of
// the volume, or a hole of `length` bytes that reads as zeros (a sparse run,
// or what would lie behind the volume's end).
struct Extent {
    quint64 offset = 0;
    quint64 length = 0;
    bool hole = false;
};

// A file's content in file order.
using Extents = QList<Extent>;
