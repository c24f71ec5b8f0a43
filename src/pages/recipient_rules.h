// What the Fax Job page decides about recipients: which of its buttons can be pressed, and who still fits into the job.
#pragma once

#include "base/limits.h"

#include <cstddef>

namespace qx {

// What stands in the fields, and what is selected in the list.
struct RecipientFacts {
    bool name = false;
    bool faxNumber = false;
    bool company = false;
    bool group = false; // in place of a fax number, with its text
    bool selected = false;
};

struct RecipientButtons {
    bool to = false;
    bool clear = false;
    bool addToPhoneBook = false;
    bool remove = false;
    bool operator==(const RecipientButtons&) const = default;
};

constexpr RecipientButtons ButtonsFor(RecipientFacts facts) noexcept
{
    return {.to = facts.faxNumber || facts.group,
            .clear = facts.name || facts.faxNumber || facts.company,
            .addToPhoneBook = facts.name && facts.faxNumber,
            .remove = facts.selected};
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

} // namespace qx
