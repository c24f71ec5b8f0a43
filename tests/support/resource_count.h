// How much of the system's resources this process holds, counted from outside the code under test.
#pragma once

#include <cstddef>

namespace qx::test {

struct ResourceCount {
    std::size_t gdiObjects = 0;
    std::size_t windows = 0;
    std::size_t kernelHandles = 0;
    std::size_t heapBlocks = 0; // of the process heap
    std::size_t heapBytes = 0;
};

ResourceCount CountResources();

} // namespace qx::test
