#pragma once
#include "exfat/ExfatBitmap.h"
#include "exfat/ExfatBootSector.h"
#include "scan/VolumeScan.h"

#include <QStringList>
#include <memory>

class ExfatVolume;
struct ExfatEntrySet;
struct Fat32File;

// The scanner of one exFAT volume: walks the directory tree from the root
// through live and deleted folders and lists every deleted file, with its
// content from its NoFatChain run or its FAT chain.
class ExfatVolumeScan : public VolumeScan {
    Q_OBJECT
public:
    explicit ExfatVolumeScan(const QString& deviceName, QObject* parent = nullptr);
    ExfatVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~ExfatVolumeScan() override;

    void parseBootSector() override;
    bool extentsOf(const FoundFile& file, Extents* extents) const override;

    // True when handle holds an exFAT boot region (main or backup) at partOffset.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);
    // False when neither boot region held: the scan then finds nothing.
    bool opened() const { return m_opened; }
    const ExfatBootSector& geometry() const { return m_boot; }

protected:
    bool scanMetadata(ScanTotals& totals) override;
    quint64 progressTotal() const override;
    void carveFreeBlocks(const CarvingContext& context) override;
    void scanFinished() override;
    // The allocation bitmap again: all the carving pass needs.
    bool canResumeCarving() const override { return true; }
    bool prepareCarvingResume(const QByteArray& state) override;

private:
    void fileDeleted(ScanTotals& totals, const ExfatVolume& volume, const QStringList& folder, const ExfatEntrySet& set);
    FolderNode* folderOf(const QStringList& path);
    // A carved file: consecutive clusters from its first.
    bool carvedExtents(const Fat32File& file, Extents* extents) const;

    ExfatBootSector m_boot;
    ExfatBitmap m_bitmap; // from the scan on: the clusters carving may walk
    bool m_opened = false;
    QStringList m_lastPath;          // the folder the last file went to, and its node:
    FolderNode* m_lastFolder = nullptr; // files of one folder come in a row
};
