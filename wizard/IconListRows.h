#pragma once
#include "results/ResultFilter.h"

#include <QList>
#include <QPixmap>
#include <QString>
#include <functional>

class PartScan;
class QListWidget;
struct FolderNode;
struct FoundFile;

// Step 3's icon list: one item per file of a folder, with a thumbnail for
// pictures read through the scanner and a stock picture for everything else.
class IconListRows {
public:
    using Notify = std::function<void(const QString&)>;

    // notify gets the long-load message before the reads start, when the
    // folder is mostly JPEG files.
    static void fill(QListWidget* list, FolderNode* folder, PartScan* scanner, const Notify& notify,
                     const ResultFilter& filter = ResultFilter());

    // 20 or more files, of which all but at most 4 end in ".jpg".
    static bool isLongLoad(const QList<FoundFile*>& files);
    // The thumbnail of a picture file; null when the file isn't one, is too
    // large or doesn't decode.
    static QPixmap thumbnail(PartScan* scanner, FolderNode* folder, FoundFile* file);
};
