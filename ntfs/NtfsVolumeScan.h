#pragma once
#include "ntfs/DirectoryEntry.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
#include "scan/PartScan.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <functional>

struct DataRun;
struct NtfsFile;

// The scanner of one NTFS volume: a drive letter, or a partition on a disk at a byte offset.
// The constructor reads the boot sector and the $MFT record; a scan run walks
// the MFT and far beyond its end for deleted file records and files them in
// the result tree; a restore run writes the checked folders' files out.
class NtfsVolumeScan : public PartScan {
    Q_OBJECT
public:
    explicit NtfsVolumeScan(const QString& deviceName, QObject* parent = nullptr);
    NtfsVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~NtfsVolumeScan() override;

    quint64 fileContent(char* buffer, FoundFile* record) override;
    void undelete(QString targetDir) override;
    void setRunning(bool running) override;
    void stop() override;
    void parseBootSector() override;

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
    FolderNode* orphanFolder = nullptr;
    int orphanIndex = 1;
    QByteArray clusterBitmap; // first run of $Bitmap during a scan; empty when it can't be read
    quint64 bitmapClusters = 0;

protected:
    void run() override;
    // The signature carving pass over the clusters clusterBitmap leaves free;
    // adds what it finds to the totals.
    virtual void carvingPass(quint64* running, quint64* results, quint64* totalSize);

private:
    struct ScanTotals {
        quint64 position = 0;
        quint64 results = 0;
        quint64 totalSize = 0;
        quint64 unreadableBatches = 0; // record clusters the device did not give
    };
    enum class BatchPlace { Inside, OutsideVolume, PastEnd };
    // Receives a file's content slice by slice; null data is a hole of zeros.
    using ContentSink = std::function<void(quint64 offset, const char* data, quint64 bytes)>;

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
    bool filterAccepts(const QString& name) const;
    bool isLive(const QStringList& folders, const QString& name) const;
    FolderNode* currentOrphanFolder();
    void markClusters(const NtfsFile* file);

    RestoreFailure writeContent(NtfsFile* file, RestoreSink& sink);
    QByteArray residentContent(const NtfsFile* file, bool* ok = nullptr);
    // False when the device went while the runs were read. With report, the
    // unreadable stretches are noted there in file offsets.
    bool streamRuns(const NtfsFile* file, const ContentSink& sink, RestoreSink* report = nullptr);
    void noteSlice(RestoreSink* report, const QList<BadRange>& bad, quint64 lcn, quint64 clustersRead,
                   quint64 offset, quint64 bytes) const;
    void freeTree();

    QString mountPoint; // of the volume while it is scanned, for the live-file test
};
