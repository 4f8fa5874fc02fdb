#pragma once
#include "PrintQString.h"
#include "fat32/Fat32VolumeScan.h"
#include "fixtures/SignalWaiter.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "scan/device/MemorySource.h"

#include <QSignalSpy>
#include <QStringList>
#include <functional>
#include <memory>

// A FAT32 scanner over a volume in memory, run to its end, with the tree it
// built: the top node and the volume folder "E" as the wizard makes them.
struct ScannedVolume {
    explicit ScannedVolume(const QByteArray& volume, bool doExtra = false,
                           std::function<bool(quint64, quint64)> readFilter = {})
    {
        auto source = std::make_shared<MemorySource>(volume);
        if (readFilter)
            source->setReadFilter(std::move(readFilter));
        scan = std::make_unique<Fat32VolumeScan>(QStringLiteral("E"), DeviceHandle(source), 0);
        root = top->addChild(QStringLiteral("E"), 0, false);
        scan->rootFolder = root;
        scan->doExtra = doExtra;
        begin = std::make_unique<QSignalSpy>(scan.get(), &PartScan::scanBegin);
        ones = std::make_unique<QSignalSpy>(scan.get(), &PartScan::scanOne);
        done = std::make_unique<QSignalSpy>(scan.get(), &PartScan::scanDone);
    }

    ~ScannedVolume()
    {
        scan.reset(); // frees the volume folder with the tree below it
        top->children.clear();
    }

    void run()
    {
        scan->start();
        waitForThread(scan.get());
    }

    quint64 results() const { return done->isEmpty() ? ~0ull : done->first().at(0).toULongLong(); }
    quint64 totalSize() const { return done->isEmpty() ? ~0ull : done->first().at(1).toULongLong(); }

    // "folder/…/name<TAB>size" for every file, folders' files first, then their children.
    QStringList listing() const
    {
        QStringList out;
        list(root, QString(), &out);
        return out;
    }

    Fat32File* file(const QString& path) const
    {
        const QStringList parts = path.split('/');
        FolderNode* f = root;
        for (int i = 0; f && i + 1 < parts.size(); ++i)
            f = f->findChild(parts[i]);
        if (!f)
            return nullptr;
        for (FoundFile* r : f->files) {
            if (r->name == parts.last())
                return static_cast<Fat32File*>(r);
        }
        return nullptr;
    }

    QByteArray content(const QString& path) const
    {
        Fat32File* f = file(path);
        if (!f)
            return {};
        QByteArray buf(int(scan->fileContent(nullptr, f)), '\0');
        buf.truncate(int(scan->fileContent(buf.data(), f)));
        return buf;
    }

    std::unique_ptr<FolderNode> top = std::make_unique<FolderNode>();
    FolderNode* root = nullptr;
    std::unique_ptr<Fat32VolumeScan> scan;
    std::unique_ptr<QSignalSpy> begin, ones, done;

private:
    static void list(const FolderNode* f, const QString& prefix, QStringList* out)
    {
        for (const FoundFile* r : f->files)
            out->append(prefix + r->name + '\t' + QString::number(r->size));
        for (const FolderNode* c : f->children)
            list(c, prefix + c->name + '/', out);
    }
};
