// Pictures of what is on screen.
#pragma once

#include <filesystem>
#include <windows.h>

namespace qx::host {

// Writes what the screen shows in the rectangle (pixels) to a PNG file. Throws std::runtime_error when it cannot.
void SaveScreenPicture(const RECT& rectangle, const std::filesystem::path& file);

} // namespace qx::host
