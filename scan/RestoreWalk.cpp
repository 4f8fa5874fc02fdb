#include "scan/RestoreWalk.h"
#include "results/FolderNode.h"
#include "scan/RestoreSink.h"
#include "scan/RestoreTarget.h"
#include "scan/SafeFileName.h"
#include "scan/device/TargetDir.h"

namespace {
// Deeper trees than this come only from damaged records; the walk stops there.
constexpr int kMaxDepth = 4096;

struct WalkContext {
    const RestoreTarget& target;
    bool keepBoth;
    const RestoreWalk::Content& content;
    RestoreReport* report;
    const RestoreWalk::Written& written;
    const ResultFilter& filter;
};

RestoredFile writeOne(const WalkContext& c, const TargetDir& folder, const QString& prefix, FoundFile* file)
{
    RestoredFile r;
    r.size = file->size;
    r.path = prefix + SafeFileName::component(file->name());
    QString used;
    std::unique_ptr<TargetFile> out = c.target.create(folder, SafeFileName::component(file->name()), c.keepBoth, &used, &r.failure);
    if (!out) {
        r.outcome = RestoredFile::NotWritten;
        return r;
    }
    r.path = prefix + used;
    RestoreSink sink(*out);
    r.failure = c.content(file, sink);
    if (r.failure == RestoreFailure::None)
        r.failure = sink.failure();
    // Nothing of it could be read: there is nothing to give back.
    if (r.failure == RestoreFailure::None && file->size > 0 && sink.outsideBytes() >= file->size)
        r.failure = RestoreFailure::OutsideDevice;
    // Sets the length where the writes stopped short of it (holes, a tail no
    // cluster held: they read as zeros); a file written to its size is left be.
    if (r.failure == RestoreFailure::None && out->writtenEnd() != file->size)
        r.failure = RestoreReport::failureOfError(out->resize(file->size));
    if (r.failure != RestoreFailure::None) {
        out.reset();
        folder.removeEntry(used, nullptr); // our own half-written file, not what was there
        r.outcome = RestoredFile::NotWritten;
        return r;
    }
    // The tree's date, so a restored folder sorts by date as the original did.
    if (file->modifiedMsecs > 0)
        out->setModified(qint64(file->modifiedMsecs));
    r.badRanges = sink.badRanges();
    r.outcome = r.badRanges.isEmpty() ? RestoredFile::Whole : RestoredFile::Damaged;
    return r;
}

void writeFolder(const WalkContext& c, FolderNode* folder)
{
    const QStringList names = RestoreWalk::folderNames(folder);
    const QString prefix = names.isEmpty() ? QString() : names.join(QLatin1Char('/')) + QLatin1Char('/');
    RestoreFailure why = RestoreFailure::None;
    std::unique_ptr<TargetDir> dir;
    for (FoundFile* f : folder->files) {
        if (!f->selected || !c.filter.matches(*f))
            continue;
        // Made for the first file written into it, so no empty folders are left.
        if (!dir && why == RestoreFailure::None && !f->nameOnly)
            dir = c.target.folder(names, &why);
        RestoredFile r;
        if (f->nameOnly) {
            // Nothing to write: the report says why, and the target is not touched.
            r = RestoredFile{prefix + SafeFileName::component(f->name()), f->size, RestoredFile::NotWritten, RestoreFailure::NameOnly, {}};
        } else if (dir) {
            r = writeOne(c, *dir, prefix, f);
        } else {
            r.path = prefix + SafeFileName::component(f->name());
            r.size = f->size;
            r.outcome = RestoredFile::NotWritten;
            r.failure = why;
        }
        c.report->add(r);
        if (r.outcome != RestoredFile::NotWritten)
            c.written(r.size);
    }
}
} // namespace

QStringList RestoreWalk::folderNames(const FolderNode* folder)
{
    QStringList parts;
    int depth = 0;
    for (const FolderNode* f = folder; f && f->parent && depth < kMaxDepth; f = f->parent, ++depth)
        parts.prepend(SafeFileName::component(f->name));
    return parts;
}

void RestoreWalk::run(FolderNode* root, const RestoreTarget& target, bool keepBoth, const Content& content,
                      RestoreReport* report, const Written& written, const ResultFilter& filter)
{
    if (!root)
        return;
    const WalkContext c{target, keepBoth, content, report, written, filter};
    QList<FolderNode*> work{root};
    while (!work.isEmpty()) {
        FolderNode* folder = work.takeLast();
        if (folder->checkState != 0)
            writeFolder(c, folder);
        work.append(folder->children);
    }
}
