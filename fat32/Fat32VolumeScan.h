#pragma once
#include "scan/PartScan.h"

// The scanner of one FAT32 volume: a drive letter, or a partition on a disk at a byte offset.
class Fat32VolumeScan : public PartScan {
    Q_OBJECT
public:
    explicit Fat32VolumeScan(const QString& deviceName, QObject* parent = nullptr);
    Fat32VolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~Fat32VolumeScan() override;

    quint64 fileContent(char* buffer, FoundFile* record) override;
    void undelete(QString targetDir) override;
    void setRunning(bool running) override;
    void stop() override;
    void parseBootSector() override;

protected:
    void run() override;
};
