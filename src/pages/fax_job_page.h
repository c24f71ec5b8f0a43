// The Fax Job page, the first of the sheet: to whom the fax goes, its cover page and its billing code, and the checks
// before it is sent. What stands in the recipient list stands in the job record, row by row.
#pragma once

#include "base/number_text.h"
#include "dialog/controls.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "dialog/type_ahead_combo.h"
#include "pages/picture_button.h"
#include "pages/sheet_page.h"
#include "record/fax_job_data.h"
#include "res/fax_job_page_ids.h"

#include <optional>
#include <qxfax/send_fax.h>
#include <string>

namespace qx {

class PhoneBook;
class PhoneBookGroup;
class RecentRecipientList;

// What stands in the three fields.
struct Recipient {
    std::wstring name;
    std::wstring faxNumber;
    std::wstring company;
};

struct FaxJobPage : TextOwner {
    HWND dialog = nullptr;

    // Set before the page is created; the page owns none of them.
    FaxJobData* job = nullptr;
    PhoneBook* book = nullptr;
    RecentRecipientList* recent = nullptr;
    PageHost* sheet = nullptr;

    TypeAheadState nameBox;
    NumberFilter faxNumber{AllowedInFaxNumber, L""};
    NumberFilter billingCode{AllowedInBillingCode, L""};
    // The typed recipient that the last Send has put into the job, or null. It belongs to the record.
    const FaxRecipient* sentTyped = nullptr;
    // The group that stands in the fields, or null. It belongs to the recent list.
    const PhoneBookGroup* group = nullptr;
    // The fields as the name box last refilled them, until the user changes number or company.
    std::optional<Recipient> refill;
    bool checkImage = false;              // the image path is the user's and is checked on Send
    bool coverPageIsOld = false;          // the fields do not show the job's cover page, which is the newer one
    std::optional<OwnedFaxJobData> draft; // what a Send that the page has accepted writes to the job
    int errorField = 0;                   // the control that last failed on Send; from then on the page opens on it
    PictureButton phoneBookButton;
};

inline constexpr DialogTemplate kFaxJobPageTemplate{IDD_FAX_JOB_PAGE, IDD_FAX_JOB_PAGE_RTL};

INT_PTR CALLBACK FaxJobPageProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept;

std::span<const Control> FaxJobPageControls() noexcept;

// The recent recipients as they stand become the names that the name box offers. Nothing before the page is created.
void RefreshNameBoxList(FaxJobPage& page);

// Shows a message for everything that keeps the job from being sent, in order; true when nothing does.
bool ValidateFaxJobPage(FaxJobPage& page);

// Reads the page for SaveFaxJobPage. Only after validation. False, or an exception, when that cannot be done whole: the
// Send is then refused.
[[nodiscard]] bool PrepareFaxJobPage(FaxJobPage& page);

// Writes what was prepared to the job record, the recipient that still stood in the fields included.
void SaveFaxJobPage(FaxJobPage& page) noexcept;

// Puts that recipient into the recent list, after SaveFaxJobPage. The job does not depend on it.
void RememberTypedRecipient(FaxJobPage& page);

} // namespace qx
