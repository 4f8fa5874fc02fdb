#pragma once
#include "scan/PartScan.h"

#include <QList>
#include <QMutex>

// The scanner of a whole disk: walks it sector by sector for the boot sectors
// of lost NTFS and FAT32 volumes, and scans each one found with the ordinary
// volume scanner on the disk's handle at that offset. One tree, a folder per
// partition; a second run restores through every partition scanner.
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
    QList<PartScan*> partScans; // owned; in the order they were built
    // Where the search stands and how far it goes, for progress figures.
    std::atomic<quint64> searchPosition{0};
    std::atomic<quint64> searchEnd{0};

public slots:
    void scanDoneSlot(quint64 results, quint64 size);

protected:
    void run() override;

private:
    void search();
    // Tests the sectors of one chunk; returns the position to go on from.
    bool testSectors(const uchar* data, quint64 bytes, quint64 position, int* partitionNumber, quint64* next);
    bool stopRequested();
    quint64 onHit(int kind, quint64 offset, quint64 totalSectors, int* partitionNumber);
    void scanPartition(PartScan* scanner, const QString& name, int number, bool ntfsTree);
    void setCurrent(PartScan* scanner);

    int m_disk = -1;
    QMutex m_diskLock;    // one lock for the disk: the search, its scanners and previews
    QMutex m_currentLock; // guards m_current against pause and stop from the window
    PartScan* m_current = nullptr;
};
