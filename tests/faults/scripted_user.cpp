#include "scripted_user.h"

#include "host/window_query.h"

#include <algorithm>
#include <commctrl.h>
#include <prsht.h>
#include <span>
#include <utility>

namespace qx::test {

namespace {

constexpr wchar_t kClass[] = L"qx_scripted_user";
constexpr UINT_PTR kTimer = 1;
constexpr UINT kTickMilliseconds = 10; // a timer's message comes when all others are done
constexpr int kTries = 4;
constexpr int kMostBoxes = 12;

using host::ChildrenOf;
using host::IsOfClass;
using host::kFileNameCombo;
using host::kFileNameEdit;
using host::kSheetTabs;

HWND TopDialog()
{
    for (const HWND window : host::WindowsOf(GetCurrentThreadId())) {
        if (IsOfClass(window, L"#32770") && IsWindowVisible(window) && IsWindowEnabled(window))
            return window;
    }
    return nullptr;
}

// A message box has nothing but a text, an icon and buttons of the standard answers.
bool IsBox(HWND dialog)
{
    const std::vector<HWND> children = ChildrenOf(dialog);
    return !children.empty() && std::ranges::all_of(children, [](HWND child) {
        const int id = GetDlgCtrlID(child);
        return IsOfClass(child, L"Static") || (IsOfClass(child, L"Button") && id >= IDOK && id <= IDCONTINUE);
    });
}

} // namespace

ScriptedUser::ScriptedUser(std::vector<Step> steps) : steps_(std::move(steps))
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClass;
    RegisterClassW(&windowClass); // fails harmlessly from the second time on
    window_ = CreateWindowExW(0, kClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, windowClass.hInstance, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetTimer(window_, kTimer, kTickMilliseconds, nullptr);
}

ScriptedUser::~ScriptedUser()
{
    DestroyWindow(window_);
}

LRESULT CALLBACK ScriptedUser::Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    auto* const self = reinterpret_cast<ScriptedUser*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_TIMER && self != nullptr) {
        self->Tick();
        return 0;
    }
    return DefWindowProcW(window, message, w, l);
}

void ScriptedUser::Tick()
{
    const HWND dialog = TopDialog();
    // A dialog that is still carrying out a step may wait with its messages running.
    if (dialog == nullptr || dialog == busyWith_)
        return;
    dialog_ = dialog;
    const HWND outer = std::exchange(busyWith_, dialog);
    if (IsBox(dialog)) {
        Agree(dialog);
    } else if (gaveUp_ || next_ == steps_.size()) {
        CloseIt(dialog);
    } else {
        const std::size_t step = next_++;
        const int tries = std::exchange(tries_, 0);
        try {
            steps_[step](*this);
        } catch (const std::exception&) {
            next_ = step;
            tries_ = tries + 1;
            gaveUp_ = tries_ == kTries;
        }
    }
    busyWith_ = outer;
}

void ScriptedUser::Agree(HWND box)
{
    constexpr int kYes[] = {IDYES, IDOK, IDRETRY, IDCANCEL}, kNo[] = {IDCANCEL, IDNO, IDOK};
    // The same box again and again has to be got rid of otherwise.
    for (const int answer : std::span<const int>(++boxes_ <= kMostBoxes ? std::span<const int>(kYes) : kNo)) {
        if (const HWND button = GetDlgItem(box, answer); button != nullptr) {
            SendMessageW(box, WM_COMMAND, static_cast<WPARAM>(answer), reinterpret_cast<LPARAM>(button));
            return;
        }
    }
}

void ScriptedUser::CloseIt(HWND dialog)
{
    gaveUp_ = true; // once closing, always closing
    SendMessageW(dialog, WM_COMMAND, IDCANCEL, reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDCANCEL)));
}

bool ScriptedUser::IsSheet() const
{
    return GetDlgItem(dialog_, kSheetTabs) != nullptr;
}

HWND ScriptedUser::Control(int id) const
{
    const HWND page = IsSheet() ? PropSheet_GetCurrentPageHwnd(dialog_) : dialog_;
    const HWND control = GetDlgItem(page, id);
    if (control == nullptr)
        throw std::runtime_error("no such control");
    return control;
}

HWND ScriptedUser::Usable(int id) const
{
    const HWND control = Control(id);
    if (!IsWindowVisible(control) || !IsWindowEnabled(control))
        throw std::runtime_error("not usable");
    return control;
}

std::wstring ScriptedUser::Text(int id) const
{
    wchar_t text[1024] = L"";
    GetWindowTextW(Control(id), text, 1024);
    return text;
}

void ScriptedUser::Paste(int id, const std::wstring& text)
{
    const HWND control = Usable(id);
    const HWND inside = FindWindowExW(control, nullptr, L"Edit", nullptr); // of a combo box
    const HWND edit = inside != nullptr ? inside : control;
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    SendMessageW(edit, EM_SETSEL, 0, -1);
    SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

void ScriptedUser::Check(int id, bool checked)
{
    const HWND box = Usable(id);
    if ((SendMessageW(box, BM_GETCHECK, 0, 0) == BST_CHECKED) != checked)
        SendMessageW(box, BM_CLICK, 0, 0);
}

void ScriptedUser::Press(int id)
{
    SendMessageW(Usable(id), BM_CLICK, 0, 0);
}

void ScriptedUser::PressSheet(int id)
{
    const HWND button = GetDlgItem(dialog_, id);
    if (button == nullptr || !IsWindowEnabled(button))
        throw std::runtime_error("no such button");
    SendMessageW(button, BM_CLICK, 0, 0);
}

void ScriptedUser::AskForHelp(int id)
{
    const HWND control = Usable(id);
    HELPINFO info{};
    info.cbSize = sizeof info;
    info.iContextType = HELPINFO_WINDOW;
    info.iCtrlId = id;
    info.hItemHandle = control;
    SendMessageW(control, WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
}

void ScriptedUser::GoToPage(int index)
{
    if (!IsSheet())
        throw std::runtime_error("no sheet");
    PropSheet_SetCurSel(dialog_, nullptr, static_cast<WPARAM>(index));
}

void ScriptedUser::SelectRows(int id, const std::vector<int>& rows)
{
    const HWND list = Usable(id);
    if (std::ranges::any_of(rows, [&](int row) { return row >= ListView_GetItemCount(list); }))
        throw std::runtime_error("no such row");
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED);
    for (const int row : rows)
        ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

void ScriptedUser::ChooseFile(const std::filesystem::path& file)
{
    for (const int id : {kFileNameCombo, kFileNameEdit}) {
        if (const HWND name = GetDlgItem(dialog_, id); name != nullptr) {
            SetWindowTextW(name, file.c_str());
            SendMessageW(GetDlgItem(dialog_, IDOK), BM_CLICK, 0, 0);
            return;
        }
    }
    throw std::runtime_error("no file dialog");
}

} // namespace qx::test
