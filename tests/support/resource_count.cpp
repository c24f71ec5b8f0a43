#include "support/resource_count.h"

#include <windows.h>

namespace qx::test {

namespace {

// The process environment block points to the table of all GDI handles.
struct GdiEntry {
    ULONG64 object;
    USHORT owner[2];
    USHORT unique;
    UCHAR type;
    UCHAR flags;
    ULONG64 userPointer;
};
static_assert(sizeof(GdiEntry) == 24);

constexpr std::size_t kGdiEntries = 0x4000;
constexpr std::size_t kGdiTableOffset = 0xF8;
constexpr ULONG_PTR kHandleLimit = 0x10000;

std::size_t CountGdiObjects()
{
    const auto environment = static_cast<ULONG64>(__readgsqword(0x60));
    const auto* const table = *reinterpret_cast<const GdiEntry* const*>(environment + kGdiTableOffset);
    std::size_t count = 0;
    for (std::size_t i = 0; i < kGdiEntries; ++i)
        count += table[i].type != 0;
    return count;
}

std::size_t CountWindows()
{
    std::size_t count = 0;
    for (ULONG_PTR index = 0x20; index < kHandleLimit; index += 2) {
        DWORD process = 0;
        if (GetWindowThreadProcessId(reinterpret_cast<HWND>(index), &process) != 0 && process == GetCurrentProcessId())
            ++count;
    }
    return count;
}

std::size_t CountKernelHandles()
{
    std::size_t count = 0;
    for (ULONG_PTR value = 4; value < kHandleLimit; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
    }
    return count;
}

void CountHeap(ResourceCount& count)
{
    const HANDLE heap = GetProcessHeap();
    HeapLock(heap);
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heap, &entry)) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
            ++count.heapBlocks;
            count.heapBytes += entry.cbData;
        }
    }
    HeapUnlock(heap);
}

} // namespace

ResourceCount CountResources()
{
    ResourceCount count;
    count.gdiObjects = CountGdiObjects();
    count.windows = CountWindows();
    count.kernelHandles = CountKernelHandles();
    CountHeap(count);
    return count;
}

} // namespace qx::test
