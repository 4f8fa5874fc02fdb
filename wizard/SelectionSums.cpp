#include "wizard/SelectionSums.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"

namespace {
struct Scaled {
    double value;
    const char* unit;
};

Scaled scaled(quint64 bytes)
{
    Scaled s{double(bytes) / 1024, "KB"};
    if (s.value > 1024) {
        s = {s.value / 1024, "MB"};
        if (s.value > 1024)
            s = {s.value / 1024, "GB"};
    }
    return s;
}
} // namespace

SelectionSums SelectionSums::of(FolderNode* root, const ResultFilter& filter)
{
    SelectionSums sums;
    if (!root)
        return sums;
    TreeLock::Read lock(ResultTree::lockOf(root));
    QList<FolderNode*> work{root};
    while (!work.isEmpty()) {
        FolderNode* folder = work.takeLast();
        for (const FoundFile* file : folder->files) {
            if (file->selected && filter.matches(*file)) {
                ++sums.count;
                sums.size += file->size;
            }
        }
        work.append(folder->children);
    }
    return sums;
}

QString SelectionSums::sizeValue(quint64 bytes)
{
    return QString::number(scaled(bytes).value, 'f', 2);
}

QString SelectionSums::sizeUnit(quint64 bytes)
{
    return QString::fromLatin1(scaled(bytes).unit);
}
