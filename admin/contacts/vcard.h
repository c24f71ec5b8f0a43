// The people in a file of electronic business cards (vCard 2.1, 3.0 and 4.0).
#pragma once

#include "admin/contacts/contact.h"
#include "admin/contacts/text_encoding.h"

#include <string_view>

namespace qx::admin {

// The bytes of a whole file with any number of cards. Texts are UTF-8 unless a property names its character set or
// codePage (0: none) says otherwise for those that do not; what cannot be decoded makes its card unusable, never a text
// with gaps. Fax numbers are the telephone numbers whose kinds include fax. What the cards say of other cards (agents)
// is passed over.
ContactFile ReadVCards(std::string_view bytes, unsigned codePage, const CodePageDecoder& decode);

// Whether the bytes begin as cards do, blanks and a mark aside.
bool LooksLikeVCards(std::string_view bytes);

} // namespace qx::admin
