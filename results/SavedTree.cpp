#include "results/SavedTree.h"
#include "results/CarvedFile.h"
#include "results/ExfatFile.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/ResultTree.h"

#include <QDataStream>
#include <QIODevice>
#include "results/TreeLock.h"
#include <memory>

namespace {
constexpr quint32 kMagic = 0x4f535454; // "OSTT"
constexpr quint16 kVersion = 1;
constexpr auto kStreamVersion = QDataStream::Qt_6_0;

enum Kind : quint8 { kNtfs = 1, kFat32 = 2, kExfat = 3, kCarved = 4 };

void writeFile(QDataStream& out, const FoundFile* f)
{
    if (dynamic_cast<const NtfsFile*>(f)) {
        out << quint8(kNtfs);
    } else if (dynamic_cast<const Fat32File*>(f)) {
        out << quint8(kFat32);
    } else if (dynamic_cast<const ExfatFile*>(f)) {
        out << quint8(kExfat);
    } else {
        out << quint8(kCarved);
    }
    out << f->name() << f->modifiedMsecs << f->size << bool(f->selected) << bool(f->cut);
    if (const auto* n = dynamic_cast<const NtfsFile*>(f)) {
        const QList<DataRun> runs = n->runs();
        out << n->mftRecord << n->recordOffset() << n->resident() << n->residentOffset() << n->initializedSize
            << n->compressionUnitClusters() << quint32(runs.size());
        for (const DataRun& r : runs)
            out << r.vcnEnd << r.length << r.lcn << r.sparse;
    } else if (const auto* fat = dynamic_cast<const Fat32File*>(f)) {
        out << fat->firstCluster << fat->carvedClusters;
    } else if (const auto* ex = dynamic_cast<const ExfatFile*>(f)) {
        const Extents extents = ex->extents();
        out << quint32(extents.size());
        for (const Extent& e : extents)
            out << e.offset << e.length << e.hole;
    } else {
        const auto* carved = dynamic_cast<const CarvedFile*>(f);
        out << (carved ? carved->volumeOffset : quint64(0));
    }
}

void writeFolder(QDataStream& out, const FolderNode* folder, int keepFolders)
{
    out << quint32(folder->files.size());
    for (const FoundFile* f : folder->files)
        writeFile(out, f);
    const qsizetype folders = keepFolders >= 0 ? qMin<qsizetype>(keepFolders, folder->children.size()) : folder->children.size();
    out << quint32(folders);
    for (qsizetype i = 0; i < folders; ++i) {
        const FolderNode* child = folder->children.at(i);
        out << child->name << qint32(child->partIndex) << child->ntfs << qint32(child->checkState) << child->expanded;
        writeFolder(out, child, -1);
    }
}

// Reads one count and checks it against the bound; false on a bad stream.
bool readCount(QDataStream& in, quint32* count)
{
    in >> *count;
    return in.status() == QDataStream::Ok && *count <= SavedTree::kMaxCount;
}

FoundFile* readTyped(QDataStream& in, quint8 kind)
{
    quint32 count = 0;
    switch (kind) {
    case kNtfs: {
        auto file = std::make_unique<NtfsFile>();
        quint64 recordOffset = 0;
        bool resident = false;
        quint16 residentOffset = 0;
        quint32 unitClusters = 0;
        in >> file->mftRecord >> recordOffset >> resident >> residentOffset >> file->initializedSize >> unitClusters;
        file->setCompressionUnitClusters(unitClusters);
        if (!readCount(in, &count))
            return nullptr;
        QList<DataRun> runs;
        for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
            DataRun run;
            in >> run.vcnEnd >> run.length >> run.lcn >> run.sparse;
            runs.append(run);
        }
        if (resident)
            file->setResident(recordOffset, residentOffset);
        else
            file->setRuns(runs);
        return file.release();
    }
    case kFat32: {
        auto* file = new Fat32File;
        in >> file->firstCluster >> file->carvedClusters;
        return file;
    }
    case kExfat: {
        auto file = std::make_unique<ExfatFile>();
        if (!readCount(in, &count))
            return nullptr;
        Extents extents;
        for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
            Extent e;
            in >> e.offset >> e.length >> e.hole;
            extents.append(e);
        }
        file->setExtents(extents);
        return file.release();
    }
    case kCarved: {
        auto* file = new CarvedFile;
        in >> file->volumeOffset;
        return file;
    }
    default: return nullptr;
    }
}

bool readFiles(QDataStream& in, FolderNode* folder)
{
    quint32 count = 0;
    if (!readCount(in, &count))
        return false;
    for (quint32 i = 0; i < count; ++i) {
        quint8 kind = 0;
        QString name;
        quint64 modified = 0, size = 0;
        bool selected = false, cut = false;
        in >> kind >> name >> modified >> size >> selected >> cut;
        FoundFile* file = in.status() == QDataStream::Ok ? readTyped(in, kind) : nullptr;
        if (!file)
            return false;
        folder->files.append(file);
        file->setName(name);
        file->modifiedMsecs = modified;
        file->size = size;
        file->selected = selected;
        file->cut = cut;
        if (in.status() != QDataStream::Ok)
            return false;
    }
    return true;
}

// Reads the folders below scratch, depth first without recursion: a damaged
// file can nest as deep as it likes, the stack of this thread can't.
bool readFolders(QDataStream& in, FolderNode* scratch)
{
    struct Frame {
        FolderNode* folder;
        quint32 left;
    };
    QList<Frame> stack;
    quint32 count = 0;
    if (!readFiles(in, scratch) || !readCount(in, &count))
        return false;
    stack.append({scratch, count});
    while (!stack.isEmpty()) {
        Frame& top = stack.last();
        if (top.left == 0) {
            stack.removeLast();
            continue;
        }
        --top.left;
        auto* child = new FolderNode;
        child->parent = top.folder;
        top.folder->children.append(child);
        qint32 partIndex = 0, checkState = 0;
        in >> child->name >> partIndex >> child->ntfs >> checkState >> child->expanded;
        child->partIndex = partIndex;
        child->checkState = qBound(0, checkState, 2);
        if (in.status() != QDataStream::Ok || stack.size() >= SavedTree::kMaxDepth || !readFiles(in, child)
            || !readCount(in, &count))
            return false;
        stack.append({child, count});
    }
    return true;
}

// Hangs what was read below scratch into root's tree, counted there.
void adopt(FolderNode* scratch, FolderNode* root)
{
    ResultTree* tree = ResultTree::of(root);
    QList<FolderNode*> pending(scratch->children.begin(), scratch->children.end());
    quint64 folders = 0;
    while (!pending.isEmpty()) {
        FolderNode* folder = pending.takeLast();
        folder->tree = tree;
        ++folders;
        pending.append(folder->children);
        if (tree)
            for (const FoundFile* f : folder->files)
                tree->noteFile(f->size);
    }
    TreeLock::Write lock(ResultTree::lockOf(root));
    // The names move into the tree's pool, as FolderNode::addFile moves them.
    if (tree) {
        QList<const FolderNode*> named{scratch};
        while (!named.isEmpty()) {
            const FolderNode* folder = named.takeLast();
            named.append(QList<const FolderNode*>(folder->children.cbegin(), folder->children.cend()));
            for (FoundFile* f : folder->files)
                f->poolName(tree->names());
        }
    }
    for (FolderNode* child : scratch->children)
        child->parent = root;
    root->children.append(scratch->children);
    root->files.append(scratch->files);
    if (tree) {
        for (const FoundFile* f : scratch->files)
            tree->noteFile(f->size);
        for (quint64 i = 0; i < folders; ++i)
            tree->noteFolder();
    }
    scratch->children.clear();
    scratch->files.clear();
}
} // namespace

QByteArray SavedTree::write(const FolderNode* root, int keepFolders)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(kStreamVersion);
    out << kMagic << kVersion;
    if (root)
        writeFolder(out, root, keepFolders);
    return bytes;
}

bool SavedTree::read(const QByteArray& bytes, FolderNode* root, QString* why)
{
    QDataStream in(bytes);
    in.setVersion(kStreamVersion);
    quint32 magic = 0;
    quint16 version = 0;
    in >> magic >> version;
    if (magic != kMagic || version != kVersion) {
        *why = QStringLiteral("not a saved result tree of this version");
        return false;
    }
    FolderNode scratch;
    if (!readFolders(in, &scratch) || !in.atEnd()) {
        *why = QStringLiteral("the saved result tree is damaged");
        return false;
    }
    adopt(&scratch, root);
    return true;
}

void SavedTree::clear(FolderNode* root)
{
    if (!root)
        return;
    TreeLock::Write lock(ResultTree::lockOf(root));
    qDeleteAll(root->children);
    qDeleteAll(root->files);
    root->children.clear();
    root->files.clear();
}
