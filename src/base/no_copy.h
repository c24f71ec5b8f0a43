// What may exist only once.
#pragma once

namespace qx {

// Base of classes whose objects stand for something that a copy would not: a handle, a lock, a hook, a place in memory.
struct NoCopy {
    NoCopy() = default;
    NoCopy(const NoCopy&) = delete;
    NoCopy& operator=(const NoCopy&) = delete;
};

} // namespace qx
