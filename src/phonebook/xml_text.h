// Texts that an XML document can hold.
#pragma once

#include <string>
#include <string_view>

namespace qx {

// text without the characters that no XML document may contain, not even as references: a document with one of them
// could be written and never be read again. These are control characters other than tab and line ends, halves of
// surrogate pairs, U+FFFE and U+FFFF.
std::wstring XmlText(std::wstring_view text);

} // namespace qx
