#pragma once
#include "carving/CarveKind.h"

// OLE2 compound files (DOC, XLS, PPT, MSI): the file ends with the last sector
// that its sector allocation table marks as used. The stream names of the
// directory pick the extension.
class Ole2Kind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("ole"); }
    int firstByte() const override { return 0xD0; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(2) << 30; // version 3 files can't be larger; Office files stay far below
    static constexpr quint64 kMaxTableSectors = 1 << 16;   // table sectors: 2 GiB of 512-byte sectors

private:
    static QString extensionOfDirectory(CarveSource& source, quint64 sector, quint64 sectorBytes);
};
