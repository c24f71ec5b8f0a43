#include "support/documented_controls.h"

#include "host/window_query.h"

#include <commctrl.h>
#include <cstdlib>

namespace qx::test {

namespace {

constexpr const wchar_t* kRedrawIsOff = L"qx redraw is off";

using host::IsOfClass;

bool IsAutoRadioButton(HWND window)
{
    return IsOfClass(window, WC_BUTTONW) &&
           (GetWindowLongPtrW(window, GWL_STYLE) & BS_TYPEMASK) == static_cast<LONG_PTR>(BS_AUTORADIOBUTTON);
}

void LeaveFocusNowhere(HWND disabled)
{
    if (GetFocus() == disabled) // not of a dialog under a modal one: its focus comes back
        SetFocus(nullptr);
}

void CheckByFocus(HWND button)
{
    if (!IsAutoRadioButton(button) || GetKeyState(VK_LBUTTON) < 0 ||
        IsDlgButtonChecked(GetParent(button), GetDlgCtrlID(button)))
        return;
    SendMessageW(button, BM_CLICK, 0, 0);
}

void RememberRedraw(HWND list, bool on)
{
    if (!IsOfClass(list, WC_LISTVIEWW))
        return;
    if (on)
        RemovePropW(list, kRedrawIsOff);
    else
        SetPropW(list, kRedrawIsOff, reinterpret_cast<HANDLE>(1));
}

bool g_scrolling = false; // here, and not by the program

void Scroll(HWND list, LPARAM pixels)
{
    if (g_scrolling || GetPropW(list, kRedrawIsOff) == nullptr)
        return;
    g_scrolling = true;
    SendMessageW(list, LVM_SCROLL, 0, pixels);
    g_scrolling = false;
}

void ForgetScrollRange(HWND list)
{
    constexpr LPARAM kToTheTop = -1000000;
    Scroll(list, kToTheTop);
}

LRESULT CALLBACK AfterMessage(int code, WPARAM w, LPARAM l)
{
    const auto& done = *reinterpret_cast<const CWPRETSTRUCT*>(l);
    if (code == HC_ACTION) {
        if (done.message == WM_ENABLE && done.wParam == FALSE)
            LeaveFocusNowhere(done.hwnd);
        else if (done.message == WM_SETFOCUS)
            CheckByFocus(done.hwnd);
        else if (done.message == WM_SETREDRAW)
            RememberRedraw(done.hwnd, done.wParam != FALSE);
        else if (done.message == LVM_SCROLL)
            Scroll(done.hwnd, -done.lParam);
        else if (done.message == LVM_DELETEALLITEMS)
            ForgetScrollRange(done.hwnd);
    }
    return CallNextHookEx(nullptr, code, w, l);
}

} // namespace

DocumentedControls::DocumentedControls()
    : hook_(SetWindowsHookExW(WH_CALLWNDPROCRET, AfterMessage, nullptr, GetCurrentThreadId()))
{
}

DocumentedControls::~DocumentedControls()
{
    UnhookWindowsHookEx(hook_);
}

std::unique_ptr<DocumentedControls> DocumentedControls::WhenAsked()
{
    const bool asked = std::getenv("QX_DOCUMENTED_CONTROLS") != nullptr;
    return asked ? std::make_unique<DocumentedControls>() : nullptr;
}

} // namespace qx::test
