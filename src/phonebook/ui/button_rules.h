// Which buttons of the phone book dialogs are on. Facts in, answers out; no window here.
#pragma once

#include "base/limits.h"

namespace qx {

// Beside the picker's list of the phone book.
struct PickerButtons {
    bool details = false, to = false;
    bool operator==(const PickerButtons&) const = default;
};

constexpr PickerButtons PickerButtonsFor(int selectedRows)
{
    return {.details = selectedRows == 1, .to = selectedRows > 0};
}

// Of the phone book editor.
struct EditorButtons {
    bool edit = false, details = false, remove = false, exportBook = false;
    bool operator==(const EditorButtons&) const = default;
};

constexpr EditorButtons EditorButtonsFor(int rows, int selectedRows)
{
    const bool one = selectedRows == 1;
    return {.edit = one, .details = one, .remove = selectedRows > 0, .exportBook = rows > 0};
}

// Of the group dialog. members counts ids, whether their entries are found or not.
struct GroupFacts {
    int members = 0, selectedEntries = 0, selectedMembers = 0;
};

struct GroupButtons {
    bool details = false, add = false, remove = false;
    bool operator==(const GroupButtons&) const = default;
};

constexpr GroupButtons GroupButtonsFor(GroupFacts facts)
{
    return {.details = facts.selectedEntries == 1,
            .add = facts.selectedEntries > 0 && facts.members < kMaxRecipients,
            .remove = facts.selectedMembers > 0};
}

} // namespace qx
