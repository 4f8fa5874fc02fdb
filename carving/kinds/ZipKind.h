#pragma once
#include "carving/CarveKind.h"

// ZIP and the formats built on it (DOCX, XLSX, PPTX, ODT, ODS, ODP, EPUB):
// local entries, then the central directory, to the end of central directory
// record. The entries' names pick the extension.
class ZipKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("zip"); }
    int firstByte() const override { return 'P'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(4) << 30; // the largest archive without ZIP64 records

private:
    static bool skipLocalEntry(CarveSource& source, quint64* pos, QString* extension);
    static bool findDescriptorEnd(CarveSource& source, quint64* pos);
    static QString extensionOfEntry(CarveSource& source, quint64 entry, const QByteArray& name);
};
