#include "ntfs/ParentChain.h"
#include "ntfs/DirectoryEntry.h"

#include <QSet>

namespace {
// NTFS paths hold at most 32767 characters, so no real chain is deeper than half that.
constexpr int kMaxDepth = 16384;
} // namespace

ParentChain::Result ParentChain::walk(const QMap<quint32, DirectoryEntry*>& directories, quint32 parentRecord,
                                      quint64 fileCreated)
{
    Result result;
    QSet<quint32> seen;
    quint32 number = parentRecord;
    for (int depth = 0; depth < kMaxDepth; ++depth) {
        const DirectoryEntry* dir = directories.value(number);
        if (!dir || dir->name.isEmpty() || dir->created > fileCreated || seen.contains(number))
            break;
        seen.insert(number);
        result.folders.prepend(dir->name);
        if (number == kRootRecord && dir->name == QLatin1String("."))
            break;
        number = dir->parentRecord;
    }
    return result;
}
