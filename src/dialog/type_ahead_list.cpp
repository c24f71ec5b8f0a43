// The window of the name list: where it stands, what closes it, what the mouse does in it.
#include "dialog/type_ahead_parts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qx::type_ahead {

namespace {

constexpr int kBelowEdit = 6; // pixels between edit area and list: the borders of the combo box
constexpr int kNarrower = 1;  // pixels, on each side

// ---- its place ----------------------------------------------------------------------------------------------------

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

// ---- while it is shown --------------------------------------------------------------------------------------------

bool IsClickOrWheel(UINT message) noexcept
{
    constexpr UINT kClicksAndWheels[] = {WM_LBUTTONDOWN,   WM_RBUTTONDOWN,   WM_MBUTTONDOWN,   WM_XBUTTONDOWN,
                                         WM_NCLBUTTONDOWN, WM_NCRBUTTONDOWN, WM_NCMBUTTONDOWN, WM_NCXBUTTONDOWN,
                                         WM_MOUSEWHEEL,    WM_MOUSEHWHEEL};
    return std::ranges::find(kClicksAndWheels, message) != std::end(kClicksAndWheels);
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

void StartWatching(TypeAheadState& state) noexcept
{
    if (state.messageHook != nullptr)
        return;
    GetWindowRect(state.combo, &state.comboWhenShown);
    state.watchingThread = GetCurrentThreadId();
    state.messageHook = SetWindowsHookExW(WH_GETMESSAGE, WatchMessages, nullptr, state.watchingThread);
}

// ---- the mouse ----------------------------------------------------------------------------------------------------

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

} // namespace

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

void StopWatching(TypeAheadState& state) noexcept
{
    if (state.messageHook != nullptr)
        UnhookWindowsHookEx(state.messageHook);
    state.messageHook = nullptr;
    state.watchingThread = 0;
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

} // namespace qx::type_ahead
