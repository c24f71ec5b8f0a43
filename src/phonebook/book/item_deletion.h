// Deleting many items at once.
#pragma once

#include "phonebook/book/items.h"

namespace qx {

// Takes the first item of each id out of items, in the order of ids, with the outcome of deleting one after the other:
// the id leaves every group that is still there (its first occurrence), a group without member ids leaves the list,
// and an id that is not, or no longer, there is skipped. Nothing is freed.
void DeleteItems(std::vector<PhoneBookItem*>& items, std::span<const DWORD> ids);

} // namespace qx
