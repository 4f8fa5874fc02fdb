#include "fat32/Fat32VolumeScan.h"

Fat32VolumeScan::Fat32VolumeScan(const QString& name, QObject* parent) : PartScan(name, parent)
{
    parseBootSector();
}

Fat32VolumeScan::Fat32VolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : PartScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

Fat32VolumeScan::~Fat32VolumeScan()
{
    stopAndWait();
}

quint64 Fat32VolumeScan::fileContent(char*, FoundFile*) { return 0; }
void Fat32VolumeScan::undelete(QString) { emit undeleteDone(); }
void Fat32VolumeScan::setRunning(bool running) { pauseOrResume(running); }
void Fat32VolumeScan::stop() { requestStop(); }
void Fat32VolumeScan::parseBootSector() {}

void Fat32VolumeScan::run()
{
    if (!restoreDir.isEmpty()) {
        undelete(restoreDir);
        return;
    }
    emit scanDone(0, 0);
}
