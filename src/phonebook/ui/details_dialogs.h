// Read-only views of an entry and of a group.
#pragma once

#include "dialog/controls.h"

#include <span>
#include <windows.h>

namespace qx {

class PhoneBook;
class PhoneBookItem;

// Shows the entry, or the group with its members in the book's order. IDOK or IDCANCEL; -1 when it could not be shown.
INT_PTR ShowItemDetails(HWND owner, const TextOwner& texts, const PhoneBook& book, const PhoneBookItem& item);

std::span<const Control> EntryDetailsControls() noexcept;
std::span<const Control> GroupDetailsControls() noexcept;

} // namespace qx
