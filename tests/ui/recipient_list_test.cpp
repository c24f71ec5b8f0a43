// The recipients of a job and their rows, on a bare list view.
#include "pages/recipient_list.h"

#include "base/activation_context.h"
#include "dialog/list_view.h"
#include "support/failing_calls.h"
#include "support/recipients.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

using FailingMessages = FailingCalls<decltype(SendMessageW), struct MessagesToLists>;

class RecipientListTest : public ::testing::Test {
protected:
    RecipientListTest()
    {
        MakeRoomForRecipients(job.Get());
        recipients.Attach(TextOwner(), list, job.Get());
    }
    ~RecipientListTest() override { DestroyWindow(list); }

    void Put(const wchar_t* name) { AddRecipient(job.Get(), AsRecipient(MakeRecipient({name, L"1", L""}).release())); }

    ActivationScope context;
    OwnedFaxJobData job;
    HWND list = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_POPUP | LVS_REPORT, 0, 0, 300, 200, nullptr, nullptr, nullptr,
                                nullptr);
    RecipientList recipients;
};

// Ann's row would pass for Bob's otherwise.
TEST_F(RecipientListTest, RowsThatAListKeepsAreNotTakenForThoseOfOthers)
{
    Put(L"Ann");
    recipients.Refill();
    ASSERT_TRUE(recipients.ShowsJob());
    DeleteRecipient(job.Get(), 0);
    Put(L"Bob");
    {
        FailingMessages messages(nullptr, "SendMessageW", 0, 0, [](HWND, UINT message, WPARAM, LPARAM) {
            return message == LVM_DELETEALLITEMS || message == LVM_INSERTITEMW;
        });
        messages.FailFrom(1);
        recipients.Refill();
        EXPECT_FALSE(recipients.ShowsJob());
    }
    EXPECT_FALSE(recipients.ShowsJob()); // the user has not seen them yet
    EXPECT_TRUE(recipients.ShowsJob());
    EXPECT_EQ(NamesIn(list), std::vector<std::wstring>{L"Bob"});
}

} // namespace
} // namespace qx
