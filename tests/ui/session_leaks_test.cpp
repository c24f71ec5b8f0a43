#include "base/activation_context.h"
#include "res/fax_job_page_ids.h"
#include "support/resource_count.h"
#include "support/send_fax_session.h"

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <prsht.h>

namespace qx::test {
namespace {

constexpr int kWarmUpSessions = 170; // until Wine's cache of device contexts is full
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

INT_PTR CALLBACK IdlePage(HWND, UINT message, WPARAM, LPARAM) { return message == WM_INITDIALOG; }

// The system's own share: a property sheet of the module's two templates, with nothing of the module in it. Wine's
// version-6 controls lose some blocks with every page.
void ShowBareSheet()
{
    const ActivationScope context;
    PROPSHEETPAGEW pages[2]{};
    for (int i = 0; i < 2; ++i) {
        pages[i].dwSize = sizeof pages[i];
        pages[i].hInstance = GetModuleHandleW(nullptr);
        pages[i].pszTemplate = MAKEINTRESOURCEW(IDD_FAX_JOB_PAGE + i);
        pages[i].pfnDlgProc = IdlePage;
    }
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_RTLREADING | PSH_MODELESS;
    header.hInstance = GetModuleHandleW(nullptr);
    header.pszCaption = L"bare";
    header.nPages = 2;
    header.ppsp = pages;
    const auto sheet = reinterpret_cast<HWND>(PropertySheetW(&header));
    ASSERT_TRUE(IsWindow(sheet));
    SendMessageW(sheet, PSM_SETCURSEL, 1, 0);
    SendMessageW(sheet, PSM_SETCURSEL, 0, 0);
    DestroyWindow(sheet);
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

template <class Round> ResourceCount GrowthOver(int rounds, Round round)
{
    for (int i = 0; i < kWarmUpSessions; ++i)
        round();
    const ResourceCount before = CountResources();
    for (int i = 0; i < rounds; ++i)
        round();
    const ResourceCount after = CountResources();
    const auto grown = [](std::size_t from, std::size_t to) { return to > from ? to - from : 0; };
    return {grown(before.gdiObjects, after.gdiObjects), grown(before.windows, after.windows),
            grown(before.kernelHandles, after.kernelHandles), grown(before.heapBlocks, after.heapBlocks),
            grown(before.heapBytes, after.heapBytes)};
}

TEST(SessionLeaks, TwoHundredSessionsLeaveEverythingWhereItWas)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    const ResourceCount bare = GrowthOver(kSessions, ShowBareSheet);
    const ResourceCount grown = GrowthOver(kSessions, [&] { SendOneFax(session); });

    // Caches of the system may settle by a few; a leak per session would be 200.
    EXPECT_LE(grown.gdiObjects, bare.gdiObjects + 20);
    EXPECT_LE(grown.windows, bare.windows + 2);
    EXPECT_LE(grown.kernelHandles, bare.kernelHandles + 10);
    EXPECT_LE(grown.heapBlocks, bare.heapBlocks + 100);
    EXPECT_LE(grown.heapBytes, bare.heapBytes + 20000);
}

} // namespace
} // namespace qx::test
