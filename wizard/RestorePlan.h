#pragma once
#include "results/ResultFilter.h"

#include <QList>
#include <QString>
#include <QStringList>

struct FolderNode;

// The files a restore is about to write and where each one goes, taken from
// the selection before the restore starts. Step 4 asks before overwriting
// from it, and afterwards tells from it which files did not arrive whole.
class RestorePlan {
public:
    struct Entry {
        QString path; // in the target folder
        quint64 size = 0;
    };

    static RestorePlan of(FolderNode* root, const QString& targetDir, bool keepBoth, const ResultFilter& filter);

    // Files whose name is already taken in the target.
    int existing() const;

    QString targetDir;
    QList<Entry> entries;
    quint64 bytes = 0;
};
