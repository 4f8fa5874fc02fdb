#pragma once
#include <QString>

struct FolderNode;

// What Step 4 shows of the selection: the files of every folder that isn't
// unchecked, partly checked ones in full, the walk always going on down.
class SelectionSums {
public:
    int count = 0;
    quint64 size = 0;

    static SelectionSums of(FolderNode* root);

    // A byte count in KB, MB or GB, two decimals; exactly 1024 stays in the
    // smaller unit.
    static QString sizeValue(quint64 bytes);
    static QString sizeUnit(quint64 bytes);
};
