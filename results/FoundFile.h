#pragma once
#include <QString>
#include <QtGlobal>

// What every found file has, whichever file system it came from. The tree's
// readers (lists, sums, restore) need no more than this.
struct FoundFile {
    virtual ~FoundFile() = default;
    QString name;                // without path; generated for carved files
    quint64 modifiedMsecs = 0;   // ms since 1970-01-01 UTC; 0 when unknown
    quint64 size = 0;            // bytes
    // Ticked for the restore. The one place the selection lives: the folder
    // check boxes, the sums and the restore walk all read it (see CheckStates).
    bool selected = true;
    bool cut = false;            // carved: the file's structure broke off here, its rest is missing
    // Only its name is left (a folder's index still lists it): no content to
    // show or restore, the size is what the name's entry stated.
    bool nameOnly = false;
};
