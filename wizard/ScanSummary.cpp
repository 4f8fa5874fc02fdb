#include "wizard/ScanSummary.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "wizard/SelectionSums.h"

#include <QObject>
#include "results/TreeLock.h"
#include <QStringList>

ScanSummary ScanSummary::of(const FolderNode* root)
{
    ScanSummary summary;
    if (!root)
        return summary;
    TreeLock::Read lock(ResultTree::lockOf(root));
    QList<const FolderNode*> work{root};
    while (!work.isEmpty()) {
        const FolderNode* folder = work.takeLast();
        for (const FoundFile* file : folder->files) {
            ++summary.files;
            summary.bytes += file->size;
            ++summary.byKind[FileKind::of(file->name())];
        }
        for (const FolderNode* child : folder->children)
            work.append(child);
    }
    return summary;
}

QString ScanSummary::text() const
{
    QStringList kinds;
    for (int k = 0; k < FileKind::KindCount; ++k) {
        if (byKind[k] > 0)
            kinds.append(QStringLiteral("%1 %2").arg(FileKind::label(FileKind::Kind(k))).arg(byKind[k]));
    }
    const QString head = QObject::tr("共找到 %1 个文件（%2 %3）")
                             .arg(files)
                             .arg(SelectionSums::sizeValue(bytes), SelectionSums::sizeUnit(bytes));
    return kinds.isEmpty() ? head : head + QObject::tr("：") + kinds.join(QObject::tr("，"));
}
