#include "scan/device/TargetDir.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {
// Folders and files of a restore get the usual modes; the umask narrows them.
constexpr mode_t kFolderMode = 0777;
constexpr mode_t kFileMode = 0666;
// One pwrite at most this large, so a huge file is written in steps.
constexpr quint64 kMaxSingleWrite = quint64(1) << 30;

std::atomic<quint64> writeBudget{0};
std::atomic<quint64> written{0};
std::atomic<TargetDir::FileOpObserver> fileOpObserver{nullptr};

void observe(TargetDir::FileOp op, int fd)
{
    if (const TargetDir::FileOpObserver o = fileOpObserver.load())
        o(op, fd);
}

int errorOr(int fallback)
{
    return errno ? errno : fallback;
}

void setError(int* out, int error)
{
    if (out)
        *out = error;
}
} // namespace

TargetDir::~TargetDir()
{
    ::close(m_fd);
}

std::unique_ptr<TargetDir> TargetDir::open(const QString& path, int* error)
{
    const int fd = ::open(path.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        setError(error, errno);
        return nullptr;
    }
    return std::unique_ptr<TargetDir>(new TargetDir(fd));
}

std::unique_ptr<TargetDir> TargetDir::child(const QString& name, int* error) const
{
    const QByteArray native = name.toLocal8Bit();
    if (::mkdirat(m_fd, native.constData(), kFolderMode) != 0 && errno != EEXIST) {
        setError(error, errno);
        return nullptr;
    }
    const int fd = ::openat(m_fd, native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        setError(error, errno);
        return nullptr;
    }
    return std::unique_ptr<TargetDir>(new TargetDir(fd));
}

std::unique_ptr<TargetFile> TargetDir::create(const QString& name, int* error) const
{
    const int fd = ::openat(m_fd, name.toLocal8Bit().constData(),
                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode);
    if (fd < 0) {
        setError(error, errno);
        return nullptr;
    }
    observe(FileOp::Create, fd);
    return std::unique_ptr<TargetFile>(new TargetFile(fd));
}

bool TargetDir::contains(const QString& name) const
{
    struct stat st {};
    return ::fstatat(m_fd, name.toLocal8Bit().constData(), &st, AT_SYMLINK_NOFOLLOW) == 0;
}

bool TargetDir::removeEntry(const QString& name, int* error) const
{
    if (::unlinkat(m_fd, name.toLocal8Bit().constData(), 0) == 0)
        return true;
    setError(error, errno);
    return false;
}

qint64 TargetDir::freeBytes(const QString& path)
{
    struct statvfs vfs {};
    if (::statvfs(path.toLocal8Bit().constData(), &vfs) != 0)
        return -1;
    return qint64(quint64(vfs.f_bavail) * quint64(vfs.f_frsize));
}

int TargetDir::probeWritable(const QString& path)
{
    int error = 0;
    std::unique_ptr<TargetDir> dir = open(path, &error);
    if (!dir)
        return error;
    // An unnamed file needs the same rights as a named one and leaves nothing behind.
    const int fd = ::openat(dir->m_fd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kFileMode);
    if (fd >= 0) {
        ::close(fd);
        return 0;
    }
    if (errno != EOPNOTSUPP && errno != EISDIR)
        return errno;
    // A file system without unnamed files: ask for the right instead.
    return ::faccessat(dir->m_fd, ".", W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

void TargetDir::setFileOpObserverForTests(FileOpObserver observer)
{
    fileOpObserver = observer;
}

void TargetDir::setWriteBudgetForTests(quint64 bytes)
{
    writeBudget = bytes;
    written = 0;
}

TargetFile::~TargetFile()
{
    ::close(m_fd);
}

int TargetFile::write(quint64 offset, const char* data, quint64 bytes)
{
    quint64 done = 0;
    while (done < bytes) {
        quint64 chunk = qMin(bytes - done, kMaxSingleWrite);
        const quint64 budget = writeBudget;
        if (budget != 0) {
            const quint64 used = written;
            if (used >= budget)
                return ENOSPC;
            chunk = qMin(chunk, budget - used);
        }
        const ssize_t w = ::pwrite(m_fd, data + done, size_t(chunk), off_t(offset + done));
        if (w < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (w == 0)
            return ENOSPC;
        done += quint64(w);
        written += quint64(w);
    }
    m_end = qMax(m_end, offset + bytes);
    return 0;
}

int TargetFile::resize(quint64 bytes)
{
    observe(TargetDir::FileOp::Resize, m_fd);
    return ::ftruncate(m_fd, off_t(bytes)) == 0 ? 0 : errorOr(EIO);
}

int TargetFile::setModified(qint64 msecs)
{
    observe(TargetDir::FileOp::SetDate, m_fd);
    const struct timespec times[2] = {{0, UTIME_OMIT}, {time_t(msecs / 1000), long(msecs % 1000) * 1000000L}};
    return ::futimens(m_fd, times) == 0 ? 0 : errorOr(EIO);
}
