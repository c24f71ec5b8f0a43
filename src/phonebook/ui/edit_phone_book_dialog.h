// The phone book editor: entries and groups are added, changed, deleted, imported and exported. The book in memory
// follows every command at once; only OK writes it to its file and tells the other windows.
#pragma once

#include "phonebook/ui/phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"

namespace qx {

// The dialog's state. The book is changed in place.
struct EditPhoneBookContext : PhoneBookDialog {
    using PhoneBookDialog::PhoneBookDialog;

    PhoneBookList list;
    bool rightToLeft = false; // of the user interface when the dialog opened
};

// IDOK: the book was saved and the other windows were told. IDCANCEL: the book in memory still holds what the user did;
// the caller reloads it from its file.
extern const Dialog<EditPhoneBookContext> kEditPhoneBookDialog;

} // namespace qx
