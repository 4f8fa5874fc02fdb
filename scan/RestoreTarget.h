#pragma once
#include "scan/RestoreReport.h"

#include <QString>
#include <QStringList>
#include <memory>

class TargetDir;
class TargetFile;

// The folder a restore writes into. It is opened once; every folder and file
// below it is made relative to that handle without following links, so what a
// restore writes stays inside the target whatever the target already holds.
class RestoreTarget {
public:
    enum class Problem { None, Missing, NotFolder, NotWritable, NoRoom };
    struct Check {
        Problem problem = Problem::None;
        QString reason;        // for a message; empty when fine
        qint64 freeBytes = -1; // -1 when unknown
        bool ok() const { return problem == Problem::None; }
    };
    // What stands against restoring bytesNeeded bytes into dir right now.
    static Check check(const QString& dir, quint64 bytesNeeded);

    RestoreTarget();
    ~RestoreTarget();

    // Opens the target folder; false with *error set to an errno value.
    bool open(const QString& dir, int* error);
    // The folder below the target at these safe names, made where missing.
    std::unique_ptr<TargetDir> folder(const QStringList& names, RestoreFailure* why) const;
    // A new file for a safe name in folder. Without keepBoth a name already
    // there is unlinked first (a link is removed, never written through); with
    // it the first free "name (2).ext" is used. *usedName gets the name.
    std::unique_ptr<TargetFile> create(const TargetDir& folder, const QString& safeName, bool keepBoth,
                                       QString* usedName, RestoreFailure* why) const;

private:
    std::unique_ptr<TargetDir> m_root;
    int m_openError = 0;
};
