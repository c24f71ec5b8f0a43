// The Edit Defaults dialog: the user's standing send settings of a printer.
#pragma once

#include "dialog/dialog.h"
#include "pages/cover_page.h"
#include "pages/send_settings.h"
#include "res/edit_defaults_ids.h"

#include <qxfax/send_fax.h>

namespace qx {

struct EditDefaultsDialog : TextOwner {
    HANDLE printer = nullptr;       // not owned
    FaxJobData* defaults = nullptr; // the working copy, not owned; the device's flags are set in it already
    bool deviceIsKnown = true;      // or else some of them are off because they could not be read
    HWND dialog = nullptr;
    SendSettings settings;
    CoverPage coverPage;
};

// IDOK: the working copy holds what the user chose and was stored; its DefaultsSaved tells that nothing had been stored
// before. IDCANCEL: nothing was stored, and DefaultsSaved is off.
extern const Dialog<EditDefaultsDialog> kEditDefaultsDialog;

} // namespace qx
