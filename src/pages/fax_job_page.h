// The Fax Job page, the first of the sheet: to whom the fax goes, its cover page and its billing code, and the checks
// before it is sent.
#pragma once

#include "base/number_text.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "pages/cover_page.h"
#include "pages/picture_button.h"
#include "pages/recipient_fields.h"
#include "pages/recipient_list.h"
#include "pages/sheet_page.h"
#include "res/fax_job_page_ids.h"

namespace qx {

struct FaxJobPage : SheetPage {
    RecentRecipientList* recent = nullptr; // set before the page is created; not owned

    RecipientFields fields;
    RecipientList recipients;
    CoverPage coverPage;
    NumberFilter billingCode{.allowed = AllowedInBillingCode, .accepted = {}};
    PictureButton phoneBookButton;
    bool coverPageIsOld = false; // the fields do not show the job's cover page, which is the newer one
};

extern const Dialog<FaxJobPage> kFaxJobPage;

// The name box offers the recent recipients as they stand. Nothing before the page is created.
void RefreshNameBoxList(FaxJobPage& page);

// Writes what the page has prepared to the job. Answers the recipient that still stood in the fields, or null.
const PhoneBookEntry* SaveFaxJobPage(FaxJobPage& page) noexcept;

// The item becomes the most recent recipient. The job does not depend on it.
void RememberRecent(FaxJobPage& page, const PhoneBookItem& item);

} // namespace qx
