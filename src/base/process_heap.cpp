#include "base/process_heap.h"

#include <new>
#include <string>

namespace qx {

void* HeapAllocate(std::size_t bytes) noexcept
{
    return HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, bytes);
}

void HeapRelease(void* block) noexcept
{
    if (block != nullptr)
        HeapFree(GetProcessHeap(), 0, block);
}

wchar_t* HeapText(const wchar_t* text) noexcept
{
    const std::size_t units = text == nullptr ? 0 : std::char_traits<wchar_t>::length(text);
    auto* const copy = static_cast<wchar_t*>(HeapAllocate((units + 1) * sizeof(wchar_t)));
    if (copy != nullptr && units != 0)
        std::char_traits<wchar_t>::copy(copy, text, units);
    return copy;
}

void* OnProcessHeap::operator new(std::size_t bytes)
{
    void* const block = HeapAllocate(bytes);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace qx
