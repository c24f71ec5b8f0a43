// Adds one entry to the phone book or edits one in place.
#pragma once

#include "base/number_text.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "phonebook/ui/made_item.h"

#include <windows.h>

namespace qx {

class PhoneBook;

// What the opener hands over, and the dialog's own state.
struct EntryDialogContext : TextOwner {
    // edited: an entry of the book, which is changed in place on OK; null: the dialog makes a new one.
    EntryDialogContext(const TextOwner& texts, PhoneBook& phoneBook, PhoneBookEntry* edited) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook), entry(edited)
    {
    }

    PhoneBook& book;
    PhoneBookEntry* entry;
    MadeItem<PhoneBookEntry> made; // the new entry; after OK the opener releases it into the book

    HWND dialog = nullptr;
    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}, .units = 255};
};

// IDOK: the entry holds the new values. IDCANCEL: nothing changed. The two differ in their title and their help topics.
extern const Dialog<EntryDialogContext> kAddEntryDialog;
extern const Dialog<EntryDialogContext> kEditEntryDialog;

} // namespace qx
