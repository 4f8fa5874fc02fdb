#pragma once
#include "scan/VolumeScan.h"

#include "carving/BlockAlignment.h"

// Format recovery of a volume no file system can be read from (both boot
// sectors gone, or none the program knows): no metadata pass, only the
// carving pass over the whole volume, in the block size its data shows.
class RawVolumeScan : public VolumeScan {
    Q_OBJECT
public:
    RawVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~RawVolumeScan() override;

    bool extentsOf(const FoundFile& file, Extents* extents) const override;

protected:
    bool scanMetadata(ScanTotals& totals) override;
    quint64 progressTotal() const override;
    void carveFreeBlocks(const CarvingContext& context) override;
    // The block size is guessed again: the guess reads the same sample.
    bool canResumeCarving() const override { return true; }
    bool prepareCarvingResume(const QByteArray& state) override;

private:
    BlockAlignment m_alignment;
};
