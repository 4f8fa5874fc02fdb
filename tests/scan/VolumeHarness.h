#pragma once
#include "fixtures/SignalWaiter.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "scan/device/MemorySource.h"

#include <QMap>
#include <QReadLocker>
#include <QSignalSpy>
#include <QStringList>
#include <functional>
#include <memory>

// A volume in memory; a read for which readable (position, bytes) is false fails.
inline DeviceHandle memoryVolume(const QByteArray& bytes, std::function<bool(quint64, quint64)> readable = {})
{
    auto source = std::make_shared<MemorySource>(bytes);
    if (readable)
        source->setReadFilter(std::move(readable));
    return DeviceHandle(source);
}

// Runs a volume scanner the way the wizard does: an invisible top node, the
// volume folder below it, the thread to its end; then reads what it found.
template <class Scanner>
struct VolumeHarness {
    explicit VolumeHarness(Scanner* scanner, const QString& filter = QStringLiteral("*"))
        : tree(std::make_unique<ResultTree>(scanner->deviceName, true)), scan(scanner),
          begin(scanner, &PartScan::scanBegin), done(scanner, &PartScan::scanDone)
    {
        volume = tree->root();
        scan->rootFolder = volume;
        scan->fileFilter = filter;
    }
    // The scanner frees the volume folder with its folders; the tree outlives it.
    ~VolumeHarness()
    {
        scan.reset();
        tree.reset();
    }

    void run()
    {
        scan->start();
        waitForThread(scan.get());
    }
    void restore(const QString& target)
    {
        scan->setRestoreDir(target);
        run();
    }
    quint64 results() const { return done.isEmpty() ? ~0ull : done.first().at(0).toULongLong(); }
    quint64 totalSize() const { return done.isEmpty() ? ~0ull : done.first().at(1).toULongLong(); }

    // Every file below the volume folder by its path from there ("a/b.txt").
    template <class File = FoundFile>
    QMap<QString, File*> files() const
    {
        QMap<QString, File*> out;
        QReadLocker lock(tree->lock());
        walk(volume, QString(), [&out](const QString& path, FoundFile* f) { out.insert(path, static_cast<File*>(f)); });
        return out;
    }
    // "path<TAB>size" of every file: a folder's files, then its folders.
    QStringList listing() const
    {
        QStringList out;
        QReadLocker lock(tree->lock());
        walk(volume, QString(), [&out](const QString& path, FoundFile* f) { out << path + '\t' + QString::number(f->size); });
        return out;
    }
    QByteArray content(FoundFile* f) const
    {
        if (!f)
            return {};
        QByteArray buf(qsizetype(scan->fileContent(nullptr, f)), '\0');
        buf.resize(qsizetype(scan->fileContent(buf.data(), f)));
        return buf;
    }
    QByteArray content(const QString& path) const { return content(files().value(path)); }

    std::unique_ptr<ResultTree> tree; // declared first: it outlives the scanner
    FolderNode* volume = nullptr;
    std::unique_ptr<Scanner> scan;
    QSignalSpy begin, done;

private:
    static void walk(const FolderNode* folder, const QString& prefix, const std::function<void(const QString&, FoundFile*)>& visit)
    {
        for (FoundFile* f : folder->files)
            visit(prefix + f->name, f);
        for (const FolderNode* c : folder->children)
            walk(c, prefix + c->name + QLatin1Char('/'), visit);
    }
};
