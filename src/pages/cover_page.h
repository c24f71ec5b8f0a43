// The cover page controls, which the Fax Job page and the Edit Defaults dialog share: check box, notes, subject, image.
#pragma once

#include "dialog/controls.h"
#include "dialog/dialog.h"
#include "pages/send_rules.h"
#include "res/cover_page_ids.h"
#include "text/localized_text.h"

#include <array>
#include <optional>
#include <qxfax/send_fax.h>
#include <windows.h>

namespace qx {

// The shared part of a dialog.
struct CoverPage {
    HWND dialog = nullptr;
    bool checkImage = false; // the image path is the user's, and has to be right
};

// The two dialogs have texts of their own for the notes.
constexpr std::array<Control, 9> CoverPageControls(Text notes) noexcept
{
    return {{
        {.id = IDC_COVER_PAGE_GROUP, .text = 5216, .fallback = L"Include With Fax"},
        {.id = IDC_COVER_PAGE, .text = 6094, .fallback = L"Co&ver Page", .topic = 15591},
        {.id = IDC_NOTES_LABEL, .text = notes.id, .fallback = notes.fallback, .topic = 15592},
        {.id = IDC_NOTES, .limit = kNotesLimit, .topic = 15592},
        {.id = IDC_SUBJECT_LABEL, .text = 5219, .fallback = L"Subject:", .topic = 15593},
        {.id = IDC_SUBJECT, .limit = kNameLimit, .topic = 15593},
        {.id = IDC_IMAGE_LABEL, .text = 5310, .fallback = L"Image:", .topic = 15625},
        {.id = IDC_IMAGE, .limit = kImagePathLimit, .topic = 15625, .leftToRight = true},
        {.id = IDC_BROWSE, .text = 5220, .fallback = L"Browse", .topic = 15594},
    }};
}

// Shows the record's cover page; the fields can be used when it is on. This and the next two throw when something
// cannot be shown.
void LoadCoverPageFields(CoverPage& page, const FaxJobData& record);

// The administrator's own image is forced on: notes and subject are free, everything else is fixed.
void LockCoverPageToOverlay(CoverPage& page);

// In the print host for 32-bit programs there is no cover page: cleared, and nothing can be changed.
void ForbidCoverPage(CoverPage& page);

// What is wrong with the image, if one is to be checked: its file is there and is named .bmp; what is in it is not
// looked at. Throws when the field cannot be read.
std::optional<SendProblem> CheckImage(const CoverPage& page);

// Writes flag, notes, subject and image path to the record. Throws, with a part of them written, when one cannot be
// read or stored.
void SaveCoverPageFields(const CoverPage& page, FaxJobData& record);

// What the shared controls do. FALSE: not one of them.
INT_PTR AnswerCommand(CoverPage& page, int control, UINT code);

} // namespace qx
