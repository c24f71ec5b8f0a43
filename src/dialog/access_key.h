// Access keys: the letter that a "&" in a caption marks, and that reaches the control together with Alt.
#pragma once

#include <string>
#include <string_view>
#include <windows.h>

namespace qx {

// The marked letter in upper case, or 0.
wchar_t AccessKeyOf(std::wstring_view caption) noexcept;

// The caption as it is read: without the mark, and without a letter that stands behind the text for its sake alone.
std::wstring WithoutAccessKey(std::wstring_view caption);

// The marked letters of the buttons and labels directly in window, one after the other; those of hidden ones, too.
std::wstring AccessKeysIn(HWND window);

// The text with a letter marked that taken does not hold, best the first one of a word. A text of which no letter is
// free, or none can be typed with one key, gets a letter of the alphabet behind it, in parentheses, as is the custom
// for ideographs. A text that holds a "&" of its own is left as it is, and so is any when all letters are taken.
std::wstring WithAccessKey(const std::wstring& text, std::wstring_view taken);

} // namespace qx
