// Whether pictures, which are drawn for a light ground, can show colours of their own.
#pragma once

#include <windows.h>

namespace qx {

// False in high contrast, and where texts of the one system colour are lighter than their ground: pictures are then to
// be drawn in these two, as everything else is.
bool HasRoomForColors(int textColor, int groundColor) noexcept;

} // namespace qx
