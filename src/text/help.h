// Context help: a compiled help file whose pages are named by number.
#pragma once

#include "text/localized_text.h"

namespace qx {

// Shows the page of topic from the owner's help file; nothing without a help file.
void ShowHelp(const TextOwner& owner, HWND window, int topic) noexcept;

} // namespace qx
