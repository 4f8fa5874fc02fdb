#pragma once
#include "scan/device/ByteSource.h"

#include <QMutex>
#include <cstdint>
#include <functional>
#include <sys/types.h>

// The handle calls the libyal readers (libewf, libvhdi, libvmdk, libqcow) have
// in common. Their public handle and error types are all intptr_t, so one
// table of pointers fits each library's own functions.
struct LibyalCalls {
    int (*initialize)(intptr_t** handle, intptr_t** error);
    int (*close)(intptr_t* handle, intptr_t** error);
    int (*free)(intptr_t** handle, intptr_t** error);
    int (*mediaSize)(intptr_t* handle, uint64_t* size, intptr_t** error);
    ssize_t (*read)(intptr_t* handle, void* buffer, size_t size, off64_t offset, intptr_t** error);
};

// A disk image container read through a libyal library. The libraries keep a
// current position and caches in their handles, so reads are serialised by a
// mutex: scans may read one source from several threads, as with FileSource.
class LibyalSource : public ByteSource {
public:
    ~LibyalSource() override;
    LibyalSource(const LibyalSource&) = delete;
    LibyalSource& operator=(const LibyalSource&) = delete;

    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override;
    quint64 size() const override { return m_size; }
    bool rotational() const override { return m_rotational; }

protected:
    explicit LibyalSource(const LibyalCalls& calls);
    // Opens the handle with the library's own open call(s), which return 1 on
    // success, and asks the media size; false with *error set when the
    // container is unusable.
    bool start(const std::function<int(intptr_t* handle)>& open, int* error);
    void setRotational(bool rotational) { m_rotational = rotational; }

private:
    const LibyalCalls& m_calls;
    intptr_t* m_handle = nullptr;
    bool m_open = false;
    quint64 m_size = 0;
    bool m_rotational = false;
    mutable QMutex m_mutex;
};
