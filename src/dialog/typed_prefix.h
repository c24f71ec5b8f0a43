// The rule of every list that follows what the user types: does a name begin with it?
#pragma once

#include <string_view>

namespace qx {

// A text of white space only. An empty text is not blank.
bool IsBlankText(std::wstring_view text) noexcept;

// Whether text begins with typed, compared as users see texts: by the user's locale, ignoring case. Never for an empty
// or blank text on either side.
bool MatchesTypedPrefix(std::wstring_view text, std::wstring_view typed) noexcept;

} // namespace qx
