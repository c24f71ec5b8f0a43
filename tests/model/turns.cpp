#include "turns.h"

#include "host/window_query.h"
#include "res/add_recipients_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "support/dialog_hands.h"

#include <algorithm>
#include <commctrl.h>
#include <prsht.h>
#include <utility>

namespace qx::test {

namespace {

constexpr UINT kTurn = WM_APP;
constexpr UINT_PTR kTimer = 1;
constexpr UINT kCaretTimer = 0x118; // the system's own; it has no name
constexpr int kBoxText = 0xFFFF;

// The control by which a dialog is known.
constexpr struct {
    int control;
    Place place;
} kMarks[] = {
    {host::kSheetTabs, Place::FaxJob},
    {IDC_BOOK_ADD_ENTRY, Place::Editor},
    {IDC_APPLY_DEFAULTS, Place::Defaults},
    {IDC_MAP, Place::Map},
    {IDC_GROUP_ADD, Place::Group},
    {IDC_PICK_TO, Place::Picker},
    {IDC_ENTRY_NAME, Place::Entry},
    {IDC_GROUP_NAME, Place::Details},
    {host::kFileNameCombo, Place::File},
    {host::kFileNameEdit, Place::File},
    {kBoxText, Place::Box},
};

bool IsUsable(HWND dialog)
{
    return dialog != nullptr && host::IsOfClass(dialog, L"#32770") && IsWindowVisible(dialog) &&
           IsWindowEnabled(dialog);
}

HWND CurrentDialog()
{
    const HWND active = GetActiveWindow();
    if (IsUsable(active))
        return active;
    const std::vector<HWND> windows = host::WindowsOf(GetCurrentThreadId());
    const auto found = std::ranges::find_if(windows, IsUsable);
    return found != windows.end() ? *found : nullptr;
}

Place ShownPageOf(HWND sheet)
{
    const HWND page = PropSheet_GetCurrentPageHwnd(sheet);
    if (page == nullptr)
        return Place::None;
    return ItemOf(page, IDC_NAME_BOX) != nullptr ? Place::FaxJob : Place::Setup;
}

} // namespace

Turns::Turns(Take take) : take_(std::move(take))
{
    window_ = NewMessageWindow(L"qx_turns", Procedure);
    current_ = this;
}

Turns::~Turns()
{
    current_ = nullptr;
    DestroyWindow(window_);
}

void Turns::Begin() const
{
    PostMessageW(window_, kTurn, 0, 0);
}

void Turns::End() const
{
    KillTimer(window_, kTimer);
    MSG left; // the turn that nobody took
    while (PeekMessageW(&left, window_, 0, 0, PM_REMOVE)) {
    }
}

LRESULT CALLBACK Turns::Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    if (current_ == nullptr || (message != kTurn && message != WM_TIMER))
        return DefWindowProcW(window, message, w, l);
    KillTimer(window, kTimer);
    current_->Give();
    return 0;
}

Place Turns::PlaceOf(HWND dialog)
{
    Known& known = places_[dialog];
    // A window that has gone may have come back as another one.
    if (known.mark == nullptr || GetParent(known.mark) != dialog) {
        known = {};
        for (const auto& mark : kMarks) {
            known.mark = GetDlgItem(dialog, mark.control);
            if (known.mark == nullptr)
                continue;
            const bool onlyShows = mark.place == Place::Entry && GetDlgItem(dialog, IDCANCEL) == nullptr;
            known.place = onlyShows ? Place::Details : mark.place;
            break;
        }
    }
    return known.place == Place::FaxJob ? ShownPageOf(dialog) : known.place;
}

void Turns::Give()
{
    // What is posted comes before what a user does; timers, a caret's among them, wait for both.
    MSG other;
    if (PeekMessageW(&other, nullptr, 0, 0, PM_NOREMOVE | PM_QS_POSTMESSAGE) && other.message != WM_TIMER &&
        other.message != kCaretTimer)
        return Begin();
    const HWND dialog = CurrentDialog();
    // A dialog that is still carrying out something may wait with its messages running; one that opens is shown when
    // there are no more messages.
    const Place place = dialog == nullptr || dialog == busyWith_ ? Place::None : PlaceOf(dialog);
    if (place == Place::None) {
        SetTimer(window_, kTimer, USER_TIMER_MINIMUM, nullptr);
        return;
    }
    Begin(); // for whichever loop runs next
    const HWND outer = std::exchange(busyWith_, dialog);
    take_(dialog, place);
    busyWith_ = outer;
}

} // namespace qx::test
