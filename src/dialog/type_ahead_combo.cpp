#include "dialog/type_ahead_combo.h"

#include "base/guarded.h"
#include "base/lock.h"
#include "base/window_procedure.h"
#include "dialog/dialog.h"
#include "dialog/drawing.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qx {

namespace {

constexpr std::size_t kTypedUnits = 1023;
constexpr int kRowsShown = 10; // the list is made one row higher than the rows it shows
constexpr int kBelowEdit = 6;  // pixels between edit area and list: the borders of the combo box
constexpr int kNarrower = 1;   // pixels, on each side
constexpr WPARAM kFromTop = static_cast<WPARAM>(-1);
constexpr WPARAM kNothing = static_cast<WPARAM>(-1);
constexpr int kNoRow = -1;
constexpr WPARAM kCtrlBackspace = 0x7F; // as a character
constexpr WPARAM kCtrlX = 0x18;

// ---- the registry ---------------------------------------------------------------------------------------------------

struct Slot {
    HWND combo = nullptr;
    HWND edit = nullptr;
    HWND list = nullptr;
    TypeAheadState* state = nullptr;
};

// Window procedures get a window and nothing else. The table is the process's, and several threads may have a combo box
// in it. What is found stays good without the lock: only the combo box's own thread asks for it.
Lock g_registryLock;
std::array<Slot, 32> g_registry;

bool IsFree(const Slot& slot) noexcept
{
    return slot.combo == nullptr && slot.edit == nullptr && slot.list == nullptr;
}

TypeAheadState* StateOfWindow(HWND window) noexcept
{
    const Locked locked(g_registryLock);
    for (const Slot& slot : g_registry) {
        if (slot.combo == window || slot.edit == window || slot.list == window)
            return slot.state;
    }
    return nullptr;
}

// The name box whose list is shown, and watched, on this thread. Those of other threads stay while the lock is held.
TypeAheadState* WatchedState() noexcept
{
    const Locked locked(g_registryLock);
    for (const Slot& slot : g_registry) {
        if (slot.state != nullptr && slot.state->watchingThread == GetCurrentThreadId())
            return slot.state;
    }
    return nullptr;
}

void Register(TypeAheadState& state) noexcept
{
    const Locked locked(g_registryLock);
    const auto slot = std::ranges::find_if(g_registry, IsFree);
    if (slot != g_registry.end())
        *slot = {state.combo, state.edit, state.list, &state};
}

void Unregister(const TypeAheadState& state) noexcept
{
    const Locked locked(g_registryLock);
    const auto slot = std::ranges::find(g_registry, &state, &Slot::state);
    if (slot != g_registry.end())
        *slot = {};
}

// ---- list and edit --------------------------------------------------------------------------------------------------

class Completing { // while it lives, changes of the edit are not the user's
public:
    explicit Completing(TypeAheadState& state) noexcept : state_(state), before_(state.completing)
    {
        state_.completing = true;
    }
    ~Completing() { state_.completing = before_; }
    Completing(const Completing&) = delete;
    Completing& operator=(const Completing&) = delete;

private:
    TypeAheadState& state_;
    bool before_;
};

std::wstring EditText(const TypeAheadState& state)
{
    return WindowText(state.edit, kTypedUnits);
}

bool ListShows(const TypeAheadState& state) noexcept
{
    return IsWindowVisible(state.list) != FALSE;
}

int SelectedRow(const TypeAheadState& state) noexcept
{
    return static_cast<int>(SendMessageW(state.list, LB_GETCURSEL, 0, 0));
}

void SelectRow(const TypeAheadState& state, WPARAM row) noexcept
{
    SendMessageW(state.list, LB_SETCURSEL, row, 0);
}

std::wstring RowText(const TypeAheadState& state, int row)
{
    const auto* const item =
        reinterpret_cast<const SuggestionItem*>(SendMessageW(state.list, LB_GETITEMDATA, static_cast<WPARAM>(row), 0));
    return item != nullptr && reinterpret_cast<LRESULT>(item) != LB_ERR ? item->text : std::wstring();
}

int RowCount(const TypeAheadState& state) noexcept
{
    return static_cast<int>(SendMessageW(state.list, LB_GETCOUNT, 0, 0));
}

// search: CB_FINDSTRING or CB_FINDSTRINGEXACT, the combo box's own, from the top. -1 when there is no such row.
int FindRow(const TypeAheadState& state, UINT search, const std::wstring& text) noexcept
{
    return static_cast<int>(SendMessageW(state.combo, search, kFromTop, reinterpret_cast<LPARAM>(text.c_str())));
}

// The combo box itself would empty its edit too.
void ClearRows(TypeAheadState& state) noexcept
{
    state.chosenRow = kNoRow;
    state.rowsAreMatches = false;
    SendMessageW(state.list, LB_RESETCONTENT, 0, 0);
}

void AppendRow(const TypeAheadState& state, const SuggestionItem& item) noexcept
{
    const LRESULT row =
        SendMessageW(state.list, LB_INSERTSTRING, kNothing, reinterpret_cast<LPARAM>(item.text.c_str()));
    if (row >= 0)
        SendMessageW(state.list, LB_SETITEMDATA, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

// The rows point at the matches: they go before them.
void ShowMatches(TypeAheadState& state, const std::wstring& typed)
{
    const RedrawOff redraw(state.list);
    ClearRows(state);
    state.suggestions.Rebuild(typed);
    for (const SuggestionItem& match : state.suggestions.Matches())
        AppendRow(state, match);
    state.rowsAreMatches = true;
}

void ShowOffered(TypeAheadState& state)
{
    const RedrawOff redraw(state.list);
    ClearRows(state);
    for (const SuggestionItem* item : state.suggestions.Offered())
        AppendRow(state, *item);
}

// Hovering selects rows, and so does the combo box at work, which drops the selection as readily. Only a row that was
// chosen stands for the text in the edit.
void RestoreSelection(const TypeAheadState& state) noexcept
{
    if (SelectedRow(state) != state.chosenRow)
        SelectRow(state, static_cast<WPARAM>(state.chosenRow));
}

void ForgetChoice(TypeAheadState& state) noexcept
{
    state.chosenRow = kNoRow;
    RestoreSelection(state);
}

void ShowList(const TypeAheadState& state) noexcept
{
    SendMessageW(state.combo, CB_SHOWDROPDOWN, TRUE, 0);
}

void HideList(const TypeAheadState& state) noexcept
{
    if (!ListShows(state))
        return;
    SendMessageW(state.combo, CB_SHOWDROPDOWN, FALSE, 0);
    RestoreSelection(state);
}

// The row becomes the combo box's selection and its text the edit's: from here on the user deletes from a whole name.
void ChooseRow(TypeAheadState& state, int row)
{
    const Completing ours(state);
    state.chosenRow = row;
    SendMessageW(state.combo, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    RestoreSelection(state);
    state.previousLength = EditText(state).size();
}

void Complete(TypeAheadState& state, int row, std::size_t typedLength)
{
    {
        const Completing ours(state);
        SetWindowTextW(state.combo, RowText(state, row).c_str());
    }
    // Before it shows: the list is painted once, as it stays.
    if (SendMessageW(state.list, LB_GETTOPINDEX, 0, 0) != row)
        SendMessageW(state.list, LB_SETTOPINDEX, static_cast<WPARAM>(row), 0);
    state.chosenRow = row;
    RestoreSelection(state);
    ShowList(state);
    SendMessageW(state.edit, EM_SETSEL, typedLength, -1);
}

void DeleteCompletedTail(TypeAheadState& state)
{
    const Completing ours(state);
    state.chosenRow = kNoRow;
    SendMessageW(state.edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L""));
    RestoreSelection(state);
}

void Notify(const TypeAheadState& state, int row) noexcept
{
    SendMessageW(state.notify, kSuggestionChosen, 0, row);
}

// As the combo box itself does.
void TellPage(const TypeAheadState& state, WORD code) noexcept
{
    const auto id = static_cast<WORD>(GetDlgCtrlID(state.combo));
    SendMessageW(state.notify, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(state.combo));
}

// As with any combo box the arrow keys walk through the names, and programs may open the list, also before the user
// ever did.
void OfferNamesWhereNoneStand(TypeAheadState& state)
{
    const bool stale = GetWindowTextLengthW(state.edit) == 0 || RowCount(state) == 0;
    if (!ListShows(state) && stale)
        ShowOffered(state);
}

// ---- the edit -------------------------------------------------------------------------------------------------------

void AnswerEscape(TypeAheadState& state)
{
    HideList(state);
    ChooseRow(state, -1);
    Notify(state, -1);
}

void AnswerEnterInList(TypeAheadState& state)
{
    const int row = SelectedRow(state);
    if (row >= 0)
        ChooseRow(state, row);
    else
        DeleteCompletedTail(state);
    HideList(state);
    Notify(state, SelectedRow(state));
}

void ChooseFirstRowThatBeginsWith(TypeAheadState& state, const std::wstring& text)
{
    if (RowCount(state) == 0) // the names have changed since the list was last shown
        ShowMatches(state, text);
    const int row = FindRow(state, CB_FINDSTRING, text);
    if (row >= 0)
        ChooseRow(state, row);
    else
        ForgetChoice(state);
}

void AnswerEnterWithoutList(TypeAheadState& state)
{
    DeleteCompletedTail(state);
    const std::wstring text = EditText(state);
    if (!text.empty()) // else all of it was selected
        ChooseFirstRowThatBeginsWith(state, text);
    Notify(state, 0);
}

bool IsEnterOrEscape(WPARAM key) noexcept
{
    return key == VK_RETURN || key == VK_ESCAPE;
}

// With the list shown, Enter and Escape are the list's, and during a composition the input method's. Otherwise the
// dialog manager keeps them.
bool WantsKey(const TypeAheadState& state, LPARAM l) noexcept
{
    const auto* const message = reinterpret_cast<const MSG*>(l);
    return message != nullptr && message->message == WM_KEYDOWN && IsEnterOrEscape(message->wParam) &&
           (state.composing || ListShows(state));
}

void AnswerEnter(TypeAheadState& state)
{
    ListShows(state) ? AnswerEnterInList(state) : AnswerEnterWithoutList(state);
}

// F4, and Alt with an arrow. The combo box's own way would put the first name that begins with the text into the edit.
void ToggleList(TypeAheadState& state)
{
    if (ListShows(state)) {
        HideList(state);
        return;
    }
    ShowOffered(state);
    ShowList(state);
}

// Without a selected row every key goes to the first one.
int RowAfterKey(WPARAM key, int row, int rows) noexcept
{
    int step = 0;
    switch (key) {
    case VK_UP:
        step = -1;
        break;
    case VK_DOWN:
        step = 1;
        break;
    case VK_PRIOR:
        step = 1 - kRowsShown;
        break;
    default:
        step = kRowsShown - 1;
        break;
    }
    return row < 0 ? 0 : std::clamp(row + step, 0, rows - 1);
}

// Not left to the combo box, which tells the page of some of these keys before it has written the edit, of some after,
// and of some never: the fields must go with the name.
void WalkThroughNames(TypeAheadState& state, WPARAM key)
{
    OfferNamesWhereNoneStand(state);
    const int rows = RowCount(state);
    if (rows <= 0)
        return;
    const int row = RowAfterKey(key, SelectedRow(state), rows);
    if (row == state.chosenRow)
        return;
    ChooseRow(state, row);
    TellPage(state, CBN_SELCHANGE);
}

// Keys that the combo box would act on by itself. False: not one of them.
bool AnswerListKey(TypeAheadState& state, UINT message, WPARAM key)
{
    const bool arrow = key == VK_UP || key == VK_DOWN;
    const bool opens = message == WM_SYSKEYDOWN ? arrow : key == VK_F4;
    const bool walks = message == WM_KEYDOWN && (arrow || key == VK_PRIOR || key == VK_NEXT);
    if (!opens && !walks)
        return false;
    if (state.composing)
        return true;
    opens ? ToggleList(state) : WalkThroughNames(state, key);
    return true;
}

// The combo box would turn the wheel into arrow keys: nobody means to change the recipient by scrolling.
LRESULT AnswerWheel(const TypeAheadState& state, WPARAM w, LPARAM l) noexcept
{
    return ListShows(state) ? CallWindowProcW(state.listProcedure, state.list, WM_MOUSEWHEEL, w, l) : 0;
}

bool Deletes(UINT message, WPARAM w) noexcept
{
    switch (message) {
    case WM_KEYDOWN:
        return w == VK_DELETE;
    case WM_CHAR:
        return w == VK_BACK || w == kCtrlBackspace || w == kCtrlX;
    default:
        return message == WM_CUT || message == WM_CLEAR;
    }
}

// A completed tail that the user no longer has selected is text like any other: what remains after a deletion is
// shorter than before, and not completed again.
void CountWholeText(TypeAheadState& state) noexcept
{
    const auto length = static_cast<std::size_t>(GetWindowTextLengthW(state.edit));
    state.previousLength = std::max(state.previousLength, length);
}

void BeginComposition(TypeAheadState& state) noexcept
{
    HideList(state);
    ForgetChoice(state);
    state.composing = true;
}

// What was composed is answered as a whole, unless the user has left the field meanwhile: then the page looks at it.
void EndComposition(TypeAheadState& state) noexcept
{
    state.composing = false;
    if (GetFocus() == state.edit && TakeUnansweredChange(state))
        TellPage(state, CBN_EDITCHANGE);
}

LRESULT AnswerEditMessage(TypeAheadState& state, UINT message, WPARAM w, LPARAM l)
{
    const auto old = [&] { return CallWindowProcW(state.editProcedure, state.edit, message, w, l); };
    if (Deletes(message, w))
        CountWholeText(state);
    switch (message) {
    case WM_GETDLGCODE:
        return old() | (WantsKey(state, l) ? DLGC_WANTMESSAGE : 0);
    case WM_SYSKEYDOWN:
        return AnswerListKey(state, message, w) ? 0 : old();
    case WM_KEYDOWN:
        if (AnswerListKey(state, message, w))
            return 0;
        if (state.composing)
            return old();
        if (w == VK_RETURN) {
            AnswerEnter(state);
            return 0;
        }
        if (w == VK_ESCAPE)
            AnswerEscape(state);
        return old();
    case WM_MOUSEWHEEL:
        return AnswerWheel(state, w, l);
    case WM_SETTEXT:
        return state.editIsKept && !state.completing ? TRUE : old();
    case WM_CHAR:
        // The keys were answered; the edit would only beep.
        return IsEnterOrEscape(w) && !state.composing ? 0 : old();
    case WM_IME_STARTCOMPOSITION:
        BeginComposition(state);
        return old();
    case WM_IME_ENDCOMPOSITION: {
        const LRESULT result = old();
        EndComposition(state);
        return result;
    }
    case WM_KILLFOCUS: {
        HideList(state);
        const LRESULT result = old();
        state.composing = false; // not every input method says so
        return result;
    }
    default:
        return old();
    }
}

// ---- the combo box --------------------------------------------------------------------------------------------------

// Screen coordinates.
RECT ListPlace(const TypeAheadState& state) noexcept
{
    RECT combo{};
    GetWindowRect(state.combo, &combo);
    RECT place{};
    SendMessageW(state.combo, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&place));
    if (place.left > place.right)
        std::swap(place.left, place.right); // mirrored
    // The dropped-down rectangle begins with the combo box itself on some systems, below its edit area on others.
    const auto editHeight = static_cast<int>(SendMessageW(state.combo, CB_GETITEMHEIGHT, kNothing, 0));
    if (place.top < combo.top + editHeight)
        place.top += editHeight + kBelowEdit;
    place.left += kNarrower;
    place.right -= kNarrower;
    const int rows = RowCount(state);
    const auto rowHeight = static_cast<int>(SendMessageW(state.list, LB_GETITEMHEIGHT, 0, 0));
    place.bottom = place.top + (std::min(rows, kRowsShown) + 1) * rowHeight;
    return place;
}

// Asking the system for the pointer of this very moment would cost a keystroke dear.
POINT PointerAtLastMessage() noexcept
{
    const DWORD position = GetMessagePos();
    return {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
}

void ShowListWindow(TypeAheadState& state) noexcept
{
    if (!ListShows(state))
        state.pointerWhenShown = PointerAtLastMessage();
    const RECT place = ListPlace(state);
    RECT now{};
    GetWindowRect(state.list, &now);
    // Where it stands already nothing moves: sizing a list costs more than all the rest of a keystroke.
    const bool inPlace = EqualRect(&place, &state.wantedPlace) && EqualRect(&now, &state.takenPlace);
    if (inPlace && ListShows(state))
        return;
    SetWindowPos(state.list, HWND_TOPMOST, place.left, place.top, place.right - place.left, place.bottom - place.top,
                 SWP_NOACTIVATE | SWP_SHOWWINDOW | (inPlace ? SWP_NOMOVE | SWP_NOSIZE : 0u));
    state.wantedPlace = place;
    GetWindowRect(state.list, &state.takenPlace); // a list box shows whole rows only, and may have shrunk
}

// A combo box whose arrow is clicked puts the first name that begins with the typed text into its edit and tells
// nobody: the fields would belong to another name. Only who asks for a text, and a choice in the list, may change it.
bool MayWriteEdit(const TypeAheadState& state, UINT message, LPARAM l) noexcept
{
    const bool fromList = message == WM_COMMAND && reinterpret_cast<HWND>(l) == state.list;
    return message == WM_SETTEXT || message == CB_SETCURSEL || message == CB_SELECTSTRING || fromList;
}

LRESULT LetComboBoxWork(TypeAheadState& state, UINT message, WPARAM w, LPARAM l) noexcept
{
    const bool before = std::exchange(state.editIsKept, !MayWriteEdit(state, message, l));
    const LRESULT result = CallWindowProcW(state.comboProcedure, state.combo, message, w, l);
    state.editIsKept = before;
    return result;
}

void HideListWindow(TypeAheadState& state) noexcept
{
    // A list that the arrow button opened is open for the combo box, too.
    if (LetComboBoxWork(state, CB_GETDROPPEDSTATE, 0, 0) != 0)
        LetComboBoxWork(state, CB_SHOWDROPDOWN, FALSE, 0);
    ShowWindow(state.list, SW_HIDE);
}

LRESULT AnswerComboMessage(TypeAheadState& state, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case CB_RESETCONTENT:
        ClearRows(state);
        return CB_OKAY;
    case CB_SHOWDROPDOWN:
        if (w == 0) {
            HideListWindow(state);
        } else {
            OfferNamesWhereNoneStand(state);
            ShowListWindow(state);
        }
        return TRUE;
    case CB_GETDROPPEDSTATE:
        return ListShows(state);
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        return AnswerListKey(state, message, w) ? 0 : LetComboBoxWork(state, message, w, l);
    case WM_MOUSEWHEEL:
        return AnswerWheel(state, w, l);
    case WM_COMMAND: {
        const LRESULT result = LetComboBoxWork(state, message, w, l);
        // After its notification the combo box brings the selection in line with the edit as it sees it: for a list
        // that it has not opened itself, to none.
        if (HIWORD(w) == EN_CHANGE && reinterpret_cast<HWND>(l) == state.edit)
            RestoreSelection(state);
        return result;
    }
    default:
        return LetComboBoxWork(state, message, w, l);
    }
}

// ---- while the list is shown ----------------------------------------------------------------------------------------

bool IsClickOrWheel(UINT message) noexcept
{
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
    case WM_XBUTTONDOWN:
    case WM_NCLBUTTONDOWN:
    case WM_NCRBUTTONDOWN:
    case WM_NCMBUTTONDOWN:
    case WM_NCXBUTTONDOWN:
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
        return true;
    default:
        return false;
    }
}

bool HasMoved(const TypeAheadState& state) noexcept
{
    RECT combo{};
    GetWindowRect(state.combo, &combo);
    return !EqualRect(&combo, &state.comboWhenShown);
}

// The list floats above the sheet and knows nothing of it: it closes when the sheet goes elsewhere, and when the user
// clicks or scrolls in another window.
LRESULT CALLBACK WatchMessages(int code, WPARAM w, LPARAM l) noexcept
{
    if (const TypeAheadState* const state = code == HC_ACTION ? WatchedState() : nullptr) {
        const MSG& message = *reinterpret_cast<const MSG*>(l);
        const bool ours = StateOfWindow(message.hwnd) == state;
        if (HasMoved(*state) || (IsClickOrWheel(message.message) && !ours))
            HideList(*state);
    }
    return CallNextHookEx(nullptr, code, w, l);
}

void StopWatching(TypeAheadState& state) noexcept
{
    if (state.messageHook != nullptr)
        UnhookWindowsHookEx(state.messageHook);
    state.messageHook = nullptr;
    state.watchingThread = 0;
}

void StartWatching(TypeAheadState& state) noexcept
{
    if (state.messageHook != nullptr)
        return;
    GetWindowRect(state.combo, &state.comboWhenShown);
    state.watchingThread = GetCurrentThreadId();
    state.messageHook = SetWindowsHookExW(WH_GETMESSAGE, WatchMessages, nullptr, state.watchingThread);
}

// ---- the list -------------------------------------------------------------------------------------------------------

// -1 when the point (client coordinates) is over no row.
int RowAt(const TypeAheadState& state, LPARAM point) noexcept
{
    const LRESULT found = SendMessageW(state.list, LB_ITEMFROMPOINT, 0, point);
    const bool outside = HIWORD(found) != 0;
    return outside || LOWORD(found) >= RowCount(state) ? -1 : LOWORD(found);
}

// A list that opens under a pointer at rest gets a move all the same: that is not the user hovering over it.
bool PointerHasMoved(const TypeAheadState& state, LPARAM l) noexcept
{
    POINT point{static_cast<short>(LOWORD(l)), static_cast<short>(HIWORD(l))};
    ClientToScreen(state.list, &point);
    return point.x != state.pointerWhenShown.x || point.y != state.pointerWhenShown.y;
}

void FollowPointer(const TypeAheadState& state, LPARAM l) noexcept
{
    const int row = RowAt(state, l);
    if (row >= 0 && row != SelectedRow(state))
        SelectRow(state, static_cast<WPARAM>(row));
}

LRESULT AnswerClick(TypeAheadState& state, int row, WPARAM w, LPARAM l)
{
    ChooseRow(state, row);
    SendMessageW(state.list, kCaptureMouse, 0, 0);
    HideList(state);
    state.selectionNotified = false;
    const LRESULT result = CallWindowProcW(state.listProcedure, state.list, WM_LBUTTONUP, w, l);
    // A list box that has lost the capture may stay silent, and the page would not hear of the choice.
    if (!state.selectionNotified)
        TellPage(state, CBN_SELCHANGE);
    return result;
}

void CaptureMouse(HWND list, bool capture) noexcept
{
    if (!capture) {
        ReleaseCapture();
        return;
    }
    const HCURSOR cursor = GetCursor();
    SetCapture(list);
    SetCursor(cursor);
    CURSORINFO info{};
    info.cbSize = sizeof info;
    if (GetCursorInfo(&info) && (info.flags & CURSOR_SHOWING) == 0)
        ShowCursor(TRUE);
}

LRESULT AnswerListMessage(TypeAheadState& state, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_MOUSEMOVE) {
        if (!PointerHasMoved(state, l))
            return 0;
        FollowPointer(state, l);
    }
    if (message == WM_LBUTTONUP) {
        const int row = RowAt(state, l);
        if (row >= 0)
            return AnswerClick(state, row, w, l);
    }
    if (message == kCaptureMouse)
        CaptureMouse(state.list, l != 0);
    if (message == WM_WINDOWPOSCHANGED) {
        const UINT flags = reinterpret_cast<const WINDOWPOS*>(l)->flags;
        if ((flags & SWP_SHOWWINDOW) != 0)
            StartWatching(state);
        if ((flags & SWP_HIDEWINDOW) != 0)
            StopWatching(state);
    }
    return CallWindowProcW(state.listProcedure, state.list, message, w, l);
}

// ---- attaching ------------------------------------------------------------------------------------------------------

using Answer = LRESULT (*)(TypeAheadState&, UINT, WPARAM, LPARAM);

template <Answer answer> LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    TypeAheadState* const state = StateOfWindow(window);
    if (state == nullptr)
        return CallProcedureBefore(window, message, w, l);
    return Guarded<LRESULT>(0, [&] { return answer(*state, message, w, l); });
}

void GiveBack(HWND window, WNDPROC ours, WNDPROC& before) noexcept
{
    if (before != nullptr && IsWindow(window))
        RestoreProcedure(window, ours, before);
    before = nullptr;
}

} // namespace

void AttachTypeAhead(TypeAheadState& state, HWND combo, HWND notify)
{
    COMBOBOXINFO info{};
    info.cbSize = sizeof info;
    if (!GetComboBoxInfo(combo, &info))
        return;
    state.combo = combo;
    state.edit = info.hwndItem;
    state.list = info.hwndList;
    state.notify = notify;
    Register(state);
    state.editProcedure = ReplaceProcedure(state.edit, Procedure<AnswerEditMessage>);
    state.listProcedure = ReplaceProcedure(state.list, Procedure<AnswerListMessage>);
    state.comboProcedure = ReplaceProcedure(state.combo, Procedure<AnswerComboMessage>);
}

void DetachTypeAhead(TypeAheadState& state) noexcept
{
    StopWatching(state);
    GiveBack(state.combo, Procedure<AnswerComboMessage>, state.comboProcedure);
    GiveBack(state.list, Procedure<AnswerListMessage>, state.listProcedure);
    GiveBack(state.edit, Procedure<AnswerEditMessage>, state.editProcedure);
    Unregister(state);
}

void SetSuggestionItems(TypeAheadState& state, std::vector<SuggestionItem> items)
{
    if (items == state.suggestions.Items()) // an open list stays open
        return;
    HideList(state);
    ClearRows(state);
    state.suggestions.SetItems(std::move(items));
}

void FreeSuggestionItems(TypeAheadState& state) noexcept
{
    state.suggestions.SetItems({});
}

bool HandleNameBoxNotification(TypeAheadState& state, UINT code)
{
    if (state.completing)
        return false;
    if (code == CBN_EDITCHANGE && state.composing) {
        state.composedChange = true;
        return false;
    }
    switch (code) {
    case CBN_EDITCHANGE:
        OnEditChange(state);
        break;
    case CBN_DROPDOWN:
        OnDropDown(state);
        break;
    case CBN_SELENDCANCEL: // not when the list closes on a choice: the selection is then about to be told
        RestoreSelection(state);
        break;
    case CBN_SELCHANGE:
        state.selectionNotified = true;
        // The combo box writes the edit only after this notification: the page would still find the old name there.
        if (SelectedRow(state) >= 0)
            ChooseRow(state, SelectedRow(state));
        break;
    default:
        break;
    }
    return true;
}

void OnEditChange(TypeAheadState& state)
{
    const std::wstring typed = EditText(state);
    ShowMatches(state, typed);
    // An input method may hand over what was composed when the user has already gone on: nobody would see it completed,
    // and nobody close the list.
    const int row = GetFocus() == state.edit ? FindRow(state, CB_FINDSTRING, typed) : kNoRow;
    switch (AnswerTyping(typed, state.previousLength, row >= 0)) {
    case EditAnswer::HideList:
        HideList(state);
        break;
    case EditAnswer::ShowList:
        ShowList(state);
        break;
    case EditAnswer::Complete:
        Complete(state, row, typed.size());
        break;
    }
    state.previousLength = typed.size();
}

void OnDropDown(TypeAheadState& state)
{
    if (!ListShows(state))
        ShowOffered(state);
}

const void* GetChosenItemData(TypeAheadState& state)
{
    const int row = SelectedRow(state);
    if (row >= 0) {
        const LRESULT item = SendMessageW(state.list, LB_GETITEMDATA, static_cast<WPARAM>(row), 0);
        return item != LB_ERR && item != 0 ? reinterpret_cast<const SuggestionItem*>(item)->data : nullptr;
    }
    const std::wstring text = EditText(state);
    if (!state.rowsAreMatches || !state.suggestions.AreFor(text))
        ShowMatches(state, text);
    const SuggestionItem* const item = state.suggestions.Find(text);
    return item != nullptr ? item->data : nullptr;
}

bool TakeUnansweredChange(TypeAheadState& state) noexcept
{
    return std::exchange(state.composedChange, false);
}

const SuggestionItem* SuggestionOfText(const TypeAheadState& state)
{
    return state.suggestions.Find(EditText(state));
}

void ClearNameBox(TypeAheadState& state)
{
    HideList(state);
    ClearRows(state);
    const Completing ours(state);
    SetWindowTextW(state.combo, L"");
    SendMessageW(state.combo, CB_SETCURSEL, kNothing, 0);
    state.previousLength = 0;
}

} // namespace qx
