#pragma once
#include "results/ResultFilter.h"

#include <QString>

struct FolderNode;

// What Step 4 shows of the selection: the ticked files the filter lets
// through, exactly the files the restore walk writes.
class SelectionSums {
public:
    int count = 0;
    quint64 size = 0;

    static SelectionSums of(FolderNode* root, const ResultFilter& filter = ResultFilter());

    // A byte count in KB, MB or GB, two decimals; exactly 1024 stays in the
    // smaller unit.
    static QString sizeValue(quint64 bytes);
    static QString sizeUnit(quint64 bytes);
};
