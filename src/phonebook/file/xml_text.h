// Texts that an XML document can hold.
#pragma once

#include <string>
#include <string_view>

namespace qx {

// Whether text holds only characters that an XML document may contain. A document with others could be written and
// never be read again, even when they are given as references: control characters other than tab and line ends, halves
// of surrogate pairs, U+FFFE and U+FFFF.
bool FitsXml(std::wstring_view text) noexcept;

// text without those characters.
std::wstring XmlText(std::wstring_view text);

} // namespace qx
