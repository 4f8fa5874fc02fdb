#pragma once
#include <QMultiMap>
#include <QString>
#include <QtGlobal>

// A directory met by the scan, live or deleted, by its own record number.
struct DirectoryEntry {
    quint32 parentRecord = 0;
    quint16 parentSequence = 0; // of the parent record when this name was made
    quint16 sequence = 0;       // of this directory's record
    bool live = false;          // in use in the live MFT
    QString name;
};

// Directories by record number: a number can have a live directory and
// deleted ones of earlier uses of the record.
using DirectoryMap = QMultiMap<quint32, DirectoryEntry>;
