// What the address for notifications has to be.
#pragma once

#include <string_view>

namespace qx {

enum class EmailProblem { None, Missing, Unrecognized };

// One @ anywhere is all that is asked for. The user may insist on an address without.
constexpr EmailProblem CheckEmailAddress(std::wstring_view address) noexcept
{
    if (address.empty())
        return EmailProblem::Missing;
    return address.find(L'@') != std::wstring_view::npos ? EmailProblem::None : EmailProblem::Unrecognized;
}

} // namespace qx
