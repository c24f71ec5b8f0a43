// The three texts of an entry in one registry value: name, fax number and company, each with its terminator, and one
// more terminator behind them.
#pragma once

#include <string>
#include <string_view>

namespace qx {

struct EntryTexts {
    std::wstring_view name;
    std::wstring_view faxNumber;
    std::wstring_view company;
};

// The first three strings of a block; those that are not there are empty. The views look into the block.
EntryTexts ReadEntryBlock(std::wstring_view block) noexcept;

// The three texts with their terminators.
std::wstring MakeEntryBlock(const EntryTexts& texts);

} // namespace qx
