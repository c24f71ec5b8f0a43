// TypeAheadCombo: an ordinary drop-down combo box turned into a completing one. As the user types, its list shrinks to
// the names that begin with what was typed, and the first of them is completed in the edit with the completed tail
// selected. Everything runs on the dialog's thread.
#pragma once

#include "dialog/type_ahead.h"

#include <windows.h>

namespace qx {

// To the notify window: the user chose (lParam: the row) or took the choice back (lParam: -1).
inline constexpr UINT kSuggestionChosen = WM_USER + 101;
// To the list box: take the mouse capture (lParam not 0) or release it.
inline constexpr UINT kCaptureMouse = WM_USER + 102;

// Whose change of the edit is under way.
enum class EditWriter {
    User,
    Completion, // ours: nothing for the page to act on
    ComboBox,   // at work, and may not write into its edit by itself
};

// One per completing combo box, owned by the page that holds the combo box; it must outlive the attachment.
struct TypeAheadState {
    HWND combo = nullptr;
    HWND edit = nullptr;
    HWND list = nullptr;
    HWND notify = nullptr;
    WNDPROC comboProcedure = nullptr; // as they were before attaching
    WNDPROC editProcedure = nullptr;
    WNDPROC listProcedure = nullptr;
    Suggestions suggestions;
    std::size_t previousLength = 0; // of the text as typed (UTF-16 units)
    int chosenRow = -1;             // whose text we wrote into the edit, where it still stands; -1: none
    bool rowsAreMatches = false;    // the list's rows are the matches, not all that an opened list offers
    EditWriter writer = EditWriter::User;
    bool composing = false;         // an input method is at work in the edit: its text is not a name yet
    bool composedChange = false;    // it has changed the edit, and the page has not answered that yet
    bool selectionNotified = false; // the combo box has told the page of the row that is being clicked
    RECT wantedPlace{};             // of the list, screen coordinates, as last asked for
    RECT takenPlace{};              // and as it then was
    POINT pointerWhenShown{};       // screen coordinates; a list that opens under the pointer is not yet hovered over
    RECT comboWhenShown{};          // screen coordinates; the list stands where the combo box then was
    HHOOK messageHook = nullptr;    // while the list is shown
    DWORD watchingThread = 0;       // while the list is shown
};

// Attaches the state to the combo box. 32 combo boxes of a process can be attached at a time; the messages of a 33rd go
// to the default window procedure.
void AttachTypeAhead(TypeAheadState& state, HWND combo, HWND notify);
// Gives the combo box its own procedures back, frees its place and the items. A state that is not attached has nothing
// to give back.
void DetachTypeAhead(TypeAheadState& state) noexcept;

// Replaces the items. The list's rows, which stand for the old ones, go with them unless nothing has
// changed; the edit keeps its text.
void SetSuggestionItems(TypeAheadState& state, std::vector<SuggestionItem> items);
void FreeSuggestionItems(TypeAheadState& state) noexcept;

// For every notification of the combo box, before the page acts on it. False: the change is the completion's own, and
// nothing for the page to act on.
bool HandleNameBoxNotification(TypeAheadState& state, UINT code);
void OnEditChange(TypeAheadState& state); // CBN_EDITCHANGE
void OnDropDown(TypeAheadState& state);   // CBN_DROPDOWN

// Whether an input method has changed the edit without a CBN_EDITCHANGE for the page to act on; once for each such
// change.
bool TakeUnansweredChange(TypeAheadState& state) noexcept;

// The page's value of the row that is selected or, without a selection, of the item whose text is the edit's; null when
// there is none.
const void* GetChosenItemData(TypeAheadState& state);

// Empties the edit, as the program's act: what is typed next is typed into an empty field.
void ClearNameBox(TypeAheadState& state);

} // namespace qx
