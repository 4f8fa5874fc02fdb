#pragma once
#include <QList>
#include <QString>
#include <QtGlobal>
#include <cstdint>

struct MftRecordInfo;

// One attribute header of an MFT record, with every offset made absolute in
// the record and checked to lie inside the attribute.
struct MftAttribute {
    static constexpr quint32 kAttributeListType = 0x20;
    static constexpr quint16 kCompressedFlag = 0x0001;

    quint32 type = 0;
    QString name;          // a $DATA's stream name; empty for the unnamed stream
    bool resident = true;
    quint16 flags = 0;
    int offset = 0;        // of the attribute in the record
    quint32 length = 0;
    // Resident: the value.
    int valueOffset = 0;
    quint32 valueLength = 0;
    // Non-resident: where this piece of the stream starts, and its run list.
    quint64 startVcn = 0;
    int runListOffset = 0;
    quint32 runListBytes = 0;
    quint8 compressionShift = 0; // log2 of the compression unit in clusters
    quint64 allocatedSize = 0;   // these three are valid in the piece at VCN 0
    quint64 realSize = 0;
    quint64 initializedSize = 0;

    bool compressed() const { return !resident && (flags & kCompressedFlag) && compressionShift != 0; }

    // Every attribute of the record that decodes, in record order.
    static QList<MftAttribute> all(const uint8_t* record, quint32 recordBytes, const MftRecordInfo& info);

private:
    static bool decode(const uint8_t* record, int offset, quint32 length, MftAttribute* out);
};
