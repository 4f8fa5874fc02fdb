#pragma once
#include <QByteArray>
#include <QtGlobal>

class PartScan;
struct FolderNode;
struct FoundFile;

// Reads a found file through its scanner on the window's thread, for a
// thumbnail or a preview. The scanner reads under its handle lock, so this is
// safe while a scan or a restore runs.
class FoundFileContent {
public:
    static constexpr quint64 kThumbnailLimit = 104857600; // 100 MiB, exclusive
    static constexpr quint64 kPreviewLimit = 314572800;   // 300 MiB, inclusive

    // The larger of what the scanner asks for and the file's size: the content
    // and at least one zero byte behind it.
    static quint64 bufferLength(PartScan* scanner, FolderNode* folder, FoundFile* file);
    // A zero-filled buffer of that length with the content at its start.
    static QByteArray read(PartScan* scanner, FolderNode* folder, FoundFile* file, quint64 length);
};
