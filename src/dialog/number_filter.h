// A field that takes only some characters: fax numbers, voice numbers, billing codes.
#pragma once

#include "base/limits.h"

#include <string>
#include <windows.h>

namespace qx {

// The characters that a field takes, and the last text that held no other.
struct NumberFilter {
    bool (*allowed)(wchar_t character) = nullptr;
    std::wstring accepted;
    std::size_t units = kTextUnits; // how much of the text is looked at and put back (UTF-16 units)
};

// A text that the program puts into the field itself is the last accepted one, whatever it holds. Throws when the field
// does not take it.
void SetFilteredText(NumberFilter& filter, HWND dialog, int field, const wchar_t* text);

// For EN_CHANGE. A change that brings a character of another kind is taken back whole, with the caret at the end; any
// other text, an empty one included, becomes the last accepted one. A text that cannot be read is taken away.
void RefuseOtherCharacters(NumberFilter& filter, HWND dialog, int field);
// The route of a field on which nothing else depends.
template <auto kFilter, int kField, class State> void FilterField(State& state)
{
    RefuseOtherCharacters(state.*kFilter, state.dialog, kField);
}

} // namespace qx
