#include "phonebook/book/items.h"

#include "support/phone_book.h"
#include "support/resource_count.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

struct Entry : UniqueItem<PhoneBookEntry> {
    Entry(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company = nullptr, DWORD id = 0)
        : UniqueItem<PhoneBookEntry>(new PhoneBookEntry)
    {
        if (name != nullptr)
            get()->SetName(name);
        if (faxNumber != nullptr)
            get()->SetFaxNumber(faxNumber);
        if (company != nullptr)
            get()->SetCompany(company);
        get()->SetId(id);
    }
};

TEST(FaxNumber, HoldsDigitsAndEightOtherCharactersOnly)
{
    EXPECT_TRUE(IsValidFaxNumber(L"0123456789,-*#()[]"));
    EXPECT_TRUE(IsValidFaxNumber(L""));
    for (const wchar_t* const refused : {L"555 0100", L"+1555", L"555.0100", L"555/0100", L"a", L"5550100\n", L"{5}"})
        EXPECT_FALSE(IsValidFaxNumber(refused)) << refused;
}

TEST(Items, ANewEntryHasNoTextsAndIdZero)
{
    const PhoneBookEntry entry;
    EXPECT_EQ(entry.Name(), nullptr);
    EXPECT_EQ(entry.FaxNumber(), nullptr);
    EXPECT_EQ(entry.Company(), nullptr);
    EXPECT_EQ(entry.GetId(), 0u);
    EXPECT_FALSE(entry.IsGroup());
}

TEST(Items, TheNameOfAnItemWithoutNameIsEmptyAndNeverNull)
{
    const PhoneBookEntry entry;
    const PhoneBookGroup group;
    EXPECT_STREQ(entry.GetName(), L"");
    EXPECT_STREQ(group.GetName(), L"");
    EXPECT_TRUE(group.IsGroup());
}

TEST(Items, ASetterStoresAnOwnedCopyOfAnyLengthAndNeverNull)
{
    PhoneBookEntry entry;
    const std::wstring longText(100000, L'x');
    entry.SetName(longText.c_str());
    EXPECT_EQ(entry.GetName(), longText);
    EXPECT_NE(entry.Name(), longText.c_str());
    entry.SetName(nullptr);
    entry.SetFaxNumber(L"");
    EXPECT_STREQ(entry.Name(), L"");
    EXPECT_STREQ(entry.FaxNumber(), L"");
    entry.SetCompany(L"Acme");
    entry.SetCompany(entry.Company()); // its own text
    EXPECT_STREQ(entry.Company(), L"Acme");
}

TEST(Items, TheDriverReadsAnEntryAsARecipient)
{
    const UniqueItem<PhoneBookEntry> entry = MakeRecipient({L"Ann", L"555", L"Acme"}, 7);
    const FaxRecipient* const recipient = AsRecipient(entry.get());
    EXPECT_STREQ(recipient->Name, L"Ann");
    EXPECT_STREQ(recipient->FaxNumber, L"555");
    EXPECT_STREQ(recipient->Company, L"Acme");
    EXPECT_EQ(recipient->Id, 7u);
    EXPECT_EQ(AsEntry(recipient), entry.get());
}

TEST(Items, TheDriverCanReleaseARecipientWithoutTheModule)
{
    PhoneBookEntry* const entry = MakeRecipient({L"Ann", L"", L""}).release();
    EXPECT_STREQ(entry->FaxNumber(), L"");
    void* const blocks[] = {AsRecipient(entry), AsRecipient(entry)->Name, AsRecipient(entry)->FaxNumber,
                            AsRecipient(entry)->Company};
    for (const void* const block : blocks)
        EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, block));
    QxFaxFreeRecipient(AsRecipient(entry));
}

TEST(Items, ACopyTakesTextsAndId)
{
    const Entry from(L"Ann", L"555", L"Acme", 9);
    PhoneBookEntry to;
    to.CopyFrom(*from);
    EXPECT_STREQ(to.Name(), L"Ann");
    EXPECT_STREQ(to.FaxNumber(), L"555");
    EXPECT_STREQ(to.Company(), L"Acme");
    EXPECT_EQ(to.GetId(), 9u);
    to.CopyFrom(to); // shares its buffers: nothing happens
    EXPECT_STREQ(to.Name(), L"Ann");
}

TEST(Items, ACopyOfItselfChangesNothing)
{
    const Entry named(L"Ann", nullptr);
    const Entry numbered(nullptr, L"1");
    const Entry employed(nullptr, nullptr, L"Co");
    for (const Entry* const entry : {&named, &numbered, &employed}) {
        const Recipient before = (*entry)->Texts();
        const bool hasName = (*entry)->Name() != nullptr;
        (*entry)->CopyFrom(**entry);
        EXPECT_EQ((*entry)->Texts(), before);
        EXPECT_EQ((*entry)->Name() != nullptr, hasName); // what was never set still was not
    }
    PhoneBookGroup group;
    group.SetName(L"Group");
    group.AddMemberId(7);
    group.CopyFrom(group);
    EXPECT_STREQ(group.GetName(), L"Group");
    EXPECT_EQ(MemberIdsOf(group), std::vector<DWORD>{7});
}

TEST(Items, TextsThatWereNeverSetAreCopiedAsEmptyOnes)
{
    const PhoneBookEntry from;
    PhoneBookEntry to;
    to.CopyFrom(from);
    EXPECT_STREQ(to.Name(), L"");
    EXPECT_STREQ(to.FaxNumber(), L"");
    EXPECT_STREQ(to.Company(), L"");
}

TEST(Items, EqualNamesAreTheSameEntryWhenOneNumberIsUnknownWhateverTheCompany)
{
    EXPECT_TRUE(IsSameEntry(*Entry(L"Ann Lee", nullptr, L"Acme"), *Entry(L"ANN LEE", L"555", L"Other")));
    EXPECT_TRUE(IsSameEntry(*Entry(L"Ann Lee", L"555", L"Acme"), *Entry(L"ANN LEE", L"555", L"Other")));
    EXPECT_FALSE(IsSameEntry(*Entry(L"Ann Lee", L"555"), *Entry(L"Ann Lee", L"556")));
    EXPECT_FALSE(IsSameEntry(*Entry(L"Ann Lee", L"555"), *Entry(L"Ann Le", L"555")));
    EXPECT_FALSE(IsSameEntry(*Entry(nullptr, L"555"), *Entry(nullptr, L"555")));
    EXPECT_FALSE(IsSameEntry(*Entry(L"Ann Lee", L"555"), *Entry(nullptr, L"555")));
    EXPECT_TRUE(IsSameEntry(*Entry(L"Ann Lee", L"555"), *Entry(L"Ann Lee", nullptr)));
    EXPECT_FALSE(IsSameEntry(*Entry(L"Ann", L""), *Entry(L"Ann", L"555"))); // empty is known
}

TEST(Items, EntriesCompareByNameThenNumberThenCompany)
{
    const Entry ann(L"ann", L"1", L"a");
    const Entry bob(L"Bob", L"0", L"0");
    EXPECT_TRUE(IsLessThan(*ann, *bob));
    EXPECT_TRUE(IsGreaterThan(*bob, *ann));
    EXPECT_TRUE(IsLessThan(*ann, *Entry(L"ANN", L"2", L"")));
    EXPECT_TRUE(IsGreaterThan(*ann, *Entry(L"Ann", L"1", L"")));
    EXPECT_FALSE(IsLessThan(*ann, *Entry(L"ANN", L"1", L"A")));
    EXPECT_FALSE(IsGreaterThan(*ann, *Entry(L"ANN", L"1", L"A")));
}

TEST(Items, AFieldThatWasNeverSetEndsTheComparisonWithFalse)
{
    const Entry full(L"Ann", L"1", L"a");
    for (const Entry& partial :
         {Entry(nullptr, L"2", L"b"), Entry(L"Ann", nullptr, L"b"), Entry(L"Ann", L"1", nullptr)}) {
        EXPECT_FALSE(IsLessThan(*full, *partial));
        EXPECT_FALSE(IsGreaterThan(*full, *partial));
        EXPECT_FALSE(IsLessThan(*partial, *full));
        EXPECT_FALSE(IsGreaterThan(*partial, *full));
    }
}

TEST(Items, GroupsAreTheSameByName)
{
    PhoneBookGroup a;
    PhoneBookGroup b;
    EXPECT_FALSE(IsSameGroup(a, b));
    a.SetName(L"Sales");
    EXPECT_FALSE(IsSameGroup(a, b));
    b.SetName(L"SALES");
    EXPECT_TRUE(IsSameGroup(a, b));
}

TEST(Items, AGroupsCopyHasItsOwnMembersAndNoneThatAreGroups)
{
    TestBook book;
    book.AddEntry(L"Ann", L"1", L"a", 3);
    book.AddEntry(L"Bob", L"2", L"b", 5);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {5, 4, 3, 5}, 8);
    book->ResolveMembers(*group);
    PhoneBookGroup copy;
    copy.CopyFrom(*group);
    EXPECT_STREQ(copy.Name(), L"Sales");
    EXPECT_EQ(copy.GetId(), 8u);
    EXPECT_EQ(MemberIdsOf(copy), (std::vector<DWORD>{5, 4, 3, 5}));
    ASSERT_EQ(copy.Members().size(), 3u); // 4 names nobody
    EXPECT_STREQ(copy.Members()[0]->GetName(), L"Bob");
    EXPECT_STREQ(copy.Members()[1]->GetName(), L"Ann");
    EXPECT_STREQ(copy.Members()[2]->GetName(), L"Bob");
    EXPECT_NE(copy.Members()[0], group->Members()[0]);
    EXPECT_NE(group->Members()[0], group->Members()[2]);
}

TEST(Items, MembersAreTheFirstEntriesWithTheirIdsNeverGroups)
{
    TestBook book;
    book.AddGroup(L"Of the same id", {1}, 7);
    book.AddEntry(L"First", L"1", L"", 7);
    book.AddEntry(L"Second", L"2", L"", 7);
    PhoneBookGroup* const group = book.AddGroup(L"Group", {7}, 9);
    book->ResolveMembers(*group);
    ASSERT_EQ(group->Members().size(), 1u);
    EXPECT_STREQ(group->Members()[0]->GetName(), L"First");
}

TEST(Items, MembersThatAreThereAreNotResolvedAgain)
{
    TestBook book;
    book.AddEntry(L"Ann", L"1", L"", 1);
    PhoneBookGroup* const group = book.AddGroup(L"Group", {1}, 9);
    group->AddMember(MakeRecipient({L"Older copy", L"", L""}).release());
    book->ResolveMembers(*group);
    ASSERT_EQ(group->Members().size(), 1u);
    EXPECT_STREQ(group->Members()[0]->GetName(), L"Older copy");
}

TEST(Items, OnlyTheFirstOccurrenceOfAMemberIdIsRemoved)
{
    PhoneBookGroup group;
    for (const DWORD id : {1u, 2u, 1u})
        group.AddMemberId(id);
    EXPECT_TRUE(group.RemoveMemberId(1));
    EXPECT_EQ(MemberIdsOf(group), (std::vector<DWORD>{2, 1}));
    EXPECT_FALSE(group.RemoveMemberId(9));
}

TEST(ItemStore, FreesEveryItemEverMadeAlsoThoseThatTheBookDropped)
{
    const auto session = [] {
        TestBook book;
        for (DWORD i = 0; i < 1000; ++i)
            book.AddEntry(L"A name of some length", L"555-0100", L"A company", i);
        PhoneBookGroup* const group = book.AddGroup(L"Group", {1, 2, 3}, 2000);
        book->ResolveMembers(*group);
        book.store.Discard(book.store.NewEntry());
        book->Delete(0);
        book->RemoveAll();
    };
    session(); // what the runtime allocates once
    const std::size_t before = HeapBytesInUse();
    session();
    EXPECT_LE(HeapBytesInUse(), before + 4096);
}

TEST(ItemStore, ADiscardedItemIsForgottenAndForeignOnesAreLeftAlone)
{
    ItemStore store;
    PhoneBookEntry* const first = store.NewEntry();
    store.NewGroup();
    store.Discard(first);
    store.Discard(nullptr);
    const UniqueItem<PhoneBookEntry> foreign = MakeRecipient({L"Ann", L"", L""});
    store.Discard(foreign.get());
    EXPECT_STREQ(foreign->GetName(), L"Ann");
}

TEST(ItemStore, AnItemThatAReloadHasReplacedIsFreedWithItsLastKeeper)
{
    ItemStore store;
    PhoneBookEntry* const kept = store.NewEntry();
    kept->SetName(std::wstring(100000, L'x').c_str());
    PhoneBookItem* const replaced[] = {store.NewEntry(), kept, store.NewGroup()};
    PhoneBookEntry* const stays = store.NewEntry();
    std::size_t before = 0;
    {
        const KeptItem other(store, stays); // the first, which a reload leaves alone
        const KeptItem keeper(store, kept);
        {
            const KeptItem second(store, kept);
            store.DiscardReplaced(replaced);
            store.DiscardReplaced({&replaced[1], 1}); // by a second reload
        }
        EXPECT_EQ(std::wstring_view(kept->GetName()).size(), 100000u);
        before = HeapBytesInUse();
    }
    EXPECT_LE(HeapBytesInUse() + 2 * 100000, before);
    EXPECT_STREQ(stays->GetName(), L"");
}

TEST(ItemStore, AnItemThatIsTakenBackIsNotFreedWithItsKeeper)
{
    ItemStore store;
    PhoneBookItem* const item = store.NewEntry();
    {
        KeptItem keeper(store, item);
        store.DiscardReplaced({&item, 1});
        keeper.TakenBack();
    }
    EXPECT_STREQ(item->GetName(), L"");
    store.Discard(item);
}

} // namespace
} // namespace qx
