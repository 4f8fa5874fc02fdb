#pragma once
#include "scan/device/ByteSource.h"
#include <QString>
#include <functional>
#include <memory>

// A block device or an image file, opened O_RDONLY | O_CLOEXEC | O_NONBLOCK
// and read with pread; anything else (FIFO, socket, terminal) is refused by
// its type before it is opened. The descriptor is closed when the last handle on it goes.
class FileSource : public ByteSource {
public:
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    // Opens path read-only; null with *error set to errno on failure.
    static std::shared_ptr<FileSource> open(const QString& path, int* error);

    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override;
    quint64 size() const override { return m_size; }
    quint64 currentSize() const override;
    const QString& path() const { return m_path; }
    bool rotational() const override { return m_rotational; }
    // Whether the file or device at path lies on a spinning disk, as the
    // kernel reports the disk (of a partition: of the disk it is on).
    static bool onSpinningDisk(const QString& path);
    int fd() const { return m_fd; } // for probes inside the device layer only

    // Every open of a device or image goes through open(); tests watch the flags it uses.
    using OpenObserver = std::function<void(const QString& path, int flags)>;
    static void setOpenObserver(OpenObserver observer);

private:
    FileSource(int fd, quint64 size, QString path);
    int m_fd;
    quint64 m_size;
    QString m_path;
    bool m_rotational = false;
};
