// An entry's texts as one registry value, which the recent list and the old address book share.
#pragma once

#include "phonebook/book/items.h"

namespace qx {

// False, and the entry left alone, when the value cannot be read. Texts that are missing in it are empty.
bool ReadRegistryEntry(HKEY key, const wchar_t* valueName, PhoneBookEntry& entry);

// As a REG_MULTI_SZ, which ends at the first empty text: an entry without fax number loses its company. That is how
// the recent list has always been kept.
void WriteRegistryEntry(HKEY key, const wchar_t* valueName, const PhoneBookEntry& entry);

} // namespace qx
