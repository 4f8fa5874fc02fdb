#pragma once
#include <QString>
#include <QtGlobal>
#include <memory>

class TargetFile;

// An open folder of a restore target, and the only way the program writes:
// every folder and file is made relative to an open folder handle, and no
// symbolic link met on the way is followed (O_NOFOLLOW throughout), so a link
// planted inside the target cannot send a write outside it. Errors are errno
// values.
class TargetDir {
public:
    ~TargetDir();
    TargetDir(const TargetDir&) = delete;
    TargetDir& operator=(const TargetDir&) = delete;

    // Opens an existing folder by path; the last component must not be a link.
    static std::unique_ptr<TargetDir> open(const QString& path, int* error);

    // Opens the child folder, making it when missing. A link or a file of that
    // name is an error (ENOTDIR or ELOOP), never followed.
    std::unique_ptr<TargetDir> child(const QString& name, int* error) const;
    // Creates a new file; EEXIST when the name is taken by anything.
    std::unique_ptr<TargetFile> create(const QString& name, int* error) const;
    // True when something (a file, a folder, a link) has this name.
    bool contains(const QString& name) const;
    // Removes the entry of that name (a file or a link, never what a link points at).
    bool removeEntry(const QString& name, int* error) const;

    // Free bytes on the file system below path, or -1.
    static qint64 freeBytes(const QString& path);
    // Whether a file can be made in the folder at path right now (a probe file
    // is made and removed again); errno value or 0.
    static int probeWritable(const QString& path);

    // Tests: the writes of every file together fail with ENOSPC once this many
    // bytes are written (a target that fills up); 0 lifts the limit.
    static void setWriteBudgetForTests(quint64 bytes);
    // Tests: told of every file made, cut to length or dated, with the file's
    // descriptor, so a test sees which open each step went through. Null: none.
    enum class FileOp { Create, Resize, SetDate };
    using FileOpObserver = void (*)(FileOp op, int fd);
    static void setFileOpObserverForTests(FileOpObserver observer);

private:
    explicit TargetDir(int fd) : m_fd(fd) {}
    int m_fd;
};

// A file made by TargetDir::create, open for writing.
class TargetFile {
public:
    ~TargetFile();
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    // Writes all of data at offset; errno value or 0.
    int write(quint64 offset, const char* data, quint64 bytes);
    // The end of the furthest write so far.
    quint64 writtenEnd() const { return m_end; }
    // Sets the length (holes read as zeros); errno value or 0.
    int resize(quint64 bytes);
    // Sets the modification time on the open file; errno value or 0.
    int setModified(qint64 msecsSinceEpoch);

private:
    friend class TargetDir;
    explicit TargetFile(int fd) : m_fd(fd) {}
    int m_fd;
    quint64 m_end = 0;
};
