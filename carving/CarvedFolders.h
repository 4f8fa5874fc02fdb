#pragma once
#include "carving/CarvedKind.h"

#include <QString>
#include <array>

struct FolderNode;
struct FoundFile;

// Where carved files go in the result tree: the folder "额外文件" below the
// volume folder, and below it one folder per kind at a time, numbered, each
// holding a bounded number of files. Also gives the carved files their names.
class CarvedFolders {
public:
    // Makes "额外文件" at once, so a pass that finds nothing still shows it.
    CarvedFolders(FolderNode* root, int partIndex, bool ntfs);

    FolderNode* extraFolder() const { return m_extra; }

    // "F%1.<ext>" with the running number in at least nine digits. A number an
    // earlier name of this pass took is raised to the next free one, so names
    // stay unique when several hits share one running number.
    QString takeName(CarvedKind kind, quint64 runningNumber);

    // Appends the finished record to the kind's current folder, opening the
    // next one when that is full. The folder owns the record from then on.
    void file(CarvedKind kind, FoundFile* record);

    static constexpr int kFilesPerFolder = 20; // keeps a folder's list short enough to browse

private:
    struct KindFolder {
        FolderNode* current = nullptr;
        int number = 1;
        int filed = 0;
    };

    FolderNode* m_extra;
    int m_partIndex;
    bool m_ntfs;
    std::array<KindFolder, kCarvedKindCount> m_kinds;
    quint64 m_nextFreeNumber = 0;
};
