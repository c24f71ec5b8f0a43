// The image that this code is linked into: where templates, bitmaps and the manifest are found.
#pragma once

#include <windows.h>

namespace qx {

HINSTANCE ModuleInstance() noexcept;

// Major version of the operating system.
DWORD WindowsMajorVersion() noexcept;

// The user's default UI language is Arabic or Hebrew: dialogs open their right-to-left twins.
bool IsRightToLeftUi() noexcept;

} // namespace qx
