#include "pages/email_rule.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(EmailRule, OneAtSignAnywhereIsEnough)
{
    for (const wchar_t* const address : {L"user@example.com", L"user@", L"@", L"@x", L"a b@@c"})
        EXPECT_EQ(CheckEmailAddress(address), EmailProblem::None) << address;
}

TEST(EmailRule, AnAddressWithoutAnAtSignIsAskedAbout)
{
    for (const wchar_t* const address : {L"user.example", L" ", L"\uFF20"})
        EXPECT_EQ(CheckEmailAddress(address), EmailProblem::Unrecognized) << address;
}

TEST(EmailRule, AnEmptyAddressIsMissing)
{
    EXPECT_EQ(CheckEmailAddress(L""), EmailProblem::Missing);
}

} // namespace
} // namespace qx
