#include "res/fax_job_page_ids.h"
#include "support/resource_count.h"
#include "support/send_fax_session.h"

#include <gtest/gtest.h>
#include <memory>

namespace qx::test {
namespace {

constexpr int kWarmUpSessions = 5;
constexpr int kSessions = 200;

// Proves the counters: a test that cannot see a leak would always pass.
TEST(ResourceCount, SeesEachKindOfLeak)
{
    const ResourceCount before = CountResources();
    const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    void* const block = HeapAlloc(GetProcessHeap(), 0, 1000);
    const ResourceCount meanwhile = CountResources();
    EXPECT_GT(meanwhile.gdiObjects, before.gdiObjects);
    EXPECT_GT(meanwhile.windows, before.windows);
    EXPECT_GT(meanwhile.kernelHandles, before.kernelHandles);
    EXPECT_GT(meanwhile.heapBlocks, before.heapBlocks);
    HeapFree(GetProcessHeap(), 0, block);
    CloseHandle(event);
    DestroyWindow(window);
    DeleteObject(brush);
}

void SendOneFax(SendFaxSession& session)
{
    session.Start();
    host::UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_FAX_NUMBER);
    ui.Paste(IDC_FAX_NUMBER, L"5550100");
    ui.Press(IDC_TO);
    ui.GoToPage(1);
    ui.GoToPage(0);
    EXPECT_EQ(session.Send().Cancelled, 0u);
    QxFaxReleaseJob(&session.Record());
}

TEST(SessionLeaks, TwoHundredSessionsLeaveEverythingWhereItWas)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    for (int i = 0; i < kWarmUpSessions; ++i)
        SendOneFax(session);
    const ResourceCount before = CountResources();
    for (int i = 0; i < kSessions; ++i)
        SendOneFax(session);
    const ResourceCount after = CountResources();

    // Caches of the system may settle by a few; a leak per session would be 200.
    EXPECT_LE(after.gdiObjects, before.gdiObjects + 10);
    EXPECT_LE(after.windows, before.windows + 2);
    EXPECT_LE(after.kernelHandles, before.kernelHandles + 10);
    EXPECT_LE(after.heapBlocks, before.heapBlocks + 100);
    EXPECT_LE(after.heapBytes, before.heapBytes + 20000);
}

} // namespace
} // namespace qx::test
