#include "phonebook/ui/recipient_picks.h"

#include "record/fax_job_data.h"
#include "support/failing_calls.h"
#include "support/phone_book.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;
using Entries = std::vector<const PhoneBookEntry*>;
using Items = std::vector<PhoneBookItem*>;

class RecipientPicksTest : public ::testing::Test {
protected:
    TestBook book;
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"", 1);
    PhoneBookEntry* const bob = book.AddEntry(L"Bob", L"2", L"", 2);
    PhoneBookGroup* const both = book.AddGroup(L"Both", {2, 1}, 3);
    // Six members, of whom the book has two.
    PhoneBookGroup* const six = book.AddGroup(L"Six", {1, 2, 91, 92, 93, 94}, 4);

    RecipientPicks Pick(const Items& items, std::size_t alreadyChosen = 0)
    {
        return PickRecipients(items, alreadyChosen, *book);
    }
};

TEST_F(RecipientPicksTest, GroupGivesItsMembersInItsOwnOrderAndIsRememberedItself)
{
    const RecipientPicks picks = Pick({both});
    EXPECT_EQ(picks.entries, (Entries{bob, ann}));
    EXPECT_EQ(picks.used, (std::vector<const PhoneBookItem*>{both}));
    EXPECT_FALSE(picks.tooMany);
}

TEST_F(RecipientPicksTest, GroupAndItsMemberTogetherGiveTheMemberTwice)
{
    EXPECT_EQ(Pick({ann, both}).entries, (Entries{ann, bob, ann}));
}

TEST_F(RecipientPicksTest, MembersThatLeftTheBookAreSkippedInSilence)
{
    const RecipientPicks picks = Pick({six});
    EXPECT_EQ(picks.entries, (Entries{ann, bob}));
    EXPECT_FALSE(picks.tooMany);
}

TEST_F(RecipientPicksTest, HundredthRecipientIsTakenAndTheNextRefused)
{
    const RecipientPicks picks = Pick({ann, bob}, 99);
    EXPECT_EQ(picks.entries, Entries{ann});
    EXPECT_EQ(picks.used, (std::vector<const PhoneBookItem*>{ann}));
    EXPECT_TRUE(picks.tooMany);
}

TEST_F(RecipientPicksTest, GroupThatWouldPassTheLimitIsRefusedWholeEvenIfMembersAreGone)
{
    const RecipientPicks picks = Pick({six}, 95);
    EXPECT_TRUE(picks.entries.empty());
    EXPECT_TRUE(picks.used.empty());
    EXPECT_TRUE(picks.tooMany);
    EXPECT_FALSE(Pick({six}, 94).tooMany);
}

TEST_F(RecipientPicksTest, NothingBehindARefusedItemIsTaken)
{
    EXPECT_EQ(Pick({ann, six, bob}, 95).entries, Entries{ann});
}

TEST_F(RecipientPicksTest, MissingMembersOfAnEarlierGroupLeaveRoom)
{
    // Six ids were counted against the limit, but only two entries came.
    EXPECT_EQ(Pick({six, ann, bob}, 94).entries, (Entries{ann, bob, ann, bob}));
}

TEST_F(RecipientPicksTest, MemberIdFindsAnEntryBesideAGroupWithTheSameId)
{
    book.AddGroup(L"Twin", {1}, 7);
    PhoneBookEntry* const twin = book.AddEntry(L"Twin entry", L"7", L"", 7);
    PhoneBookGroup* const group = book.AddGroup(L"Of the twin", {7}, 8);
    EXPECT_EQ(Pick({group}).entries, Entries{twin});
}

class ReplaceRecipientsTest : public RecipientPicksTest {
protected:
    OwnedFaxJobData owned;
    FaxJobData& job = owned.Get();

    ReplaceRecipientsTest() { MakeRoomForRecipients(job); }

    FaxRecipient* Give(const wchar_t* name)
    {
        FaxRecipient* const recipient = AsRecipient(MakeRecipient({name, L"5", L"C"}, 42).release());
        AddRecipient(job, recipient);
        return recipient;
    }
    std::vector<std::wstring> Names() const
    {
        std::vector<std::wstring> names;
        for (const FaxRecipient* const recipient : RecipientsOf(job))
            names.emplace_back(recipient->Name);
        return names;
    }
};

TEST_F(ReplaceRecipientsTest, RecordGetsCopiesOfThePhoneBooksEntries)
{
    ReplaceRecipients(job, Entries{ann, bob, ann});
    EXPECT_EQ(Names(), (std::vector<std::wstring>{L"Ann", L"Bob", L"Ann"}));
    EXPECT_EQ(job.RecipientCount, 3);
    for (const FaxRecipient* const recipient : RecipientsOf(job)) {
        EXPECT_NE(AsEntry(recipient), ann);
        EXPECT_NE(AsEntry(recipient), bob);
    }
    EXPECT_NE(RecipientsOf(job)[0], RecipientsOf(job)[2]); // the driver frees each of them
    EXPECT_STREQ(RecipientsOf(job)[1]->FaxNumber, L"2");
    EXPECT_EQ(RecipientsOf(job)[1]->Id, 2u);
}

TEST_F(ReplaceRecipientsTest, RecipientsThatStayAreTheSameObjects)
{
    FaxRecipient* const first = Give(L"First");
    Give(L"Second");
    FaxRecipient* const third = Give(L"Third");
    ReplaceRecipients(job, Entries{AsEntry(third), ann, AsEntry(first)});
    EXPECT_EQ(Names(), (std::vector<std::wstring>{L"Third", L"Ann", L"First"}));
    EXPECT_EQ(RecipientsOf(job)[0], third);
    EXPECT_EQ(RecipientsOf(job)[2], first);
}

TEST_F(ReplaceRecipientsTest, OwnRecipientChosenTwiceIsOwnedOnceAndCopiedOnce)
{
    FaxRecipient* const own = Give(L"Own");
    ReplaceRecipients(job, Entries{AsEntry(own), AsEntry(own)});
    ASSERT_EQ(Names(), (std::vector<std::wstring>{L"Own", L"Own"}));
    EXPECT_NE(RecipientsOf(job)[0], RecipientsOf(job)[1]);
}

TEST_F(ReplaceRecipientsTest, NobodyChosenLeavesACountOfZero)
{
    Give(L"First");
    ReplaceRecipients(job, {});
    EXPECT_EQ(job.Recipients.Count, 0);
    EXPECT_EQ(job.RecipientCount, 0);
    EXPECT_EQ(job.Recipients.Capacity, 10);
}

// Whoever is picked and not sent to would be told nothing: all of them or, with the picker still open, nobody.
TEST_F(ReplaceRecipientsTest, ShortMemoryLeavesTheRecordAsItWas)
{
    FaxRecipient* const first = Give(L"First");
    Entries chosen(12, ann); // more than the first room
    chosen.push_back(AsEntry(Give(L"Second")));
    FailingCalls<decltype(HeapAlloc), struct BlocksOfPicks> blocks(nullptr, "HeapAlloc", nullptr);
    for (long call = 1;; ++call) {
        blocks.FailOnly(call);
        try {
            ReplaceRecipients(job, chosen);
        } catch (const std::bad_alloc&) {
        }
        if (!blocks.HasFailed())
            break;
        ASSERT_EQ(Names(), (std::vector<std::wstring>{L"First", L"Second"})) << call;
        ASSERT_EQ(RecipientsOf(job)[0], first) << call;
        ASSERT_EQ(job.RecipientCount, 2) << call;
    }
    EXPECT_GT(blocks.Count(), 12); // each copy is in blocks of its own
    EXPECT_EQ(job.RecipientCount, 13);
}

TEST_F(ReplaceRecipientsTest, HundredRecipientsOutgrowTheFirstRoom)
{
    ReplaceRecipients(job, Entries(100, ann));
    EXPECT_EQ(job.RecipientCount, 100);
    EXPECT_STREQ(RecipientsOf(job)[99]->Name, L"Ann");
}

} // namespace
} // namespace qx
