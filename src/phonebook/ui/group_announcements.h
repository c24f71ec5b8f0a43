// In a list a group is told from an entry by its picture; a screen reader says it in words.
#pragma once

#include "phonebook/ui/phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"

#include <string>

namespace qx {

// How many members a group has; empty when the library has no such text.
std::wstring MemberCountText(const TextOwner& texts, std::size_t members);

// The groups among the rows in sight, and in the row that the keys are at, are announced as such. To be called when the
// list was filled or scrolled, and when another row has the focus; nothing while no screen reader listens.
void AnnounceGroupRows(const PhoneBookDialog& dialog, const PhoneBookList& list);

// What a dialog whose list shows groups does when that is scrolled, and when a name is typed into the field kTyped.
template <class State> void AnnounceGroups(State& state)
{
    AnnounceGroupRows(state, state.list);
}
template <int kTyped, class State> void FollowTyping(State& state)
{
    FollowTypedName(state.list, GetDlgItem(state.dialog, kTyped));
    AnnounceGroups(state);
}

} // namespace qx
