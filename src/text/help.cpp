#include "text/help.h"

namespace qx {

void ShowHelp(const TextOwner&, HWND, int) noexcept {}

} // namespace qx
