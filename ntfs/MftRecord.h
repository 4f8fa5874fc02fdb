#pragma once
#include <QtGlobal>
#include <cstddef>
#include <cstdint>

struct MftRecordInfo;

// The frame of an MFT file record and the walk over its attributes. Works in
// place on one record of recordBytes bytes.
class MftRecord {
public:
    static constexpr quint32 kFileSignature = 0x454C4946; // "FILE"
    static constexpr quint32 kEndMarker = 0xFFFFFFFF;
    static constexpr quint32 kFileNameType = 0x30;
    static constexpr quint32 kDataType = 0x80;
    static constexpr quint32 kBitmapType = 0xB0;
    static constexpr quint16 kDirectoryFlag = 0x0002;
    static constexpr quint8 kDosNamespace = 2;

    // Offsets inside an attribute header.
    static constexpr size_t kNonResidentFlagOffset = 0x08;
    static constexpr size_t kResidentLengthOffset = 0x10;
    static constexpr size_t kResidentValueOffset = 0x14;
    static constexpr size_t kRunListOffset = 0x20;
    static constexpr size_t kAllocatedSizeOffset = 0x28;
    static constexpr size_t kRealSizeOffset = 0x30;

    // Tests the frame, fills the header fields of *info and puts the saved
    // sector ends back. False (record untouched) when the frame is bad.
    static bool parseHeader(uint8_t* record, quint32 recordBytes, MftRecordInfo* info);

    // The bytes that the attribute walk may cover: those in use behind the first attribute.
    static quint32 attributeBytes(const MftRecordInfo& info, quint32 recordBytes);

    // From the attribute at offset on, over *remaining bytes: the offset of the
    // first attribute of that type (a $FILE_NAME in the DOS namespace never
    // counts), with *remaining set to its length; or -1.
    static int findAttribute(const uint8_t* record, quint32 recordBytes, int offset, quint32 type, quint32* remaining);
};
