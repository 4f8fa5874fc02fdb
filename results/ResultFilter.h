#pragma once
#include "results/FileKind.h"

#include <QString>
#include <QtGlobal>
#include <limits>

struct FoundFile;

// Which found files a user wants to see and restore: kinds, a size range, a
// date range and a name. The wizard's filters and the command line's options
// are this one test; a file the filter hides is neither listed, counted nor
// restored. The default lets every file through.
struct ResultFilter {
    static constexpr quint32 kAllKinds = (1u << FileKind::KindCount) - 1;

    quint32 kinds = kAllKinds; // bit per FileKind::Kind
    quint64 minSize = 0;
    quint64 maxSize = std::numeric_limits<quint64>::max();
    // Milliseconds since 1970 UTC; 0 for no bound. With either bound set, a
    // file of unknown time doesn't pass.
    quint64 afterMsecs = 0;
    quint64 beforeMsecs = 0;
    QString name; // part of the name, or a wildcard pattern with * or ?; any case

    bool matches(const FoundFile& file) const;
    bool isOpen() const; // lets everything through

    // "10K", "5M", "1G" or a plain byte count; false when it isn't one.
    static bool parseSize(const QString& text, quint64* bytes);
    // "yyyy-MM-dd" as the start of that day in UTC; false when it isn't one.
    static bool parseDate(const QString& text, quint64* msecs);
};
