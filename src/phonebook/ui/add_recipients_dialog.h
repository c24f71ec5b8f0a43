// The phone book picker: the book on the left, the chosen recipients on the right. Groups are replaced by their
// members as they are moved.
#pragma once

#include "phonebook/ui/phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"

#include <qxfax/send_fax.h>
#include <vector>
#include <windows.h>

namespace qx {

class RecentRecipientList;

// What the opener hands over, and the dialog's own state. The book is reloaded under the dialog.
struct AddRecipientsContext : PhoneBookDialog {
    FaxJobData& job;             // its recipients are replaced on OK
    RecentRecipientList* recent; // null: nothing is remembered

    PhoneBookList list = {};
    HWND chosenList = nullptr;
    // What the right list shows. Borrowed from the record and, as copies, from the book's store, which keep them for
    // the session: neither a reload nor an edit of the book touches them.
    std::vector<const PhoneBookEntry*> ChosenRecipients = {};
};

// IDOK: the record's recipients are those chosen. IDCANCEL: they are as before. The book may have been reloaded in
// every case.
extern const Dialog<AddRecipientsContext> kAddRecipientsDialog;

} // namespace qx
