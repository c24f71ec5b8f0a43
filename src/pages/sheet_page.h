// What the pages of the sheet have in common towards it.
#pragma once

#include <windows.h>

namespace qx {

// After a refused Send: the sheet turns to page, and field gets the focus with all its text selected. Happens when the
// caller has returned to the sheet; not every sheet does it by itself or asks the page where to start.
void TurnToField(HWND page, HWND field) noexcept;

} // namespace qx
