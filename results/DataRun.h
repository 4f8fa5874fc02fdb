#pragma once
#include <QtGlobal>

// One run of a non-resident NTFS stream: `length` clusters from `lcn`, ending
// at virtual cluster `vcnEnd` (the running sum of all lengths so far).
struct DataRun {
    quint64 vcnEnd = 0;
    quint64 length = 0;
    quint64 lcn = 0;
    bool sparse = false; // no clusters on disk: reads as zeros
};
