#pragma once
#include <QReadWriteLock>

// Scanners append to the result tree on their own thread while the window reads
// it. Every append takes this lock for writing, briefly; every reader of
// `children` or `files` outside the scan thread holds it for reading.
class ResultTreeLock {
public:
    static QReadWriteLock& lock();
};
