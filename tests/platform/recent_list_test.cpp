#include "phonebook/recent/recent_list.h"

#include "support/failing_calls.h"
#include "support/phone_book.h"
#include "support/resource_count.h"
#include "support/test_printer.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;
using namespace std::string_literals;
using Names = std::vector<std::wstring>;

class RecentList : public ::testing::Test {
protected:
    RecentList() { list.Open(printer.Handle()); }

    void Use(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company = L"")
    {
        const UniqueItem<PhoneBookEntry> entry = MakeRecipient({name, faxNumber, company});
        EXPECT_EQ(list.AddRecent(entry.get(), &*book), TRUE);
    }

    // Empty slots are "-".
    static Names NamesOf(const RecentRecipientList& shown)
    {
        Names names;
        for (const PhoneBookItem* const item : shown.Slots())
            names.emplace_back(item != nullptr ? item->GetName() : L"-");
        while (!names.empty() && names.back() == L"-")
            names.pop_back();
        return names;
    }

    Names NamesAfterLoad()
    {
        RecentRecipientList loaded;
        loaded.Open(printer.Handle());
        loaded.Load();
        return NamesOf(loaded);
    }

    UniqueKey ListKey() const { return printer.Key(L"QX-FAX\\MRUList"); }
    UniqueKey SlotKey(const std::wstring& slot) const { return printer.Key(L"QX-FAX\\MRUList\\" + slot); }

    TestPrinter printer;
    TestBook book;
    RecentRecipientList list;
};

TEST_F(RecentList, HasTwentySlotsOfWhichTheFirstIsTheLatest)
{
    EXPECT_EQ(list.Slots().size(), 20u);
    Use(L"Ann", L"1");
    Use(L"Bob", L"2");
    EXPECT_EQ(NamesOf(list), (Names{L"Bob", L"Ann"}));
}

TEST_F(RecentList, DropsTheOldestForATwentyFirst)
{
    for (int i = 0; i < 21; ++i)
        Use(std::to_wstring(i).c_str(), L"1");
    const Names names = NamesOf(list);
    ASSERT_EQ(names.size(), 20u);
    EXPECT_EQ(names.front(), L"20");
    EXPECT_EQ(names.back(), L"1");
}

TEST_F(RecentList, MovesTheSameEntryToTheFrontWithItsNewValues)
{
    for (const wchar_t* const name : {L"f", L"e", L"d", L"c", L"b", L"a"})
        Use(name, L"1", L"old");
    Use(L"F", L"1", L"new"); // was in slot 5
    EXPECT_EQ(NamesOf(list), (Names{L"F", L"a", L"b", L"c", L"d", L"e"}));
    EXPECT_STREQ(AsEntry(list.Slots()[0])->Company(), L"new");
}

TEST_F(RecentList, TakesTheIdOfTheLatestUse)
{
    list.AddRecent(book.AddEntry(L"Ann", L"1", L"", 3), &*book);
    list.AddRecent(book.AddEntry(L"ANN", L"1", L"", 4), &*book);
    EXPECT_EQ(NamesOf(list), Names{L"ANN"});
    EXPECT_EQ(list.Slots()[0]->GetId(), 4u);
}

TEST_F(RecentList, MovesAnEmptySlotDownLikeAnyOther)
{
    for (const wchar_t* const slot : {L"0", L"2"}) {
        PutNumber(SlotKey(slot).Get(), L"IsGroup", 0);
        PutText(SlotKey(slot).Get(), L"", L"entry "s + slot, REG_MULTI_SZ);
    }
    PutNumber(ListKey().Get(), L"Count", 3);
    list.Load();
    Use(L"new", L"1");
    EXPECT_EQ(NamesOf(list), (Names{L"new", L"entry 0", L"-", L"entry 2"}));
    Use(L"entry 0", L"");
    EXPECT_EQ(NamesOf(list), (Names{L"entry 0", L"new", L"-", L"entry 2"}));
    Use(L"entry 2", L"");
    EXPECT_EQ(NamesOf(list), (Names{L"entry 2", L"entry 0", L"new"}));
    EXPECT_EQ(list.Slots()[3], nullptr);
}

TEST_F(RecentList, KeepsEntriesOfOneNameApartByNumberAndEntriesApartFromGroups)
{
    PhoneBookGroup* const group = book.AddGroup(L"Ann", {}, 1);
    Use(L"Ann", L"1");
    Use(L"Ann", L"2");
    EXPECT_EQ(list.AddRecent(group, &*book), TRUE);
    EXPECT_EQ(NamesOf(list), (Names{L"Ann", L"Ann", L"Ann"}));
}

TEST_F(RecentList, RefusesWhatHasNoNameAndStaysAsItWas)
{
    Use(L"Ann", L"1");
    const UniqueItem<PhoneBookEntry> nameless = MakeRecipient({L"", L"1", L""});
    PhoneBookGroup* const group = book.AddGroup(L"", {1}, 1);
    PhoneBookEntry* const never = book.AddEntry(nullptr, L"1", L"", 2);
    EXPECT_EQ(list.AddRecent(nameless.get(), &*book), FALSE);
    EXPECT_EQ(list.AddRecent(group, &*book), FALSE);
    EXPECT_EQ(list.AddRecent(never, &*book), FALSE);
    EXPECT_EQ(list.AddRecent(nullptr, &*book), FALSE);
    EXPECT_EQ(list.AddRecent(list.Slots()[0], nullptr), FALSE);
    EXPECT_EQ(NamesOf(list), Names{L"Ann"});
}

TEST_F(RecentList, MayBeGivenItsOwnItem)
{
    Use(L"Ann", L"1");
    Use(L"Bob", L"2");
    EXPECT_EQ(list.AddRecent(list.Slots()[1], &*book), TRUE);
    EXPECT_EQ(NamesOf(list), (Names{L"Ann", L"Bob"}));
}

TEST_F(RecentList, HoldsCopiesThatDoNotChangeWithThePhoneBook)
{
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"", 3);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {3}, 4);
    list.AddRecent(group, &*book);
    ann->SetName(L"changed");
    group->SetName(L"changed");
    const PhoneBookGroup& kept = *AsGroup(list.Slots()[0]);
    EXPECT_STREQ(kept.GetName(), L"Sales");
    ASSERT_EQ(kept.Members().size(), 1u);
    EXPECT_STREQ(kept.Members()[0]->GetName(), L"Ann");
}

TEST_F(RecentList, TakesTheNewMembersOfAGroupThatIsUsedAgain)
{
    book.AddEntry(L"Ann", L"1", L"", 3);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {3}, 4);
    list.AddRecent(group, &*book);
    book.AddEntry(L"Bob", L"2", L"", 5);
    group->AddMemberId(5);
    list.AddRecent(group, &*book);
    EXPECT_EQ(NamesOf(list), Names{L"Sales"});
    EXPECT_EQ(AsGroup(list.Slots()[0])->Members().size(), 2u);
}

// Who shows an item may learn too late, or not at all, that it has dropped out or has been used anew.
TEST_F(RecentList, LeavesItsItemsAsTheyAreAsLongAsItLives)
{
    book.AddEntry(L"Ann", L"1", L"", 3);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {3}, 4);
    list.AddRecent(group, &*book);
    const PhoneBookGroup& shown = *AsGroup(list.Slots()[0]);
    book.AddEntry(L"Bob", L"2", L"", 5);
    group->AddMemberId(5);
    list.AddRecent(group, &*book);
    ASSERT_EQ(shown.Members().size(), 1u);
    EXPECT_STREQ(shown.Members()[0]->GetName(), L"Ann");

    Use(L"Eve", L"3", L"Initech");
    const PhoneBookEntry& eve = *AsEntry(list.Slots()[0]);
    Use(L"EVE", L"3", L"Acme");
    EXPECT_STREQ(eve.Company(), L"Initech");
    for (int i = 0; i < 40; ++i)
        Use(std::to_wstring(i).c_str(), L"1");
    EXPECT_STREQ(eve.GetName(), L"Eve");
    EXPECT_STREQ(eve.FaxNumber(), L"3");
    EXPECT_STREQ(shown.GetName(), L"Sales");
}

TEST_F(RecentList, ReadsBackWhatItSaved)
{
    book.AddEntry(L"Ann", L"1", L"Acme", 3);
    book.AddEntry(L"Bob", L"2", L"", 5);
    list.AddRecent(book.AddGroup(L"Sales", {5, 3}, 4), &*book);
    Use(L"Eve", L"3", L"Initech");
    list.Save();
    RecentRecipientList loaded;
    loaded.Open(printer.Handle());
    loaded.Load();
    EXPECT_EQ(NamesOf(loaded), (Names{L"Eve", L"Sales"}));
    const PhoneBookEntry& eve = *AsEntry(loaded.Slots()[0]);
    EXPECT_STREQ(eve.FaxNumber(), L"3");
    EXPECT_STREQ(eve.Company(), L"Initech");
    const PhoneBookGroup& sales = *AsGroup(loaded.Slots()[1]);
    EXPECT_TRUE(sales.MemberIds().empty()); // the registry keeps no ids
    ASSERT_EQ(sales.Members().size(), 2u);
    EXPECT_STREQ(sales.Members()[0]->GetName(), L"Bob");
    EXPECT_STREQ(AsEntry(sales.Members()[1])->Company(), L"Acme");
}

TEST_F(RecentList, IsStoredAsOtherVersionsReadIt)
{
    book.AddEntry(L"Ann", L"1", L"Acme", 3);
    list.AddRecent(book.AddGroup(L"Sales", {3}, 4), &*book);
    Use(L"Eve", L"3", L"Initech");
    list.Save();
    EXPECT_EQ(GetStored(ListKey().Get(), L"Count"), AsStored(2));
    const auto block = [](const std::wstring& text) {
        return StoredValue{REG_MULTI_SZ, {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)}};
    };
    EXPECT_EQ(GetStored(SlotKey(L"0").Get(), L"IsGroup"), AsStored(0));
    EXPECT_EQ(GetStored(SlotKey(L"0").Get(), L""), block(L"Eve\0"
                                                         L"3\0Initech\0\0"s));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"IsGroup"), AsStored(1));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"Name"), AsStored(L"Sales"));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"MemberCount"), AsStored(1));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"0"), block(L"Ann\0"
                                                          L"1\0Acme\0\0"s));
}

TEST_F(RecentList, LosesTheCompanyOfAnEntryWithoutNumber)
{
    Use(L"Ann", L"", L"Acme");
    list.Save();
    list.Load();
    EXPECT_STREQ(AsEntry(list.Slots()[0])->FaxNumber(), L"");
    EXPECT_STREQ(AsEntry(list.Slots()[0])->Company(), L"");
}

TEST_F(RecentList, LosesAGroupWhoseMembersAreUnknownWithTheNextLoad)
{
    list.AddRecent(book.AddGroup(L"Sales", {99}, 4), &*book);
    Use(L"Ann", L"1");
    list.Save();
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"IsGroup"), AsStored(1));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"Name"), StoredValue());
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"MemberCount"), StoredValue());
    EXPECT_EQ(NamesAfterLoad(), Names{L"Ann"});
}

TEST_F(RecentList, CountsTheSlotsItSavedAndLeavesTheSubkeysOfEmptyOnes)
{
    for (const wchar_t* const name : {L"c", L"b", L"a"})
        Use(name, L"1");
    list.Save();
    PutNumber(SlotKey(L"1").Get(), L"IsGroup", 1); // without members: slot 1 will be empty
    list.Load();
    EXPECT_EQ(NamesOf(list), (Names{L"a", L"-", L"c"}));
    list.Save();
    EXPECT_EQ(GetStored(ListKey().Get(), L"Count"), AsStored(2));
    EXPECT_EQ(GetStored(SlotKey(L"1").Get(), L"IsGroup"), AsStored(1));
    EXPECT_EQ(NamesAfterLoad(), Names{L"a"}); // "c" in subkey 2 lies beyond the count
}

TEST_F(RecentList, SkipsASlotWhoseOldSubkeyCannotBeRemoved)
{
    SlotKey(L"0\\below");
    Use(L"b", L"1");
    Use(L"a", L"1");
    list.Save();
    EXPECT_EQ(GetStored(ListKey().Get(), L"Count"), AsStored(1));
    EXPECT_EQ(GetStored(SlotKey(L"0").Get(), L"IsGroup"), StoredValue());
}

TEST_F(RecentList, IgnoresSubkeysBeyondItsCountAndACountAboveTwenty)
{
    for (int i = 0; i < 25; ++i) {
        PutNumber(SlotKey(std::to_wstring(i)).Get(), L"IsGroup", 0);
        PutText(SlotKey(std::to_wstring(i)).Get(), L"", std::to_wstring(i), REG_MULTI_SZ);
    }
    PutNumber(ListKey().Get(), L"Count", 3);
    EXPECT_EQ(NamesAfterLoad(), (Names{L"0", L"1", L"2"}));
    PutNumber(ListKey().Get(), L"Count", 0xFFFFFFFF);
    EXPECT_EQ(NamesAfterLoad().size(), 20u);
    PutNumber(ListKey().Get(), L"Count", 0);
    EXPECT_TRUE(NamesAfterLoad().empty());
}

TEST_F(RecentList, DropsWhatItCannotReadAndLoadsTheRest)
{
    PutNumber(ListKey().Get(), L"Count", 5);
    SlotKey(L"0");                                 // nothing in it
    PutNumber(SlotKey(L"1").Get(), L"IsGroup", 0); // no entry
    PutNumber(SlotKey(L"2").Get(), L"IsGroup", 1); // no members
    PutText(SlotKey(L"3").Get(), L"IsGroup", L"a text too long for a number");
    PutNumber(SlotKey(L"4").Get(), L"IsGroup", 0);
    PutText(SlotKey(L"4").Get(), L"", L"Ann");
    EXPECT_EQ(NamesAfterLoad(), (Names{L"-", L"-", L"-", L"-", L"Ann"}));
}

TEST_F(RecentList, KeepsAGroupOnlyWhenItsLastMemberCanBeRead)
{
    PutNumber(ListKey().Get(), L"Count", 2);
    for (const wchar_t* const slot : {L"0", L"1"}) {
        const UniqueKey key = SlotKey(slot);
        PutNumber(key.Get(), L"IsGroup", 1);
        PutNumber(key.Get(), L"MemberCount", 3);
        PutText(key.Get(), L"Name", L"Group "s + slot);
        PutText(key.Get(), L"0", L"Ann");
    }
    PutText(SlotKey(L"1").Get(), L"2", L"Bob"); // and no 1, which is skipped
    RecentRecipientList loaded;
    loaded.Open(printer.Handle());
    loaded.Load();
    EXPECT_EQ(NamesOf(loaded), (Names{L"-", L"Group 1"}));
    EXPECT_EQ(AsGroup(loaded.Slots()[1])->Members().size(), 2u);
}

TEST_F(RecentList, TakesNoTimeForAMemberCountThatIsMadeUp)
{
    PutNumber(ListKey().Get(), L"Count", 2);
    for (const wchar_t* const slot : {L"0", L"1"}) {
        PutNumber(SlotKey(slot).Get(), L"IsGroup", 1);
        PutNumber(SlotKey(slot).Get(), L"MemberCount", 0xFFFFFFFF);
        PutText(SlotKey(slot).Get(), L"Name", L"Huge");
        PutText(SlotKey(slot).Get(), L"5", L"Ann");
        PutText(SlotKey(slot).Get(), L"05", L"no index");
        PutText(SlotKey(slot).Get(), L"5000000000000000000000", L"no index");
    }
    PutText(SlotKey(L"1").Get(), L"4294967294", L"Bob");
    RecentRecipientList loaded;
    loaded.Open(printer.Handle());
    loaded.Load();
    EXPECT_EQ(NamesOf(loaded), (Names{L"-", L"Huge"}));
    EXPECT_EQ(AsGroup(loaded.Slots()[1])->Members().size(), 2u);
}

TEST_F(RecentList, ReadsTextsWithoutTerminatorsOfOddSizesAndOfOtherTypes)
{
    struct Row {
        const char* what;
        DWORD type;
        std::string bytes;
        std::wstring name;
    };
    const auto bytesOf = [](const std::wstring& text) {
        return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    };
    const Row rows[] = {
        {"no terminator", REG_MULTI_SZ, bytesOf(L"Ann"), L"Ann"},
        {"one byte too many", REG_MULTI_SZ, bytesOf(L"Ann") + "x", L"Ann"},
        {"nothing", REG_MULTI_SZ, "", L""},
        {"one byte", REG_BINARY, "x", L""},
        {"binary", REG_BINARY,
         bytesOf(L"Ann\0"
                 L"1"s),
         L"Ann"},
        {"a number", REG_DWORD, bytesOf(L"AB"), L"AB"},
        {"a million characters", REG_SZ, bytesOf(std::wstring(1000000, L'x')), std::wstring(1000000, L'x')},
    };
    PutNumber(ListKey().Get(), L"Count", 1);
    for (const Row& row : rows) {
        const UniqueKey key = SlotKey(L"0");
        PutNumber(key.Get(), L"IsGroup", 0);
        PutBytes(key.Get(), L"", row.type, row.bytes.data(), row.bytes.size());
        RecentRecipientList loaded;
        loaded.Open(printer.Handle());
        loaded.Load();
        ASSERT_NE(loaded.Slots()[0], nullptr) << row.what;
        EXPECT_EQ(loaded.Slots()[0]->GetName(), row.name) << row.what;
    }
}

// No name may come back with another's number.
TEST_F(RecentList, HasItsItemsWholeOrNotAtAllWhenAnyCallFails)
{
    Use(L"Ann", L"1");
    const PhoneBookGroup* const group = book.NewGroup(L"Group", 2);
    list.AddRecent(group, &*book);
    const std::vector<Recipient> known{{L"Ann", L"1", L""}, group->Members()[0]->Texts(), group->Members()[1]->Texts()};
    const auto load = [&](const std::string& what) {
        RecentRecipientList loaded;
        loaded.Open(printer.Handle());
        loaded.Load();
        for (const PhoneBookItem* const item : loaded.Slots()) {
            std::vector<const PhoneBookEntry*> entries;
            if (const PhoneBookGroup* const one = AsGroup(item); one != nullptr)
                entries.assign(one->Members().begin(), one->Members().end());
            else if (item != nullptr)
                entries.push_back(AsEntry(item));
            for (const PhoneBookEntry* const entry : entries)
                EXPECT_NE(std::ranges::find(known, entry->Texts()), known.end()) << what;
        }
    };
    const auto save = [&](const std::string&) { list.Save(); };
    WhileEachFails<decltype(RegCreateKeyExW)>("RegCreateKeyExW", ERROR_ACCESS_DENIED, save);
    WhileEachFails<decltype(RegDeleteKeyW)>("RegDeleteKeyW", ERROR_ACCESS_DENIED, save);
    WhileEachFails<decltype(RegSetValueExW)>("RegSetValueExW", ERROR_ACCESS_DENIED, [&](const std::string& what) {
        list.Save();
        load(what);
    });
    WhileEachFails<decltype(RegOpenKeyExW)>("RegOpenKeyExW", ERROR_ACCESS_DENIED, load);
    WhileEachFails<decltype(RegQueryValueExW)>("RegQueryValueExW", ERROR_ACCESS_DENIED, load);
    WhileEachFails<decltype(RegEnumValueW)>("RegEnumValueW", ERROR_ACCESS_DENIED, load);
    EXPECT_EQ(NamesAfterLoad(), (Names{L"Group", L"Ann"}));
}

TEST_F(RecentList, OfAPrinterWithoutSubtreeIsEmptyAndSavesNothing)
{
    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    RecentRecipientList none;
    none.Open(unnamed.Handle());
    none.Load();
    const UniqueItem<PhoneBookEntry> entry = MakeRecipient({L"Ann", L"1", L""});
    EXPECT_EQ(none.AddRecent(entry.get(), &*book), TRUE);
    none.Save();
    EXPECT_EQ(NamesOf(none), Names{L"Ann"});
}

TEST_F(RecentList, LeavesNoHandlesAndNoMemoryBehind)
{
    book.AddEntry(L"Ann", L"1", L"Acme", 3);
    PhoneBookGroup* const group = book.AddGroup(L"Sales", {3}, 4);
    const auto session = [&] {
        RecentRecipientList used;
        used.Open(printer.Handle());
        used.Load();
        used.AddRecent(group, &*book);
        for (int i = 0; i < 30; ++i)
            used.AddRecent(MakeRecipient({std::to_wstring(i), L"1", L""}).get(), &*book);
        used.Save();
    };
    session(); // what the system allocates once
    const std::size_t handle = NextHandle();
    const std::size_t bytes = HeapBytesInUse();
    for (int i = 0; i < 10; ++i)
        session();
    EXPECT_EQ(NextHandle(), handle);
    EXPECT_LT(HeapBytesInUse(), bytes + 2000); // a lost slot would lose 10 entries of 100 bytes and more
}

} // namespace
} // namespace qx
