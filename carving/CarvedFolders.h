#pragma once
#include <QHash>
#include <QSet>
#include <QString>

struct FolderNode;
struct FoundFile;

// Where carved files go in the result tree: the folder "额外文件" below the
// volume folder, and below it one folder per extension at a time, numbered,
// each holding a bounded number of files. Also gives the carved files their names.
class CarvedFolders {
public:
    // Makes "额外文件" at once, so a pass that finds nothing still shows it.
    // With adopt (a resumed pass), takes the one an earlier run of the pass
    // left, and goes on with its folders and names.
    CarvedFolders(FolderNode* root, int partIndex, bool ntfs, bool adopt = false);

    FolderNode* extraFolder() const { return m_extra; }

    // The stem the content gave ("IMG_20191224_234846"), made unique with a
    // running suffix; without one "F%1" with the running number in at least
    // nine digits, raised past numbers earlier names of this pass took.
    QString takeName(const QString& extension, const QString& stem, quint64 runningNumber);

    // Appends the finished record to the extension's current folder, opening
    // the next one when that is full. The folder owns the record from then on.
    void file(const QString& extension, FoundFile* record);

    static constexpr int kFilesPerFolder = 20; // keeps a folder's list short enough to browse

private:
    void adoptFolders();
    void adoptNames(const FolderNode* folder);

    struct KindFolder {
        FolderNode* current = nullptr;
        int number = 1;
        int filed = 0;
    };

    FolderNode* m_extra;
    int m_partIndex;
    bool m_ntfs;
    QHash<QString, KindFolder> m_kinds;
    QSet<QString> m_stems;
    quint64 m_nextFreeNumber = 0;
};
