// Who an item of the book was when a dialog took it up. Its id does not tell: while the dialog is open the book may be
// reloaded, and another program may have given the id of an item that was not saved yet to one of its own. No window
// here.
#pragma once

#include "phonebook/book/items.h"

#include <optional>
#include <string>
#include <unordered_map>

namespace qx {

class PhoneBook;

class SeenItem {
public:
    explicit SeenItem(const PhoneBookItem& item);
    // By name and fax number, a group by its name. One of the two does not do: two people share a number, or a name.
    bool Is(const PhoneBookItem& other) const noexcept;

private:
    const BOOL isGroup_;
    const std::wstring name_;
    const std::wstring faxNumber_;
};

// The last index with the id of item, provided that what stands there is item itself or, when a reload has replaced it,
// what item was when it was seen.
std::optional<DWORD> IndexOf(const PhoneBook& book, const PhoneBookItem& item, const SeenItem& seen) noexcept;

// The id under which the book has item, which nobody has changed yet; nothing when it has not: item is new, or a reload
// did not bring it.
std::optional<DWORD> IdIn(const PhoneBook& book, const PhoneBookItem& item);

// Who the members of a group are that a dialog works on.
class SeenMembers {
public:
    // Sees who has joined since the last call, and takes every id from the group that no longer names whom it named:
    // it would bring a stranger into the group, at once or when it is drawn again. True when there were such ids.
    bool Update(PhoneBookGroup& group, const PhoneBook& book);

private:
    std::unordered_map<DWORD, std::optional<SeenItem>> seen_; // nothing: the id named nobody
};

} // namespace qx
