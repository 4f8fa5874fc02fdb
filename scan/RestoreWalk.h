#pragma once
#include "results/ResultFilter.h"
#include "scan/RestoreReport.h"

#include <QStringList>
#include <functional>

struct FolderNode;
struct FoundFile;
class RestoreSink;
class RestoreTarget;

// The restore walk every scanner shares: every ticked file the filter lets
// through is written below the target, at the folder's path in the tree, and each
// file's fate goes into the report. Folders are made only where a file is
// written.
class RestoreWalk {
public:
    // Writes one file's content into the sink; returns what kept it from being
    // written (None when the sink got all it could).
    using Content = std::function<RestoreFailure(FoundFile* file, RestoreSink& sink)>;
    // Called after each file written, whole or damaged, with its size.
    using Written = std::function<void(quint64 size)>;

    static void run(FolderNode* root, const RestoreTarget& target, bool keepBoth, const Content& content,
                    RestoreReport* report, const Written& written, const ResultFilter& filter = ResultFilter());

    // The safe names of a folder's path, from the top down.
    static QStringList folderNames(const FolderNode* folder);
};
