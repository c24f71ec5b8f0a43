// The order in which lists show the phone book.
#pragma once

#include "phonebook/book/items.h"

namespace qx {

// Sorts by name, ignoring case; entries of one name by fax number, then company. Entries and groups interleave.
void SortItems(std::vector<PhoneBookItem*>& items, bool ascending);

} // namespace qx
