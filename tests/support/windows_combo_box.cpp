#include "support/windows_combo_box.h"

#include "host/window_query.h"

#include <cwchar>
#include <string>
#include <unordered_map>
#include <utility>

namespace qx::test {

namespace {

using host::IsOfClass;

constexpr WPARAM kNothing = static_cast<WPARAM>(-1);

struct Wrapped {
    WNDPROC before = nullptr;
    bool writes = false; // the combo box itself, into its edit
};

thread_local bool t_active = false;
// A window property would be the ordinary place, but a slow one where each look-up goes to another process.
// On the heap while there are any: some runtimes run destructors of a thread's objects when their memory has gone.
thread_local std::unordered_map<HWND, Wrapped>* t_wrapped = nullptr;

Wrapped& WrappedOf(HWND window)
{
    if (t_wrapped == nullptr)
        t_wrapped = new std::unordered_map<HWND, Wrapped>;
    return (*t_wrapped)[window];
}

void Forget(HWND window)
{
    t_wrapped->erase(window);
    if (t_wrapped->empty())
        delete std::exchange(t_wrapped, nullptr);
}

LRESULT Before(HWND window, UINT message, WPARAM w, LPARAM l)
{
    const WNDPROC procedure = WrappedOf(window).before;
    if (message == WM_NCDESTROY)
        Forget(window);
    return CallWindowProcW(procedure, window, message, w, l);
}

void Replace(HWND window, WNDPROC procedure)
{
    WrappedOf(window).before =
        reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

COMBOBOXINFO PartsOf(HWND combo)
{
    COMBOBOXINFO info{};
    info.cbSize = sizeof info;
    GetComboBoxInfo(combo, &info);
    return info;
}

bool HasOpenedItsList(HWND combo)
{
    return Before(combo, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

// -1 when there is none.
WPARAM FirstRowThatBeginsWithTheText(HWND combo)
{
    wchar_t text[1024] = L"";
    GetWindowTextW(PartsOf(combo).hwndItem, text, 1024);
    return static_cast<WPARAM>(Before(combo, CB_FINDSTRING, kNothing, reinterpret_cast<LPARAM>(text)));
}

// What the combo box writes itself is no change for it.
LRESULT Write(HWND combo, UINT message, WPARAM w, LPARAM l)
{
    const bool before = std::exchange(WrappedOf(combo).writes, true);
    const LRESULT result = Before(combo, message, w, l);
    WrappedOf(combo).writes = before;
    return result;
}

LRESULT AnswerChild(HWND combo, WPARAM w, LPARAM l)
{
    const COMBOBOXINFO parts = PartsOf(combo);
    const auto sender = reinterpret_cast<HWND>(l);
    if (sender == parts.hwndList)
        return Write(combo, WM_COMMAND, w, l);
    const LRESULT result = Before(combo, WM_COMMAND, w, l);
    if (sender == parts.hwndItem && HIWORD(w) == EN_CHANGE && !WrappedOf(combo).writes) {
        const WPARAM row = HasOpenedItsList(combo) ? FirstRowThatBeginsWithTheText(combo) : kNothing;
        SendMessageW(parts.hwndList, LB_SETCURSEL, row, 0);
    }
    return result;
}

LRESULT CALLBACK ComboProcedure(HWND combo, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_COMMAND:
        return AnswerChild(combo, w, l);
    case CB_SETCURSEL:
    case CB_SELECTSTRING:
        return Write(combo, message, w, l);
    default:
        return Before(combo, message, w, l);
    }
}

void ToggleList(HWND combo)
{
    const bool open = !HasOpenedItsList(combo);
    Before(combo, CB_SHOWDROPDOWN, open, 0);
    const WPARAM row = open ? FirstRowThatBeginsWithTheText(combo) : kNothing;
    if (row != kNothing)
        Write(combo, CB_SETCURSEL, row, 0);
}

LRESULT CALLBACK EditProcedure(HWND edit, UINT message, WPARAM w, LPARAM l)
{
    const bool altArrow = message == WM_SYSKEYDOWN && (w == VK_DOWN || w == VK_UP);
    if (altArrow || (message == WM_KEYDOWN && w == VK_F4)) {
        ToggleList(GetParent(edit));
        return 0;
    }
    return Before(edit, message, w, l);
}

// Before the window's first message: whoever replaces its procedure later stands before this one.
LRESULT CALLBACK WatchCreation(int code, WPARAM w, LPARAM l)
{
    if (code == HCBT_CREATEWND) {
        const auto window = reinterpret_cast<HWND>(w);
        const HWND parent = reinterpret_cast<const CBT_CREATEWNDW*>(l)->lpcs->hwndParent;
        if (IsOfClass(window, L"ComboBox"))
            Replace(window, ComboProcedure);
        else if (IsOfClass(window, L"Edit") && IsOfClass(parent, L"ComboBox"))
            Replace(window, EditProcedure);
    }
    return CallNextHookEx(nullptr, code, w, l);
}

} // namespace

WindowsComboBoxes::WindowsComboBoxes()
{
    if (!std::exchange(t_active, true))
        hook_ = SetWindowsHookExW(WH_CBT, WatchCreation, nullptr, GetCurrentThreadId());
}

WindowsComboBoxes::~WindowsComboBoxes()
{
    if (hook_ == nullptr)
        return;
    UnhookWindowsHookEx(hook_);
    t_active = false;
}

} // namespace qx::test
