// Blocks of the process heap: what the driver receives lives there, so that it can release it without the module.
#pragma once

#include <cstddef>
#include <windows.h>

namespace qx {

// A zeroed block, or null when memory is short.
void* HeapAllocate(std::size_t bytes) noexcept;
void HeapRelease(void* block) noexcept; // null is fine
struct HeapDeleter {
    void operator()(void* block) const noexcept { HeapRelease(block); }
};

// An owned copy of a terminated text; a null text gives an empty copy. Null when memory is short.
wchar_t* HeapText(const wchar_t* text) noexcept;

// Base of objects that the driver may release with HeapFree.
struct OnProcessHeap {
    static void* operator new(std::size_t bytes); // throws std::bad_alloc
    static void operator delete(void* block) noexcept { HeapRelease(block); }
};

} // namespace qx
