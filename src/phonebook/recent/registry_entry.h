// An entry's texts as one registry value, and the values of a key: what the recent list and the old address book share.
#pragma once

#include "record/recipient.h"

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace qx {

// None when the value cannot be read. Texts that are missing in it are empty.
std::optional<Recipient> ReadRegistryEntry(HKEY key, const wchar_t* valueName);

// As a REG_MULTI_SZ. Kept: it ends at the first empty text, and an entry without fax number loses its company.
void WriteRegistryEntry(HKEY key, const wchar_t* valueName, const Recipient& texts);

// The names of a key's values, in the key's order; those of more than 259 units are left out.
std::vector<std::wstring> ValueNames(HKEY key);

} // namespace qx
