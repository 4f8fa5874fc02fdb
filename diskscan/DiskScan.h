#pragma once
#include "diskscan/VolumeCandidate.h"
#include "scan/ChunkReader.h"
#include "scan/PartScan.h"

#include <QList>
#include <QMutex>

struct FolderNode;

// The scanner of a whole disk: reads it once from end to end and tests every
// sector for the boot sector of an NTFS, FAT or exFAT volume, or for the
// backup copy of one. Each volume that opens is scanned once with the ordinary
// volume scanner on the disk's handle at its offset. One tree, a folder per
// scanned volume; a second run restores through every partition scanner.
class DiskScan : public PartScan {
    Q_OBJECT
public:
    explicit DiskScan(int disk, QObject* parent = nullptr);
    ~DiskScan() override;

    quint64 fileContent(char* buffer, FoundFile* record) override;
    void setRunning(bool running) override;
    void stop() override;

    void openDisk(int disk);
    quint64 getDiskSize();
    // At an absolute position on the disk, under the disk's lock.
    qint64 readDisk(void* buffer, quint64 bytes, quint64 position);

    DeviceHandle diskHandle;
    quint64 totalResults = 0;
    quint64 totalSize = 0;
    // The partition scanners built so far, kept in the result tree (owned by
    // this search); safe to call from any thread while the search runs.
    PartScan* partition(int index) const;
    int partitionCount() const;
    // Every volume that opened, scanned or not (a kind without a scanner yet).
    struct FoundVolume {
        VolumeCandidate volume;
        int partIndex = -1; // -1: found, not scanned
    };
    QList<FoundVolume> foundVolumes;
    // Where the search stands and how far it goes, for progress figures.
    std::atomic<quint64> searchPosition{0};
    std::atomic<quint64> searchEnd{0};

public slots:
    void scanDoneSlot(quint64 results, quint64 size);

protected:
    void run() override;

private:
    void search();
    // readDisk for the search's reads ahead: beside the scanners' reads where the disk takes two at once.
    qint64 readAhead(void* buffer, quint64 bytes, quint64 position);
    void searchChunk(const ChunkReader::Chunk& chunk);
    // Tests the sectors of data, which lies at position on the disk.
    void testSectors(const uchar* data, quint64 bytes, quint64 position);
    bool stopRequested();
    bool alreadyFound(const VolumeCandidate& c) const;
    // Opens a candidate and scans it when it opens.
    void consider(const VolumeCandidate& c);
    // A volume formatted over another keeps the older one's backup boot
    // sector near its start: the older volume is looked for there.
    void considerOlderUnder(const VolumeCandidate& newer);
    // The scanner a kind of volume gets; null while no scanner reads that kind.
    PartScan* scannerFor(const VolumeCandidate& c, const QString& name);
    void scanPartition(PartScan* scanner, const QString& name, int number);
    // Makes scanner the partition scanner of folder, numbered number.
    void attachPartition(PartScan* scanner, FolderNode* folder, int number);
    static QString folderName(const VolumeCandidate& c, int number);
    // Where the walk stands at position: the volumes found before it and the
    // partitions scanned, in scannerState.
    ResumePoint walkPoint(quint64 position, quint64 end) const;
    // Takes up the search a saved point describes over the tree loaded below
    // rootFolder: the found volumes, their scanners on their folders. False
    // when the point does not fit the tree.
    bool takeUp(const ResumePoint& point);
    // Where the walk begins: 0, or where a saved point it can take up stands.
    quint64 startPosition(quint64 size);
    void setCurrent(PartScan* scanner);

    int m_disk = -1;
    int m_nextNumber = 0;
    quint64 m_resumeAt = 0; // the walk looks at no sector before this: it lies in a scanned volume
    QMutex m_diskLock;    // one lock for the disk: the search, its scanners and previews
    QMutex m_currentLock; // guards m_current against pause and stop from the window
    PartScan* m_current = nullptr;
};
