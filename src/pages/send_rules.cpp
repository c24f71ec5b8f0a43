#include "pages/send_rules.h"

#include "pages/recipient_rules.h"

#include <algorithm>
#include <cwctype>

namespace qx {

namespace {

std::optional<SendProblem> CheckRecipients(const SendFacts& facts) noexcept
{
    if (!facts.typed && facts.rows <= 0)
        return SendProblem::NoRecipient;
    if (facts.rows > kMaxRecipients || (facts.typed && !RecipientFits(facts.rows)))
        return SendProblem::TooManyRecipients;
    return {};
}

std::optional<SendProblem> CheckBillingCode(const SendFacts& facts) noexcept
{
    if (!facts.billingCodeWanted)
        return {};
    if (facts.billingCodeLength == 0)
        return SendProblem::BillingCodeMissing;
    if (facts.billingCodeLength < facts.billingCodeMinLength)
        return SendProblem::BillingCodeTooShort;
    return {};
}

} // namespace

std::vector<SendProblem> CheckSend(const SendFacts& facts)
{
    std::vector<SendProblem> problems;
    for (const auto& problem : {CheckRecipients(facts), CheckBillingCode(facts), facts.image}) {
        if (problem)
            problems.push_back(*problem);
    }
    return problems;
}

bool IsNamedAsBitmap(std::wstring_view path) noexcept
{
    const std::size_t dot = path.rfind(L'.');
    if (dot == std::wstring_view::npos)
        return false;
    return std::ranges::equal(path.substr(dot), std::wstring_view(L".bmp"), {}, [](wchar_t character) {
        return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
    });
}

} // namespace qx
