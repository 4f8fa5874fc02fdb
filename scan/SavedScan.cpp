#include "scan/SavedScan.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "results/SavedTree.h"
#include "scan/PartScan.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>
#include <QFile>
#include "results/TreeLock.h"
#include <QSaveFile>

namespace {
const QByteArray kMagic = QByteArrayLiteral("OSTREL-SAVED-SCAN");
constexpr quint16 kVersion = 1;
constexpr auto kStreamVersion = QDataStream::Qt_6_0;
constexpr auto kHash = QCryptographicHash::Sha256;
constexpr qsizetype kHashBytes = 32;

QByteArray hashOf(const DeviceHandle& handle, quint64 position, quint64 bytes)
{
    QByteArray data(qsizetype(bytes), '\0');
    const qint64 got = handle.read(data.data(), bytes, position);
    data.truncate(got > 0 ? qsizetype(got) : 0);
    return QCryptographicHash::hash(data, kHash);
}

QDataStream& operator<<(QDataStream& out, const ResumePoint& p)
{
    return out << quint8(p.phase) << p.position << p.end << p.runningNumber << p.results << p.totalSize << p.keepFolders
               << p.scannerState;
}

QDataStream& operator>>(QDataStream& in, ResumePoint& p)
{
    quint8 phase = 0;
    in >> phase >> p.position >> p.end >> p.runningNumber >> p.results >> p.totalSize >> p.keepFolders >> p.scannerState;
    if (phase > ResumePoint::kLastPhase)
        in.setStatus(QDataStream::ReadCorruptData);
    p.phase = ResumePoint::Phase(phase);
    return in;
}
} // namespace

SavedScan::Fingerprint SavedScan::fingerprintOf(const DeviceHandle& handle)
{
    Fingerprint f;
    f.size = handle.length();
    const quint64 bytes = qMin(kFingerprintBytes, f.size);
    f.head = hashOf(handle, 0, bytes);
    f.tail = hashOf(handle, f.size - bytes, bytes);
    return f;
}

void SavedScan::capture(const PartScan& scanner)
{
    point = scanner.resumePoint;
    if (point.phase == ResumePoint::Start) {
        tree.clear();
        return;
    }
    TreeLock::Read lock(ResultTree::lockOf(scanner.rootFolder));
    tree = SavedTree::write(scanner.rootFolder, point.keepFolders);
}

bool SavedScan::applyTo(PartScan* scanner, QString* why) const
{
    scanner->resumeFrom = ResumePoint();
    if (point.phase == ResumePoint::Start)
        return true;
    if (!SavedTree::read(tree, scanner->rootFolder, why))
        return false;
    scanner->resumeFrom = point;
    return true;
}

QByteArray SavedScan::toBytes() const
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(kStreamVersion);
    out.writeRawData(kMagic.constData(), int(kMagic.size()));
    out << kVersion << source << mode << fileFilter << doExtra << fingerprint.size << fingerprint.head << fingerprint.tail
        << point << tree;
    return bytes + QCryptographicHash::hash(bytes, kHash);
}

bool SavedScan::fromBytes(const QByteArray& bytes, SavedScan* out, QString* why)
{
    if (!bytes.startsWith(kMagic)) {
        *why = QStringLiteral("not a saved scan");
        return false;
    }
    const QByteArray body = bytes.chopped(qMin(kHashBytes, bytes.size()));
    if (bytes.size() < kMagic.size() + kHashBytes || QCryptographicHash::hash(body, kHash) != bytes.right(kHashBytes)) {
        *why = QStringLiteral("the saved scan is damaged or cut short");
        return false;
    }
    QDataStream in(body);
    in.setVersion(kStreamVersion);
    in.skipRawData(int(kMagic.size()));
    quint16 version = 0;
    in >> version;
    if (version != kVersion) {
        *why = QStringLiteral("the saved scan is of another version (%1)").arg(version);
        return false;
    }
    SavedScan s;
    in >> s.source >> s.mode >> s.fileFilter >> s.doExtra >> s.fingerprint.size >> s.fingerprint.head >> s.fingerprint.tail
        >> s.point >> s.tree;
    if (in.status() != QDataStream::Ok || !in.atEnd()) {
        *why = QStringLiteral("the saved scan is damaged");
        return false;
    }
    *out = s;
    return true;
}

bool SavedScan::write(const QString& path, QString* why) const
{
    // QSaveFile writes beside the file, syncs it to disk and renames it over the old one.
    QSaveFile file(path);
    const QByteArray bytes = toBytes();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *why = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}

bool SavedScan::read(const QString& path, SavedScan* out, QString* why)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *why = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.size() > kMaxFileBytes) {
        *why = QStringLiteral("%1 is too large for a saved scan").arg(path);
        return false;
    }
    return fromBytes(file.readAll(), out, why);
}
