// What sessions on several threads of one process share is touched under a lock. Windows' own: nothing of a thread
// library is needed for it, and it takes no start-up code.
#pragma once

#include <windows.h>

namespace qx {

// Not recursive. Code that runs under it calls no window and no code of others.
class Lock {
public:
    constexpr Lock() noexcept = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    friend class Locked;
    SRWLOCK lock_ = SRWLOCK_INIT;
};

// Holds the lock while it lives.
class Locked {
public:
    explicit Locked(Lock& lock) noexcept : lock_(lock.lock_) { AcquireSRWLockExclusive(&lock_); }
    ~Locked() { ReleaseSRWLockExclusive(&lock_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    SRWLOCK& lock_;
};

} // namespace qx
