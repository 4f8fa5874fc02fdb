#pragma once
#include <shared_mutex>

// The lock of one scan's result tree: the scanner appends under a write lock,
// the window, the lists and the restore read under read locks. A standard
// reader-writer lock rather than Qt's, so that the thread sanitizer sees every
// hand-over between the scan thread and its readers.
class TreeLock {
    // Holds the lock for a scope, shared or alone; a null lock (a folder made
    // on its own, as tests do) holds nothing.
    template <bool Shared>
    class Guard {
    public:
        explicit Guard(TreeLock* lock) : m_lock(lock)
        {
            if (!m_lock)
                return;
            if constexpr (Shared)
                m_lock->m_mutex.lock_shared();
            else
                m_lock->m_mutex.lock();
        }
        ~Guard()
        {
            if (!m_lock)
                return;
            if constexpr (Shared)
                m_lock->m_mutex.unlock_shared();
            else
                m_lock->m_mutex.unlock();
        }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        TreeLock* m_lock;
    };

public:
    using Read = Guard<true>;
    using Write = Guard<false>;

private:
    std::shared_mutex m_mutex;
};
