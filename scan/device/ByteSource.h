#pragma once
#include <QtGlobal>

// Something that bytes can be read from at a position: a block device, an image
// file, or a buffer in memory. Read-only by construction: there is no write.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Reads up to bytes at position. Returns the count read (short or 0 at the
    // end), or -1 with errno set.
    virtual qint64 readAt(void* buffer, quint64 bytes, quint64 position) const = 0;
    virtual quint64 size() const = 0;
    // The size now, for a source that can shrink while it is read (an image
    // file cut short, a disk pulled out); size() stays the size seen at open.
    virtual quint64 currentSize() const { return size(); }
    // Whether the bytes lie on a spinning disk: a second reader beside the
    // first only makes its head seek there. Unknown counts as not.
    virtual bool rotational() const { return false; }
};
