#include "phonebook/ui/group_members.h"

#include "support/phone_book.h"

#include <gtest/gtest.h>
#include <numeric>

namespace qx {
namespace {

using namespace test;
using Entries = std::vector<const PhoneBookEntry*>;
using Ids = std::vector<DWORD>;

Ids IdsFrom(DWORD first, std::size_t count)
{
    Ids ids(count);
    std::iota(ids.begin(), ids.end(), first);
    return ids;
}

class GroupMembersTest : public ::testing::Test {
protected:
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"", 1);
    PhoneBookEntry* const bob = book.AddEntry(L"Bob", L"2", L"", 2);
    PhoneBookEntry* const cat = book.AddEntry(L"Cat", L"3", L"", 3);
};

TEST_F(GroupMembersTest, OwnOrderFollowsTheIdsAndBookOrderTheBook)
{
    const Ids ids{3, 1};
    EXPECT_EQ(MembersInOwnOrder(*book, ids), (Entries{cat, ann}));
    EXPECT_EQ(MembersInBookOrder(*book, ids), (Entries{ann, cat}));
}

TEST_F(GroupMembersTest, IdWithoutAnEntryShowsNothing)
{
    book.AddGroup(L"Group", {1}, 5);
    EXPECT_EQ(MembersInOwnOrder(*book, Ids{5, 99, 2}), Entries{bob});
    EXPECT_EQ(MembersInBookOrder(*book, Ids{5, 99, 2}), Entries{bob});
}

TEST_F(GroupMembersTest, OwnOrderShowsEveryEntryOfADoubledId)
{
    PhoneBookEntry* const twin = book.AddEntry(L"Ann's twin", L"9", L"", 1);
    EXPECT_EQ(MembersInOwnOrder(*book, Ids{2, 1}), (Entries{bob, ann, twin}));
    EXPECT_EQ(MembersInOwnOrder(*book, Ids{1, 1}), (Entries{ann, twin, ann, twin}));
}

TEST_F(GroupMembersTest, BookOrderShowsNoMoreRowsThanThereAreMembers)
{
    book.AddEntry(L"Ann's twin", L"9", L"", 1);
    EXPECT_EQ(MembersInBookOrder(*book, Ids{1, 2}), (Entries{ann, bob}));
    EXPECT_EQ(MembersInBookOrder(*book, Ids{1}), Entries{ann});
}

TEST_F(GroupMembersTest, OnlyTheFirstHundredIdsAreShown)
{
    Ids ids = IdsFrom(1000, 99);
    ids.push_back(1);
    ids.push_back(2);
    EXPECT_EQ(MembersInOwnOrder(*book, ids), Entries{ann});
    EXPECT_EQ(MembersInBookOrder(*book, ids), (Entries{ann, bob}));
}

TEST_F(GroupMembersTest, EntryIsAddedOnlyOnce)
{
    PhoneBookGroup group;
    group.AddMemberId(2);
    AddMembers(group, std::vector<PhoneBookItem*>{ann, bob, ann});
    EXPECT_EQ(MemberIdsOf(group), (Ids{2, 1}));
}

TEST_F(GroupMembersTest, HundredthMemberIsAddedAndTheNextNot)
{
    PhoneBookGroup group;
    for (const DWORD id : IdsFrom(1000, 99))
        group.AddMemberId(id);
    AddMembers(group, std::vector<PhoneBookItem*>{ann, bob});
    EXPECT_EQ(group.MemberIds().size(), 100u);
    EXPECT_EQ(group.MemberIds().back(), 1u);
}

TEST_F(GroupMembersTest, GroupOfMoreThanAHundredKeepsAllItsIds)
{
    PhoneBookGroup group;
    for (const DWORD id : IdsFrom(1000, 120))
        group.AddMemberId(id);
    AddMembers(group, std::vector<PhoneBookItem*>{ann});
    EXPECT_EQ(group.MemberIds().size(), 120u);
}

TEST_F(GroupMembersTest, SameGroupIsOneOfThatNameWithAnotherId)
{
    book.AddGroup(L"Sales", {1}, 7);
    PhoneBookGroup group;
    group.SetName(L"SALES");
    EXPECT_TRUE(HoldsSameGroup(*book, group, 8));
    EXPECT_TRUE(HoldsSameGroup(*book, group, std::nullopt));
    EXPECT_FALSE(HoldsSameGroup(*book, group, 7));
    group.SetName(L"Ann"); // an entry's name is no group's
    EXPECT_FALSE(HoldsSameGroup(*book, group, 8));
}

} // namespace
} // namespace qx
