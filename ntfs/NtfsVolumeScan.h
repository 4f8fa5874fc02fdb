#pragma once
#include "scan/PartScan.h"

// The scanner of one NTFS volume: a drive letter, or a partition on a disk at a byte offset.
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

protected:
    void run() override;
};
