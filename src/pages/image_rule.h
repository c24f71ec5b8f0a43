// Which file names pass as the image of a cover page.
#pragma once

#include <string_view>

namespace qx {

// What can be wrong with the path of an image.
enum class ImageProblem { None, NotFound, NotABitmap };

// Whether the part of path from its last dot on is ".bmp" in any letter case. A path without a dot has none.
bool IsNamedAsBitmap(std::wstring_view path) noexcept;

} // namespace qx
