#include "scan/device/FileSource.h"

#include <QFile>
#include <QMutex>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {
QMutex observerMutex;
FileSource::OpenObserver& observer()
{
    static FileSource::OpenObserver instance;
    return instance;
}

// A single pread may return less than asked; this caps one system call so a
// huge request cannot tie up the kernel in one go.
constexpr quint64 kMaxSingleRead = quint64(1) << 30;
} // namespace

FileSource::FileSource(int fd, quint64 size, QString path)
    : m_fd(fd), m_size(size), m_path(std::move(path)) {}

FileSource::~FileSource()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

void FileSource::setOpenObserver(OpenObserver o)
{
    QMutexLocker lock(&observerMutex);
    observer() = std::move(o);
}

namespace {
// The size of an open regular file or block device; 0 for anything else or on failure.
quint64 sizeOf(int fd, const struct stat& st)
{
    if (S_ISREG(st.st_mode))
        return quint64(st.st_size);
    unsigned long long bytes = 0;
    if (S_ISBLK(st.st_mode) && ::ioctl(fd, BLKGETSIZE64, &bytes) == 0)
        return bytes;
    return 0;
}

// The kernel's flag for the disk behind a device number: the device's own
// queue, or for a partition the queue of its disk. Without one (memory,
// network and overlay file systems) the device counts as not spinning.
bool spinning(dev_t device)
{
    constexpr qint64 kFlagBytes = 8; // "0\n" or "1\n"
    if (major(device) == 0)
        return false;
    const QString base = QStringLiteral("/sys/dev/block/%1:%2/").arg(major(device)).arg(minor(device));
    for (const QString& at : {base + QStringLiteral("queue/rotational"), base + QStringLiteral("../queue/rotational")}) {
        QFile flag(at);
        if (flag.open(QIODevice::ReadOnly))
            return flag.read(kFlagBytes).trimmed() == "1";
    }
    return false;
}

// A device by its own number, a file by the number of the device it lies on.
bool spinning(const struct stat& st)
{
    return spinning(S_ISBLK(st.st_mode) ? st.st_rdev : st.st_dev);
}

bool readableKind(const struct stat& st)
{
    return S_ISREG(st.st_mode) || S_ISBLK(st.st_mode);
}

std::shared_ptr<FileSource> failWith(int error, int* out)
{
    if (out)
        *out = error;
    return nullptr;
}
} // namespace

std::shared_ptr<FileSource> FileSource::open(const QString& path, int* error)
{
    // Non-blocking: a FIFO or a terminal given as an image must not hang the
    // open; they are refused by type before, this covers a swap in between.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    {
        QMutexLocker lock(&observerMutex);
        if (observer())
            observer()(path, flags);
    }
    const QByteArray native = path.toLocal8Bit();
    struct stat st {};
    if (::stat(native.constData(), &st) != 0)
        return failWith(errno, error);
    if (!readableKind(st))
        return failWith(ENODEV, error);
    const int fd = ::open(native.constData(), flags);
    if (fd < 0)
        return failWith(errno, error);
    if (::fstat(fd, &st) != 0 || !readableKind(st)) {
        const int e = errno ? errno : ENODEV;
        ::close(fd);
        return failWith(readableKind(st) ? e : ENODEV, error);
    }
    std::shared_ptr<FileSource> source(new FileSource(fd, sizeOf(fd, st), path));
    source->m_rotational = spinning(st);
    return source;
}

bool FileSource::onSpinningDisk(const QString& path)
{
    struct stat st {};
    return ::stat(path.toLocal8Bit().constData(), &st) == 0 && spinning(st);
}

quint64 FileSource::currentSize() const
{
    struct stat st {};
    if (::fstat(m_fd, &st) != 0)
        return 0;
    return sizeOf(m_fd, st);
}

qint64 FileSource::readAt(void* buffer, quint64 bytes, quint64 position) const
{
    if (position >= m_size)
        return 0;
    quint64 want = qMin(bytes, m_size - position);
    quint64 done = 0;
    auto* out = static_cast<char*>(buffer);
    while (done < want) {
        const size_t chunk = size_t(qMin(want - done, kMaxSingleRead));
        const ssize_t r = ::pread(m_fd, out + done, chunk, off_t(position + done));
        if (r < 0) {
            if (errno == EINTR)
                continue;
            return done > 0 ? qint64(done) : -1;
        }
        if (r == 0)
            break;
        done += quint64(r);
    }
    return qint64(done);
}
