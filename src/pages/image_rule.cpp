#include "pages/image_rule.h"

#include <algorithm>
#include <cwctype>

namespace qx {

bool IsNamedAsBitmap(std::wstring_view path) noexcept
{
    const std::size_t dot = path.rfind(L'.');
    if (dot == std::wstring_view::npos)
        return false;
    return std::ranges::equal(path.substr(dot), std::wstring_view(L".bmp"), {}, [](wchar_t character) {
        return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
    });
}

} // namespace qx
