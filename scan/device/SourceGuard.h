#pragma once
#include <QSet>
#include <QString>

// Keeps a restore off the device it recovers from: files written there could
// overwrite the very clusters that still hold lost files. Devices are compared
// by number, not by path, so a symlink, a bind mount or a second mount of the
// same volume does not get past it.
class SourceGuard {
public:
    // Where the kernel's tables are read; tests point these at fakes.
    struct Tables {
        QString sysfs = QStringLiteral("/sys");
        QString mountInfo = QStringLiteral("/proc/self/mountinfo");
    };

    SourceGuard() = default;
    explicit SourceGuard(Tables tables) : m_tables(std::move(tables)) {}

    // The device numbers a source covers: a block device and, for a disk,
    // every partition on it; an image file, the loop devices it backs.
    QSet<quint64> sourceDevices(const QString& sourcePath) const;
    // The device numbers a folder lies on (the nearest existing folder when it
    // does not exist yet): its own, and the block device its mount names.
    QSet<quint64> targetDevices(const QString& dir) const;
    // Why dir must not receive a restore from sourcePath; empty when it may.
    QString refusal(const QString& dir, const QString& sourcePath) const;
    // The same for a disk of the program's device layer, in every mode: the
    // whole disk and all its partitions count as the source.
    static QString refusalForDisk(const QString& dir, int disk);

private:
    QSet<quint64> blockDevicesNamed(const QString& name) const;
    QSet<quint64> loopDevicesOf(const QString& imagePath) const;
    Tables m_tables;
};
