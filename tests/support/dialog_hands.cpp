#include "dialog_hands.h"

#include "dialog/dialog.h"
#include "host/window_query.h"

#include <algorithm>
#include <commctrl.h>
#include <map>
#include <prsht.h>
#include <utility>

namespace qx::test {

using host::kFileNameCombo;
using host::kFileNameEdit;
using host::kSheetTabs;

HWND ItemOf(HWND dialog, int id)
{
    thread_local std::map<std::pair<HWND, int>, HWND> known;
    HWND& item = known[{dialog, id}];
    if (GetDlgCtrlID(item) != id || GetParent(item) != dialog)
        item = GetDlgItem(dialog, id);
    return item;
}

void DialogHands::TakeUp(HWND dialog)
{
    dialog_ = dialog;
    page_ = IsSheet() ? PropSheet_GetCurrentPageHwnd(dialog) : dialog;
}

bool DialogHands::IsSheet() const
{
    return ItemOf(dialog_, kSheetTabs) != nullptr;
}

HWND DialogHands::Control(int id) const
{
    const HWND control = ItemOf(page_, id);
    if (control == nullptr)
        throw NotUsable("no such control");
    return control;
}

HWND DialogHands::Usable(int id) const
{
    const HWND control = Control(id);
    if (!IsWindowVisible(control) || !IsWindowEnabled(control))
        throw NotUsable("not usable");
    return control;
}

std::wstring DialogHands::Text(int id) const
{
    return WindowText(Control(id));
}

void DialogHands::Paste(int id, const std::wstring& text)
{
    const HWND control = Usable(id);
    const HWND inside = FindWindowExW(control, nullptr, L"Edit", nullptr); // of a combo box
    const HWND edit = inside != nullptr ? inside : control;
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    PasteInto(edit, text);
}

void DialogHands::Check(int id, bool checked)
{
    const HWND box = Usable(id);
    if ((SendMessageW(box, BM_GETCHECK, 0, 0) == BST_CHECKED) != checked)
        SendMessageW(box, BM_CLICK, 0, 0);
}

void DialogHands::Press(int id)
{
    SendMessageW(Usable(id), BM_CLICK, 0, 0);
}

void DialogHands::PressSheet(int id)
{
    const HWND button = ItemOf(dialog_, id);
    if (button == nullptr || !IsWindowEnabled(button))
        throw NotUsable("no such button");
    SendMessageW(button, BM_CLICK, 0, 0);
}

void DialogHands::GoToPage(int index)
{
    if (!IsSheet())
        throw NotUsable("no sheet");
    PropSheet_SetCurSel(dialog_, nullptr, static_cast<WPARAM>(index));
    TakeUp(dialog_);
}

void DialogHands::SelectRows(int id, const std::vector<int>& rows)
{
    const HWND list = Usable(id);
    if (std::ranges::any_of(rows, [&](int row) { return row >= ListView_GetItemCount(list); }))
        throw NotUsable("no such row");
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED);
    for (const int row : rows)
        ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

void DialogHands::ChooseFile(const std::filesystem::path& file)
{
    for (const int id : {kFileNameCombo, kFileNameEdit}) {
        if (const HWND name = ItemOf(dialog_, id); name != nullptr) {
            SetWindowTextW(name, file.c_str());
            SendMessageW(ItemOf(dialog_, IDOK), BM_CLICK, 0, 0);
            return;
        }
    }
    throw NotUsable("no file dialog");
}

void DialogHands::AskForHelp(int id)
{
    const HWND control = Usable(id);
    HELPINFO info{};
    info.cbSize = sizeof info;
    info.iContextType = HELPINFO_WINDOW;
    info.iCtrlId = id;
    info.hItemHandle = control;
    SendMessageW(control, WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
}

void PressKeyIn(HWND window, WPARAM key)
{
    SendMessageW(window, WM_KEYDOWN, key, 1);
    if (key == VK_BACK || key == VK_RETURN || key == VK_ESCAPE)
        SendMessageW(window, WM_CHAR, key, 1); // as the message loop translates it
    SendMessageW(window, WM_KEYUP, key, 1);
}

void PressAltKeyIn(HWND window, WPARAM key)
{
    constexpr LPARAM kAltHeld = 1 | (1 << 29);
    SendMessageW(window, WM_SYSKEYDOWN, key, kAltHeld);
    SendMessageW(window, WM_SYSKEYUP, key, kAltHeld);
}

void PasteInto(HWND edit, const std::wstring& text)
{
    SendMessageW(edit, EM_SETSEL, 0, -1);
    SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

void ClickArrowOf(HWND combo)
{
    COMBOBOXINFO info{};
    info.cbSize = sizeof info;
    GetComboBoxInfo(combo, &info);
    const LPARAM arrow = MAKELPARAM(info.rcButton.left + 2, info.rcButton.top + 2);
    SendMessageW(combo, WM_LBUTTONDOWN, MK_LBUTTON, arrow);
    SendMessageW(combo, WM_LBUTTONUP, 0, arrow);
}

POINT MiddleOfRow(HWND list, int row)
{
    RECT place{};
    SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}

void HoverRow(HWND list, int row)
{
    const POINT point = MiddleOfRow(list, row);
    SendMessageW(list, WM_MOUSEMOVE, 0, MAKELPARAM(point.x, point.y));
}

void ClickRow(HWND list, int row)
{
    const POINT point = MiddleOfRow(list, row);
    HoverRow(list, row);
    SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(point.x, point.y));
    SendMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(point.x, point.y));
}

HWND NewMessageWindow(const wchar_t* className, WNDPROC procedure)
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass); // fails harmlessly from the second time on
    return CreateWindowExW(0, className, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, windowClass.hInstance, nullptr);
}

void PressCancel(HWND dialog)
{
    SendMessageW(dialog, WM_COMMAND, IDCANCEL, reinterpret_cast<LPARAM>(ItemOf(dialog, IDCANCEL)));
}

void Answer(HWND box, const std::vector<int>& answers)
{
    for (const int answer : answers) {
        if (const HWND button = ItemOf(box, answer); button != nullptr) {
            SendMessageW(box, WM_COMMAND, static_cast<WPARAM>(answer), reinterpret_cast<LPARAM>(button));
            return;
        }
    }
}

} // namespace qx::test
