#pragma once
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftAttribute.h"
#include "ntfs/NtfsGeometry.h"
#include "results/DataRun.h"

#include <QList>
#include <QMap>
#include <cstdint>

struct MftRecordInfo;
struct NtfsFile;

// Gathers what one file's records say about it, the base record and any
// extension records its $ATTRIBUTE_LIST names: its long name and its $DATA
// streams, whose run lists may be cut into pieces across those records.
class FileStreams {
public:
    FileStreams(const NtfsGeometry& geometry, quint64 clusterCount) : m_geometry(geometry), m_clusterCount(clusterCount) {}
    FileStreams(const FileStreams&) = delete;
    FileStreams& operator=(const FileStreams&) = delete;

    // Adds the names and $DATA pieces of one record of the file, read at
    // recordOffset on the volume (0 when unknown).
    void addRecord(const uint8_t* record, const MftRecordInfo& info, quint64 recordOffset);

    // When no record gave a long name: the $FILE_NAME an extension record
    // held before its attributes were cleared, still in the record's unused
    // bytes where its first attribute stood (ntfs-3g empties extension
    // records when it deletes a file).
    void addClearedName(const uint8_t* record, const MftRecordInfo& info);

    bool hasName() const { return m_hasName; }
    const FileNameAttribute& fileName() const { return m_name; }

    // One NtfsFile per stream with content, the unnamed one first, each named
    // by its stream name (empty for the unnamed one). The caller owns them.
    QList<NtfsFile*> take();

private:
    struct Piece {
        MftAttribute attribute;
        QList<DataRun> runs; // as decoded: VCNs counted from the piece's start
        quint64 recordOffset = 0;
        quint32 recordNumber = 0;
    };

    NtfsFile* assemble(QList<Piece>& pieces) const;
    void appendRuns(QList<DataRun>* runs, const Piece& piece) const;

    NtfsGeometry m_geometry;
    quint64 m_clusterCount;
    bool m_hasName = false;
    FileNameAttribute m_name;
    QMap<QString, QList<Piece>> m_streams;
};
