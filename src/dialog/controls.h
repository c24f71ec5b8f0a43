// The controls of a dialog as a table: one row, one control. One loop sets captions and limits, one lookup answers
// help.
#pragma once

#include "text/help_names.h"
#include "text/localized_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <windows.h>

namespace qx {

struct Control {
    int id = 0;
    unsigned text = 0;                 // caption, 0: none
    const wchar_t* fallback = nullptr; // built-in caption
    int limit = 0;                     // of an edit or a combo box; 0: none set
    int topic = kNoTopic;              // help page
    bool leftToRight = false;          // numbers, paths and addresses read left to right in every layout
    bool noInputMethod = false;        // numbers and addresses are typed as they are
};

// The rows of several tables as one.
template <std::size_t... N> consteval auto Joined(const std::array<Control, N>&... tables)
{
    std::array<Control, (N + ...)> joined{};
    auto end = joined.begin();
    ((end = std::ranges::copy(tables, end).out), ...);
    return joined;
}

consteval bool IdsAreUnique(std::span<const Control> controls)
{
    for (std::size_t i = 0; i < controls.size(); ++i) {
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            if (controls[i].id == controls[j].id)
                return false;
        }
    }
    return true;
}

// Captions, limits, reading order and input method, in the order of the table. A row whose control the template lacks
// has no effect.
void SetUpControls(const TextOwner& owner, HWND dialog, std::span<const Control> controls);

// Shows the page of the control that has asked by WM_HELP or WM_CONTEXTMENU, or of the visible control under the
// cursor. False when there is none in the table, and for any other message.
bool ShowControlHelp(const TextOwner& owner, HWND dialog, UINT message, WPARAM w, LPARAM l,
                     std::span<const Control> controls);

} // namespace qx
