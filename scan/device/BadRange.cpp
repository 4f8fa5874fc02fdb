#include "scan/device/BadRange.h"

#include <algorithm>

void addBadRange(QList<BadRange>* list, BadRange range)
{
    if (range.length == 0)
        return;
    auto at = std::lower_bound(list->begin(), list->end(), range,
                               [](const BadRange& a, const BadRange& b) { return a.offset < b.offset; });
    qsizetype i = at - list->begin();
    if (i > 0 && list->at(i - 1).end() >= range.offset)
        --i;
    else
        list->insert(i, range);
    BadRange& merged = (*list)[i];
    const quint64 end = qMax(merged.end(), range.end());
    merged.offset = qMin(merged.offset, range.offset);
    merged.length = end - merged.offset;
    while (i + 1 < list->size() && list->at(i + 1).offset <= merged.end()) {
        merged.length = qMax(merged.end(), list->at(i + 1).end()) - merged.offset;
        list->removeAt(i + 1);
    }
}

quint64 badBytes(const QList<BadRange>& list)
{
    quint64 sum = 0;
    for (const BadRange& r : list)
        sum += r.length;
    return sum;
}
