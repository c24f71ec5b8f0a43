// The cover page controls, which the Fax Job page and the Edit Defaults dialog share: check box, notes, subject, image.
#pragma once

#include "pages/image_rule.h"
#include "text/localized_text.h"

#include <qxfax/send_fax.h>
#include <string>
#include <windows.h>

namespace qx {

// Shows the record's cover page; the fields can be used when it is on. The answer tells whether it is.
bool LoadCoverPageFields(HWND dialog, const FaxJobData& record);

// Enables the fields as the check box says, and answers what it says.
bool OnCoverPageToggled(HWND dialog);

// The administrator's own image is forced on: notes and subject are free, everything else is fixed.
void LockCoverPageToOverlay(HWND dialog);

// In the print host for 32-bit programs there is no cover page: cleared, and nothing can be changed.
void ForbidCoverPage(HWND dialog);

// Writes flag, notes, subject and image path to the record. Throws, with a part of them written, when one cannot be
// read or stored.
void SaveCoverPageFields(HWND dialog, FaxJobData& record);

// Lets the user choose a bitmap file and puts its path into the image field.
void BrowseForOverlayImage(HWND dialog);

// Whether path names a file that can be read and is named .bmp; what is in the file is not looked at.
[[nodiscard]] ImageProblem CheckImage(const std::wstring& path);

// What the user is told. Not for None.
Message ImageMessage(ImageProblem problem) noexcept;

} // namespace qx
