#include "res/fax_job_page_ids.h"
#include "support/bare_sheet.h"
#include "support/own_blocks.h"
#include "support/resource_count.h"
#include "support/send_fax_session.h"
#include "support/thorough.h"

#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <windows.h>

namespace qx::test {
namespace {

// Until Wine's cache of device contexts is full.
constexpr int kFirstSheets = 70;
constexpr int kFirstSessions = 170;
const int kSessions = Rounds(60, 1000);

// Proves the counters: a test that cannot see a leak would always pass.
TEST(ResourceCount, SeesEachKindOfLeak)
{
    const HICON shared = LoadIconW(nullptr, IDI_APPLICATION);
    const ResourceCount before = CountResources();
    const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const HMENU menu = CreateMenu();
    const HICON icon = CopyIcon(shared);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    constexpr std::size_t kRegion = 1 << 20;
    void* const region = VirtualAlloc(nullptr, kRegion, MEM_COMMIT, PAGE_READWRITE);
    const OwnBlocks own{GetModuleHandleW(nullptr)};
    void* const block = HeapAlloc(GetProcessHeap(), 0, 1000);
    const std::string text(1000, 'x');
    EXPECT_EQ(own.Held(), 2);
    const ResourceCount meanwhile = CountResources();
    EXPECT_GT(meanwhile.gdiObjects, before.gdiObjects);
    EXPECT_GT(meanwhile.windows, before.windows);
    EXPECT_EQ(meanwhile.menusAndIcons, before.menusAndIcons + 2);
    EXPECT_GT(meanwhile.kernelHandles, before.kernelHandles);
    EXPECT_GT(meanwhile.heapBlocks, before.heapBlocks);
    EXPECT_GE(meanwhile.privateBytes, before.privateBytes + kRegion);
    HeapFree(GetProcessHeap(), 0, block);
    VirtualFree(region, 0, MEM_RELEASE);
    CloseHandle(event);
    DestroyIcon(icon);
    DestroyMenu(menu);
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

// Of kSessions rounds, after some to warm up.
template <class Round> ResourceCount GrowthAfter(const char* what, int first, Round round)
{
    for (int i = 0; i < first; ++i)
        round();
    const ResourceCount before = CountResources();
    for (int i = 0; i < kSessions; ++i)
        round();
    const ResourceCount grown = Growth(before, CountResources());
    std::cout << kSessions << ' ' << what << ": " << grown << '\n';
    return grown;
}

TEST(SessionLeaks, ManySessionsLeaveEverythingWhereItWas)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    const ResourceCount bare = GrowthAfter("bare sheets", kFirstSheets, ShowBareSheet);
    const OwnBlocks own{session.Module(), GetModuleHandleW(nullptr)}; // the driver gives back what is in the record
    const ResourceCount grown = GrowthAfter("sessions", kFirstSessions, [&] { SendOneFax(session); });

    // Caches of the system may settle by a few; a leak per session would be kSessions.
    EXPECT_LE(grown.gdiObjects, bare.gdiObjects + 20);
    EXPECT_LE(grown.windows, bare.windows + 2);
    EXPECT_LE(grown.menusAndIcons, bare.menusAndIcons + 2);
    EXPECT_LE(grown.kernelHandles, bare.kernelHandles + 10);
    EXPECT_NEAR(own.Held(), 0, 20);
    const std::size_t spread = WalkSeesEveryBlock() ? 1 : 2;
    const auto sessions = static_cast<std::size_t>(kSessions);
    EXPECT_LE(grown.heapBlocks, spread * bare.heapBlocks + sessions / 2);
    EXPECT_LE(grown.heapBytes, spread * bare.heapBytes + sessions * 100);
    // The heap grows by steps of a megabyte or more.
    EXPECT_LE(grown.privateBytes, spread * bare.privateBytes + (4u << 20));
}

} // namespace
} // namespace qx::test
