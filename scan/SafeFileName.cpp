#include "scan/SafeFileName.h"

namespace {
// Linux file systems take at most 255 bytes per name.
constexpr int kMaxNameBytes = 255;

QString replaceLoneSurrogates(const QString& in)
{
    QString out;
    out.reserve(in.size());
    for (int i = 0; i < in.size(); ++i) {
        const QChar c = in.at(i);
        if (c.isHighSurrogate() && i + 1 < in.size() && in.at(i + 1).isLowSurrogate()) {
            out.append(c);
            out.append(in.at(++i));
        } else if (c.isSurrogate()) {
            out.append(QChar(QChar::ReplacementCharacter));
        } else {
            out.append(c);
        }
    }
    return out;
}

// The stem, then the mark, then the extension, shortening the stem until the
// whole fits: the extension and the mark survive a long name.
QString fitBytes(const QString& name, const QString& mark = QString())
{
    const int dot = name.lastIndexOf('.');
    const QString ext = (dot > 0 && name.size() - dot <= 16) ? name.mid(dot) : QString();
    QString stem = name.left(name.size() - ext.size());
    while (!stem.isEmpty() && (stem + mark + ext).toUtf8().size() > kMaxNameBytes) {
        stem.chop(1);
        if (!stem.isEmpty() && stem.back().isHighSurrogate())
            stem.chop(1);
    }
    return stem + mark + ext;
}
} // namespace

QString SafeFileName::component(const QString& name)
{
    if (name.isEmpty())
        return QStringLiteral("_");
    if (name == QLatin1String("."))
        return QStringLiteral("_._");
    if (name == QLatin1String(".."))
        return QStringLiteral("_.._");
    QString clean = replaceLoneSurrogates(name);
    clean.replace(QChar('/'), QChar('_'));
    clean.replace(QChar(0), QChar('_'));
    // An NTFS stream is listed as "file:stream"; the Windows volumes a
    // restored file is often copied to take no ":" in a name.
    clean.replace(QChar(':'), QChar('_'));
    return fitBytes(clean);
}

QString SafeFileName::numbered(const QString& safeName, int number)
{
    return fitBytes(safeName, QStringLiteral(" (%1)").arg(number));
}
