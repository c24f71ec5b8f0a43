// What the pages of the sheet have in common towards it.
#pragma once

#include "base/dialog.h"

#include <windows.h>

namespace qx {

// After a refused Send: field gets the focus with all its text selected. Posted, since the sheet first turns to the
// page and moves the focus itself; and not every sheet asks the page where to start.
inline void FocusAfterRefusal(HWND field) noexcept
{
    PostMessageW(GetAncestor(field, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

// For PSN_QUERYINITIALFOCUS: the page opens on field, with all its text selected, or where the sheet chooses when field
// is null or has meanwhile been disabled or hidden.
inline INT_PTR AnswerWithField(HWND page, HWND field) noexcept
{
    if (field == nullptr || !CanTakeFocus(field))
        return Answer(page, 0);
    SendMessageW(field, EM_SETSEL, 0, -1); // means nothing to a list
    return Answer(page, reinterpret_cast<LONG_PTR>(field));
}

} // namespace qx
