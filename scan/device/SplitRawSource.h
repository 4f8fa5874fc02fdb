#pragma once
#include "scan/device/FileSource.h"

#include <QStringList>
#include <memory>
#include <vector>

// A raw image cut into pieces ("disk.001", "disk.002", ... or "disk.aa",
// "disk.ab", ... as split writes them), read as one disk: the pieces follow
// each other in name order, each as long as its file.
class SplitRawSource : public ByteSource {
public:
    // The pieces of the set whose first piece is at path ("x.000", "x.001" or
    // "x.aa"), in order; fewer than two when path starts no such set.
    static QStringList piecesFrom(const QString& path);
    // Whether path is a later piece of a set whose first piece lies beside it.
    static bool isLaterPiece(const QString& path);
    // The name of the set: the first piece's name without its numbering.
    static QString setName(const QString& path);

    // Opens every piece; null with *error set when one fails.
    static std::shared_ptr<ByteSource> open(const QStringList& pieces, int* error);

    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override;
    quint64 size() const override { return m_size; }
    bool rotational() const override;

private:
    struct Piece {
        std::shared_ptr<FileSource> file;
        quint64 start = 0;
    };
    SplitRawSource() = default;
    std::vector<Piece> m_pieces;
    quint64 m_size = 0;
};
