#include "base/activation_context.h"
#include "res/fax_job_page_ids.h"
#include "support/own_blocks.h"
#include "support/resource_count.h"
#include "support/send_fax_session.h"
#include "support/thorough.h"

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <prsht.h>
#include <string>
#include <vector>

namespace qx::test {
namespace {

// Until Wine's cache of device contexts is full.
constexpr int kFirstSheets = 70;
constexpr int kFirstSessions = 170;
const int kSessions = Rounds(60, 200);

// Proves the counters: a test that cannot see a leak would always pass.
TEST(ResourceCount, SeesEachKindOfLeak)
{
    const ResourceCount before = CountResources();
    const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const OwnBlocks own{GetModuleHandleW(nullptr)};
    void* const block = HeapAlloc(GetProcessHeap(), 0, 1000);
    const std::string text(1000, 'x');
    EXPECT_EQ(own.Held(), 2);
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

constexpr UINT kUseBareSheet = WM_APP; // posted to the first page of a bare sheet once it is shown

// What a fax job's user sees, drawn now: in a quick session the sheet would be gone before its turn to be drawn.
void Draw(HWND sheet)
{
    RedrawWindow(sheet, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void FillBarePage(HWND page)
{
    wchar_t text[] = L"5550100";
    const HWND list = GetDlgItem(page, IDC_RECIPIENTS);
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH | LVCF_TEXT;
    column.cx = 112;
    column.pszText = text;
    for (int i = 0; i < 3; ++i)
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    LVITEMW row{};
    row.mask = LVIF_TEXT;
    row.pszText = text;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row));
    SendDlgItemMessageW(page, IDC_NAME_BOX, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    SetDlgItemTextW(page, IDC_FAX_NUMBER, text);
}

INT_PTR CALLBACK BarePage(HWND page, UINT message, WPARAM, LPARAM l)
{
    const HWND sheet = GetParent(page);
    switch (message) {
    case WM_INITDIALOG:
        if (GetDlgItem(page, IDC_RECIPIENTS) != nullptr) {
            FillBarePage(page);
            PostMessageW(page, kUseBareSheet, 0, 0);
        }
        return TRUE;
    case kUseBareSheet:
        for (const WPARAM shown : {0u, 1u, 0u}) {
            SendMessageW(sheet, PSM_SETCURSEL, shown, 0);
            Draw(sheet);
        }
        SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
        return TRUE;
    case WM_NOTIFY:
        SetWindowLongPtrW(page, DWLP_MSGRESULT, 0);
        return reinterpret_cast<const NMHDR*>(l)->code == static_cast<UINT>(PSN_APPLY);
    default:
        return FALSE;
    }
}

// The system's own share: a modal property sheet of the module's two templates, used and drawn as in a session, with
// nothing of the module in it. Wine's version-6 controls lose 17 blocks with every one.
void ShowBareSheet()
{
    const ActivationScope context;
    PROPSHEETPAGEW pages[2]{};
    for (int i = 0; i < 2; ++i) {
        pages[i].dwSize = sizeof pages[i];
        pages[i].dwFlags = PSP_PREMATURE;
        pages[i].hInstance = GetModuleHandleW(nullptr);
        pages[i].pszTemplate = MAKEINTRESOURCEW(IDD_FAX_JOB_PAGE + i);
        pages[i].pfnDlgProc = BarePage;
    }
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_RTLREADING;
    header.hInstance = GetModuleHandleW(nullptr);
    header.pszCaption = L"bare";
    header.nPages = 2;
    header.ppsp = pages;
    ASSERT_GT(PropertySheetW(&header), 0);
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
template <class Round> ResourceCount GrowthAfter(int first, Round round)
{
    for (int i = 0; i < first; ++i)
        round();
    const ResourceCount before = CountResources();
    for (int i = 0; i < kSessions; ++i)
        round();
    const ResourceCount after = CountResources();
    const auto grown = [](std::size_t from, std::size_t to) { return to > from ? to - from : 0; };
    return {grown(before.gdiObjects, after.gdiObjects), grown(before.windows, after.windows),
            grown(before.kernelHandles, after.kernelHandles), grown(before.heapBlocks, after.heapBlocks),
            grown(before.heapBytes, after.heapBytes)};
}

// Later heaps hand out small blocks from groups, and a walk over the heap sees the group: what the system loses with a
// sheet then counts by how many groups it is spread over, which the blocks of others in between decide.
bool WalkSeesEveryBlock()
{
    constexpr std::size_t kBlocks = 1000;
    const std::size_t before = CountResources().heapBlocks;
    std::vector<void*> blocks(kBlocks);
    for (void*& block : blocks)
        block = HeapAlloc(GetProcessHeap(), 0, 30);
    const std::size_t after = CountResources().heapBlocks;
    for (void* const block : blocks)
        HeapFree(GetProcessHeap(), 0, block);
    return after >= before + kBlocks;
}

TEST(SessionLeaks, ManySessionsLeaveEverythingWhereItWas)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    const ResourceCount bare = GrowthAfter(kFirstSheets, ShowBareSheet);
    const OwnBlocks own{session.Module(), GetModuleHandleW(nullptr)}; // the driver gives back what is in the record
    const ResourceCount grown = GrowthAfter(kFirstSessions, [&] { SendOneFax(session); });

    // Caches of the system may settle by a few; a leak per session would be kSessions.
    EXPECT_LE(grown.gdiObjects, bare.gdiObjects + 20);
    EXPECT_LE(grown.windows, bare.windows + 2);
    EXPECT_LE(grown.kernelHandles, bare.kernelHandles + 10);
    EXPECT_NEAR(own.Held(), 0, 20);
    const std::size_t spread = WalkSeesEveryBlock() ? 1 : 2;
    const auto sessions = static_cast<std::size_t>(kSessions);
    EXPECT_LE(grown.heapBlocks, spread * bare.heapBlocks + sessions / 2);
    EXPECT_LE(grown.heapBytes, spread * bare.heapBytes + sessions * 100);
}

} // namespace
} // namespace qx::test
