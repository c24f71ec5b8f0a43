// Read-only views of an entry and of a group.
#pragma once

#include "phonebook/ui/phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"

namespace qx {

struct DetailsContext : PhoneBookDialog {
    const PhoneBookItem& item;
};

extern const Dialog<DetailsContext> kEntryDetailsDialog;
extern const Dialog<DetailsContext> kGroupDetailsDialog; // with the members in the book's order

// Shows the item behind the only selected row of a phone book list. False, and nothing shown, when none or several are
// selected.
bool ShowSelectedDetails(const PhoneBookDialog& opener, const PhoneBookList& list);

} // namespace qx
