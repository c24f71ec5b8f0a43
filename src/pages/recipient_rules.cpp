#include "pages/recipient_rules.h"

#include <optional>

namespace qx {

namespace {

std::optional<SendProblem> CheckRecipients(const SendFacts& facts)
{
    if (!facts.typed && facts.rows <= 0)
        return SendProblem::NoRecipient;
    if (facts.rows > kMaxRecipients || (facts.typed && !RecipientFits(facts.rows)))
        return SendProblem::TooManyRecipients;
    return {};
}

std::optional<SendProblem> CheckBillingCode(const SendFacts& facts)
{
    if (!facts.billingCodeWanted)
        return {};
    if (facts.billingCodeLength == 0)
        return SendProblem::BillingCodeMissing;
    if (facts.billingCodeLength < facts.billingCodeMinLength)
        return SendProblem::BillingCodeTooShort;
    return {};
}

std::optional<SendProblem> CheckImage(const SendFacts& facts)
{
    switch (facts.image) {
    case ImageProblem::NotFound: return SendProblem::ImageNotFound;
    case ImageProblem::NotABitmap: return SendProblem::ImageNotABitmap;
    case ImageProblem::None: break;
    }
    return {};
}

} // namespace

std::vector<SendProblem> CheckSend(const SendFacts& facts)
{
    std::vector<SendProblem> problems;
    for (const auto& problem : {CheckRecipients(facts), CheckBillingCode(facts), CheckImage(facts)}) {
        if (problem)
            problems.push_back(*problem);
    }
    return problems;
}

} // namespace qx
