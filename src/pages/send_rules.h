// What keeps a job from being sent, and the user's defaults from being stored: rules over plain data.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace qx {

enum class SendProblem {
    NoRecipient,
    TooManyRecipients,
    BillingCodeMissing,
    BillingCodeTooShort,
    ImageNotFound,
    ImageNotABitmap,
    EmailMissing,
    EmailUnrecognized, // the user may insist on it
};

// What the user is about to send, as the Fax Job page shows it.
struct SendFacts {
    int rows = 0;       // of the recipient list
    bool typed = false; // a fax number still stands in its field: one more recipient
    bool billingCodeWanted = false;
    std::size_t billingCodeLength = 0;
    std::size_t billingCodeMinLength = 0;
    std::optional<SendProblem> image{}; // what is wrong with the image that is sent, if one is
};

// All that is wrong, in the order in which the user is told.
std::vector<SendProblem> CheckSend(const SendFacts& facts);

// Whether the part of path from its last dot on is ".bmp" in any letter case. A path without a dot has none.
bool IsNamedAsBitmap(std::wstring_view path) noexcept;

// One @ anywhere is all that is asked for.
constexpr std::optional<SendProblem> CheckEmailAddress(std::wstring_view address) noexcept
{
    if (address.empty())
        return SendProblem::EmailMissing;
    if (address.find(L'@') == std::wstring_view::npos)
        return SendProblem::EmailUnrecognized;
    return {};
}

} // namespace qx
