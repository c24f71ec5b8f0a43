// The growable pointer array of the job record and of the phone book dialogs. Array is any struct with the members
// Capacity, Count (signed 32-bit) and Items (a block of the process heap).
#pragma once

#include "base/process_heap.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace qx {

template <class Item> struct PointerArray {
    std::int32_t Capacity = 0;
    std::int32_t Count = 0;
    Item** Items = nullptr;
};

template <class Array> using ItemOf = std::remove_pointer_t<std::remove_pointer_t<decltype(Array::Items)>>;

template <class Array> ItemOf<Array>** AllocateItems(std::int32_t capacity) noexcept
{
    return static_cast<ItemOf<Array>**>(HeapAllocate(static_cast<std::size_t>(capacity) * sizeof(void*)));
}

// Starts the array again, empty, with room for capacity items. The items themselves are not touched.
template <class Array> void RestartArray(Array& array, std::int32_t capacity) noexcept
{
    HeapRelease(array.Items);
    array.Capacity = capacity;
    array.Count = 0;
    array.Items = AllocateItems<Array>(capacity);
}

// Doubles the capacity when full. False, and nothing changed, when memory is short.
template <class Array> bool AppendItem(Array& array, ItemOf<Array>* item) noexcept
{
    if (array.Items == nullptr || array.Count >= array.Capacity) {
        const std::int32_t capacity = std::max(array.Capacity, array.Count) <= 0 ? 1
                                      : array.Items == nullptr                  ? array.Capacity
                                                                                : array.Capacity * 2;
        auto** const items = AllocateItems<Array>(std::max(capacity, array.Count + 1));
        if (items == nullptr)
            return false;
        if (array.Items != nullptr)
            std::copy_n(array.Items, array.Count, items);
        HeapRelease(array.Items);
        array.Items = items;
        array.Capacity = std::max(capacity, array.Count + 1);
    }
    array.Items[array.Count++] = item;
    return true;
}

// Removes the pointer at index; an index outside the array changes nothing.
template <class Array> void RemoveItem(Array& array, std::int32_t index) noexcept
{
    if (index < 0 || index >= array.Count)
        return;
    std::copy(array.Items + index + 1, array.Items + array.Count, array.Items + index);
    --array.Count;
}

} // namespace qx
