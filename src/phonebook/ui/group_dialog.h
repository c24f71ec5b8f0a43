// Adds a group to the phone book or edits one: its name, and its members among the book's entries.
#pragma once

#include "phonebook/ui/phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"
#include "phonebook/ui/seen_item.h"

#include <windows.h>

namespace qx {

// What the opener hands over, and the dialog's own state.
struct GroupDialogContext : PhoneBookDialog {
    // A group of the book, which is changed in place on OK; null: the dialog makes a new one.
    PhoneBookGroup* const stored = nullptr;
    // All editing happens here. A new group is released into the book by the opener after OK; the scratch copy of an
    // edited one goes with the context.
    MadeItem<PhoneBookGroup> working = {};
    SeenMembers seen = {}; // of working

    PhoneBookList entries = {};
    HWND members = nullptr;
};

// IDOK: the new group is in working, or the edited one has its new name and members. IDCANCEL: nothing changed.
extern const Dialog<GroupDialogContext> kAddGroupDialog;
extern const Dialog<GroupDialogContext> kEditGroupDialog;

} // namespace qx
