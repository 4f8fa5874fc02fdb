#pragma once
#include "scan/device/DeviceLayer.h"

#include <QMutex>
#include <QString>
#include <deque>
#include <functional>

// One disk as a device layer implementation finds it.
struct DiskInfo {
    QString path;               // device node or image file; shown nowhere
    DiskIdentity identity;
    QByteArray friendlyName;
    quint64 sizeBytes = 0;
    quint32 mediaType = DiskGeometry::kFixedMedia;
    quint32 bytesPerSector = 512;
    DriveLayout layout;
    QList<QString> mountPoints; // one per layout entry, empty when not mounted
    QList<QString> labels;      // one per layout entry
    QList<QChar> letters;       // one per layout entry, QChar() for none
    std::function<DeviceHandle(int* error)> open;
};

// The operations of the device layer over a list of disks found once; the
// platform and image implementations only have to find the disks.
class DiskListLayer : public DeviceLayer {
public:
    QList<int> listDisks() override;
    std::optional<DiskGeometry> diskGeometry(int disk) override;
    std::optional<DiskIdentity> diskIdentity(int disk) override;
    QByteArray diskFriendlyName(int disk) override;
    std::optional<DriveLayout> driveLayout(int disk) override;
    QList<QChar> lettersOfDisk(int disk) override;
    int deviceNumberOfLetter(QChar letter) override;
    std::optional<PartitionEntry> partitionOfLetter(QChar letter) override;
    QString volumeLabel(QChar letter) override;
    QString mountPointOfLetter(QChar letter) override;
    DeviceHandle openVolume(QChar letter, int* error) override;
    DeviceHandle openDisk(int disk, int* error) override;
    int partitionTypeOfLetter(QChar letter) override;
    QString devicePath(int disk) override;

protected:
    // Finds the disks on first use; the numbers stay fixed from then on.
    virtual QList<DiskInfo> discover() = 0;
    // Appends disks found later (images added at run time) and gives them letters.
    void appendDisks(const QList<DiskInfo>& disks);
    void ensureDiscovered();
    // The number of the disk found at path, or -1.
    int diskOfPath(const QString& path);

private:
    struct LetterPlace { int disk = -1; int entry = -1; };
    LetterPlace placeOf(QChar letter);
    const DiskInfo* disk(int number);
    void assignLetters(DiskInfo* disk);

    QMutex m_mutex;
    bool m_discovered = false;
    std::deque<DiskInfo> m_disks; // a deque keeps element addresses when disks are appended
    char m_nextLetter = 'C';
};
