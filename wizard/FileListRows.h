#pragma once
#include "results/ResultFilter.h"

#include <QList>
#include <QMap>
#include <QString>

class QTreeWidget;
struct FolderNode;
struct FoundFile;

// Step 3's file list: one row per file of a folder, with name, modification
// time, size and where it came from, the type's icon and the file's own tick.
// Rows sort by what they stand for (times and sizes as numbers), not by text.
class FileListRows {
public:
    enum Column { NameColumn, TimeColumn, SizeColumn, StatusColumn, ColumnCount };

    static void fill(QTreeWidget* list, FolderNode* folder, const QMap<QString, QString>& iconMap,
                     const ResultFilter& filter = ResultFilter());

    // "yyyy-MM-dd HH:mm:ss" in local time, or "未知时间" for 0. FAT stores the
    // wall-clock time of the machine that wrote it: with fatTime the stamp is
    // shown as stored, without a shift into this machine's zone.
    static QString timeText(quint64 modifiedMsecs, bool fatTime = false);
    // Bytes below 1 KB as "31 B", then KB, MB, GB with one decimal.
    static QString sizeText(quint64 bytes);
    // The icon path for a name's extension, whatever its case; ":./null.ico" without an entry.
    static QString iconPath(const QString& fileName, const QMap<QString, QString>& iconMap);
    // "已删除" for a deleted file found in the file system's records,
    // "已删除（仅文件名）" for one of which only the name is left;
    // "碎片恢复" for one carved by signature, "碎片恢复（不完整）" where its
    // structure broke off before its end.
    static QString statusText(bool carved, const FoundFile& file);
    // The folder holds carved files (it lies below the carving folder).
    static bool isCarvedFolder(const FolderNode* folder);

    // The folder's files as they are now, taken under the tree's read lock:
    // the scan may append while the rows are built.
    static QList<FoundFile*> filesOf(FolderNode* folder, const ResultFilter& filter = ResultFilter());
};
