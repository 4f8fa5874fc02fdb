#include "wizard/FoundFileContent.h"
#include "results/FolderNode.h"
#include "scan/PartScan.h"

namespace {
// A disk search picks the partition scanner by partIndex in the same call.
void aimAt(PartScan* scanner, FolderNode* folder)
{
    scanner->partIndex = folder->partIndex;
}
} // namespace

quint64 FoundFileContent::bufferLength(PartScan* scanner, FolderNode* folder, FoundFile* file)
{
    aimAt(scanner, folder);
    return qMax(scanner->fileContent(nullptr, file), file->size);
}

QByteArray FoundFileContent::read(PartScan* scanner, FolderNode* folder, FoundFile* file, quint64 length)
{
    QByteArray buffer(qsizetype(length), '\0');
    aimAt(scanner, folder);
    scanner->fileContent(buffer.data(), file);
    return buffer;
}
