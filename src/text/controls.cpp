#include "text/controls.h"

#include "text/help.h"

namespace qx {

namespace {

bool IsComboBox(HWND control) noexcept
{
    wchar_t name[16] = L"";
    GetClassNameW(control, name, 16);
    return lstrcmpiW(name, L"ComboBox") == 0;
}

// In a mirrored dialog a control inherits the layout; this one stays as it is on a left-to-right system.
void ReadLeftToRight(HWND control) noexcept
{
    const LONG_PTR style = GetWindowLongPtrW(control, GWL_EXSTYLE);
    SetWindowLongPtrW(control, GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_LAYOUTRTL | WS_EX_RTLREADING));
}

// The dialog's own child that window is or lies in (an edit inside a combo box), or null.
HWND ChildOf(HWND dialog, HWND window) noexcept
{
    while (window != nullptr && window != dialog) {
        const HWND parent = GetAncestor(window, GA_PARENT);
        if (parent == dialog)
            return window;
        window = parent;
    }
    return nullptr;
}

HWND VisibleChildUnderCursor(HWND dialog) noexcept
{
    POINT point;
    if (!GetCursorPos(&point) || !ScreenToClient(dialog, &point))
        return nullptr;
    const HWND child = RealChildWindowFromPoint(dialog, point);
    return child != dialog && child != nullptr && IsWindowVisible(child) ? child : nullptr;
}

HWND ControlAskingForHelp(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    if (message == WM_HELP)
        return ChildOf(dialog, static_cast<HWND>(reinterpret_cast<const HELPINFO*>(l)->hItemHandle));
    const auto window = reinterpret_cast<HWND>(w);
    return window == dialog ? VisibleChildUnderCursor(dialog) : ChildOf(dialog, window);
}

} // namespace

void SetUpControls(const TextOwner& owner, HWND dialog, std::span<const Control> controls)
{
    for (const Control& row : controls) {
        const HWND control = GetDlgItem(dialog, row.id);
        if (control == nullptr)
            continue;
        if (row.text != 0)
            SetLocalizedText(owner, row.text, control, row.fallback);
        if (row.leftToRight)
            ReadLeftToRight(control);
        if (row.limit != 0)
            SendMessageW(control, IsComboBox(control) ? CB_LIMITTEXT : EM_LIMITTEXT, static_cast<WPARAM>(row.limit), 0);
    }
}

bool AnswerHelp(const TextOwner& owner, HWND dialog, UINT message, WPARAM w, LPARAM l,
                std::span<const Control> controls)
{
    if (message != WM_HELP && message != WM_CONTEXTMENU)
        return false;
    const HWND control = ControlAskingForHelp(dialog, message, w, l);
    const int id = control != nullptr ? GetDlgCtrlID(control) : 0;
    const auto row = std::ranges::find(controls, id, &Control::id);
    if (id != 0 && row != controls.end() && row->topic != kNoTopic)
        ShowHelp(owner, dialog, row->topic);
    return true;
}

} // namespace qx
