#include "scan/device/SplitRawSource.h"
#include "scan/CheckedMath.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <cerrno>

namespace {
// split numbers up to this many pieces with three digits or letters; more
// pieces than that are not a set a user makes by hand.
constexpr int kMaxPieces = 17576;

// "name.001": the stem and the numbering after the last dot.
struct Numbering {
    QString stem;
    QString suffix;
    bool digits = false;
    bool valid = false;
};

Numbering numberingOf(const QString& path)
{
    static const QRegularExpression pattern(QStringLiteral("^(.+)\\.([0-9]{2,4}|[a-z]{2,3})$"));
    const QRegularExpressionMatch m = pattern.match(path);
    Numbering n;
    if (!m.hasMatch())
        return n;
    n.stem = m.captured(1);
    n.suffix = m.captured(2);
    n.digits = n.suffix.at(0).isDigit();
    n.valid = true;
    return n;
}

// The suffix after this one, of the same width; empty after the last.
QString nextSuffix(QString suffix)
{
    const QChar first = suffix.at(0).isDigit() ? QLatin1Char('0') : QLatin1Char('a');
    const QChar last = suffix.at(0).isDigit() ? QLatin1Char('9') : QLatin1Char('z');
    for (int i = suffix.size() - 1; i >= 0; --i) {
        if (suffix[i] != last) {
            suffix[i] = QChar(suffix[i].unicode() + 1);
            return suffix;
        }
        suffix[i] = first;
    }
    return {};
}

// The suffixes a first piece may carry in this width: 000 or 001, aa.
QStringList firstSuffixes(const Numbering& n)
{
    if (!n.digits)
        return {QString(n.suffix.size(), QLatin1Char('a'))};
    const QString zeros(n.suffix.size(), QLatin1Char('0'));
    return {zeros, zeros.left(zeros.size() - 1) + QLatin1Char('1')};
}
} // namespace

QStringList SplitRawSource::piecesFrom(const QString& path)
{
    const Numbering n = numberingOf(path);
    if (!n.valid || !firstSuffixes(n).contains(n.suffix))
        return {};
    QStringList pieces{path};
    for (QString s = nextSuffix(n.suffix); !s.isEmpty() && pieces.size() < kMaxPieces; s = nextSuffix(s)) {
        const QString next = n.stem + QLatin1Char('.') + s;
        if (!QFileInfo(next).isFile())
            break;
        pieces.append(next);
    }
    return pieces;
}

bool SplitRawSource::isLaterPiece(const QString& path)
{
    const Numbering n = numberingOf(path);
    if (!n.valid)
        return false;
    const QStringList firsts = firstSuffixes(n);
    return std::any_of(firsts.begin(), firsts.end(), [&](const QString& first) {
        return first < n.suffix && piecesFrom(n.stem + QLatin1Char('.') + first).contains(path);
    });
}

QString SplitRawSource::setName(const QString& path)
{
    return QFileInfo(numberingOf(path).stem).fileName();
}

std::shared_ptr<ByteSource> SplitRawSource::open(const QStringList& pieces, int* error)
{
    std::shared_ptr<SplitRawSource> source(new SplitRawSource);
    for (const QString& path : pieces) {
        std::shared_ptr<FileSource> file = FileSource::open(path, error);
        if (!file)
            return nullptr;
        uint64_t end = 0;
        if (!checked::add(source->m_size, file->size(), &end)) {
            if (error)
                *error = EOVERFLOW;
            return nullptr;
        }
        source->m_pieces.push_back({file, source->m_size});
        source->m_size = end;
    }
    return source;
}

qint64 SplitRawSource::readAt(void* buffer, quint64 bytes, quint64 position) const
{
    if (position >= m_size)
        return 0;
    const quint64 want = qMin(bytes, m_size - position);
    // The piece holding position: the last one starting at or before it.
    auto it = std::upper_bound(m_pieces.begin(), m_pieces.end(), position,
                               [](quint64 p, const Piece& piece) { return p < piece.start; });
    --it;
    auto* out = static_cast<char*>(buffer);
    quint64 done = 0;
    for (; it != m_pieces.end() && done < want; ++it) { // bounded by the piece count
        const quint64 offset = position + done - it->start;
        const quint64 n = qMin(want - done, it->file->size() - offset);
        const qint64 r = it->file->readAt(out + done, n, offset);
        if (r < 0)
            return done > 0 ? qint64(done) : -1;
        done += quint64(r);
        if (quint64(r) < n)
            break; // a piece shorter than when it was opened
    }
    return qint64(done);
}

bool SplitRawSource::rotational() const
{
    return std::any_of(m_pieces.begin(), m_pieces.end(), [](const Piece& p) { return p.file->rotational(); });
}
