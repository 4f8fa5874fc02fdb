#include "scan/device/DiskListLayer.h"
#include "scan/device/PartitionTable.h"

#include <algorithm>
#include <cerrno>

namespace {
constexpr char kLastLetter = 'Z';

bool typeTakesLetter(quint8 type)
{
    return type == PartitionType::Ntfs || type == PartitionType::Fat32 || type == PartitionType::Fat32Lba;
}
} // namespace

void DiskListLayer::ensureDiscovered()
{
    QMutexLocker lock(&m_mutex);
    if (m_discovered)
        return;
    m_discovered = true;
    lock.unlock();
    appendDisks(discover());
}

void DiskListLayer::appendDisks(const QList<DiskInfo>& disks)
{
    QMutexLocker lock(&m_mutex);
    for (DiskInfo d : disks) {
        assignLetters(&d);
        m_disks.push_back(d);
    }
}

void DiskListLayer::assignLetters(DiskInfo* d)
{
    d->letters.clear();
    DeviceHandle whole;
    for (const PartitionEntry& e : d->layout.entries) {
        // A bare volume gets its letter whatever it holds: it is the whole device.
        bool wanted = typeTakesLetter(e.mbrType) || d->layout.style == DriveLayout::Raw;
        if (!wanted && d->open) {
            if (!whole.isValid()) {
                int err = 0;
                whole = d->open(&err);
            }
            wanted = PartitionTable::bootKind(whole.slice(e.startingOffset, e.length)) != PartitionTable::BootKind::None;
        }
        if (wanted && m_nextLetter <= kLastLetter)
            d->letters.append(QChar(m_nextLetter++));
        else
            d->letters.append(QChar());
    }
}

const DiskInfo* DiskListLayer::disk(int number)
{
    ensureDiscovered();
    QMutexLocker lock(&m_mutex);
    if (number < 0 || size_t(number) >= m_disks.size())
        return nullptr;
    return &m_disks[number]; // entries are never removed, so the pointer stays good
}

DiskListLayer::LetterPlace DiskListLayer::placeOf(QChar letter)
{
    ensureDiscovered();
    QMutexLocker lock(&m_mutex);
    const QChar upper = letter.toUpper();
    for (int d = 0; d < int(m_disks.size()); ++d) {
        const int entry = m_disks[d].letters.indexOf(upper);
        if (!upper.isNull() && entry >= 0)
            return {d, entry};
    }
    return {};
}

int DiskListLayer::diskOfPath(const QString& path)
{
    ensureDiscovered();
    QMutexLocker lock(&m_mutex);
    for (int i = 0; i < int(m_disks.size()); ++i) {
        if (!path.isEmpty() && m_disks[size_t(i)].path == path)
            return i;
    }
    return -1;
}

QList<int> DiskListLayer::listDisks()
{
    ensureDiscovered();
    QMutexLocker lock(&m_mutex);
    QList<int> numbers;
    for (int i = 0; i < int(m_disks.size()); ++i)
        numbers.append(i);
    return numbers;
}

std::optional<DiskGeometry> DiskListLayer::diskGeometry(int number)
{
    const DiskInfo* d = disk(number);
    if (!d)
        return std::nullopt;
    // Linux reports no cylinders; one sector a "cylinder" keeps the size exact,
    // so the whole-disk search reaches the last sector.
    DiskGeometry g;
    g.bytesPerSector = d->bytesPerSector;
    g.cylinders = d->sizeBytes / d->bytesPerSector;
    g.tracksPerCylinder = 1;
    g.sectorsPerTrack = 1;
    g.mediaType = d->mediaType;
    return g;
}

std::optional<DiskIdentity> DiskListLayer::diskIdentity(int number)
{
    const DiskInfo* d = disk(number);
    if (!d)
        return std::nullopt;
    return d->identity;
}

QByteArray DiskListLayer::diskFriendlyName(int number)
{
    const DiskInfo* d = disk(number);
    return d ? d->friendlyName : QByteArray();
}

std::optional<DriveLayout> DiskListLayer::driveLayout(int number)
{
    const DiskInfo* d = disk(number);
    if (!d)
        return std::nullopt;
    return d->layout;
}

QList<QChar> DiskListLayer::lettersOfDisk(int number)
{
    const DiskInfo* d = disk(number);
    QList<QChar> letters;
    if (d) {
        for (QChar c : d->letters)
            if (!c.isNull())
                letters.append(c);
    }
    std::sort(letters.begin(), letters.end());
    return letters;
}

int DiskListLayer::deviceNumberOfLetter(QChar letter)
{
    return placeOf(letter).disk;
}

std::optional<PartitionEntry> DiskListLayer::partitionOfLetter(QChar letter)
{
    const LetterPlace p = placeOf(letter);
    if (p.disk < 0)
        return std::nullopt;
    return disk(p.disk)->layout.entries.at(p.entry);
}

QString DiskListLayer::volumeLabel(QChar letter)
{
    const LetterPlace p = placeOf(letter);
    if (p.disk < 0)
        return {};
    return disk(p.disk)->labels.value(p.entry);
}

QString DiskListLayer::mountPointOfLetter(QChar letter)
{
    const LetterPlace p = placeOf(letter);
    if (p.disk < 0)
        return {};
    return disk(p.disk)->mountPoints.value(p.entry);
}

QString DiskListLayer::devicePath(int number)
{
    const DiskInfo* d = disk(number);
    return d ? d->path : QString();
}

DeviceHandle DiskListLayer::openDisk(int number, int* error)
{
    const DiskInfo* d = disk(number);
    if (!d || !d->open) {
        if (error)
            *error = ENOENT;
        return {};
    }
    return d->open(error);
}

DeviceHandle DiskListLayer::openVolume(QChar letter, int* error)
{
    const LetterPlace p = placeOf(letter);
    if (p.disk < 0) {
        if (error)
            *error = ENOENT;
        return {};
    }
    const PartitionEntry e = disk(p.disk)->layout.entries.at(p.entry);
    const DeviceHandle whole = openDisk(p.disk, error);
    if (!whole.isValid())
        return {};
    return whole.slice(e.startingOffset, e.length);
}

int DiskListLayer::partitionTypeOfLetter(QChar letter)
{
    const std::optional<PartitionEntry> e = partitionOfLetter(letter);
    return e ? e->mbrType : 0;
}
