// A group names its members by id; these are the entries that its lists show. No window here.
#pragma once

#include "phonebook/book/items.h"

#include <optional>
#include <span>
#include <vector>

namespace qx {

class PhoneBook;

// In the order of the ids, of which only the first 100 are looked at: every entry of the book that has the id. An id
// without an entry gives nothing.
std::vector<const PhoneBookEntry*> MembersInOwnOrder(const PhoneBook& book, std::span<const DWORD> ids);

// In the book's order: the entries whose id is among ids, at most as many as there are ids.
std::vector<const PhoneBookEntry*> MembersInBookOrder(const PhoneBook& book, std::span<const DWORD> ids);

// Adds the items' ids to the group until it is full, but none twice.
void AddMembers(PhoneBookGroup& group, std::span<PhoneBookItem* const> items);

// Whether the book has a group of the same name, other than the one of that id.
bool HoldsSameGroup(const PhoneBook& book, const PhoneBookGroup& group, std::optional<DWORD> ownId) noexcept;

} // namespace qx
