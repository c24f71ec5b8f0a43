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
    const auto count = static_cast<std::size_t>(std::max(capacity, 0));
    return static_cast<ItemOf<Array>**>(HeapAllocate(count * sizeof(void*)));
}

// Starts the array again, empty, with room for capacity items. The items themselves are not touched.
template <class Array> void RestartArray(Array& array, std::int32_t capacity) noexcept
{
    HeapRelease(array.Items);
    array.Count = 0;
    array.Items = AllocateItems<Array>(capacity);
    array.Capacity = array.Items != nullptr ? std::max(capacity, 0) : 0;
}

// Makes room for count more items. Doubles the capacity, as often as needed, when there is not enough. False, and
// nothing changed, when memory is short.
template <class Array> bool MakeRoomForItems(Array& array, std::int32_t count) noexcept
{
    const std::int32_t wanted = array.Count + count;
    if (array.Items != nullptr && wanted <= array.Capacity)
        return true;
    std::int32_t capacity = std::max(array.Capacity, 1);
    while (capacity < wanted)
        capacity *= 2;
    auto** const items = AllocateItems<Array>(capacity);
    if (items == nullptr)
        return false;
    if (array.Items != nullptr)
        std::copy_n(array.Items, array.Count, items);
    HeapRelease(array.Items);
    array.Items = items;
    array.Capacity = capacity;
    return true;
}

// Doubles the capacity when full. False, and nothing changed, when memory is short.
template <class Array> bool AppendItem(Array& array, ItemOf<Array>* item) noexcept
{
    if (!MakeRoomForItems(array, 1))
        return false;
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
