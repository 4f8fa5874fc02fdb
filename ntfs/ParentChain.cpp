#include "ntfs/ParentChain.h"

#include <QSet>

namespace {
// NTFS paths hold at most 32767 characters, so no real chain is deeper than half that.
constexpr int kMaxDepth = 16384;
} // namespace

bool ParentChain::sequenceMatches(quint16 recordSequence, bool recordLive, quint16 referenceSequence)
{
    // Sequence number 0 is "not checked"; counting up skips it.
    const quint16 raised = referenceSequence == 0xFFFF ? 1 : quint16(referenceSequence + 1);
    return referenceSequence == 0 || recordSequence == referenceSequence || (!recordLive && recordSequence == raised);
}

ParentChain::Result ParentChain::walk(const DirectoryMap& directories, quint32 parentRecord, quint16 parentSequence)
{
    Result result;
    QSet<quint32> seen;
    quint32 number = parentRecord;
    quint16 sequence = parentSequence;
    for (int depth = 0; depth < kMaxDepth && !seen.contains(number); ++depth) {
        const DirectoryEntry* dir = nullptr;
        for (auto it = directories.constFind(number); it != directories.cend() && it.key() == number && !dir; ++it)
            if (sequenceMatches(it.value().sequence, it.value().live, sequence))
                dir = &it.value();
        if (!dir || dir->name.isEmpty())
            break;
        seen.insert(number);
        result.folders.prepend(dir->name);
        if (number == kRootRecord && dir->name == QLatin1String("."))
            break;
        number = dir->parentRecord;
        sequence = dir->parentSequence;
    }
    return result;
}
