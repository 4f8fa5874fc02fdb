#pragma once
#include <QString>

// Names that come from a disk are untrusted when files are written: these make
// any of them a single harmless path component inside the target folder.
class SafeFileName {
public:
    // "." / ".." / empty become "_", "_._" / "_.._"; "/", ":" and NUL become "_";
    // unpaired UTF-16 surrogates become U+FFFD; the result fits 255 UTF-8 bytes.
    static QString component(const QString& name);
    // A safe name with " (number)" before its extension, still within 255 bytes.
    static QString numbered(const QString& safeName, int number);
};
