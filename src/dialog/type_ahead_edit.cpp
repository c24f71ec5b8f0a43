// What the user types, and the keys.
#include "dialog/dialog.h"
#include "dialog/type_ahead_parts.h"

#include <algorithm>

namespace qx::type_ahead {

namespace {

constexpr WPARAM kCtrlBackspace = 0x7F; // as a character
constexpr WPARAM kCtrlX = 0x18;

void Notify(const TypeAheadState& state, int row) noexcept
{
    SendMessageW(state.notify, kSuggestionChosen, 0, row);
}

void ForgetChoice(TypeAheadState& state) noexcept
{
    state.chosenRow = kNoRow;
    RestoreSelection(state);
}

void DeleteCompletedTail(TypeAheadState& state)
{
    const Writing ours(state, EditWriter::Completion);
    state.chosenRow = kNoRow;
    SendMessageW(state.edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L""));
    RestoreSelection(state);
}

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
    const int row = FindRow(state, text);
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
    const MSG* const asked = KeystrokeAskedAbout(l);
    return asked != nullptr && IsEnterOrEscape(asked->wParam) && (state.composing || ListShows(state));
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
    const bool back = key == VK_UP || key == VK_PRIOR;
    const int rowsOn = key == VK_UP || key == VK_DOWN ? 1 : kRowsShown - 1;
    return row < 0 ? 0 : std::clamp(back ? row - rowsOn : row + rowsOn, 0, rows - 1);
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
    if (row == state.chosenRow) {
        RestoreSelection(state); // another row was hovered over
        return;
    }
    ChooseRow(state, row);
    TellPage(state, CBN_SELCHANGE);
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

} // namespace

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
            ListShows(state) ? AnswerEnterInList(state) : AnswerEnterWithoutList(state);
            return 0;
        }
        if (w == VK_ESCAPE)
            AnswerEscape(state);
        return old();
    case WM_MOUSEWHEEL:
        return AnswerWheel(state, w, l);
    case WM_SETTEXT:
        return state.writer == EditWriter::ComboBox ? TRUE : old();
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

} // namespace qx::type_ahead
