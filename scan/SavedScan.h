#pragma once
#include "scan/ResumePoint.h"
#include "scan/device/DeviceHandle.h"

#include <QByteArray>
#include <QString>

class PartScan;

// A scan saved so that a later run goes on from where it stood: what source
// it read (how the front end names it, and the source's fingerprint), with
// which options, the point it reached and its result tree. The file ends with
// a hash of what comes before it, and is replaced whole (a temporary file in
// the same folder, synced, then renamed), so a crash at any moment leaves the
// previous file or the new one. A file that is cut short, damaged or of
// another version is refused with a reason.
class SavedScan {
public:
    // A source told apart from others by its size and the hashes of its first
    // and last MiB.
    struct Fingerprint {
        quint64 size = 0;
        QByteArray head;
        QByteArray tail;
        bool operator==(const Fingerprint& o) const { return size == o.size && head == o.head && tail == o.tail; }
        bool operator!=(const Fingerprint& o) const { return !(*this == o); }
    };
    static constexpr quint64 kFingerprintBytes = quint64(1) << 20;
    // A saved tree of tens of millions of files stays below this; more is not ours.
    static constexpr qint64 kMaxFileBytes = qint64(4) << 30;

    // Reads the first and last MiB of the view (not counted as a scan's reads).
    static Fingerprint fingerprintOf(const DeviceHandle& handle);

    QString source;      // as the front end names it ("card.img@1", "disk:0", a path)
    QString mode;        // "file", "format" or "partition"
    QString fileFilter;
    bool doExtra = false;
    Fingerprint fingerprint;
    ResumePoint point;
    QByteArray tree;     // SavedTree's bytes; empty with point Start

    // Takes the scanner's point and the tree below its root folder: on the
    // scan's thread from onResumePoint, or once the scan has ended.
    void capture(const PartScan& scanner);
    // Hands the point and the tree to a scanner before it starts. False with
    // why when the tree is damaged; the scanner then scans from the beginning.
    bool applyTo(PartScan* scanner, QString* why) const;

    bool write(const QString& path, QString* why) const;
    static bool read(const QString& path, SavedScan* out, QString* why);
    // The bytes of a saved scan and back; what write and read put in the file.
    QByteArray toBytes() const;
    static bool fromBytes(const QByteArray& bytes, SavedScan* out, QString* why);
};
