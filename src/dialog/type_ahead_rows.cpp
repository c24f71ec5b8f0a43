// The rows of the name list, and the text that stands in the edit for one of them.
#include "dialog/dialog.h"
#include "dialog/drawing.h"
#include "dialog/type_ahead_parts.h"

namespace qx::type_ahead {

namespace {

void AppendRow(const TypeAheadState& state, const SuggestionItem& item) noexcept
{
    const LRESULT row =
        SendMessageW(state.list, LB_INSERTSTRING, kNothing, reinterpret_cast<LPARAM>(item.text.c_str()));
    if (row >= 0)
        SendMessageW(state.list, LB_SETITEMDATA, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

} // namespace

std::wstring EditText(const TypeAheadState& state)
{
    return WindowText(state.edit, kNameBoxLimit);
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

const SuggestionItem* ItemOfRow(const TypeAheadState& state, int row) noexcept
{
    const LRESULT item = SendMessageW(state.list, LB_GETITEMDATA, static_cast<WPARAM>(row), 0);
    return item != LB_ERR ? reinterpret_cast<const SuggestionItem*>(item) : nullptr;
}

int RowCount(const TypeAheadState& state) noexcept
{
    return static_cast<int>(SendMessageW(state.list, LB_GETCOUNT, 0, 0));
}

// The first that begins with text, by the combo box's own search; -1 when there is no such row.
int FindRow(const TypeAheadState& state, const std::wstring& text) noexcept
{
    return static_cast<int>(SendMessageW(state.combo, CB_FINDSTRING, kNothing, reinterpret_cast<LPARAM>(text.c_str())));
}

// The combo box itself would empty its edit too.
void ClearRows(TypeAheadState& state) noexcept
{
    state.chosenRow = kNoRow;
    state.rowsAreMatches = false;
    SendMessageW(state.list, LB_RESETCONTENT, 0, 0);
}

// The rows point at the matches: they go before them.
void ShowMatches(TypeAheadState& state, const std::wstring& typed)
{
    const RedrawOff redraw(state.list, DrawsChanges::ByItself);
    ClearRows(state);
    state.suggestions.Rebuild(typed);
    for (const SuggestionItem& match : state.suggestions.Matches())
        AppendRow(state, match);
    state.rowsAreMatches = true;
}

void ShowOffered(TypeAheadState& state)
{
    const RedrawOff redraw(state.list, DrawsChanges::ByItself);
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
    const Writing ours(state, EditWriter::Completion);
    state.chosenRow = row;
    SendMessageW(state.combo, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    RestoreSelection(state);
    state.previousLength = EditText(state).size();
}

void Complete(TypeAheadState& state, int row, std::size_t typedLength)
{
    {
        const Writing ours(state, EditWriter::Completion);
        const SuggestionItem* const item = ItemOfRow(state, row);
        SetWindowTextW(state.combo, item != nullptr ? item->text.c_str() : L"");
    }
    // Before it shows: the list is painted once, as it stays.
    if (SendMessageW(state.list, LB_GETTOPINDEX, 0, 0) != row)
        SendMessageW(state.list, LB_SETTOPINDEX, static_cast<WPARAM>(row), 0);
    state.chosenRow = row;
    RestoreSelection(state);
    ShowList(state);
    SendMessageW(state.edit, EM_SETSEL, typedLength, -1);
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

} // namespace qx::type_ahead
