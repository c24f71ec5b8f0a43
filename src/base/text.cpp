#include "base/text.h"

#include <algorithm>
#include <cwchar>

namespace qx {

HRESULT CopyText(std::span<wchar_t> to, const wchar_t* from) noexcept
{
    constexpr HRESULT kCut = static_cast<HRESULT>(0x8007007A); // STRSAFE_E_INSUFFICIENT_BUFFER
    if (to.empty())
        return E_INVALIDARG;
    if (from == nullptr) {
        to[0] = L'\0';
        return E_INVALIDARG;
    }
    // Not length(): a text from outside is read no further than fits.
    const std::size_t units = wcsnlen(from, to.size() - 1);
    std::copy_n(from, units, to.begin());
    to[units] = L'\0';
    return from[units] == L'\0' ? S_OK : kCut;
}

HRESULT AppendText(std::span<wchar_t> to, const wchar_t* from) noexcept
{
    const auto end = std::find(to.begin(), to.end(), L'\0');
    if (end == to.end() || from == nullptr)
        return E_INVALIDARG;
    return CopyText(to.subspan(static_cast<std::size_t>(end - to.begin())), from);
}

int CompareUserText(std::wstring_view a, std::wstring_view b) noexcept
{
    return CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE | SORT_STRINGSORT, a.data(), static_cast<int>(a.size()),
                          b.data(), static_cast<int>(b.size()));
}

} // namespace qx
