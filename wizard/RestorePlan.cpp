#include "wizard/RestorePlan.h"
#include "results/FolderNode.h"
#include "results/ResultTreeLock.h"
#include "scan/RestoreWalk.h"

#include <QFileInfo>
#include <QReadLocker>

// The same walk and the same names as the writer (RestoreWalk).
RestorePlan RestorePlan::of(FolderNode* root, const QString& targetDir, bool keepBoth, const ResultFilter& filter)
{
    RestorePlan plan;
    plan.targetDir = targetDir;
    if (!root)
        return plan;
    QReadLocker lock(&ResultTreeLock::lock());
    QList<FolderNode*> work{root};
    while (!work.isEmpty()) {
        FolderNode* folder = work.takeLast();
        const QString folderPath = RestoreWalk::folderPath(folder, targetDir);
        for (const FoundFile* file : folder->files) {
            if (!file->selected || !filter.matches(*file))
                continue;
            const QString path = RestoreWalk::filePath(folderPath, file->name, keepBoth);
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

QStringList RestorePlan::missing() const
{
    QStringList paths;
    for (const Entry& e : entries) {
        const QFileInfo info(e.path);
        if (!info.isFile() || quint64(info.size()) != e.size)
            paths.append(e.path.mid(targetDir.size() + 1));
    }
    return paths;
}
