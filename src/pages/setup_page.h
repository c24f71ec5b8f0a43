// The Setup page of the sheet: sender, fax quality, notification and preview of the job, and the way to the user's
// defaults and to the phone book editor.
#pragma once

#include "dialog/controls.h"
#include "dialog/dialog.h"
#include "pages/edit_defaults_dialog.h"
#include "pages/send_button.h"
#include "pages/send_settings.h"
#include "pages/sheet_page.h"
#include "record/fax_job_data.h"

#include <optional>
#include <span>

namespace qx {

class PhoneBook;

inline constexpr DialogTemplate kSetupPageTemplate{202, 205};

struct SetupPage : TextOwner {
    SetupPage() = default;
    ~SetupPage(); // closes the keys of the working copy
    SetupPage(const SetupPage&) = delete;
    SetupPage& operator=(const SetupPage&) = delete;

    // Set before the page is created. None is owned.
    HANDLE printer = nullptr;
    FaxJobData* job = nullptr;
    PhoneBook* book = nullptr;
    PageHost* sheet = nullptr;

    HWND dialog = nullptr; // null until the page is created
    SendSettings settings;
    HWND errorField = nullptr; // the field that failed the last check; never cleared once set
    SendButtonGrowth sendButtonGrowth;
    std::optional<OwnedFaxJobData> draft; // what a Send that the page has accepted writes to the job
    OwnedFaxJobData defaults;             // the working copy of the user's defaults, with the device's state
    EditDefaultsDialog defaultsDialog;
};

INT_PTR CALLBACK SetupPageProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept;

std::span<const Control> SetupPageControls() noexcept;

// Gives the sheet's Send button the caption and the room for what the page says. Nothing before the page is created,
// and where no preview is offered.
void FitSendButtonOfSheet(SetupPage& page);

// Shows the message of what is wrong, if anything. True: the page may be saved.
[[nodiscard]] bool ValidateSetupPage(SetupPage& page);
// Reads the page for SaveSetupPage. Throws when that cannot be done whole.
void PrepareSetupPage(SetupPage& page);
// Writes what was prepared to the job.
void SaveSetupPage(SetupPage& page) noexcept;

} // namespace qx
