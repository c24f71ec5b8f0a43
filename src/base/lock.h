// What sessions on several threads of one process share is touched under a lock. Windows' own: nothing of a thread
// library is needed for it, and it takes no start-up code.
#pragma once

#include "base/no_copy.h"

#include <windows.h>

namespace qx {

// Not recursive. Code that runs under it calls no window and no code of others.
class Lock : NoCopy {
public:
    constexpr Lock() noexcept = default;

private:
    friend class Locked;
    SRWLOCK lock_ = SRWLOCK_INIT;
};

// Holds the lock while it lives.
class Locked : NoCopy {
public:
    explicit Locked(Lock& lock) noexcept : lock_(lock.lock_) { AcquireSRWLockExclusive(&lock_); }
    ~Locked() { ReleaseSRWLockExclusive(&lock_); }

private:
    SRWLOCK& lock_;
};

} // namespace qx
