#pragma once
#include <QString>
#include <QtGlobal>

// A directory met by the scan, live or deleted, by its own record number.
struct DirectoryEntry {
    quint32 parentRecord = 0;
    quint64 created = 0; // FILETIME
    QString name;
};
