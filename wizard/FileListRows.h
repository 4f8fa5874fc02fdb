#pragma once
#include <QList>
#include <QMap>
#include <QString>

class QTreeWidget;
struct FolderNode;
struct FoundFile;

// Step 3's file list: one row per file of a folder, with name, modification
// time and size, the type's icon and the folder's check state.
class FileListRows {
public:
    static void fill(QTreeWidget* list, FolderNode* folder, const QMap<QString, QString>& iconMap);

    // Local time "yyyy-MM-dd HH:mm:ss", or "未知时间" for 0.
    static QString timeText(quint64 modifiedMsecs);
    // Always KB, one decimal, right-aligned in ten places.
    static QString sizeText(quint64 bytes);
    // The icon path for a name's extension, ":./null.ico" without an entry.
    static QString iconPath(const QString& fileName, const QMap<QString, QString>& iconMap);

    // The folder's files as they are now, taken under the tree's read lock:
    // the scan may append while the rows are built.
    static QList<FoundFile*> filesOf(FolderNode* folder);
    // A partly checked folder shows as checked on its rows.
    static int rowCheckState(const FolderNode* folder);
};
