#include "ntfs/NtfsVolumeScan.h"

NtfsVolumeScan::NtfsVolumeScan(const QString& name, QObject* parent) : PartScan(name, parent)
{
    parseBootSector();
}

NtfsVolumeScan::NtfsVolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : PartScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

NtfsVolumeScan::~NtfsVolumeScan()
{
    stopAndWait();
}

quint64 NtfsVolumeScan::fileContent(char*, FoundFile*) { return 0; }
void NtfsVolumeScan::undelete(QString) { emit undeleteDone(); }
void NtfsVolumeScan::setRunning(bool running) { pauseOrResume(running); }
void NtfsVolumeScan::stop() { requestStop(); }
void NtfsVolumeScan::parseBootSector() {}

void NtfsVolumeScan::run()
{
    if (!restoreDir.isEmpty()) {
        undelete(restoreDir);
        return;
    }
    emit scanDone(0, 0);
}
