#pragma once
#include <QList>
#include <QtGlobal>

// A stretch of a device (or of a restored file) that could not be read and
// was filled with zeros instead.
struct BadRange {
    quint64 offset = 0;
    quint64 length = 0;

    quint64 end() const { return offset + length; }
    bool operator==(const BadRange& o) const { return offset == o.offset && length == o.length; }
};

// Adds a range to a sorted list, merging it with the ranges it touches.
void addBadRange(QList<BadRange>* list, BadRange range);
// The sum of the lengths.
quint64 badBytes(const QList<BadRange>& list);
