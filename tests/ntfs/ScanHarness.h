#pragma once
#include "fixtures/SignalWaiter.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"

#include <QMap>
#include <QSignalSpy>
#include <memory>

// Runs an NTFS scan the way the wizard does: an invisible top node, the volume
// folder below it, then the thread to its end.
struct ScanHarness {
    FolderNode top;
    FolderNode* volume = nullptr;
    std::unique_ptr<NtfsVolumeScan> scan;
    quint64 results = 0;
    quint64 totalSize = 0;

    explicit ScanHarness(NtfsVolumeScan* scanner, const QString& filter = QStringLiteral("*"))
        : scan(scanner)
    {
        volume = top.addChild(scan->deviceName, 0, true);
        scan->rootFolder = volume;
        scan->fileFilter = filter;
    }

    // The scanner frees the volume folder with its tree; the top node only lets go of it.
    ~ScanHarness()
    {
        scan.reset();
        top.children.clear();
    }

    void run()
    {
        QSignalSpy done(scan.get(), &PartScan::scanDone);
        scan->start();
        waitForThread(scan.get());
        if (done.count() == 1) {
            results = done.at(0).at(0).toULongLong();
            totalSize = done.at(0).at(1).toULongLong();
        }
    }

    // Every file below the volume folder by its path from there ("a/b.txt").
    QMap<QString, NtfsFile*> files() const
    {
        QMap<QString, NtfsFile*> out;
        collect(volume, QString(), &out);
        return out;
    }

    static void collect(const FolderNode* folder, const QString& prefix, QMap<QString, NtfsFile*>* out)
    {
        for (FoundFile* f : folder->files)
            out->insert(prefix + f->name, static_cast<NtfsFile*>(f));
        for (const FolderNode* c : folder->children)
            collect(c, prefix + c->name + QLatin1Char('/'), out);
    }

    QByteArray content(NtfsFile* f) const
    {
        QByteArray buf(qsizetype(scan->fileContent(nullptr, f)), '\0');
        buf.resize(qsizetype(scan->fileContent(buf.data(), f)));
        return buf;
    }
};
