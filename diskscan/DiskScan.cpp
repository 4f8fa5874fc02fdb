#include "diskscan/DiskScan.h"

DiskScan::DiskScan(int, QObject* parent) : PartScan(QString(), parent) {}

DiskScan::~DiskScan()
{
    stopAndWait();
    qDeleteAll(partScans);
}

quint64 DiskScan::fileContent(char* buffer, FoundFile* record)
{
    if (partIndex < 0 || partIndex >= partScans.size())
        return 0;
    return partScans[partIndex]->fileContent(buffer, record);
}

void DiskScan::run()
{
    if (!restoreDir.isEmpty()) {
        for (PartScan* p : partScans)
            p->undelete(restoreDir);
        emit undeleteDone();
        return;
    }
    emit scanDone(0, 0);
}
