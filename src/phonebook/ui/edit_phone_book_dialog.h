// The phone book editor: entries and groups are added, changed, deleted, imported and exported. The book in memory
// follows every command at once; only OK writes it to its file and tells the other windows.
#pragma once

#include "dialog/dialog.h"
#include "phonebook/ui/phone_book_list.h"

#include <windows.h>

namespace qx {

class PhoneBook;

// What the opener hands over, and the dialog's own state.
struct EditPhoneBookContext : TextOwner {
    EditPhoneBookContext(const TextOwner& texts, PhoneBook& phoneBook) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook)
    {
    }

    PhoneBook& book; // changed in place

    HWND dialog = nullptr;
    PhoneBookList list;
    bool rightToLeft = false; // of the user interface when the dialog opened
};

// IDOK: the book was saved and the other windows were told. IDCANCEL: the book in memory still holds what the user did;
// the caller reloads it from its file.
extern const Dialog<EditPhoneBookContext> kEditPhoneBookDialog;

} // namespace qx
