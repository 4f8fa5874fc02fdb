// One MFT record: the frame and fix-ups, the attribute walk, the run list of
// every $DATA and the names of every $FILE_NAME. The first byte picks the record size.
#include "FuzzSupport.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/RunList.h"
#include "scan/LeReader.h"

#include <QList>

namespace {
// Clusters of the volume the runs must stay inside: small enough that a wild run ends the list.
constexpr quint64 kVolumeClusters = 1 << 20;
constexpr quint32 kTypes[] = {MftRecord::kFileNameType, MftRecord::kDataType, MftRecord::kBitmapType};
constexpr size_t kRunListOffset = 0x20;
constexpr size_t kNonResidentFlag = 0x08;

void walkRuns(const uint8_t* record, int at, quint32 length)
{
    LeReader r(record + at, length);
    const quint16 listOffset = r.u16(kRunListOffset);
    if (!r.ok() || r.u8(kNonResidentFlag) == 0 || listOffset >= length)
        return;
    QList<DataRun*> runs;
    RunList::decode(record + at + listOffset, length - listOffset, kVolumeClusters, &runs);
    RunList::extents(runs, 0, RunList::clusterTotal(runs) + 4);
    qDeleteAll(runs);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::init();
    if (size < 1)
        return 0;
    const quint32 recordBytes = (data[0] & 1) ? 4096 : 1024;
    QByteArray record = fuzz::bytes(data + 1, size - 1);
    record.resize(recordBytes, '\0');
    auto* raw = reinterpret_cast<uint8_t*>(record.data());
    MftRecordInfo info;
    if (!MftRecord::parseHeader(raw, recordBytes, &info))
        return 0;
    for (quint32 type : kTypes) {
        int at = info.attrOffset;
        // Every attribute of the type, one after the other, as far as the walk reaches.
        for (int guard = 0; guard < 256 && at >= 0; ++guard) {
            quint32 remaining = MftRecord::attributeBytes(info, recordBytes) - quint32(at - info.attrOffset);
            at = MftRecord::findAttribute(raw, recordBytes, at, type, &remaining);
            if (at < 0)
                break;
            if (type == MftRecord::kFileNameType) {
                FileNameAttribute name;
                FileNameAttribute::decode(raw, recordBytes, at, remaining, &name);
            } else {
                walkRuns(raw, at, remaining);
            }
            at += int(remaining);
        }
    }
    return 0;
}
