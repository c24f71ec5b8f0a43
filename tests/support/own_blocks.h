// How many blocks of memory a module itself holds, told apart from those of the system's libraries that work for it.
#pragma once

#include "base/no_copy.h"

#include <cstddef>
#include <initializer_list>
#include <vector>
#include <windows.h>

namespace qx::test {

// Counts, while this lives, what the given modules take from the C library and from the heap, and what they give back.
// A block that one of them takes may be given back by another. One at a time per process.
class OwnBlocks : NoCopy {
public:
    explicit OwnBlocks(std::initializer_list<HMODULE> modules);
    ~OwnBlocks();

    // Taken and not given back; below zero when older blocks were given back.
    long Held() const noexcept;

private:
    struct Redirected {
        ULONG_PTR* slot;
        ULONG_PTR original;
    };
    void Redirect(HMODULE module);

    std::vector<Redirected> redirected_;
};

} // namespace qx::test
