#pragma once
#include "ntfs/DirectoryEntry.h"
#include "ntfs/MftRecordDecoder.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
#include "ntfs/NtfsVolume.h"
#include "results/OrphanFolders.h"
#include "scan/VolumeScan.h"

#include <QByteArray>
#include <QList>
#include <QMap>

struct DataRun;
struct NtfsFile;

// The scanner of one NTFS volume: a drive letter, or a partition on a disk at a byte offset.
// The constructor reads the boot sector and the $MFT record; a scan run walks
// the MFT and far beyond its end for deleted file records and files them in
// the result tree; a restore run writes the checked folders' files out.
class NtfsVolumeScan : public VolumeScan {
    Q_OBJECT
public:
    explicit NtfsVolumeScan(const QString& deviceName, QObject* parent = nullptr);
    NtfsVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~NtfsVolumeScan() override;

    void parseBootSector() override;
    bool extentsOf(const FoundFile& file, Extents* extents) const override;
    bool hasContent(const FoundFile& file) const override;
    // Resident content is read again from the record the scan found it in.
    bool readContent(const FoundFile& file, const ContentSink& sink) override;

    // True when NtfsVolume::open succeeds: the disk search asks before it builds a scanner.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);

    // Reads one MFT record by its number; bytes read, or -1.
    qint64 readRecord(void* buffer, quint32 number);
    // Reads count clusters from virtual cluster vcn of a stream; clusters read, or -1.
    qint64 readClusters(void* buffer, quint32 count, quint64 vcn, const QList<DataRun*>& runs);

    NtfsVolume volume; // opened by the constructor, fixed from then on
    QMap<quint32, DirectoryEntry*> directories;
    OrphanFolders orphans;
    QByteArray clusterBitmap; // first run of $Bitmap during a scan; empty when it can't be read
    quint64 bitmapClusters = 0;

protected:
    bool scanMetadata(ScanTotals& totals) override;
    quint64 progressTotal() const override;
    // The signature carving pass over the clusters clusterBitmap leaves free.
    void carveFreeBlocks(const CarvingContext& context) override;
    void scanFinished() override;

private:
    enum class BatchPlace { Inside, OutsideVolume, PastEnd };

    MftRecordDecoder decoder() const { return MftRecordDecoder(volume.geometry); }
    bool parseFileRecord(uint8_t* record, MftRecordInfo& info);
    bool fileRecordName(const uint8_t* record, MftRecordInfo& info);

    void loadClusterBitmap();
    bool recordLoop(qint64 limit, quint64 recordCount, ScanTotals* totals);
    BatchPlace batchPlace(quint64 vcn, quint32 clusters) const;
    void scanRecord(uint8_t* record, quint64 position, quint64 recordCount, quint64 foundAt, ScanTotals* totals);
    // Volume byte offset of a byte of the MFT stream as the record loop reads it; 0 for none.
    quint64 volumeOffsetOf(quint64 streamByte) const;
    void recordDirectory(const uint8_t* record, MftRecordInfo& info);
    bool recordInUse(quint64 position) const;
    bool isLive(const QStringList& folders, const QString& name) const;
    FolderNode* currentOrphanFolder();
    void markClusters(const NtfsFile* file);

    // The record loop's end: far behind the live MFT's end.
    qint64 recordLimit() const;
    // Empty when the record can't be read again or no longer holds a record.
    QByteArray residentContent(const NtfsFile* file);

    QString mountPoint; // of the volume while it is scanned, for the live-file test
};
