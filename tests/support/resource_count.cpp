#include "support/resource_count.h"

#include <ostream>
#include <vector>
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

} // namespace

std::size_t CountGdiObjects()
{
    const auto environment = static_cast<ULONG64>(__readgsqword(0x60));
    const auto* const table = *reinterpret_cast<const GdiEntry* const*>(environment + kGdiTableOffset);
    std::size_t count = 0;
    for (std::size_t i = 0; i < kGdiEntries; ++i)
        count += table[i].type != 0;
    return count;
}

namespace {

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

std::size_t CountMenusAndIcons()
{
    std::size_t count = 0;
    for (ULONG_PTR index = 0x20; index < kHandleLimit; index += 2) {
        ICONINFO icon{};
        if (IsMenu(reinterpret_cast<HMENU>(index))) {
            ++count;
        } else if (GetIconInfo(reinterpret_cast<HICON>(index), &icon)) {
            ++count;
            DeleteObject(icon.hbmColor);
            DeleteObject(icon.hbmMask);
        }
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

std::size_t CountPrivateBytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const std::byte* place = nullptr; VirtualQuery(place, &region, sizeof region) != 0;
         place = static_cast<const std::byte*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    }
    return bytes;
}

} // namespace

ResourceCount CountResources()
{
    ResourceCount count;
    count.gdiObjects = CountGdiObjects();
    count.windows = CountWindows();
    count.menusAndIcons = CountMenusAndIcons();
    count.kernelHandles = CountKernelHandles();
    CountHeap(count);
    count.privateBytes = CountPrivateBytes();
    return count;
}

ResourceCount Growth(const ResourceCount& before, const ResourceCount& after)
{
    const auto grown = [&](std::size_t ResourceCount::* kind) {
        return after.*kind > before.*kind ? after.*kind - before.*kind : 0;
    };
    using Kind = ResourceCount;
    return {grown(&Kind::gdiObjects), grown(&Kind::windows),   grown(&Kind::menusAndIcons), grown(&Kind::kernelHandles),
            grown(&Kind::heapBlocks), grown(&Kind::heapBytes), grown(&Kind::privateBytes)};
}

std::ostream& operator<<(std::ostream& out, const ResourceCount& count)
{
    return out << "GDI objects " << count.gdiObjects << ", windows " << count.windows << ", menus and icons "
               << count.menusAndIcons << ", kernel handles " << count.kernelHandles << ", heap blocks "
               << count.heapBlocks << ", heap bytes " << count.heapBytes << ", private bytes " << count.privateBytes;
}

bool WalkSeesEveryBlock()
{
    constexpr std::size_t kBlocks = 1000;
    const std::size_t before = CountResources().heapBlocks;
    std::vector<void*> blocks(kBlocks);
    for (void*& block : blocks)
        block = HeapAlloc(GetProcessHeap(), 0, 30);
    const std::size_t after = CountResources().heapBlocks;
    for (void* const block : blocks)
        HeapFree(GetProcessHeap(), 0, block);
    return after >= before + kBlocks;
}

} // namespace qx::test
