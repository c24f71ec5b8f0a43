#include "dialog/type_ahead_combo.h"

#include "base/guarded.h"
#include "base/lock.h"
#include "base/window_procedure.h"
#include "dialog/type_ahead_parts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qx {

namespace type_ahead {

namespace {

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

void Register(TypeAheadState& state) noexcept
{
    const Locked locked(g_registryLock);
    const auto slot = std::ranges::find(g_registry, nullptr, &Slot::state);
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

// ---- the combo box --------------------------------------------------------------------------------------------------

// A combo box whose arrow is clicked puts the first name that begins with the typed text into its edit and tells
// nobody: the fields would belong to another name. Only who asks for a text, and a choice in the list, may change it.
bool MayWriteEdit(const TypeAheadState& state, UINT message, LPARAM l) noexcept
{
    const bool fromList = message == WM_COMMAND && reinterpret_cast<HWND>(l) == state.list;
    return message == WM_SETTEXT || message == CB_SETCURSEL || message == CB_SELECTSTRING || fromList;
}

LRESULT LetComboBoxWork(TypeAheadState& state, UINT message, WPARAM w, LPARAM l) noexcept
{
    const EditWriter writer = MayWriteEdit(state, message, l) ? EditWriter::User : EditWriter::ComboBox;
    const Writing works(state, state.writer == EditWriter::Completion ? EditWriter::Completion : writer);
    return CallWindowProcW(state.comboProcedure, state.combo, message, w, l);
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

TypeAheadState* StateOfWindow(HWND window) noexcept
{
    const Locked locked(g_registryLock);
    for (const Slot& slot : g_registry) {
        if (slot.combo == window || slot.edit == window || slot.list == window)
            return slot.state;
    }
    return nullptr;
}

// Those of other threads stay while the lock is held.
TypeAheadState* WatchedState() noexcept
{
    const Locked locked(g_registryLock);
    for (const Slot& slot : g_registry) {
        if (slot.state != nullptr && slot.state->watchingThread == GetCurrentThreadId())
            return slot.state;
    }
    return nullptr;
}

} // namespace type_ahead

using namespace type_ahead;

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
    FreeSuggestionItems(state);
    state.combo = state.edit = state.list = nullptr;
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
    if (state.writer == EditWriter::Completion)
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
    const int row = GetFocus() == state.edit ? FindRow(state, typed) : kNoRow;
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
    if (const int row = SelectedRow(state); row >= 0) {
        const SuggestionItem* const item = ItemOfRow(state, row);
        return item != nullptr ? item->data : nullptr;
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

void ClearNameBox(TypeAheadState& state)
{
    HideList(state);
    ClearRows(state);
    const Writing ours(state, EditWriter::Completion);
    SetWindowTextW(state.combo, L"");
    SendMessageW(state.combo, CB_SETCURSEL, kNothing, 0);
    state.previousLength = 0;
}

} // namespace qx
