#include "entry/escape_data.h"

#include "base/process_heap.h"

#include <cstring>
#include <utility>

namespace qx {

namespace {

void* g_block = nullptr;
DWORD g_size = 0;

} // namespace

BOOL StoreEscapeData(const void* data, DWORD size) noexcept
{
    // The size outlives its block when nothing can be stored: a later size query still reports it, while a copy
    // fails. Drivers know it so.
    HeapRelease(std::exchange(g_block, nullptr));
    if (data == nullptr || size == 0)
        return FALSE;
    g_block = HeapAllocate(size);
    if (g_block == nullptr)
        return FALSE;
    std::memcpy(g_block, data, size);
    g_size = size;
    return TRUE;
}

BOOL FetchEscapeData(void** buffer, DWORD* size) noexcept
{
    if (size == nullptr)
        return FALSE;
    if (buffer == nullptr) {
        *size = g_size;
        return g_size != 0;
    }
    if (g_block == nullptr || *buffer == nullptr)
        return FALSE;
    std::memcpy(*buffer, g_block, g_size);
    return TRUE;
}

} // namespace qx
