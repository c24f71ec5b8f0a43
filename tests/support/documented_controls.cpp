#include "support/documented_controls.h"

#include "host/window_query.h"

#include <commctrl.h>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

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

std::mutex g_lock;
std::unordered_map<HWND, WNDPROC> g_before; // of the controls of every thread, what they had before

WNDPROC Before(HWND control, bool forget)
{
    const std::lock_guard lock(g_lock);
    const auto found = g_before.find(control);
    const WNDPROC procedure = found->second;
    if (forget)
        g_before.erase(found);
    return procedure;
}

LRESULT CALLBACK Documented(HWND control, UINT message, WPARAM w, LPARAM l)
{
    const LRESULT result = CallWindowProcW(Before(control, message == WM_NCDESTROY), control, message, w, l);
    if (message == WM_ENABLE && w == FALSE)
        LeaveFocusNowhere(control);
    else if (message == WM_SETFOCUS)
        CheckByFocus(control);
    else if (message == WM_SETREDRAW)
        RememberRedraw(control, w != FALSE);
    else if (message == LVM_SCROLL)
        Scroll(control, -l);
    else if (message == LVM_DELETEALLITEMS)
        ForgetScrollRange(control);
    return result;
}

void PutInFrontOf(HWND control)
{
    const std::lock_guard lock(g_lock);
    const auto [before, isNew] = g_before.try_emplace(control);
    if (isNew) // a thread may have two of the hooks
        before->second =
            reinterpret_cast<WNDPROC>(SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Documented)));
}

// Not a hook of all messages, nor the system's chain of procedures: here, each asks the server at every message, and a
// list of thousands of rows takes ten times as long.
LRESULT CALLBACK AtCreation(int code, WPARAM w, LPARAM l)
{
    if (code == HCBT_CREATEWND && (reinterpret_cast<const CBT_CREATEWNDW*>(l)->lpcs->style & WS_CHILD) != 0)
        PutInFrontOf(reinterpret_cast<HWND>(w));
    return CallNextHookEx(nullptr, code, w, l);
}

} // namespace

DocumentedControls::DocumentedControls() : hook_(SetWindowsHookExW(WH_CBT, AtCreation, nullptr, GetCurrentThreadId()))
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
