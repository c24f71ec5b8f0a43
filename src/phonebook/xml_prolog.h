// A look at an XML document before a parser sees it.
#pragma once

#include <string_view>

namespace qx {

// Whether the document reaches its root element without declaring a document type, and so cannot name entities of its
// own, inside or outside the file. Also false for what is no XML, and for encodings in which markup could hide from
// this look. Reads no further than the root element's start.
bool HasPlainProlog(std::string_view bytes) noexcept;

} // namespace qx
