// A string table's block, as it lies in the resources of a library: 16 texts, each behind its length.
#pragma once

#include <string_view>

namespace qx {

inline constexpr std::size_t kTextsPerBlock = 16;

// The text at position of a block; empty when the block ends before it, cut where the block ends within it.
constexpr std::wstring_view TextInBlock(std::wstring_view block, std::size_t position) noexcept
{
    std::size_t at = 0;
    for (std::size_t i = 0; at < block.size(); ++i) {
        const auto units = static_cast<std::size_t>(block[at]);
        if (i == position)
            return block.substr(at + 1, units);
        at += 1 + units;
    }
    return {};
}

static_assert(TextInBlock(std::wstring_view(L"\0\2ab\1c", 6), 1) == L"ab");
static_assert(TextInBlock(std::wstring_view(L"\0\2ab\1c", 6), 3).empty());
static_assert(TextInBlock(L"\5ab", 0) == L"ab");

} // namespace qx
