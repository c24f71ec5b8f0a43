#include "dialog/controls.h"

#include "dialog/dialog.h"
#include "text/help.h"

#include <imm.h>

namespace qx {

namespace {

bool IsGroupBox(HWND control) noexcept
{
    return IsOfClass(control, L"Button") && (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
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

// The visible control that lies in the group box at a point of the screen, or the box itself.
HWND ChildInGroupBox(HWND groupBox, POINT point) noexcept
{
    for (HWND child = groupBox; child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT rectangle;
        if (IsWindowVisible(child) && !IsGroupBox(child) && GetWindowRect(child, &rectangle) &&
            PtInRect(&rectangle, point))
            return child;
    }
    return groupBox;
}

HWND VisibleChildUnderCursor(HWND dialog) noexcept
{
    POINT point;
    if (!GetCursorPos(&point))
        return nullptr;
    POINT inDialog = point;
    ScreenToClient(dialog, &inDialog);
    const HWND child = RealChildWindowFromPoint(dialog, inDialog);
    if (child == dialog || child == nullptr || !IsWindowVisible(child))
        return nullptr;
    // Windows looks through a group box by itself; Wine finds the box and nothing behind it.
    return IsGroupBox(child) ? ChildInGroupBox(child, point) : child;
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
        if (row.noInputMethod)
            ImmAssociateContext(control, nullptr);
        if (row.limit != 0)
            SendMessageW(control, IsOfClass(control, L"ComboBox") ? CB_LIMITTEXT : EM_LIMITTEXT,
                         static_cast<WPARAM>(row.limit), 0);
    }
}

bool ShowControlHelp(const TextOwner& owner, HWND dialog, UINT message, WPARAM w, LPARAM l,
                     std::span<const Control> controls)
{
    if (message != WM_HELP && message != WM_CONTEXTMENU)
        return false;
    const HWND control = ControlAskingForHelp(dialog, message, w, l);
    const int id = control != nullptr ? GetDlgCtrlID(control) : 0;
    const auto row = std::ranges::find(controls, id, &Control::id);
    if (id == 0 || row == controls.end() || row->topic == kNoTopic)
        return false;
    ShowHelp(owner, dialog, row->topic);
    return true;
}

} // namespace qx
