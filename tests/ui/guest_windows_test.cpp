// The windows that a session shows beside those of its printing program, and of other programs.
#include "phonebook/ui/phone_book_changed.h"
#include "res/add_recipients_ids.h"
#include "res/fax_job_page_ids.h"
#include "support/foreign_procedure.h"
#include "support/patched_function.h"
#include "support/send_fax_session.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <mutex>

namespace qx::test {
namespace {

TEST(GuestWindows, AProcedureThatTheProgramPutsOverTheSheetsStays)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    const HWND sheet = session.Ui().Dialog();
    session.Ui().Do([sheet] { ForeignProcedure::PutOver(sheet); });
    session.Cancel();
    EXPECT_FALSE(IsWindow(sheet));
    EXPECT_EQ(ForeignProcedure::LastSeen(), static_cast<UINT>(WM_NCDESTROY)); // to the very end
    EXPECT_EQ(ForeignProcedure::TimesSeen(WM_DESTROY), 1);
}

// A program that unhooks puts back what it once saw below, and may take our procedure away with its own.
TEST(GuestWindows, AProgramThatTakesTheSheetsProcedureAwayDoesNotEndTheNextSession)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    const HWND sheet = session.Ui().Dialog();
    session.Ui().Do([sheet] {
        const auto ofTheClass = static_cast<LONG_PTR>(GetClassLongPtrW(sheet, GCLP_WNDPROC));
        ASSERT_NE(SetWindowLongPtrW(sheet, GWLP_WNDPROC, ofTheClass), ofTheClass);
    });
    session.Cancel();
    session.Start(); // on the same thread, and thus with everything in the same places
    session.Ui().Type(IDC_FAX_NUMBER, L"5550100");
    EXPECT_EQ(session.Send().Cancelled, 0u);
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"", L"5550100", L""}}));
}

HWND g_sheet = nullptr;
LONG_PTR g_lastProcedure = 0;

LRESULT CALLBACK NoteLastProcedure(int code, WPARAM w, LPARAM l)
{
    const auto& message = *reinterpret_cast<const CWPSTRUCT*>(l);
    if (code == HC_ACTION && message.hwnd == g_sheet && message.message == WM_NCDESTROY)
        g_lastProcedure = GetWindowLongPtrW(g_sheet, GWLP_WNDPROC);
    return CallNextHookEx(nullptr, code, w, l);
}

// With the last one a dialog frees what it holds.
TEST(GuestWindows, TheSheetsLastMessagesAreTheDialogsOwn)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    g_sheet = session.Ui().Dialog();
    session.Ui().Do([] { SetWindowsHookExW(WH_CALLWNDPROC, NoteLastProcedure, nullptr, GetCurrentThreadId()); });
    const auto ofTheClass = static_cast<LONG_PTR>(GetClassLongPtrW(g_sheet, GCLP_WNDPROC));
    session.Cancel();
    EXPECT_EQ(g_lastProcedure, ofTheClass);
}

// ---- messages from less privileged programs

struct Allowed {
    HWND window;
    UINT message;
    DWORD action;
};
std::mutex g_allowedMutex;
std::vector<Allowed> g_allowed;

BOOL WINAPI RecordFilter(HWND window, UINT message, DWORD action, void*)
{
    const std::scoped_lock lock(g_allowedMutex);
    g_allowed.push_back({window, message, action});
    return TRUE;
}

bool HearsOfThePhoneBook(HWND window)
{
    constexpr DWORD kAllow = 1; // MSGFLT_ALLOW
    const std::scoped_lock lock(g_allowedMutex);
    return std::ranges::any_of(g_allowed, [&](const Allowed& allowed) {
        return allowed.window == window && allowed.message == PhoneBookChangedMessage() && allowed.action == kAllow;
    });
}

TEST(GuestOfAnElevatedProgram, EveryWindowWithAPhoneBookHearsOfItsChange)
{
    g_allowed.clear();
    const PatchedFunction filter(L"user32.dll", "ChangeWindowMessageFilterEx", RecordFilter);
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    host::UiDriver& ui = session.Ui();
    const auto expectHears = [&](const char* what) { EXPECT_TRUE(HearsOfThePhoneBook(ui.Dialog())) << what; };
    expectHears("the sheet");
    ui.Press(IDC_PHONE_BOOK);
    expectHears("Add Recipients From Phone Book");
    ui.Press(IDC_PICK_EDIT_BOOK);
    expectHears("Edit Phone Book");
}

} // namespace
} // namespace qx::test
