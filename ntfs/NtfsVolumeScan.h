#pragma once
#include "ntfs/DirectoryEntry.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
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

    // The checks of the boot sector and the $MFT record that the constructor
    // ends the program on, made without ending it: true when a scanner can be
    // built on handle at partOffset. The disk search asks before it builds one.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);
    // Why record 0 (fix-ups applied) can't carry a scan, as the fatal message
    // says it; null when its frame, $DATA runs and $BITMAP are there.
    static const char* mftRecordProblem(uint8_t* record, const NtfsGeometry& geometry, quint64 clusterCount);
    // Clusters of the volume that lie on the device behind partOffset.
    static quint64 clustersOnDevice(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset);
    // Clusters the boot sector gives the volume, on the device or not; the
    // device's when it gives none. The runs of $MFT are taken within these: an
    // image cut short still holds the records before its end.
    static quint64 statedClusters(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset);

    // Reads one MFT record by its number; bytes read, or -1.
    qint64 readRecord(void* buffer, quint32 number);
    // Reads count clusters from virtual cluster vcn of a stream; clusters read, or -1.
    qint64 readClusters(void* buffer, quint32 count, quint64 vcn, const QList<DataRun*>& runs);

    NtfsGeometry geometry;
    quint64 volumeClusters = 0; // clusters that lie inside the volume and on the device
    quint64 mftLcn = 0;
    MftRecordInfo mftInfo;   // of record 0; its file holds the runs of $MFT, stretched (see parseMftRecord)
    QByteArray mftBitmap;    // $BITMAP of $MFT: bit n set while record n is in use
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

    void parseMftRecord(uint8_t* record, MftRecordInfo& info);
    void readMftBitmap(const uint8_t* record, int attrOffset, quint32 attrLength);
    bool parseRecordHeader(uint8_t* record, MftRecordInfo& info) const;
    int findAttribute(const uint8_t* record, int offset, quint32 type, quint32& remaining) const;
    // Runs are kept within clusterCount clusters.
    bool decodeData(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info,
                    quint64 clusterCount) const;
    bool directoryName(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info) const;
    bool parseFileRecord(uint8_t* record, MftRecordInfo& info);
    bool fileRecordName(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info);

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
