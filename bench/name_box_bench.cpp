// What a keystroke in the completing name box costs, beside the same outcome on a bare combo box: the typed letter, the
// list filled with the same names and shown, the first one put into the edit with its tail selected.
#include "dialog/type_ahead_combo.h"

#include "dialog/dialog.h"
#include "dialog/type_ahead_parts.h"
#include "support/measure.h"

#include <string>
#include <vector>

namespace {

constexpr int kNames = 20;
constexpr int kRounds = 200;

std::vector<std::wstring> Names()
{
    std::vector<std::wstring> names;
    for (int i = 0; i < kNames; ++i)
        names.push_back(L"Anna Example " + std::to_wstring(i));
    return names;
}

struct Combo {
    Combo(HWND owner, int top, bool asHighAsNameBox)
        : window(CreateWindowExW(0, WC_COMBOBOXW, L"",
                                 WS_CHILD | WS_VISIBLE | WS_VSCROLL | CBS_DROPDOWN | CBS_AUTOHSCROLL, 10, top, 220, 200,
                                 owner, nullptr, qx::ModuleInstance(), nullptr))
    {
        COMBOBOXINFO info{};
        info.cbSize = sizeof info;
        GetComboBoxInfo(window, &info);
        edit = info.hwndItem;
        list = info.hwndList;
        if (asHighAsNameBox) // then it has a scroll bar to draw, too
            SendMessageW(window, CB_SETMINVISIBLE, qx::type_ahead::kRowsShown + 1, 0);
    }
    void Show() const
    {
        UpdateWindow(list);
        UpdateWindow(edit);
    }

    HWND window, edit, list;
};

void TypeIntoBareCombo(const Combo& combo, const std::vector<std::wstring>& names)
{
    SendMessageW(combo.edit, WM_CHAR, L'a', 1);
    const auto typed = static_cast<WPARAM>(GetWindowTextLengthW(combo.edit));
    SendMessageW(combo.list, WM_SETREDRAW, FALSE, 0);
    SendMessageW(combo.window, CB_RESETCONTENT, 0, 0);
    for (const std::wstring& name : names) {
        const LRESULT row = SendMessageW(combo.window, CB_INSERTSTRING, static_cast<WPARAM>(-1),
                                         reinterpret_cast<LPARAM>(name.c_str()));
        SendMessageW(combo.window, CB_SETITEMDATA, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&name));
    }
    SendMessageW(combo.list, WM_SETREDRAW, TRUE, 0);
    SendMessageW(combo.window, CB_SHOWDROPDOWN, TRUE, 0);
    SendMessageW(combo.window, CB_SETCURSEL, 0, 0);
    SendMessageW(combo.edit, EM_SETSEL, typed, -1);
    combo.Show();
}

// As the name box is emptied: its list has no rows either, and no scroll bar.
void EmptyBareCombo(const Combo& combo)
{
    SendMessageW(combo.window, CB_SHOWDROPDOWN, FALSE, 0);
    SetFocus(combo.edit);
    SendMessageW(combo.window, CB_RESETCONTENT, 0, 0);
    SetWindowTextW(combo.edit, L"");
}

void TypeIntoNameBox(qx::TypeAheadState& state, const Combo& combo)
{
    SendMessageW(combo.edit, WM_CHAR, L'a', 1);
    qx::HandleNameBoxNotification(state, CBN_EDITCHANGE); // as the page does
    combo.Show();
}

void EmptyNameBox(qx::TypeAheadState& state)
{
    SetFocus(state.edit);
    qx::ClearNameBox(state);
}

} // namespace

int main(int count, char** arguments)
{
    const qx::ActivationScope context;
    const HWND owner = CreateWindowExW(0, WC_DIALOG, L"Bench", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 300, 300,
                                       nullptr, nullptr, qx::ModuleInstance(), nullptr);
    const std::vector<std::wstring> names = Names();
    const Combo bare(owner, 10, true);
    const Combo completing(owner, 60, false);
    const Combo high(owner, 110, false);
    qx::TypeAheadState state;
    qx::AttachTypeAhead(state, completing.window, owner);
    std::vector<qx::SuggestionItem> items;
    for (const std::wstring& name : names)
        items.push_back({name});
    qx::SetSuggestionItems(state, std::move(items));

    qx::bench::Benchmark benchmark(kRounds);
    const qx::bench::Work keystroke{"a keystroke in the name box, 20 recent names",
                                    [&] { TypeIntoNameBox(state, completing); }, [&] { EmptyNameBox(state); }};
    const auto on = [&names](const std::string& what, const Combo& combo) {
        return qx::bench::Work{what, [&] { TypeIntoBareCombo(combo, names); }, [&] { EmptyBareCombo(combo); }};
    };
    benchmark.Compare(keystroke, on("the same on a bare combo box", bare), 1.3);
    benchmark.Compare(keystroke, on("on one as high as all its rows, without a scroll bar", high),
                      qx::bench::kAnything);
    qx::DetachTypeAhead(state);
    DestroyWindow(owner);
    return benchmark.Report(count, arguments);
}
