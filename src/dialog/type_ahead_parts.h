// The parts of the completing combo box, towards each other: type_ahead_rows, _edit, _list and _combo.
#pragma once

#include "base/no_copy.h"
#include "dialog/type_ahead_combo.h"

#include <string>
#include <utility>

namespace qx::type_ahead {

inline constexpr int kRowsShown = 10; // the list is made one row higher than the rows it shows
inline constexpr int kNoRow = -1;
inline constexpr WPARAM kNothing = static_cast<WPARAM>(-1);

// Who writes the edit while this lives.
class Writing : NoCopy {
public:
    Writing(TypeAheadState& state, EditWriter writer) noexcept
        : state_(state), before_(std::exchange(state.writer, writer))
    {
    }
    ~Writing() { state_.writer = before_; }

private:
    TypeAheadState& state_;
    EditWriter before_;
};

// ---- combo box ------------------------------------------------------------------------------------------------------

// Of the combo box, edit or list box of that handle; null when it is not attached.
TypeAheadState* StateOfWindow(HWND window) noexcept;
// The name box whose list is shown, and watched, on this thread.
TypeAheadState* WatchedState() noexcept;

// ---- rows and text --------------------------------------------------------------------------------------------------

std::wstring EditText(const TypeAheadState& state);
bool ListShows(const TypeAheadState& state) noexcept;
int RowCount(const TypeAheadState& state) noexcept;
int SelectedRow(const TypeAheadState& state) noexcept;
void SelectRow(const TypeAheadState& state, WPARAM row) noexcept;
// Null for a row without an item.
const SuggestionItem* ItemOfRow(const TypeAheadState& state, int row) noexcept;
int FindRow(const TypeAheadState& state, const std::wstring& text) noexcept;
void ClearRows(TypeAheadState& state) noexcept;
void ShowMatches(TypeAheadState& state, const std::wstring& typed);
void ShowOffered(TypeAheadState& state);
void OfferNamesWhereNoneStand(TypeAheadState& state);
void ShowList(const TypeAheadState& state) noexcept;
void HideList(const TypeAheadState& state) noexcept;
void RestoreSelection(const TypeAheadState& state) noexcept;
void ChooseRow(TypeAheadState& state, int row);
void Complete(TypeAheadState& state, int row, std::size_t typedLength);
void TellPage(const TypeAheadState& state, WORD code) noexcept;

// ---- edit -----------------------------------------------------------------------------------------------------------

bool AnswerListKey(TypeAheadState& state, UINT message, WPARAM key);
LRESULT AnswerWheel(const TypeAheadState& state, WPARAM w, LPARAM l) noexcept;
LRESULT AnswerEditMessage(TypeAheadState& state, UINT message, WPARAM w, LPARAM l);

// ---- list -----------------------------------------------------------------------------------------------------------

void ShowListWindow(TypeAheadState& state) noexcept;
void StopWatching(TypeAheadState& state) noexcept;
LRESULT AnswerListMessage(TypeAheadState& state, UINT message, WPARAM w, LPARAM l);

} // namespace qx::type_ahead
