#pragma once
#include "ntfs/ClusterBitmap.h"
#include "ntfs/DirectoryEntry.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/IndexSlack.h"
#include "ntfs/MftReach.h"
#include "ntfs/MftRecordDecoder.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"
#include "ntfs/NtfsVolume.h"
#include "ntfs/RunList.h"
#include "results/NamePool.h"
#include "results/OrphanFolders.h"
#include "scan/VolumeScan.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QVector>
#include <deque>
#include <utility>

struct DataRun;
struct NtfsFile;
class FileStreams;

// The scanner of one NTFS volume: a drive letter, or a partition on a disk at a byte offset.
// The constructor reads the boot sector and the $MFT record. A scan run reads
// the live MFT record by record, then the clusters behind its runs where an
// earlier MFT may have left records, and files every deleted file and stream
// in the result tree; a restore run writes the checked folders' files out.
class NtfsVolumeScan : public VolumeScan {
    Q_OBJECT
public:
    explicit NtfsVolumeScan(const QString& deviceName, QObject* parent = nullptr);
    NtfsVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~NtfsVolumeScan() override;

    void parseBootSector() override;
    bool extentsOf(const FoundFile& file, Extents* extents) const override;
    bool hasContent(const FoundFile& file) const override;
    // Resident content is read again from the record the scan found it in;
    // compressed content is decompressed unit by unit.
    bool readContent(const FoundFile& file, const ContentSink& sink) override;
    // A compressed file's units: its stored clusters, marked with what they expand to.
    QList<StoredRun> storedRuns(const FoundFile& file) const override;

    // True when NtfsVolume::open succeeds: the disk search asks before it builds a scanner.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);

    // Reads one record of the live MFT by its number; bytes read, or -1.
    qint64 readRecord(void* buffer, quint32 number);
    // Reads count clusters from virtual cluster vcn of a stream; clusters read, or -1.
    qint64 readClusters(void* buffer, quint32 count, quint64 vcn, const QList<DataRun>& runs);

    // Records below this number are the volume's own files ($MFT, $LogFile,
    // $Bitmap…): never listed. The eight after them hold only extension
    // records of those, which the base-reference test passes over.
    static constexpr quint32 kFirstUserRecord = 16;

    NtfsVolume volume; // opened by the constructor, fixed from then on
    DirectoryMap directories;
    OrphanFolders orphans;
    // $Bitmap during a scan, read a window at a time, with the clusters of the
    // files found; invalid when it can't be read.
    ClusterBitmap clusterBitmap;

protected:
    bool scanMetadata(ScanTotals& totals) override;
    quint64 progressTotal() const override;
    quint64 carvingUnits() const override;
    // The signature carving pass over the clusters clusterBitmap leaves free.
    void carveFreeBlocks(const CarvingContext& context) override;
    void scanFinished() override;
    // The cluster bitmap again, with the first clusters of the files in the tree marked.
    bool canResumeCarving() const override { return true; }
    bool prepareCarvingResume(const QByteArray& state) override;

private:
    // A deleted file met by a pass, filed once the pass has met every directory.
    // Small: a pass over a large MFT holds one for every deleted file.
    struct Pending {
        // Its streams, named by stream name, the unnamed one first: the first
        // one held here, for the common file of one stream, the others beside it.
        NtfsFile* first = nullptr;
        QList<NtfsFile*> more;
        void add(NtfsFile* stream) { first ? more.append(stream) : void(first = stream); }
        // All of them, handed to the caller.
        QList<NtfsFile*> take()
        {
            QList<NtfsFile*> all = std::exchange(more, {});
            if (first)
                all.prepend(std::exchange(first, nullptr));
            return all;
        }
        const char16_t* name = nullptr; // the long name, in pendingNames
        quint32 parentRecord = 0;
        quint16 parentSequence = 0;
        quint16 nameLength = 0;
        quint64 modified = 0; // FILETIME
        bool hasName = false;
    };
    // A live folder whose index has blocks, for the pass over their slack.
    struct FolderIndex {
        quint32 record = 0;
        quint16 sequence = 0;
        QByteArray root;    // the $INDEX_ROOT value
        QByteArray runList; // of the $INDEX_ALLOCATION
        QByteArray bitmap;  // the $I30 $BITMAP: bit n set while block n is in use; empty: all are
        quint64 bytes = 0;  // the $INDEX_ALLOCATION's size
    };

    MftRecordDecoder decoder() const { return MftRecordDecoder(volume.geometry); }
    quint64 recordCount() const;
    QList<MftReach::Span> reachPlan() const;

    void loadClusterBitmap();
    bool liveMftPass(ScanTotals* totals);
    bool reachPass(const QList<MftReach::Span>& spans, ScanTotals* totals);
    // slot: the record's place in the live MFT, or -1 behind it.
    void scanRecord(uint8_t* record, qint64 slot, quint64 foundAt);
    bool isLiveRecord(quint32 number, quint16 sequence) const;
    bool recordInUse(quint64 number) const;
    void recordDirectory(const uint8_t* record, MftRecordInfo& info, quint32 number, bool live);
    void collectFile(const uint8_t* record, MftRecordInfo& info, quint32 number);
    void addExtensionRecords(const uint8_t* record, const MftRecordInfo& info, quint32 number, FileStreams* streams);
    QByteArray attributeListValue(const uint8_t* record, const MftRecordInfo& info);
    void noteFolderIndex(const uint8_t* record, const MftRecordInfo& info, quint32 number);
    bool indexSlackPass(ScanTotals* totals);
    void fileSlackNames(const FolderIndex& folder, ScanTotals* totals);
    // Reads the folder's index blocks: the names behind their used parts, and
    // into *live the names they list now (lower case).
    QList<IndexSlack::Name> slackOf(const FolderIndex& folder, QSet<QString>* live);
    // Whether the record a slack entry names no longer holds that file.
    bool slackRecordGone(const IndexSlack::Name& entry, quint32 folder);
    Pending pendingOf(bool hasName, const FileNameAttribute& name);
    void fileAllPending(ScanTotals* totals);
    void filePending(Pending& p, ScanTotals* totals);
    // Volume byte offset of a byte of the MFT stream; 0 for none.
    quint64 volumeOffsetOf(quint64 streamByte) const;
    // The same for a byte of a batch mapped to where; extent holds it and begins at extentStart.
    quint64 batchOffset(const QList<RunList::Extent>& where, int extent, quint64 extentStart, quint64 byte) const;
    // Reads clusters of the volume; what lies behind its end stays zero.
    qint64 readVolumeClusters(char* out, quint64 lcn, quint64 count);
    // The folder a file of this name goes to; null for a live file of a mounted volume.
    FolderNode* folderOf(const FileNameAttribute& fileName, const QString& name);
    bool isLive(const QStringList& folders, const QString& name) const;
    FolderNode* currentOrphanFolder();
    void markClusters(const NtfsFile* file);

    // Empty when the record can't be read again or no longer holds a record.
    QByteArray residentContent(const NtfsFile* file);

    QString mountPoint; // of the volume while it is scanned, for the live-file test
    QVector<quint16> liveSequence; // sequence number of each record in use in the live MFT
    std::deque<Pending> pending; // grows without moving what it holds
    NamePool pendingNames;
    QList<FolderIndex> folderIndexes;
    QSet<quint64> reachSeen; // (number, sequence) of records met behind the live MFT
    QHash<quint64, FolderNode*> rootFolders; // by parent reference, while one pass's files are filed
};
