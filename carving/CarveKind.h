#pragma once
#include <QString>
#include <QtGlobal>
#include <cstddef>

class CarveSource;

// What an end finder makes of a candidate.
struct CarveEnd {
    quint64 length = 0;         // 0: no file of this kind starts here
    bool cut = false;           // the structure broke before its end; length is the last good byte
    QString extension;          // empty: the kind's own
    QString stem;               // a name the content gives (without extension), or empty
    quint64 modifiedMsecs = 0;  // a time the content gives, or 0
};

// One kind of file the carving pass recognises: how its first bytes look, how
// its end is found by walking its structure, and how large it may grow.
class CarveKind {
public:
    virtual ~CarveKind() = default;

    // The extension its files get unless the content picks another; also the
    // base of its folder's label.
    virtual QString extension() const = 0;
    // The first byte every header of the kind starts with, or -1 when it can be
    // any (then the header test runs on every block).
    virtual int firstByte() const = 0;
    // Quick test of a block's first bytes.
    virtual bool matches(const uchar* head, size_t bytes) const = 0;
    // Walks the structure from offset 0 of the source to the file's end.
    virtual CarveEnd findEnd(CarveSource& source) const = 0;
    // No file of the kind is larger; the source never reaches further.
    virtual quint64 maxBytes() const = 0;

    // The folder label's pattern for files with this extension: "JPG文件-%1".
    static QString folderLabel(const QString& extension);

protected:
    // A whole file of the given length.
    static CarveEnd whole(quint64 length, QString extension = {});
    // A file cut short at length (none when nothing of it is left).
    static CarveEnd cutAt(quint64 length, QString extension = {});
};
