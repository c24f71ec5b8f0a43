#include "base/apartment.h"

#include "support/failing_calls.h"
#include "support/redirected_import.h"

#include <atomic>
#include <gtest/gtest.h>

namespace qx {
namespace {

std::atomic<int> g_refusals = 0;
test::RedirectedImport<decltype(MsgWaitForMultipleObjectsEx)>* g_wait = nullptr;

DWORD WINAPI RefuseToWait(DWORD count, const HANDLE* handles, DWORD milliseconds, DWORD wakeMask, DWORD flags)
{
    if (g_refusals > 0) {
        --g_refusals;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return WAIT_FAILED;
    }
    return g_wait->Original()(count, handles, milliseconds, wakeMask, flags);
}

// The work refers to what stands on the stack of whoever has it done.
TEST(ApartmentThread, ReturnsFromItsWorkOnlyWhenThatIsDoneAlsoWhenWaitingIsRefused)
{
    for (const int refusals : {1, 1000}) {
        std::atomic<bool> done = false;
        ApartmentThread thread;
        ASSERT_TRUE(thread);
        test::RedirectedImport<decltype(MsgWaitForMultipleObjectsEx)> wait("MsgWaitForMultipleObjectsEx", RefuseToWait);
        g_wait = &wait;
        g_refusals = refusals;
        thread.Run(
            [&] {
                Sleep(200);
                done = true;
            },
            nullptr);
        EXPECT_TRUE(done) << refusals;
        while (!done)
            Sleep(10); // the work ends before what it refers to, whatever Run did
    }
}

test::RedirectedImport<decltype(WaitForSingleObject)>* g_waitForOne = nullptr;

DWORD WINAPI RefuseToWaitForOne(HANDLE handle, DWORD milliseconds)
{
    if (g_refusals > 0) {
        --g_refusals;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return WAIT_FAILED;
    }
    return g_waitForOne->Original()(handle, milliseconds);
}

// The thread begins with what stands on the stack of whoever starts it.
TEST(ApartmentThread, IsStartedOnlyWhenItHasBegunAlsoWhenWaitingIsRefused)
{
    test::RedirectedImport<decltype(WaitForSingleObject)> wait("WaitForSingleObject", RefuseToWaitForOne);
    g_waitForOne = &wait;
    for (const int refusals : {1, 1000000}) {
        g_refusals = refusals;
        const ApartmentThread thread;
        EXPECT_TRUE(thread) << refusals;
    }
    {
        // Nor by the other way of waiting.
        test::FailingCalls<decltype(WaitForMultipleObjects), struct OtherWaits> waits(nullptr, "WaitForMultipleObjects",
                                                                                      WAIT_FAILED);
        waits.FailOnly(1);
        g_refusals = 1000000;
        const ApartmentThread thread;
        EXPECT_TRUE(thread);
        EXPECT_TRUE(waits.HasFailed());
    }
    g_refusals = 0;
}

template <class Function, class Failure> bool StartsWithout(const char* function, Failure failure)
{
    test::FailingCalls<Function, struct CallsOfStart> calls(nullptr, function, failure);
    calls.FailOnly(1);
    const ApartmentThread thread;
    EXPECT_TRUE(calls.HasFailed()) << function;
    return static_cast<bool>(thread);
}

TEST(ApartmentThread, IsWaitedForUntilItHasEndedAndNoLonger)
{
    test::FailingCalls<decltype(MsgWaitForMultipleObjects), struct WaitCalls> waits(
        nullptr, "MsgWaitForMultipleObjects", WAIT_FAILED);
    waits.FailNone();
    {
        const ApartmentThread thread;
        ASSERT_TRUE(thread);
    }
    EXPECT_GE(waits.Count(), 1);
    EXPECT_LE(waits.Count(), 100); // once more for each message that comes meanwhile
}

TEST(ApartmentThread, IsNoneWhenItCannotHaveWhatItNeeds)
{
    EXPECT_FALSE(StartsWithout<decltype(CreateEventW)>("CreateEventW", nullptr));
    EXPECT_FALSE(StartsWithout<decltype(CreateThread)>("CreateThread", nullptr));
    EXPECT_FALSE(StartsWithout<decltype(CreateWindowExW)>("CreateWindowExW", nullptr));
    EXPECT_FALSE(StartsWithout<decltype(SetWindowLongPtrW)>("SetWindowLongPtrW", 0));
}

TEST(ApartmentThread, RunsNothingThatItCannotBeTold)
{
    bool ran = false;
    ApartmentThread thread;
    ASSERT_TRUE(thread);
    {
        test::FailingCalls<decltype(PostMessageW), struct Posts> posts(nullptr, "PostMessageW", FALSE);
        posts.FailFrom(1);
        thread.Run([&] { ran = true; }, nullptr);
    }
    {
        test::FailingCalls<decltype(CreateEventW), struct Events> events(nullptr, "CreateEventW", nullptr);
        events.FailFrom(1);
        thread.Run([&] { ran = true; }, nullptr);
    }
    EXPECT_FALSE(ran);
}

} // namespace
} // namespace qx
