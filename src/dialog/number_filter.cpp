#include "dialog/number_filter.h"

#include "base/text.h"
#include "dialog/dialog.h"

#include <algorithm>
#include <stdexcept>

namespace qx {

void SetFilteredText(NumberFilter& filter, HWND dialog, int field, const wchar_t* text)
{
    // Before the field changes: its EN_CHANGE then finds nothing to take back.
    const std::wstring wanted(Cut(OrEmpty(text), filter.units));
    filter.accepted = wanted;
    SetFieldText(dialog, field, text);
    if (filter.accepted != wanted)
        throw std::runtime_error("a number was taken away while it was set");
}

void RefuseOtherCharacters(NumberFilter& filter, HWND dialog, int field)
{
    const HWND edit = GetDlgItem(dialog, field);
    std::wstring text = WindowText(edit, filter.units);
    const bool isRead = !text.empty() || !HasText(edit);
    if (!isRead)
        filter.accepted.clear(); // what stood there before may be another recipient's
    // Also a text that the program has put there against the rule: nothing better could come back.
    if (isRead && text == filter.accepted)
        return;
    if (isRead && std::ranges::all_of(text, filter.allowed)) {
        filter.accepted = std::move(text);
        return;
    }
    const std::wstring accepted = filter.accepted; // setting the text comes back here by another EN_CHANGE
    SetWindowTextW(edit, accepted.c_str());
    SendMessageW(edit, EM_SETSEL, accepted.size(), static_cast<LPARAM>(accepted.size()));
}

} // namespace qx
