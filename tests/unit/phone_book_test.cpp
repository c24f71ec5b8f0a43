#include "phonebook/book/phone_book.h"

#include "support/phone_book.h"

#include <gtest/gtest.h>
#include <random>

namespace qx {
namespace {

using namespace test;
using Names = std::vector<std::wstring>;

TEST(PhoneBook, AddKeepsTheOrderAndIgnoresNothingness)
{
    TestBook book;
    book.AddEntry(L"B", L"", L"", 1);
    book.AddEntry(L"A", L"", L"", 2);
    EXPECT_EQ(book->Add(nullptr), TRUE);
    EXPECT_EQ(book->GetCount(), 2u);
    EXPECT_EQ(book.Names(), (Names{L"B", L"A"}));
}

TEST(PhoneBook, AnIndexOutsideTheListGivesNothingAndChangesNothing)
{
    TestBook book;
    PhoneBookEntry* const entry = book.AddEntry(L"A", L"", L"", 1);
    EXPECT_EQ(book->GetAt(0), entry);
    EXPECT_EQ(book->GetAt(1), nullptr);
    EXPECT_EQ(book->GetAt(0xFFFFFFFF), nullptr);
    EXPECT_EQ(book->SetAt(1, entry), TRUE);
    EXPECT_EQ(book->SetAt(0, nullptr), TRUE);
    EXPECT_EQ(book->Delete(1), TRUE);
    EXPECT_EQ(book->GetAt(0), entry);
    EXPECT_EQ(book->GetCount(), 1u);
}

TEST(PhoneBook, DeletingTheOnlyMemberOfAGroupRemovesTheGroup)
{
    TestBook book;
    book.AddGroup(L"Sales", {1}, 3);
    book.AddEntry(L"Ann", L"", L"", 1);
    book.AddEntry(L"Bob", L"", L"", 2);
    book->Delete(1);
    EXPECT_EQ(book.Names(), Names{L"Bob"});
    EXPECT_EQ(book->GetCount(), 1u);
}

TEST(PhoneBook, DeletingAGroupRemovesEveryOtherGroupWithoutMemberIds)
{
    TestBook book;
    book.AddGroup(L"Empty", {}, 3);
    book.AddGroup(L"Sales", {1}, 4);
    book.AddGroup(L"Full", {1}, 5);
    book.AddEntry(L"Ann", L"", L"", 1);
    book.AddGroup(L"Empty too", {}, 6);
    book->Delete(1);
    EXPECT_EQ(book.Names(), (Names{L"Full", L"Ann"}));
}

TEST(PhoneBook, DeletingAnEntryThatStandsTwiceInAGroupRemovesTheFirstOccurrence)
{
    TestBook book;
    book.AddEntry(L"Ann", L"", L"", 1);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {2, 1, 3, 1}, 4);
    book->Delete(0);
    EXPECT_EQ(MemberIdsOf(*group), (std::vector<DWORD>{2, 3, 1}));
    EXPECT_EQ(book.Names(), Names{L"Sales"});
}

TEST(PhoneBook, DeletingAGroupLeavesTheMembersThatCarryItsIdButTakesOneThatNamesNobody)
{
    TestBook book;
    book.AddGroup(L"Gone", {1}, 4);
    PhoneBookGroup* const group = book.AddGroup(L"Stays", {4, kNoId, kNoId}, 5);
    book->Delete(0);
    // A group stands for no member: its deletion looks for the id that means none.
    EXPECT_EQ(MemberIdsOf(*group), (std::vector<DWORD>{4, kNoId}));
}

TEST(PhoneBook, DeletingDoesNotTouchResolvedMembersAndFreesNothing)
{
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"", L"", 1);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {1}, 2);
    book->ResolveMembers(*group);
    book->Delete(0);
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_STREQ(ann->GetName(), L"Ann");
    ASSERT_EQ(group->Members().size(), 1u);
    EXPECT_STREQ(group->Members()[0]->GetName(), L"Ann");
}

TEST(PhoneBook, RemoveAllLeavesTheItemsAlive)
{
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"", L"", 1);
    book->RemoveAll();
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(book->GetAt(0), nullptr);
    EXPECT_EQ(book->FindItem(1), nullptr);
    EXPECT_STREQ(ann->GetName(), L"Ann");
}

TEST(PhoneBook, IdsAreHandedOutFromZeroUpwards)
{
    TestBook book;
    EXPECT_EQ(book->NextId(), 0u);
    EXPECT_EQ(book->NextId(), 1u);
    book->RemoveAll();
    EXPECT_EQ(book->NextId(), 2u); // never again while the book lives
}

TEST(PhoneBook, ItemsAreFoundByIdBeforeAndAfterEveryKindOfChange)
{
    TestBook book;
    book.AddGroup(L"Group", {1}, 5);
    PhoneBookEntry* const entry = book.AddEntry(L"Entry of the same id", L"", L"", 5);
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"", L"", 1);
    for (int call = 0; call < 3; ++call) { // walked, then by index
        EXPECT_EQ(book->FindItem(5), book->GetAt(0));
        EXPECT_EQ(book->FindEntry(5), entry);
        EXPECT_EQ(book->FindEntry(1), ann);
        EXPECT_EQ(book->FindEntry(7), nullptr);
        EXPECT_EQ(book->FindItem(kNoId), nullptr);
    }
    PhoneBookEntry* const late = book.AddEntry(L"Late", L"", L"", 7);
    EXPECT_EQ(book->FindEntry(7), late);
    book->Sort(TRUE);
    EXPECT_EQ(book->FindItem(5), entry); // "Entry ..." now comes first
    book->SetAt(0, late);
    EXPECT_EQ(book->FindItem(1), nullptr);
}

TEST(PhoneBook, TheSameEntryIsOneOfAnotherId)
{
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"", 1);
    EXPECT_FALSE(book->HoldsSameEntry(*ann));
    book.AddEntry(L"ANN", L"1", L"other", 2);
    EXPECT_TRUE(book->HoldsSameEntry(*ann));
}

TEST(PhoneBook, ManyDeletionsAtOnceEndAsOneAfterTheOther)
{
    std::mt19937 random(4711);
    const auto upTo = [&random](unsigned limit) { return static_cast<DWORD>(random() % limit); };
    for (int round = 0; round < 500; ++round) {
        TestBook atOnce;
        TestBook oneByOne;
        std::vector<std::pair<PhoneBookGroup*, PhoneBookGroup*>> groups;
        const DWORD items = 1 + upTo(12);
        for (DWORD i = 0; i < items; ++i) {
            // Few ids, so that some stand twice, among items and in groups; and the id that means none.
            const DWORD id = upTo(15) == 0 ? kNoId : upTo(10);
            if (upTo(3) != 0) {
                for (TestBook* const book : {&atOnce, &oneByOne})
                    book->AddEntry(std::to_wstring(i).c_str(), L"", L"", id);
                continue;
            }
            groups.emplace_back(atOnce.AddGroup(std::to_wstring(i).c_str(), {}, id),
                                oneByOne.AddGroup(std::to_wstring(i).c_str(), {}, id));
            for (DWORD member = upTo(5); member > 0; --member) {
                const DWORD memberId = upTo(9) == 0 ? kNoId : upTo(10);
                groups.back().first->AddMemberId(memberId);
                groups.back().second->AddMemberId(memberId);
            }
        }
        std::vector<DWORD> ids;
        for (DWORD count = upTo(8); count > 0; --count)
            ids.push_back(upTo(12) == 0 ? kNoId : upTo(11));

        atOnce->DeleteIds(ids);
        for (const DWORD id : ids) {
            for (DWORD index = 0; index < oneByOne->GetCount(); ++index) {
                if (oneByOne->GetAt(index)->GetId() == id) {
                    oneByOne->Delete(index);
                    break;
                }
            }
        }

        ASSERT_EQ(atOnce.Names(), oneByOne.Names()) << "round " << round;
        for (const auto& [a, b] : groups)
            ASSERT_EQ(MemberIdsOf(*a), MemberIdsOf(*b)) << "round " << round;
    }
}

TEST(FileStamp, IsAnotherOneWhenAnyPartOfItIs)
{
    const FileStamp stamp{.written = 1, .bytes = 2, .index = 3, .volume = 4};
    EXPECT_EQ(stamp, (FileStamp{.written = 1, .bytes = 2, .index = 3, .volume = 4}));
    EXPECT_NE(stamp, (FileStamp{.written = 9, .bytes = 2, .index = 3, .volume = 4}));
    EXPECT_NE(stamp, (FileStamp{.written = 1, .bytes = 9, .index = 3, .volume = 4}));
    EXPECT_NE(stamp, (FileStamp{.written = 1, .bytes = 2, .index = 9, .volume = 4}));
    EXPECT_NE(stamp, (FileStamp{.written = 1, .bytes = 2, .index = 3, .volume = 9}));
}

} // namespace
} // namespace qx
