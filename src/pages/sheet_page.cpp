#include "pages/sheet_page.h"

#include <commctrl.h>
#include <prsht.h>

namespace qx {

void TurnToField(HWND page, HWND field) noexcept
{
    const HWND sheet = GetParent(page);
    const LRESULT index = SendMessageW(sheet, PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(page), 0);
    if (!IsWindowVisible(page) && index >= 0)
        PostMessageW(sheet, PSM_SETCURSEL, static_cast<WPARAM>(index), 0);
    PostMessageW(GetAncestor(page, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

} // namespace qx
