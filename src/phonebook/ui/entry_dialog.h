// Adds one entry to the phone book or edits one in place.
#pragma once

#include "base/number_text.h"
#include "dialog/controls.h"
#include "dialog/number_filter.h"
#include "phonebook/ui/made_item.h"

#include <span>
#include <windows.h>

namespace qx {

class PhoneBook;

// What the opener hands over, and the dialog's own state.
struct EntryDialogContext : TextOwner {
    // edited: an entry of the book, which is changed in place on OK; null: the dialog makes a new one.
    EntryDialogContext(const TextOwner& texts, PhoneBook& phoneBook, PhoneBookEntry* edited) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook), entry(edited), adds(edited == nullptr)
    {
    }

    PhoneBook& book;
    PhoneBookEntry* entry;
    const bool adds;
    MadeItem<PhoneBookEntry> made; // the new entry; after OK the opener releases it into the book

    HWND dialog = nullptr;
    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}, .units = 255};
};

// Shows the dialog. IDOK: the entry holds the new values. IDCANCEL: nothing changed. -1 when it could not be shown.
INT_PTR ShowEntryDialog(HWND owner, EntryDialogContext& context);

// With the help topics of adding or of editing.
std::span<const Control> EntryControls(bool adds) noexcept;

} // namespace qx
