#pragma once
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
#include "scan/device/DeviceHandle.h"

#include <QByteArray>
#include <memory>

struct NtfsFile;

// An NTFS volume opened on a handle at a byte offset: the boot sector's
// geometry, the runs of $MFT and the MFT bitmap. One
// function opens it for the scanner, for the test before a scanner is built,
// and for the fuzz targets; it says why when the volume can't carry a scan.
struct NtfsVolume {
    NtfsGeometry geometry;
    quint64 volumeClusters = 0; // clusters that lie inside the volume and on the device
    std::shared_ptr<NtfsFile> mft; // record 0's $DATA: the runs of $MFT
    QByteArray mftBitmap;          // $BITMAP of $MFT: bit n set while record n is in use
    QString problem;               // the fatal message; empty when the volume opened

    bool opened() const { return problem.isEmpty(); }

    static NtfsVolume open(const DeviceHandle& handle, quint64 partOffset);

    // Clusters of the volume that lie on the device behind partOffset.
    static quint64 clustersOnDevice(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset);
    // Clusters the boot sector gives the volume, on the device or not; the
    // device's when it gives none. The runs of $MFT are taken within these: an
    // image cut short still holds the records before its end.
    static quint64 statedClusters(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset);

private:
    struct Extension {
        QByteArray record; // fixed up
        MftRecordInfo info;
    };
    // A $MFT whose runs continue in extension records: the whole run list.
    void followAttributeList(const DeviceHandle& handle, quint64 partOffset, const uint8_t* record0,
                             const MftRecordInfo& info, quint64 clusterCount);
    // $MFT's $ATTRIBUTE_LIST value, resident or in clusters; empty when there is none.
    QByteArray attributeList(const DeviceHandle& handle, quint64 partOffset, const uint8_t* record0,
                             const MftRecordInfo& info, quint64 clusterCount) const;
    bool readExtension(const DeviceHandle& handle, quint64 partOffset, quint32 number, Extension* out) const;
    // Takes the run list record 0 and the extensions give when it maps more than the one at hand.
    void assembleMft(const uint8_t* record0, const MftRecordInfo& info, const QList<Extension>& extensions,
                     quint64 clusterCount);
    bool readMftBitmap(const DeviceHandle& handle, quint64 partOffset, const uint8_t* attribute, quint32 length);
};
