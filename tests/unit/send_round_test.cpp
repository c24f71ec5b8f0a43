#include "pages/sheet_page.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

constexpr auto kFaxJob = SendRound::kFaxJob;
constexpr auto kSetup = SendRound::kSetup;

bool Accepts(SendRound& round, SendRound::Page page)
{
    round.Ask(page);
    return round.Accept(page);
}

TEST(SendRound, IsOverWhenBothPagesHaveAcceptedInEitherOrder)
{
    SendRound round;
    EXPECT_FALSE(Accepts(round, kFaxJob));
    EXPECT_TRUE(Accepts(round, kSetup));
    EXPECT_FALSE(Accepts(round, kSetup));
    EXPECT_TRUE(Accepts(round, kFaxJob));
}

TEST(SendRound, APageAlonePressesNothingThrough)
{
    SendRound round;
    for (int press = 0; press < 3; ++press)
        EXPECT_FALSE(Accepts(round, kFaxJob));
}

TEST(SendRound, WhatWasAcceptedBeforeARefusalDoesNotCountInTheNextRound)
{
    for (const bool goesOn : {false, true}) { // after the refusal, to the other page
        SendRound round;
        round.Ask(kFaxJob); // refuses
        if (goesOn) {
            EXPECT_FALSE(Accepts(round, kSetup));
        }
        EXPECT_FALSE(Accepts(round, kFaxJob));
        EXPECT_TRUE(Accepts(round, kSetup));
    }
    SendRound round;
    EXPECT_FALSE(Accepts(round, kSetup));
    round.Ask(kFaxJob); // refuses, as the last one
    EXPECT_FALSE(Accepts(round, kSetup));
    EXPECT_TRUE(Accepts(round, kFaxJob));
}

TEST(SendRound, ThePageThatRefusedTheLastPressMayBeTheLastOneToAcceptTheNext)
{
    for (const bool presses : {false, true}) {
        SendRound round;
        round.Begin();
        round.Ask(kFaxJob); // refuses, and ends the asking
        if (presses)
            round.Begin();
        EXPECT_FALSE(Accepts(round, kSetup));
        EXPECT_EQ(Accepts(round, kFaxJob), presses); // else Setup comes after it
    }
}

} // namespace
} // namespace qx
