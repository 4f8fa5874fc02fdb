#pragma once
#include "results/ResultFilter.h"
#include <QJsonObject>
#include <QString>

struct FolderNode;

// The rebuilt tree as the command line prints it: one line per file (path
// from the visible root, size, modified time), or one JSON document.
class TreeReport {
public:
    // Only the files the filter lets through are listed.
    static QString text(const FolderNode* root, const ResultFilter& filter = ResultFilter());
    static QJsonObject json(const FolderNode* root, const ResultFilter& filter = ResultFilter());
    // "2020-11-07T10:00:00Z", or empty for an unknown time.
    static QString isoTime(quint64 msecs);
    // The folder at a path such as "C/audio2" (the root's own name may be left out).
    static FolderNode* find(FolderNode* root, const QString& path);
};
