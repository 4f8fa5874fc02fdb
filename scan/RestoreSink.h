#pragma once
#include "scan/RestoreReport.h"

class TargetFile;

// Where a scanner puts the content of one file being restored: the bytes go
// to the target file, the stretches that could not be read are noted in file
// offsets, and the first failure of the target is kept.
class RestoreSink {
public:
    explicit RestoreSink(TargetFile& file) : m_file(file) {}

    // Writes bytes at a file offset; false once the target has failed.
    bool write(quint64 fileOffset, const char* data, quint64 bytes);
    // A read of the device for [fileOffset, fileOffset + bytes) that started at
    // devicePosition: its bad sectors (device positions) become file ranges.
    void noteBadReads(const QList<BadRange>& bad, quint64 devicePosition, quint64 fileOffset, quint64 bytes);
    // File bytes the reader knows to be wrong: a compressed unit it could not read whole.
    void noteDamaged(quint64 fileOffset, quint64 bytes);
    // Bytes that lie beyond the end of the device.
    void noteOutside(quint64 fileOffset, quint64 bytes);

    RestoreFailure failure() const { return m_failure; }
    const QList<BadRange>& badRanges() const { return m_bad; }
    quint64 outsideBytes() const { return m_outside; }

private:
    TargetFile& m_file;
    RestoreFailure m_failure = RestoreFailure::None;
    QList<BadRange> m_bad;
    quint64 m_outside = 0;
};
