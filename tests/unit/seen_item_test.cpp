#include "phonebook/ui/seen_item.h"

#include "support/phone_book.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;
using Ids = std::vector<DWORD>;

class SeenItemTest : public ::testing::Test {
protected:
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"", 1);
    PhoneBookEntry* const bob = book.AddEntry(L"Bob", L"2", L"", 2);

    static void Become(PhoneBookEntry* entry, const wchar_t* name, const wchar_t* faxNumber)
    {
        entry->SetName(name);
        entry->SetFaxNumber(faxNumber);
    }
};

TEST_F(SeenItemTest, IsWhoHasItsNameAndItsNumber)
{
    const SeenItem seen(*ann);
    Become(ann, L"ANN", L"1");
    EXPECT_TRUE(seen.Is(*ann));
    Become(ann, L"Ann", L"2");
    EXPECT_FALSE(seen.Is(*ann));
    Become(ann, L"Amy", L"1");
    EXPECT_FALSE(seen.Is(*ann));
    const PhoneBookGroup* const group = book.AddGroup(L"Ann", {1}, 3);
    EXPECT_FALSE(seen.Is(*group));
    EXPECT_TRUE(SeenItem(*group).Is(*group));
}

TEST_F(SeenItemTest, IsInTheBookUnlessItsIdIsSomebodyElses)
{
    EXPECT_EQ(IdIn(*book, *bob), 2u);
    PhoneBookEntry* const copy = book.store.NewEntry(); // as before a reload
    copy->CopyFrom(*bob);
    EXPECT_EQ(IdIn(*book, *copy), 2u);
    Become(bob, L"Amy", L"2");
    EXPECT_EQ(IdIn(*book, *copy), std::nullopt);
    EXPECT_EQ(IdIn(*book, *bob), 2u);
    copy->SetId(7);
    EXPECT_EQ(IdIn(*book, *copy), std::nullopt);
}

// Edit has always stored at the last of doubled ids.
TEST_F(SeenItemTest, StandsAtTheLastOfItsId)
{
    book.AddEntry(L"Twin", L"9", L"", 1);
    EXPECT_EQ(IndexOf(*book, *ann, SeenItem(*ann)), 2u);
}

TEST_F(SeenItemTest, MembersWhoseIdNamesAnotherOneOrNobodyLeave)
{
    const PhoneBookEntry* const cat = book.AddEntry(L"Cat", L"3", L"", 3);
    PhoneBookGroup group;
    group.SetMemberIds({3, 99, 1, 2, 98});
    SeenMembers seen;
    EXPECT_FALSE(seen.Update(group, *book));
    EXPECT_FALSE(seen.Update(group, *book));
    EXPECT_EQ(Ids(group.MemberIds().begin(), group.MemberIds().end()), (Ids{3, 99, 1, 2, 98})); // as in the file

    Become(bob, L"Amy", L"2");
    book->Delete(0); // Ann
    book.AddEntry(L"Ida", L"4", L"", 98);
    EXPECT_TRUE(seen.Update(group, *book));
    EXPECT_EQ(Ids(group.MemberIds().begin(), group.MemberIds().end()), (Ids{3, 99}));
    EXPECT_STREQ(book->FindEntry(3)->GetName(), cat->GetName());
}

TEST_F(SeenItemTest, WhoLeftTheGroupMayJoinItAsSomebodyElse)
{
    PhoneBookGroup group;
    group.SetMemberIds({1, 2});
    SeenMembers seen;
    seen.Update(group, *book);
    group.RemoveMemberId(2);
    seen.Update(group, *book);
    Become(bob, L"Amy", L"2");
    group.AddMemberId(2);
    EXPECT_FALSE(seen.Update(group, *book));
    EXPECT_EQ(group.MemberIds().size(), 2u);
}

} // namespace
} // namespace qx
