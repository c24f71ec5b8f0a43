#include "phonebook/ui/button_rules.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(PickerButtons, DetailsNeedsExactlyOneRowAndToAtLeastOne)
{
    EXPECT_EQ(PickerButtonsFor(0), PickerButtons{});
    EXPECT_EQ(PickerButtonsFor(1), (PickerButtons{.details = true, .to = true}));
    EXPECT_EQ(PickerButtonsFor(2), (PickerButtons{.details = false, .to = true}));
}

TEST(EditorButtons, ExportNeedsRowsOnly)
{
    EXPECT_EQ(EditorButtonsFor(0, 0), EditorButtons{});
    EXPECT_EQ(EditorButtonsFor(5, 0), EditorButtons{.exportBook = true});
}

TEST(EditorButtons, OneRowCanBeEditedAndSeveralOnlyDeleted)
{
    EXPECT_EQ(EditorButtonsFor(5, 1),
              (EditorButtons{.edit = true, .details = true, .remove = true, .exportBook = true}));
    EXPECT_EQ(EditorButtonsFor(5, 2), (EditorButtons{.remove = true, .exportBook = true}));
}

TEST(GroupButtons, FollowTheSelectionOfBothLists)
{
    EXPECT_EQ(GroupButtonsFor({}), GroupButtons{});
    EXPECT_EQ(GroupButtonsFor({.selectedEntries = 1}), (GroupButtons{.details = true, .add = true}));
    EXPECT_EQ(GroupButtonsFor({.selectedEntries = 2}), (GroupButtons{.add = true}));
    EXPECT_EQ(GroupButtonsFor({.selectedMembers = 3}), (GroupButtons{.remove = true}));
}

TEST(GroupButtons, NothingCanBeAddedToAHundredMembers)
{
    EXPECT_TRUE(GroupButtonsFor({.members = 99, .selectedEntries = 1}).add);
    EXPECT_FALSE(GroupButtonsFor({.members = 100, .selectedEntries = 1}).add);
    EXPECT_FALSE(GroupButtonsFor({.members = 130, .selectedEntries = 2}).add);
}

} // namespace
} // namespace qx
