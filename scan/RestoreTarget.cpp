#include "scan/RestoreTarget.h"
#include "scan/SafeFileName.h"
#include "scan/device/TargetDir.h"

#include <QFileInfo>
#include <cerrno>
#include <cstring>

namespace {
// A folder with this many files of one name is damage or a loop, not a folder.
constexpr int kMaxNameNumber = 100000;
} // namespace

RestoreTarget::RestoreTarget() = default;
RestoreTarget::~RestoreTarget() = default;

RestoreTarget::Check RestoreTarget::check(const QString& dir, quint64 bytesNeeded)
{
    Check c;
    const QFileInfo info(dir);
    if (!info.exists()) {
        c.problem = Problem::Missing;
        c.reason = QStringLiteral("%1 does not exist").arg(dir);
        return c;
    }
    if (!info.isDir()) {
        c.problem = Problem::NotFolder;
        c.reason = QStringLiteral("%1 is not a folder").arg(dir);
        return c;
    }
    if (const int error = TargetDir::probeWritable(dir)) {
        c.problem = Problem::NotWritable;
        c.reason = QStringLiteral("%1 cannot be written: %2").arg(dir, QString::fromLocal8Bit(strerror(error)));
        return c;
    }
    c.freeBytes = TargetDir::freeBytes(dir);
    if (c.freeBytes >= 0 && quint64(c.freeBytes) < bytesNeeded) {
        c.problem = Problem::NoRoom;
        c.reason = QStringLiteral("%1 has %2 bytes free, the selection needs %3").arg(dir).arg(c.freeBytes).arg(bytesNeeded);
    }
    return c;
}

bool RestoreTarget::open(const QString& dir, int* error)
{
    m_root = TargetDir::open(dir, &m_openError);
    if (error)
        *error = m_openError;
    return bool(m_root);
}

std::unique_ptr<TargetDir> RestoreTarget::folder(const QStringList& names, RestoreFailure* why) const
{
    if (!m_root) {
        *why = RestoreReport::failureOfError(m_openError);
        return nullptr;
    }
    std::unique_ptr<TargetDir> at;
    for (const QString& name : names) {
        int error = 0;
        at = (at ? *at : *m_root).child(name, &error);
        if (!at) {
            *why = RestoreReport::failureOfError(error);
            return nullptr;
        }
    }
    if (!at)
        at = m_root->child(QStringLiteral("."), nullptr);
    return at;
}

std::unique_ptr<TargetFile> RestoreTarget::create(const TargetDir& folder, const QString& safeName, bool keepBoth,
                                                  QString* usedName, RestoreFailure* why) const
{
    // The create itself tells whether the name is taken (O_EXCL): no look
    // before it, so a file to a free name costs one call.
    QString name = safeName;
    int error = 0;
    std::unique_ptr<TargetFile> file = folder.create(name, &error);
    for (int n = 2; !file && error == EEXIST && keepBoth; ++n) {
        if (n > kMaxNameNumber) {
            *why = RestoreFailure::NameRefused;
            return nullptr;
        }
        name = SafeFileName::numbered(safeName, n);
        file = folder.create(name, &error);
    }
    if (!file && error == EEXIST && !keepBoth) {
        // Replaced: a link is removed, never written through.
        if (!folder.removeEntry(name, &error)) {
            *why = RestoreReport::failureOfError(error);
            return nullptr;
        }
        file = folder.create(name, &error);
    }
    *usedName = name;
    if (!file)
        *why = RestoreReport::failureOfError(error);
    return file;
}
