#include "pages/recipient_rules.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(RecipientButtons, FollowTheFieldsAndTheSelection)
{
    EXPECT_EQ(ButtonsFor({}), RecipientButtons{});
    EXPECT_EQ(ButtonsFor({.name = true}), RecipientButtons{.clear = true});
    EXPECT_EQ(ButtonsFor({.faxNumber = true}), (RecipientButtons{.to = true, .clear = true}));
    EXPECT_EQ(ButtonsFor({.company = true}), RecipientButtons{.clear = true});
    EXPECT_EQ(ButtonsFor({.name = true, .company = true}), RecipientButtons{.clear = true});
    EXPECT_EQ(ButtonsFor({.name = true, .faxNumber = true}),
              (RecipientButtons{.to = true, .clear = true, .addToPhoneBook = true}));
    EXPECT_EQ(ButtonsFor({.selected = true}), RecipientButtons{.remove = true});
}

TEST(RecipientButtons, AGroupIsTakenButNotPutIntoThePhoneBook)
{
    EXPECT_EQ(ButtonsFor({.name = true, .group = true}), (RecipientButtons{.to = true, .clear = true}));
}

TEST(RecipientLimit, TheHundredthFitsAndTheNextOneDoesNot)
{
    EXPECT_TRUE(RecipientFits(99));
    EXPECT_FALSE(RecipientFits(100));
    EXPECT_FALSE(RecipientFits(101));
}

TEST(RecipientLimit, AGroupFitsWholeOrNotAtAll)
{
    EXPECT_TRUE(GroupFits(95, 5));
    EXPECT_FALSE(GroupFits(96, 5));
    EXPECT_TRUE(GroupFits(100, 0));
    EXPECT_FALSE(GroupFits(0, 101));
}

} // namespace
} // namespace qx
