// What the Fax Job page decides: which buttons can be pressed, who still fits into the job, what keeps it from being
// sent.
#pragma once

#include "base/limits.h"
#include "pages/image_rule.h"

#include <cstddef>
#include <vector>

namespace qx {

// Which of the fields hold text.
struct RecipientFields {
    bool name = false;
    bool faxNumber = false;
    bool company = false;
};

struct RecipientButtons {
    bool clear = false;
    bool addToPhoneBook = false;
    bool operator==(const RecipientButtons&) const = default;
};

constexpr RecipientButtons ButtonsFor(RecipientFields fields) noexcept
{
    return {.clear = fields.name || fields.faxNumber || fields.company,
            .addToPhoneBook = fields.name && fields.faxNumber};
}

// Whether all members of a group go into a job that has rows recipients: a group is never taken in part.
constexpr bool GroupFits(int rows, std::size_t members) noexcept
{
    return static_cast<std::size_t>(rows) + members <= static_cast<std::size_t>(kMaxRecipients);
}

constexpr bool RecipientFits(int rows) noexcept
{
    return rows < kMaxRecipients;
}

enum class SendProblem {
    NoRecipient,
    TooManyRecipients,
    BillingCodeMissing,
    BillingCodeTooShort,
    ImageNotFound,
    ImageNotABitmap,
};

// What the user is about to send.
struct SendFacts {
    int rows = 0;       // of the recipient list
    bool typed = false; // a fax number still stands in its field: one more recipient
    bool billingCodeWanted = false;
    std::size_t billingCodeLength = 0;
    std::size_t billingCodeMinLength = 0;
    ImageProblem image = ImageProblem::None; // None too when no image is sent
};

// All that is wrong, in the order in which the user is told.
std::vector<SendProblem> CheckSend(const SendFacts& facts);

} // namespace qx
