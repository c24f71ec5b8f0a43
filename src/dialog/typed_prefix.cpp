#include "dialog/typed_prefix.h"

#include "base/limits.h"
#include "base/text.h"

#include <algorithm>
#include <cwctype>

namespace qx {

bool IsBlankText(std::wstring_view text) noexcept
{
    return !text.empty() && std::ranges::all_of(text, [](wchar_t c) { return std::iswspace(c) != 0; });
}

bool MatchesTypedPrefix(std::wstring_view text, std::wstring_view typed) noexcept
{
    if (typed.empty() || text.size() < typed.size() || IsBlankText(text) || IsBlankText(typed))
        return false;
    return EqualUserText(text.substr(0, std::min(typed.size(), kTypedPrefixLimit)), typed);
}

} // namespace qx
