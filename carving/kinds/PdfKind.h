#pragma once
#include "carving/CarveKind.h"

// PDF: the length a linearized file states, checked against the %%EOF there;
// otherwise the last %%EOF before the data stops being this file's (another
// file's header or an empty block at a block start, or the maximum size).
class PdfKind : public CarveKind {
public:
    QString extension() const override { return QStringLiteral("pdf"); }
    int firstByte() const override { return '%'; }
    bool matches(const uchar* head, size_t bytes) const override;
    CarveEnd findEnd(CarveSource& source) const override;
    quint64 maxBytes() const override { return kMaxBytes; }

    static constexpr quint64 kMaxBytes = quint64(256) << 20; // scanned books and print files stay below

private:
    static quint64 linearizedLength(CarveSource& source);
    static quint64 afterEof(CarveSource& source, quint64 eof);
};
