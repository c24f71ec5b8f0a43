// Adds one entry to the phone book or edits one in place.
#pragma once

#include "base/number_text.h"
#include "dialog/number_filter.h"
#include "phonebook/ui/phone_book_dialog.h"

namespace qx {

// What the opener hands over, and the dialog's own state.
struct EntryDialogContext : PhoneBookDialog {
    PhoneBookEntry* entry = nullptr; // of the book, which is changed in place on OK; null: the dialog makes a new one
    MadeItem<PhoneBookEntry> made = {}; // the new entry; after OK the opener releases it into the book

    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}, .units = kTextUnits - 1};
};

// IDOK: the entry holds the new values. IDCANCEL: nothing changed. The two differ in their title and their help topics.
extern const Dialog<EntryDialogContext> kAddEntryDialog;
extern const Dialog<EntryDialogContext> kEditEntryDialog;

} // namespace qx
