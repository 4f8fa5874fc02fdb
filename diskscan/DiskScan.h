#pragma once
#include "scan/PartScan.h"

#include <QList>

// The scanner of a whole disk: searches every sector for the boot sectors of
// lost NTFS and FAT32 volumes and scans each one found.
class DiskScan : public PartScan {
    Q_OBJECT
public:
    explicit DiskScan(int disk, QObject* parent = nullptr);
    ~DiskScan() override;

    quint64 fileContent(char* buffer, FoundFile* record) override;

    QList<PartScan*> partScans;

protected:
    void run() override;
};
