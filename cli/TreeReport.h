#pragma once
#include "cli/ByteRuns.h"
#include "cli/JsonLines.h"
#include "results/ResultFilter.h"

#include <QString>
#include <functional>

struct FolderNode;
struct FoundFile;

// The rebuilt tree as the command line reports it: one line per file (path
// from the visible root, size, modified time), one JSON document, a CSV file
// for spreadsheets, or a DFXML listing for forensic tools. All four come from
// one walk of the tree.
class TreeReport {
public:
    // The byte runs of a found file, for the DFXML listing.
    using RunLookup = std::function<QList<ByteRuns::Run>(const FoundFile*)>;

    // text and json list only the files the filter lets through. Both go
    // out line by line as the walk meets the files: a million results never
    // stand in memory twice.
    using LineSink = std::function<void(const QString& line)>;
    static void text(const FolderNode* root, const ResultFilter& filter, const LineSink& line);
    // The root's name and the "folders" and "files" lists, as members of doc.
    static void json(const FolderNode* root, const ResultFilter& filter, JsonLines& doc);
    // UTF-8 with a byte order mark, so spreadsheets read the names right.
    static QByteArray csv(const FolderNode* root);
    static QByteArray dfxml(const FolderNode* root, const QString& imageName, const RunLookup& runs);
    // "2020-11-07T10:00:00Z", or empty for an unknown time.
    static QString isoTime(quint64 msecs);
    // The folder at a path such as "C/audio2" (the root's own name may be left out).
    static FolderNode* find(FolderNode* root, const QString& path);
};
