// The Setup page of the sheet: sender, fax quality, notification and preview of the job, and the way to the user's
// defaults and to the phone book editor.
#pragma once

#include "dialog/dialog.h"
#include "pages/edit_defaults_dialog.h"
#include "pages/send_button.h"
#include "pages/send_settings.h"
#include "pages/sheet_page.h"
#include "record/fax_job_data.h"
#include "res/setup_page_ids.h"
#include "settings/key_set.h"

namespace qx {

struct SetupPage : SheetPage {
    HANDLE printer = nullptr; // set before the page is created; not owned

    SendSettings settings;
    bool settingsAreOld = false; // the job has others, which the page could not show
    SendButtonGrowth sendButtonGrowth;
    OwnedFaxJobData defaults; // the working copy of the user's defaults, with the device's state
    KeySet defaultsKeys{defaults.Get()};
    EditDefaultsDialog defaultsDialog;
};

extern const Dialog<SetupPage> kSetupPage;

// Gives the sheet's Send button the caption and the room for what the page says. Nothing before the page is created,
// and where no preview is offered.
void FitSendButtonOfSheet(SetupPage& page);

// Writes what the page has prepared to the job.
void SaveSetupPage(SetupPage& page) noexcept;

} // namespace qx
