#include "results/ResultFilter.h"
#include "results/FoundFile.h"
#include "scan/CheckedMath.h"

#include <QDate>
#include <QDateTime>
#include <QRegularExpression>

bool ResultFilter::matches(const FoundFile& file) const
{
    // Every kind let through: the name's kind, looked up by its ending, is not needed.
    const bool allKinds = (kinds & kAllKinds) == kAllKinds;
    if (!allKinds && !(kinds & (1u << FileKind::of(file.name()))))
        return false;
    if (file.size < minSize || file.size > maxSize)
        return false;
    if ((afterMsecs || beforeMsecs) && file.modifiedMsecs == 0)
        return false;
    if (afterMsecs && file.modifiedMsecs < afterMsecs)
        return false;
    if (beforeMsecs && file.modifiedMsecs >= beforeMsecs)
        return false;
    if (name.isEmpty())
        return true;
    if (name.contains(QLatin1Char('*')) || name.contains(QLatin1Char('?'))) {
        const QRegularExpression pattern(QRegularExpression::wildcardToRegularExpression(name),
                                         QRegularExpression::CaseInsensitiveOption);
        return pattern.match(file.nameView()).hasMatch();
    }
    return file.nameView().contains(name, Qt::CaseInsensitive);
}

bool ResultFilter::isOpen() const
{
    return kinds == kAllKinds && minSize == 0 && maxSize == std::numeric_limits<quint64>::max() && !afterMsecs &&
           !beforeMsecs && name.isEmpty();
}

bool ResultFilter::parseSize(const QString& text, quint64* bytes)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(\\d+)\\s*([kmgt]?)i?b?\\s*$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = form.match(text);
    bool ok = false;
    const uint64_t number = m.hasMatch() ? m.captured(1).toULongLong(&ok) : 0;
    if (!ok)
        return false;
    const QString unit = m.captured(2).toLower();
    const int shift = unit.isEmpty() ? 0 : int(QStringLiteral("kmgt").indexOf(unit) + 1) * 10;
    uint64_t product = 0;
    if (!checked::mul(number, uint64_t(1) << shift, &product))
        return false;
    *bytes = product;
    return true;
}

bool ResultFilter::parseDate(const QString& text, quint64* msecs)
{
    const QDate date = QDate::fromString(text.trimmed(), Qt::ISODate);
    if (!date.isValid())
        return false;
    const qint64 at = date.startOfDay(Qt::UTC).toMSecsSinceEpoch();
    if (at <= 0)
        return false;
    *msecs = quint64(at);
    return true;
}
