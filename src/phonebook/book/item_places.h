// Where the items of a list stand, found by id.
#pragma once

#include "phonebook/book/items.h"

#include <algorithm>
#include <compare>
#include <cstddef>

namespace qx {

struct ItemPlace {
    DWORD id = 0;
    std::size_t position = 0; // in the list
    auto operator<=>(const ItemPlace&) const = default;
};

// Of all items, in order.
inline std::vector<ItemPlace> PlacesOf(std::span<PhoneBookItem* const> items)
{
    std::vector<ItemPlace> places;
    places.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        places.push_back({items[i]->GetId(), i});
    std::sort(places.begin(), places.end());
    return places;
}

// The first place of that id whose position is wanted; null when there is none.
template <class Wanted> const ItemPlace* FindPlace(std::span<const ItemPlace> places, DWORD id, Wanted wanted)
{
    for (auto place = std::lower_bound(places.begin(), places.end(), ItemPlace{id, 0});
         place != places.end() && place->id == id; ++place) {
        if (wanted(place->position))
            return &*place;
    }
    return nullptr;
}

} // namespace qx
