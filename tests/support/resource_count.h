// How much of the system's resources this process holds, counted from outside the code under test.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <windows.h>

namespace qx::test {

struct ResourceCount {
    std::size_t gdiObjects = 0;
    std::size_t windows = 0;
    std::size_t menusAndIcons = 0; // cursors are icons
    std::size_t kernelHandles = 0;
    std::size_t heapBlocks = 0; // of the process heap
    std::size_t heapBytes = 0;
    std::size_t privateBytes = 0; // committed, and shared with no other process
};

// Takes seconds: it asks for every handle there could be.
ResourceCount CountResources();
// Alone, and at once.
std::size_t CountGdiObjects();
// Of each kind by how much it has grown; 0 for one that has shrunk.
ResourceCount Growth(const ResourceCount& before, const ResourceCount& after);
// Later heaps hand out small blocks from groups, and a walk over the heap sees the group: what the system loses with a
// sheet then counts by how many groups it is spread over, which the blocks of others in between decide.
bool WalkSeesEveryBlock();
// One line.
std::ostream& operator<<(std::ostream& out, const ResourceCount& count);

// Of all blocks of the process heap in use.
inline std::size_t HeapBytesInUse()
{
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(GetProcessHeap(), &entry)) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
            bytes += entry.cbData;
    }
    return bytes;
}

// The handle (of a file, a key, a mutex, ...) that would be given out next: the lowest free one, so it grows with each
// that is not closed. The system's own count of handles is always 0 under Wine.
inline std::size_t NextHandle()
{
    const HANDLE next = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return reinterpret_cast<std::size_t>(next);
}

} // namespace qx::test
