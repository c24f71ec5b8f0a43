// Read-only views of an entry and of a group.
#pragma once

#include "dialog/dialog.h"

#include <windows.h>

namespace qx {

class PhoneBook;
class PhoneBookItem;

struct DetailsContext : TextOwner {
    DetailsContext(const TextOwner& texts, const PhoneBook& phoneBook, const PhoneBookItem& shown) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook), item(shown)
    {
    }

    const PhoneBook& book;
    const PhoneBookItem& item;
    HWND dialog = nullptr;
};

extern const Dialog<DetailsContext> kEntryDetailsDialog;
extern const Dialog<DetailsContext> kGroupDetailsDialog;

// Shows the entry, or the group with its members in the book's order.
void ShowItemDetails(HWND owner, const TextOwner& texts, const PhoneBook& book, const PhoneBookItem& item);

} // namespace qx
