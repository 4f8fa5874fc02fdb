#pragma once
#include <QString>
#include <QtGlobal>
#include <vector>

class CarveSource;

// The image file directories of a TIFF structure (a TIFF file, a raw photo
// built on TIFF, or the EXIF block of a JPEG), walked from its header: how far
// the data they point to reaches, and the few text fields that name a file.
class TiffStructure {
public:
    // base: the source offset of the TIFF header ("II*\0" or "MM\0*").
    TiffStructure(CarveSource& source, quint64 base);

    // Walks every directory that can be reached (IFD chain, sub-IFDs, EXIF,
    // GPS, interoperability). False when the header or the first directory is bad.
    bool walk();

    // The end of the furthest byte any directory or its data reaches, from base.
    quint64 extent() const { return m_extent; }
    QString make() const { return m_make; }
    QString dateTimeOriginal() const { return m_dateTimeOriginal; }
    bool hasDngVersion() const { return m_dng; }

    static constexpr int kMaxDirectories = 64;     // raw photos have a handful; a loop or a forgery has more
    static constexpr quint64 kMaxEntries = 1024;   // entries in one directory
    static constexpr quint64 kMaxPieces = 65536;   // strips or tiles of one image

private:
    struct Entry {
        quint64 tag = 0, type = 0, count = 0, bytes = 0, dataOffset = 0;
    };

    quint64 get(quint64 pos, int width);
    bool readEntry(quint64 pos, Entry* e);
    quint64 element(const Entry& e, quint64 index);
    QString ascii(const Entry& e);
    void reach(quint64 offset, quint64 bytes);
    bool walkDirectory(quint64 offset, std::vector<quint64>* pending);
    void notePieces(const Entry& offsets, const Entry& counts);

    CarveSource& m_source;
    quint64 m_base;
    bool m_bigEndian = false;
    quint64 m_extent = 0;
    QString m_make;
    QString m_dateTimeOriginal;
    bool m_dng = false;
};
