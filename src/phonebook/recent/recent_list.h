// The twenty most recently used recipients, entries and groups, kept in the user's registry. Not part of the phone
// book: its items are copies.
#pragma once

#include "base/limits.h"
#include "base/no_copy.h"
#include "phonebook/book/items.h"
#include "settings/key_set.h"

#include <array>
#include <vector>

namespace qx {

class PhoneBook;

class RecentRecipientList : NoCopy {
public:
    RecentRecipientList() = default;
    ~RecentRecipientList(); // frees the items and closes the keys

    // Opens the registry keys of the printer and remembers the list key.
    void Open(HANDLE printer);
    void Load();
    void Save() const;
    // Puts a copy of the item at the front; an equal one moves there and takes the new values. A group's members are
    // resolved in book. 0 when refused: no item, no book, no name.
    BOOL AddRecent(const PhoneBookItem* item, const PhoneBook* book);

    // Slot 0 is the most recent; an empty slot is null. The list owns the items. They live, and stay as they are, until
    // it is loaded again or goes: who shows one can do so also when AddRecent has put another in its place.
    std::span<PhoneBookItem* const> Slots() const noexcept { return slots_; }

private:
    void Clear() noexcept;

    KeySet keys_;
    std::array<PhoneBookItem*, kMaxRecentRecipients> slots_{};
    std::vector<UniqueItem<PhoneBookItem>> replaced_; // were in a slot
};

} // namespace qx
