#include "support/own_blocks.h"

#include <atomic>
#include <cstring>
#include <utility>

namespace qx::test {

namespace {

std::atomic<long> g_held{0};

// The library's functions, called by these in their stead.
decltype(&malloc) g_malloc;
decltype(&calloc) g_calloc;
decltype(&realloc) g_realloc;
decltype(&free) g_free;
decltype(&_aligned_malloc) g_alignedMalloc;
decltype(&_aligned_free) g_alignedFree;
decltype(&HeapAlloc) g_heapAlloc;
decltype(&HeapFree) g_heapFree;

void* Taken(void* block) noexcept
{
    g_held += block != nullptr;
    return block;
}

void* CountedMalloc(std::size_t bytes)
{
    return Taken(g_malloc(bytes));
}
void* CountedCalloc(std::size_t count, std::size_t bytes)
{
    return Taken(g_calloc(count, bytes));
}
void* CountedRealloc(void* block, std::size_t bytes)
{
    if (block == nullptr)
        return CountedMalloc(bytes);
    g_held -= bytes == 0;
    return g_realloc(block, bytes);
}
void CountedFree(void* block)
{
    g_held -= block != nullptr;
    g_free(block);
}
void* CountedAlignedMalloc(std::size_t bytes, std::size_t alignment)
{
    return Taken(g_alignedMalloc(bytes, alignment));
}
void CountedAlignedFree(void* block)
{
    g_held -= block != nullptr;
    g_alignedFree(block);
}
void* WINAPI CountedHeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes)
{
    return Taken(g_heapAlloc(heap, flags, bytes));
}
BOOL WINAPI CountedHeapFree(HANDLE heap, DWORD flags, void* block)
{
    g_held -= block != nullptr;
    return g_heapFree(heap, flags, block);
}

template <class Function> ULONG_PTR Address(Function function) noexcept
{
    return reinterpret_cast<ULONG_PTR>(function);
}

struct Counted {
    const char* name;
    ULONG_PTR counted;
    void* original; // the pointer above
};

const Counted kCounted[] = {
    {"malloc", Address(CountedMalloc), &g_malloc},
    {"calloc", Address(CountedCalloc), &g_calloc},
    {"realloc", Address(CountedRealloc), &g_realloc},
    {"free", Address(CountedFree), &g_free},
    {"_aligned_malloc", Address(CountedAlignedMalloc), &g_alignedMalloc},
    {"_aligned_free", Address(CountedAlignedFree), &g_alignedFree},
    {"HeapAlloc", Address(CountedHeapAlloc), &g_heapAlloc},
    {"HeapFree", Address(CountedHeapFree), &g_heapFree},
};

ULONG_PTR Put(ULONG_PTR* slot, ULONG_PTR address) noexcept
{
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    const ULONG_PTR before = std::exchange(*slot, address);
    VirtualProtect(slot, sizeof *slot, protection, &protection);
    return before;
}

} // namespace

OwnBlocks::OwnBlocks(std::initializer_list<HMODULE> modules)
{
    redirected_.reserve(modules.size() * std::size(kCounted));
    g_held = 0;
    for (const HMODULE module : modules)
        Redirect(module);
}

OwnBlocks::~OwnBlocks()
{
    for (const auto& [slot, original] : redirected_)
        Put(slot, original);
}

long OwnBlocks::Held() const noexcept
{
    return g_held;
}

void OwnBlocks::Redirect(HMODULE module)
{
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const header =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const DWORD imports = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
         library->FirstThunk != 0; ++library) {
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        auto* slot = reinterpret_cast<ULONG_PTR*>(base + library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
                continue;
            const auto* const byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            for (const Counted& function : kCounted) {
                if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function.name) != 0)
                    continue;
                std::memcpy(function.original, slot, sizeof *slot);
                redirected_.push_back({slot, Put(slot, function.counted)});
            }
        }
    }
}

} // namespace qx::test
