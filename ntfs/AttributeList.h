#pragma once
#include <QList>
#include <QtGlobal>
#include <cstddef>
#include <cstdint>

// The value of an $ATTRIBUTE_LIST: where each attribute of a file stands when
// they no longer fit its base record. Only the record references are used:
// the attributes themselves are read from the records they name.
class AttributeList {
public:
    struct Entry {
        quint32 type = 0;
        quint32 record = 0;   // low 32 bits of the record reference
        quint16 sequence = 0; // its high 16 bits
    };
    // A list this long names thousands of records; longer is damage.
    static constexpr quint32 kMaxBytes = 256 * 1024;

    // The entries of the value in order; decoding stops at the first that
    // does not fit.
    static QList<Entry> decode(const uint8_t* value, size_t bytes);
};
