#pragma once
#include "results/ResultFilter.h"

#include <QString>
#include <functional>

struct FolderNode;
struct FoundFile;

// The restore walk both volume scanners share: every selected file is written
// below the target, at its folder's path in the tree.
// Folders are made only where a file is written.
class RestoreWalk {
public:
    // Called once per file with the folder made for it.
    using WriteOne = std::function<void(const QString& folderPath, FoundFile* file)>;

    // Only the files the filter lets through are written.
    static void run(FolderNode* root, const QString& targetDir, const WriteOne& write,
                    const ResultFilter& filter = ResultFilter());

    // The target path of a folder: targetDir, then the safe names from the top down.
    static QString folderPath(const FolderNode* folder, const QString& targetDir);

    // Where a found file is written in folderPath: its safe name, or with
    // keepBoth and that name taken, the first free "name (2).ext", "name (3).ext"...
    // Empty when no free name is left.
    static QString filePath(const QString& folderPath, const QString& name, bool keepBoth);

    // Gives a written file the modification time the tree shows, so a restored
    // folder sorts by date as the original did. 0 (unknown) leaves it alone.
    static bool setModified(const QString& filePath, quint64 modifiedMsecs);
};
