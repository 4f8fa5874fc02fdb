#pragma once
#include "carving/CarvedKind.h"

#include <QtGlobal>
#include <cstddef>

// Lengths given to the kinds whose headers state none; they depend on the file system.
struct CarveLengths {
    quint64 jpg = 0;
    quint64 fixed = 0; // GIF, PNG, TIFF, ICO
};

struct SignatureHit {
    CarvedKind kind = CarvedKind::None;
    quint64 size = 0;
    bool found() const { return kind != CarvedKind::None; }
};

// Decides from the first bytes of one block whether a file of a known kind
// starts there, and how long it is taken to be. Looks at nothing beyond the
// block's header bytes and follows no file structure.
class SignatureTest {
public:
    static CarveLengths ntfsLengths();
    static CarveLengths fat32Lengths(quint32 clusterBytes);

    // At most one kind matches: the signatures exclude each other.
    static SignatureHit test(const uchar* block, size_t bytes, const CarveLengths& lengths);

private:
    static SignatureHit sevenZip(const uchar* block, size_t bytes);
    static bool isBmp(const uchar* block, size_t bytes);
};
