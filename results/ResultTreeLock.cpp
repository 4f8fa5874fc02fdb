#include "results/ResultTreeLock.h"

QReadWriteLock& ResultTreeLock::lock()
{
    static QReadWriteLock instance;
    return instance;
}
