// A look at an XML document before a parser sees it.
#pragma once

#include <string_view>

namespace qx {

// Whether the document reaches its root element without declaring a document type, and so cannot name entities of its
// own, inside or outside the file. Also false for what is no XML, and for encodings in which markup could hide from
// this look. Reads no further than the root element's start.
bool HasPlainProlog(std::string_view bytes) noexcept;

// Whether no element lies deeper than the given number of elements, the root counted. A parser may need stack for each
// level. For documents with a plain prolog; of one that is not well-formed the answer says little. False as well where
// characters of two bytes could hide markup from this look.
bool NestsAtMost(std::string_view bytes, long levels) noexcept;

} // namespace qx
