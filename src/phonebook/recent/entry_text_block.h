// The three texts of an entry in one registry value: name, fax number and company, each with its terminator, and one
// more terminator behind them.
#pragma once

#include "record/recipient.h"

#include <string_view>

namespace qx {

// The first three strings of a block; those that are not there are empty.
Recipient ReadEntryBlock(std::wstring_view block);

// The three texts with their terminators.
std::wstring MakeEntryBlock(const Recipient& texts);

} // namespace qx
