#include "dialog/dialog.h"

#include "base/text.h"

#include <algorithm>
#include <stdexcept>

namespace qx {

namespace {

bool HoldsCharacters(HWND edit) noexcept
{
    return SendMessageW(edit, EM_GETLINECOUNT, 0, 0) > 1 || SendMessageW(edit, EM_LINELENGTH, 0, 0) > 0;
}

} // namespace

std::wstring WindowText(HWND window, std::size_t units)
{
    const auto length = static_cast<std::size_t>(std::max(GetWindowTextLengthW(window), 0));
    std::wstring text(std::min(length, units), L'\0');
    const int copied = GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(std::max(copied, 0)));
    return text;
}

std::wstring FieldText(HWND edit, std::size_t units)
{
    // Asked in three ways: an empty answer may also mean that the question has failed.
    const bool holdsText = HoldsCharacters(edit);
    const bool hasLength = GetWindowTextLengthW(edit) > 0;
    std::wstring text = WindowText(edit, units);
    if (edit == nullptr || hasLength != holdsText || text.empty() == holdsText)
        throw std::runtime_error("a field cannot be read");
    return text;
}

bool HasText(HWND window) noexcept
{
    return window == nullptr || GetWindowTextLengthW(window) > 0 || HoldsCharacters(window);
}

void SetFieldText(HWND dialog, int control, const wchar_t* text)
{
    if (!SetWindowTextW(GetDlgItem(dialog, control), OrEmpty(text)))
        throw std::runtime_error("a field cannot be filled");
}

bool IsChecked(HWND dialog, int box)
{
    // Asked in two ways: cleared is also what a question that has failed answers.
    const HWND window = GetDlgItem(dialog, box);
    const bool checked = IsDlgButtonChecked(dialog, box) == BST_CHECKED;
    if (window == nullptr || checked != (SendMessageW(window, BM_GETCHECK, 0, 0) == BST_CHECKED))
        throw std::runtime_error("a check box cannot be read");
    return checked;
}

void SetChecked(HWND dialog, int button, bool checked)
{
    if (!CheckDlgButton(dialog, button, checked ? BST_CHECKED : BST_UNCHECKED))
        throw std::runtime_error("a button cannot be checked");
}

namespace {

// The dialog manager of a page is the sheet's.
void MoveFocus(HWND dialog, HWND control) noexcept
{
    SendMessageW(GetAncestor(dialog, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

bool IsButton(HWND control) noexcept
{
    return (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) != 0;
}

// The nearest field or list before a control, round the dialog; null when there is none. The system may lead round in a
// circle that leaves the control out: no dialog has as many steps.
HWND FieldBefore(HWND dialog, HWND control) noexcept
{
    constexpr int kMostSteps = 100;
    HWND found = control;
    for (int step = 0; step < kMostSteps; ++step) {
        found = GetNextDlgTabItem(dialog, found, TRUE);
        if (found == nullptr || found == control)
            return nullptr;
        if (!IsButton(found))
            return found;
    }
    return nullptr;
}

// Within the dialog: from the last control of a page the Tab key would go on to the button that sends. Not to a button
// if there is a field: the Enter or Space that was meant for a button that has just gone off would press another one,
// which may clear what was typed, or end the dialog.
void HandFocusOn(HWND dialog, HWND control) noexcept
{
    const HWND focus = GetFocus();
    if (control == nullptr || focus == nullptr || (focus != control && !IsChild(control, focus)))
        return;
    const HWND field = FieldBefore(dialog, control);
    const HWND next = field != nullptr ? field : GetNextDlgTabItem(dialog, control, FALSE);
    if (next != nullptr && next != control)
        MoveFocus(dialog, next);
}

// Only edit fields that cannot be edited ask a dialog this way.
INT_PTR ColorLockedField(HDC dc, HWND field) noexcept
{
    if (!IsOfClass(field, L"Edit"))
        return FALSE;
    SetTextColor(dc, GetSysColor(IsWindowEnabled(field) ? COLOR_BTNTEXT : COLOR_GRAYTEXT));
    SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
    return reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE));
}

} // namespace

bool IsOfClass(HWND window, const wchar_t* name) noexcept
{
    wchar_t actual[16] = L"";
    GetClassNameW(window, actual, 16);
    return lstrcmpiW(actual, name) == 0;
}

void FocusControl(HWND dialog, int control) noexcept
{
    MoveFocus(dialog, GetDlgItem(dialog, control));
}

void EnableControl(HWND dialog, int control, bool enabled) noexcept
{
    const HWND window = GetDlgItem(dialog, control);
    if ((IsWindowEnabled(window) != FALSE) == enabled) // as a rule: buttons follow every keystroke
        return;
    if (!enabled)
        HandFocusOn(dialog, window);
    EnableWindow(window, enabled);
}

void ShowControl(HWND dialog, int control, bool shown) noexcept
{
    const HWND window = GetDlgItem(dialog, control);
    if (IsShown(window) == shown)
        return;
    if (!shown)
        HandFocusOn(dialog, window);
    ShowWindow(window, shown ? SW_SHOWNA : SW_HIDE);
}

bool IsShown(HWND control) noexcept
{
    return (GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE) != 0;
}

bool CanTakeFocus(HWND control) noexcept
{
    return IsShown(control) && IsWindowEnabled(control);
}

RECT PlaceOf(HWND control) noexcept
{
    RECT place{};
    GetWindowRect(control, &place);
    // Both corners at once: they change places where the dialog is mirrored.
    MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

bool SetPlace(HWND control, const RECT& place) noexcept
{
    return SetWindowPos(control, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                        SWP_NOZORDER | SWP_NOACTIVATE) != FALSE;
}

void PrepareDialog(const TextOwner& texts, HWND dialog, const Text& title, std::span<const Control> controls)
{
    if (WindowsMajorVersion() < 6)
        SetWindowLongPtrW(dialog, GWL_EXSTYLE, GetWindowLongPtrW(dialog, GWL_EXSTYLE) | WS_EX_CONTEXTHELP);
    if (title.id != 0)
        SetLocalizedText(texts, title.id, dialog, title.fallback);
    SetUpControls(texts, dialog, controls);
}

bool IsClickOfDisabledButton(HWND dialog, UINT message, WPARAM w) noexcept
{
    const HWND button = message == WM_COMMAND && HIWORD(w) == BN_CLICKED ? GetDlgItem(dialog, LOWORD(w)) : nullptr;
    return button != nullptr && !IsWindowEnabled(button);
}

void PassColorChangeOn(HWND window) noexcept
{
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
        SendMessageW(child, WM_SYSCOLORCHANGE, 0, 0);
}

INT_PTR AnswerAsEveryDialog(const TextOwner& texts, HWND dialog, UINT message, WPARAM w, LPARAM l,
                            std::span<const Control> controls)
{
    if (message == WM_COMMAND && w == MAKEWPARAM(IDCANCEL, BN_CLICKED)) {
        EndDialog(dialog, IDCANCEL);
        return TRUE;
    }
    // A help key without a page ends here instead of reaching the owner, in the end the printing program; a right click
    // goes on, since over the caption it asks for the system menu.
    return ShowControlHelp(texts, dialog, message, w, l, controls) || message == WM_HELP;
}

INT_PTR AnswerAsPage(HWND page, UINT message, WPARAM w, LPARAM l) noexcept
{
    if (message == WM_CTLCOLORSTATIC)
        return ColorLockedField(reinterpret_cast<HDC>(w), reinterpret_cast<HWND>(l));
    // The command is what the dialog manager makes of the other one, and of Escape when it is asked for the page alone.
    if (message != WM_CLOSE && (message != WM_COMMAND || LOWORD(w) != IDCANCEL))
        return FALSE;
    PostMessageW(GetParent(page), PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
    return TRUE;
}

} // namespace qx
