#include "pages/send_rules.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using Problems = std::vector<SendProblem>;

TEST(SendCheck, NothingTypedAndNothingListedIsNoRecipient)
{
    EXPECT_EQ(CheckSend({}), Problems{SendProblem::NoRecipient});
    EXPECT_EQ(CheckSend({.typed = true}), Problems{});
    EXPECT_EQ(CheckSend({.rows = 1}), Problems{});
}

TEST(SendCheck, ATypedNumberCountsAsOneMoreRecipient)
{
    EXPECT_EQ(CheckSend({.rows = 99, .typed = true}), Problems{});
    EXPECT_EQ(CheckSend({.rows = 100}), Problems{});
    EXPECT_EQ(CheckSend({.rows = 100, .typed = true}), Problems{SendProblem::TooManyRecipients});
    EXPECT_EQ(CheckSend({.rows = 101}), Problems{SendProblem::TooManyRecipients});
}

TEST(SendCheck, TheBillingCodeCountsOnlyWhereTheDeviceAsksForOne)
{
    EXPECT_EQ(CheckSend({.rows = 1, .billingCodeLength = 0, .billingCodeMinLength = 4}), Problems{});
    EXPECT_EQ(CheckSend({.rows = 1, .billingCodeWanted = true}), Problems{SendProblem::BillingCodeMissing});
    EXPECT_EQ(CheckSend({.rows = 1, .billingCodeWanted = true, .billingCodeLength = 3, .billingCodeMinLength = 4}),
              Problems{SendProblem::BillingCodeTooShort});
    EXPECT_EQ(CheckSend({.rows = 1, .billingCodeWanted = true, .billingCodeLength = 4, .billingCodeMinLength = 4}),
              Problems{});
    EXPECT_EQ(CheckSend({.rows = 1, .billingCodeWanted = true, .billingCodeLength = 1}), Problems{});
}

TEST(SendCheck, AllProblemsOfOneSendComeInOrder)
{
    EXPECT_EQ(CheckSend({.billingCodeWanted = true, .image = SendProblem::ImageNotFound}),
              (Problems{SendProblem::NoRecipient, SendProblem::BillingCodeMissing, SendProblem::ImageNotFound}));
    EXPECT_EQ(CheckSend({.rows = 1, .image = SendProblem::ImageNotABitmap}), Problems{SendProblem::ImageNotABitmap});
}

TEST(ImageRule, TheExtensionIsComparedInLowerCase)
{
    EXPECT_TRUE(IsNamedAsBitmap(L"C:\\Pics\\Logo.BMP"));
    EXPECT_TRUE(IsNamedAsBitmap(L".bMp"));
}

TEST(ImageRule, OnlyTheLastExtensionCounts)
{
    EXPECT_FALSE(IsNamedAsBitmap(L"logo.bmp.txt"));
    EXPECT_TRUE(IsNamedAsBitmap(L"logo.txt.bmp"));
    EXPECT_FALSE(IsNamedAsBitmap(L"logo.bmp2"));
    EXPECT_FALSE(IsNamedAsBitmap(L"logo.bm"));
}

TEST(ImageRule, APathWithoutADotIsNoBitmap)
{
    EXPECT_FALSE(IsNamedAsBitmap(L"logo"));
    EXPECT_FALSE(IsNamedAsBitmap(L"C:\\logo\\bmp"));
    EXPECT_FALSE(IsNamedAsBitmap(L"C:\\pics.bmp\\logo")); // the last dot is that of a folder
    EXPECT_FALSE(IsNamedAsBitmap(L""));
}

TEST(EmailRule, OneAtSignAnywhereIsEnough)
{
    for (const wchar_t* const address : {L"user@example.com", L"user@", L"@", L"@x", L"a b@@c"})
        EXPECT_EQ(CheckEmailAddress(address), std::nullopt) << address;
}

TEST(EmailRule, AnAddressWithoutAnAtSignIsAskedAbout)
{
    for (const wchar_t* const address : {L"user.example", L" ", L"\uFF20"})
        EXPECT_EQ(CheckEmailAddress(address), SendProblem::EmailUnrecognized) << address;
}

TEST(EmailRule, AnEmptyAddressIsMissing)
{
    EXPECT_EQ(CheckEmailAddress(L""), SendProblem::EmailMissing);
}

} // namespace
} // namespace qx
