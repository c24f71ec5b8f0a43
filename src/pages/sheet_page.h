// What the pages of the sheet have in common towards it.
#pragma once

#include <windows.h>

namespace qx {

// After a refused Send: field gets the focus with all its text selected. Posted, since the sheet first turns to the
// page and moves the focus itself; and not every sheet asks the page where to start.
inline void FocusAfterRefusal(HWND field) noexcept
{
    PostMessageW(GetAncestor(field, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

} // namespace qx
