#include "wizard/RestorePlan.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "scan/RestoreWalk.h"
#include "scan/SafeFileName.h"

#include <QFileInfo>
#include "results/TreeLock.h"

namespace {
// Beyond this many numbered copies a name is not predicted (the writer gives up too).
constexpr int kMaxNameNumber = 100000;

// Where the writer will put a file named safeName in folderPath: the name itself,
// or with keepBoth and the name taken, the first free "name (2).ext".
QString predictedPath(const QString& folderPath, const QString& safeName, bool keepBoth)
{
    const QString first = folderPath + QLatin1Char('/') + safeName;
    if (!keepBoth || !QFileInfo::exists(first))
        return first;
    for (int n = 2; n <= kMaxNameNumber; ++n) {
        const QString path = folderPath + QLatin1Char('/') + SafeFileName::numbered(safeName, n);
        if (!QFileInfo::exists(path))
            return path;
    }
    return first;
}
} // namespace

// The same walk and the same names as the writer (RestoreWalk).
RestorePlan RestorePlan::of(FolderNode* root, const QString& targetDir, bool keepBoth, const ResultFilter& filter)
{
    RestorePlan plan;
    plan.targetDir = targetDir;
    if (!root)
        return plan;
    TreeLock::Read lock(ResultTree::lockOf(root));
    QList<FolderNode*> work{root};
    while (!work.isEmpty()) {
        FolderNode* folder = work.takeLast();
        const QString folderPath = (QStringList{targetDir} + RestoreWalk::folderNames(folder)).join(QLatin1Char('/'));
        for (const FoundFile* file : folder->files) {
            if (!file->selected || !filter.matches(*file))
                continue;
            const QString path = predictedPath(folderPath, SafeFileName::component(file->name()), keepBoth);
            plan.entries.append({path, file->size});
            plan.bytes += file->size;
        }
        work.append(folder->children);
    }
    return plan;
}

int RestorePlan::existing() const
{
    int count = 0;
    for (const Entry& e : entries)
        count += QFileInfo::exists(e.path) ? 1 : 0;
    return count;
}
