#include "support/late_buttons.h"

namespace qx::test {

namespace {

HWND g_sheet = nullptr; // whose first page is being created, until it is shown
RECT g_place{};         // of its Send button before that, in the sheet

RECT PlaceOf(HWND sheet, HWND button)
{
    RECT place{};
    GetWindowRect(button, &place);
    MapWindowPoints(HWND_DESKTOP, sheet, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

LRESULT CALLBACK BeforeMessage(int code, WPARAM w, LPARAM l)
{
    const auto& message = *reinterpret_cast<const CWPSTRUCT*>(l);
    const HWND parent = GetParent(message.hwnd);
    if (code == HC_ACTION && message.message == WM_INITDIALOG && g_sheet == nullptr && parent != nullptr &&
        !IsWindowVisible(parent) && GetDlgItem(parent, IDOK) != nullptr) {
        g_sheet = parent;
        g_place = PlaceOf(parent, GetDlgItem(parent, IDOK));
    }
    if (code == HC_ACTION && message.message == WM_SHOWWINDOW && message.hwnd == g_sheet) {
        MoveWindow(GetDlgItem(g_sheet, IDOK), g_place.left, g_place.top, g_place.right - g_place.left,
                   g_place.bottom - g_place.top, FALSE);
        g_sheet = nullptr;
    }
    return CallNextHookEx(nullptr, code, w, l);
}

} // namespace

LateButtons::LateButtons(DWORD thread) : hook_(SetWindowsHookExW(WH_CALLWNDPROC, BeforeMessage, nullptr, thread)) {}

LateButtons::~LateButtons()
{
    UnhookWindowsHookEx(hook_);
    g_sheet = nullptr;
}

} // namespace qx::test
