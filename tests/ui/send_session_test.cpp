#include "base/unique.h"
#include "record/fax_job_data.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/patched_function.h"
#include "support/redirected_import.h"
#include "support/send_fax_session.h"

#include <algorithm>
#include <atomic>
#include <commctrl.h>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <prsht.h>
#include <thread>
#include <vector>
#include <windows.h>
#include <winspool.h>

namespace qx::test {
namespace {

using host::BoxContents;

const wchar_t* const kTexts[] = {
    // The texts of the driver's table that the built-in library has, in the order in which they are handed over.
    L"From:",  L"Name:", L"Company Name:", L"Voice Phone Number:",
    L"To:",    L"Name:", L"Company Name:", L"Subject:",
    L"Notes:", L"Date:", L"Time:",         L"Pages:"};

SendFaxSession& OnFaxJobPage(SendFaxSession& session)
{
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    session.Ui().WaitForControl(IDC_FAX_NUMBER);
    return session;
}

// Where the Setup page is created up front it has written the caption already, with a blank behind it.
std::wstring SendCaption(host::UiDriver& ui)
{
    std::wstring caption = ui.Text(IDOK);
    if (caption.ends_with(L' '))
        caption.pop_back();
    return caption;
}

TEST(SendSession, WhatIsTypedComesOutAsTyped)
{
    SendFaxSession session(WithDevice(L"FAX_BILLING_CODE_ENABLED", 1u));
    host::UiDriver& ui = OnFaxJobPage(session).Ui();
    ui.Type(IDC_NAME_BOX, L"Ann Lee");
    ui.Type(IDC_FAX_NUMBER, L"(030)1234-5678,,#9");
    ui.Type(IDC_COMPANY, L"\u00c4rzte & S\u00f6hne");
    ui.Press(IDC_TO);
    ui.Type(IDC_NAME_BOX, L"Bob");
    ui.Type(IDC_FAX_NUMBER, L"5550101");
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"line 1\r\nline 2");
    ui.Type(IDC_SUBJECT, L"Offer 7");
    ui.Type(IDC_BILLING_CODE, L"0042");
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_EQ(session.Recipients(),
              (std::vector<Recipient>{{L"Ann Lee", L"(030)1234-5678,,#9", L"\u00c4rzte & S\u00f6hne"},
                                      {L"Bob", L"5550101", L""}}));
    EXPECT_NE(job.AddCoverPage, 0u);
    EXPECT_STREQ(job.CoverPageNotes, L"line 1\r\nline 2");
    EXPECT_STREQ(job.CoverPageSubject, L"Offer 7");
    EXPECT_STREQ(job.BillingCode, L"0042");
}

// As programs do that help the user to press buttons.
TEST(SendSession, OtherProgramsMayPressSendInTheirWays)
{
    const struct {
        UINT message;
        WPARAM button;
    } ways[] = {{PSM_PRESSBUTTON, PSBTN_OK}, {PSM_PRESSBUTTON, PSBTN_APPLYNOW}, {PSM_APPLY, 0}};
    SendFaxSession session;
    host::UiDriver& ui = OnFaxJobPage(session).Ui();
    const HWND sheet = ui.Dialog();
    for (const auto& way : ways) {
        PostMessageW(sheet, way.message, way.button, 0);
        EXPECT_EQ(ui.AnswerBox(IDOK), ErrorBox(L"At least one fax number is required.")) << way.message;
    }
    ui.Type(IDC_FAX_NUMBER, L"5550101");
    PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    EXPECT_EQ(session.End().Cancelled, 0u);
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"", L"5550101", L""}}));
}

TEST(SendSession, CancelMarksTheJobCancelled)
{
    SendFaxSession session;
    OnFaxJobPage(session);
    session.Record().Cancelled = 7;
    EXPECT_EQ(session.Cancel().Cancelled, 1u);
}

TEST(SendSession, ANullPrinterLeavesTheRecordUntouchedAndShowsNothing)
{
    const SendFaxSession session; // puts the module there
    const host::FaxModule module(host::DriverFolder() / L"qxfaxui.dll");
    FaxJobData record;
    std::memset(&record, 0xA5, sizeof record);
    FaxJobData before = record;
    module.DisplayFaxUi(nullptr, record);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);
}

TEST(SendSession, WithoutARecordNothingIsShown)
{
    const SendFaxSession session;
    const host::FaxModule module(host::DriverFolder() / L"qxfaxui.dll");
    using Display = void WINAPI(HANDLE, FaxJobData*);
    const auto display =
        reinterpret_cast<Display*>(reinterpret_cast<void*>(GetProcAddress(module.Handle(), "DisplayFaxUI")));
    display(session.PrinterHandle(), nullptr);
}

// The sheet takes its place from the program's window, and its size from its pages.
TEST(SendSession, TheSheetOfAProgramAtTheEdgeOfTheScreenIsWhole)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start([&session] {
        RECT screen{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
        const HWND owner = CreateWindowExW(0, L"Static", L"", WS_POPUP | WS_VISIBLE, screen.right - 90,
                                           screen.bottom - 90, 80, 80, nullptr, nullptr, nullptr, nullptr);
        SetActiveWindow(owner);
        session.Call();
        DestroyWindow(owner);
    });
    session.Ui().WaitForControl(IDC_FAX_NUMBER);
    RECT screen{}, sheet{}, seen{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
    GetWindowRect(GetAncestor(session.Ui().Dialog(), GA_ROOT), &sheet);
    IntersectRect(&seen, &sheet, &screen);
    EXPECT_TRUE(EqualRect(&seen, &sheet)) << sheet.right << ", " << sheet.bottom;
    session.Cancel();
}

TEST(SendSession, TheDriversEscapeDataOutlivesIt)
{
    SendFaxSession session;
    const auto store = reinterpret_cast<decltype(&BStoreExtEscapeData)>(
        reinterpret_cast<void*>(GetProcAddress(session.Module(), "BStoreExtEscapeData")));
    const auto fetch = reinterpret_cast<decltype(&BGetStoredExtEscapeData)>(
        reinterpret_cast<void*>(GetProcAddress(session.Module(), "BGetStoredExtEscapeData")));
    ASSERT_TRUE(store != nullptr && fetch != nullptr);
    ASSERT_TRUE(store("parked", 7));
    OnFaxJobPage(session).Cancel();

    DWORD size = 0;
    EXPECT_TRUE(fetch(nullptr, &size));
    EXPECT_EQ(size, 7u);
    char buffer[7] = "";
    void* to = buffer;
    EXPECT_TRUE(fetch(&to, &size));
    EXPECT_STREQ(buffer, "parked");

    EXPECT_FALSE(store(nullptr, 7)); // drops the block, and keeps reporting its size
    EXPECT_TRUE(fetch(nullptr, &size));
    EXPECT_EQ(size, 7u);
    EXPECT_FALSE(fetch(&to, &size));
}

template <DWORD kMajor> BOOL WINAPI IsWindows(OSVERSIONINFOW* version) noexcept
{
    version->dwMajorVersion = kMajor;
    return TRUE;
}

DWORD g_sheetFlags = 0;

INT_PTR WINAPI RememberSheet(const PROPSHEETHEADERW* header) noexcept
{
    g_sheetFlags = header->dwFlags;
    return -1;
}

template <class Function> bool OffersHelpInTheTitleBar(Function* version)
{
    SendFaxSession session;
    const PatchedFunction patch(L"kernel32.dll", "GetVersionExW", version);
    const RedirectedImport sheet("PropertySheetW", RememberSheet, session.Module());
    session.Start();
    session.End();
    return (g_sheetFlags & PSH_NOCONTEXTHELP) == 0;
}

TEST(SendSession, OnlyBeforeWindows6TheTitleBarOffersHelp)
{
    EXPECT_TRUE(OffersHelpInTheTitleBar(IsWindows<5>));
    EXPECT_FALSE(OffersHelpInTheTitleBar(IsWindows<6>));
}

// ---- the end of the module

PatchedFunction* g_patch = nullptr;
RedirectedImport<decltype(CreateActCtxW)>* g_create = nullptr;
std::vector<HANDLE> g_created, g_released;

HANDLE WINAPI NoteCreated(const ACTCTXW* request)
{
    return g_created.emplace_back(g_create->Original()(request));
}

void WINAPI NoteReleased(HANDLE context)
{
    g_released.push_back(context);
    g_patch->WithOriginal([&] {
        ReleaseActCtx(context);
        return true;
    });
}

TEST(SendSession, AnUnloadedModuleHasReleasedItsActivationContext)
{
    PatchedFunction release(L"kernel32.dll", "ReleaseActCtx", NoteReleased);
    g_patch = &release;
    {
        SendFaxSession session;
        RedirectedImport<decltype(CreateActCtxW)> create("CreateActCtxW", NoteCreated, session.Module());
        g_create = &create;
        OnFaxJobPage(session);
        session.Cancel();
    }
    ASSERT_EQ(g_created.size(), 1u);
    EXPECT_EQ(std::ranges::count(g_released, g_created.front()), 1);
}

// ---- what the spooler is asked: with a server's printer each question is a round over the network

int g_questions = 0;

BOOL WINAPI CountedGetPrinterDriver(HANDLE printer, wchar_t* environment, DWORD level, BYTE* data, DWORD bytes,
                                    DWORD* needed)
{
    ++g_questions;
    return g_patch->WithOriginal([&] { return GetPrinterDriverW(printer, environment, level, data, bytes, needed); });
}

DWORD WINAPI CountedGetPrinterDataEx(HANDLE printer, const wchar_t* key, const wchar_t* name, DWORD* type, BYTE* data,
                                     DWORD bytes, DWORD* needed)
{
    if (wcscmp(name, L"QXRestrictedUserGuid") == 0)
        ++g_questions;
    return g_patch->WithOriginal([&] { return GetPrinterDataExW(printer, key, name, type, data, bytes, needed); });
}

template <class Function> int QuestionsOfASession(const char* name, Function* counted)
{
    SendFaxSession session;
    PatchedFunction patch(L"winspool.drv", name, counted);
    g_patch = &patch;
    g_questions = 0;
    OnFaxJobPage(session).Ui().GoToPage(1);
    session.Cancel();
    return g_questions;
}

TEST(SendSession, AsksTheSpoolerOnceForTheDriverAndOnceForTheUsersSubtree)
{
    EXPECT_EQ(QuestionsOfASession("GetPrinterDriverW", CountedGetPrinterDriver), 1);
    EXPECT_EQ(QuestionsOfASession("GetPrinterDataExW", CountedGetPrinterDataEx), 1);
}

TEST(SendSession, ADeviceThatIsNotOperationalIsWarnedOfExactlyOnce)
{
    SendFaxSession session(WithDevice(L"PCFAX_SEND_OPERATIONAL", 0u));
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    const BoxContents box = session.Ui().AnswerBox(IDOK);
    EXPECT_EQ(box.title, L"QX MFP Send Fax Warning");
    EXPECT_EQ(box.text.find(L"The PC fax feature may be disabled at the MFP. Before sending any faxes, make sure"), 0u);
    EXPECT_EQ(box.icon, static_cast<UINT>(MB_ICONWARNING));
    session.Ui().WaitForControl(IDC_FAX_NUMBER); // the sheet comes next, and no second box before it
    session.Ui().Type(IDC_FAX_NUMBER, L"5550100");
    EXPECT_EQ(session.Send().Cancelled, 0u); // a warning never blocks sending
}

TEST(SendSession, APrinterWithoutAGuidHasNoSettingsAndSends)
{
    const auto subtrees = [] {
        DWORD count = 0;
        UniqueKey key;
        RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Quillmarsh", 0, KEY_READ, key.Receive());
        RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr);
        return count;
    };
    SessionOptions options;
    options.printer.guid = std::nullopt;
    SendFaxSession session(options);
    const DWORD before = subtrees();
    session.Start();
    host::UiDriver& ui = session.Ui();
    ui.AnswerBox(IDOK);                       // nothing says that the device is operational
    ui.Type(IDC_SENDER_NAME, L"Nora Fields"); // it opens on the Setup page
    ui.GoToPage(0);
    ui.Type(IDC_NAME_BOX, L"Ann");
    ui.Type(IDC_FAX_NUMBER, L"5550100");
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_STREQ(job.SenderName, L"Nora Fields");
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"Ann", L"5550100", L""}}));
    EXPECT_EQ(subtrees(), before);
}

// As drivers are told: a record is released before it is used again, or its recipients are those of the next fax.
TEST(SendSession, ARecordThatWasNotReleasedComesWithItsRecipientsAndIsCancelledOnlyByThem)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start([&session] {
        session.Call();
        session.Record().Cancelled = 7;
        session.Call();
    });
    host::UiDriver& ui = session.Ui();
    ui.Type(IDC_NAME_BOX, L"Ann");
    ui.Type(IDC_FAX_NUMBER, L"5550100");
    ui.Press(IDC_TO);
    const HWND first = ui.Dialog();
    PostMessageW(first, WM_COMMAND, IDCANCEL, 0);
    while (IsWindow(first))
        Sleep(10);
    ui.WaitForControl(IDC_RECIPIENTS);
    EXPECT_EQ(ui.RowCount(IDC_RECIPIENTS), 1);
    EXPECT_EQ(session.Record().Cancelled, 7u);
    EXPECT_EQ(session.Send().Cancelled, 0u);
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"Ann", L"5550100", L""}}));
}

TEST(SendSession, DefaultsThatWereStoredAndNotAppliedAreShownOnTheSetupPage)
{
    SendFaxSession session;
    session.SetDefault(L"SenderName", L"Nora Fields");
    session.Start();
    EXPECT_EQ(session.Ui().Text(IDC_SENDER_NAME), L"Nora Fields");
    session.Cancel();
}

TEST(SendSession, TheFirstUseOpensOnTheSetupPageAndALaterOneOnTheFaxJobPage)
{
    SendFaxSession session;
    session.Start();
    session.Ui().Dialog();
    EXPECT_FALSE(session.Ui().HasControl(IDC_FAX_NUMBER) && session.Ui().HasControl(IDC_NAME_BOX));
    session.Cancel();
    OnFaxJobPage(session);
    EXPECT_TRUE(session.Ui().IsVisible(IDC_NAME_BOX));
}

TEST(SendSession, WithoutTheTextLibraryTheBuiltInTextsKeepTheirDashes)
{
    SendFaxSession session(WithoutTextLibrary());
    OnFaxJobPage(session);
    EXPECT_EQ(SendCaption(session.Ui()), L"-&Send");
    EXPECT_EQ(session.Ui().Title(), L"QX MFP Send Fax");
    EXPECT_EQ(session.Cancel().Strings.Count, 0);
}

TEST(SendSession, TheTextLibraryBesideTheDriverIsUsed)
{
    SendFaxSession session;
    OnFaxJobPage(session);
    EXPECT_EQ(SendCaption(session.Ui()), L"&Send");
    const FaxJobData& job = session.Cancel();
    ASSERT_EQ(job.Strings.Count, static_cast<INT32>(std::size(kTexts)));
    for (INT32 i = 0; i < job.Strings.Count; ++i)
        EXPECT_STREQ(job.Strings.Items[i].Text, kTexts[i]);
    EXPECT_EQ(job.Strings.Items[1].Id, 5316); // handed over twice on purpose
    EXPECT_EQ(job.Strings.Items[5].Id, 5316);
}

TEST(SendSession, TheRecordsTextsAreResetAndItsKeysClosed)
{
    SendFaxSession session;
    OnFaxJobPage(session);
    session.Ui().Type(IDC_FAX_NUMBER, L"5550100");
    const FaxJobData& job = session.Send();
    EXPECT_STREQ(job.Title, L"QX MFP Send Fax");
    EXPECT_STREQ(job.SenderName, L"");
    EXPECT_STREQ(job.DefaultOverlayPath, L"");
    EXPECT_EQ(job.PrinterHandle, session.PrinterHandle());
    EXPECT_EQ(job.PrinterHandleCopy, session.PrinterHandle());
    for (const HKEY key : {job.hDefaultKey, job.hAddressBookKey, job.hJobDataKey, job.hBidiInfoKey, job.hMruListKey})
        EXPECT_EQ(key, nullptr);
}

// A driver may hand over the record of its last session: what nobody has stored or typed in this one is empty.
TEST(SendSession, NoTextOfAnEarlierSessionIsLeftInTheRecord)
{
    struct Text {
        const char* name;
        WCHAR* FaxJobData::* field;
        void (*set)(FaxJobData&, const wchar_t*) noexcept;
    };
    constexpr Text kReset[] = {
        {"SenderName", &FaxJobData::SenderName, SetSenderName},
        {"SenderFaxNo", &FaxJobData::SenderFaxNo, SetSenderFaxNo},
        {"SenderCompany", &FaxJobData::SenderCompany, SetSenderCompany},
        {"SenderVoiceNo", &FaxJobData::SenderVoiceNo, SetSenderVoiceNo},
        {"NotifyEmail", &FaxJobData::NotifyEmail, SetNotifyEmail},
        {"CoverPageNotes", &FaxJobData::CoverPageNotes, SetCoverPageNotes},
        {"CoverPageSubject", &FaxJobData::CoverPageSubject, SetCoverPageSubject},
        {"OverlayPath", &FaxJobData::OverlayPath, SetOverlayPath},
        {"BillingCode", &FaxJobData::BillingCode, SetBillingCode},
        {"DefaultOverlayPath", &FaxJobData::DefaultOverlayPath, SetDefaultOverlayPath},
    };
    SendFaxSession session({.printer = {}, .prepare = [&](FaxJobData& record) {
                                for (const Text& text : kReset)
                                    text.set(record, L"earlier");
                            }});
    const FaxJobData& job = OnFaxJobPage(session).Cancel();
    for (const Text& text : kReset)
        EXPECT_STREQ(job.*text.field, L"") << text.name;
}

// Runs in German too, where the library has another title.
TEST(SendSession, TheTitleIsLookedUpBeforeThereIsALibraryAndStaysTheBuiltInOne)
{
    SendFaxSession session;
    OnFaxJobPage(session);
    EXPECT_NE(session.Ui().Text(IDOK), L"-&Send"); // the library is there by now
    EXPECT_EQ(session.Ui().Title(), L"QX MFP Send Fax");
    EXPECT_STREQ(session.Cancel().Title, L"QX MFP Send Fax");
}

TEST(SendSession, ASecondSessionInTheProcessWorksLikeTheFirst)
{
    SendFaxSession session(WithoutTextLibrary());
    for (int i = 0; i < 3; ++i) {
        OnFaxJobPage(session);
        EXPECT_EQ(SendCaption(session.Ui()), L"-&Send"); // hooked again
        session.Ui().Type(IDC_FAX_NUMBER, std::to_wstring(100 + i));
        session.Send();
        EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"", std::to_wstring(100 + i), L""}}));
    }
}

TEST(SendSession, NothingIsSentWithoutARecipientEvenWhenTheFaxJobPageWasNeverSeen)
{
    SendFaxSession session;
    session.Start(); // first use: on the Setup page
    session.Ui().Press(IDOK);
    EXPECT_EQ(session.Ui().AnswerBox(IDOK).text, L"At least one fax number is required.");
    EXPECT_FALSE(session.Ui().Finished());
    session.Ui().WaitForControl(IDC_FAX_NUMBER); // and the page that lacks it is shown
    EXPECT_EQ(session.Cancel().Cancelled, 1u);
}

TEST(SendSession, ThePagesThatWereNeverSeenAreSavedAllTheSame)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.SetDefault(L"SenderName", std::wstring(L"Carol"));
    session.SetDefault(L"NotifyOn", 0u);
    session.SetDefault(L"NotifyMethod", 1u);
    session.Start();
    session.Ui().Type(IDC_FAX_NUMBER, L"5550100");
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_STREQ(job.SenderName, L"Carol");
    EXPECT_EQ(job.NotifyMethod, 0u); // the Setup page's own rule: nobody is notified, so by no method
}

// Whether a right click on the caption shows the system menu, which is closed again.
bool ShowsSystemMenu(SendFaxSession& session, HWND dialog)
{
    RECT place{};
    GetWindowRect(dialog, &place);
    const POINT caption{place.left + 60, place.top + GetSystemMetrics(SM_CYFIXEDFRAME) + 8};
    SetCursorPos(caption.x, caption.y);
    PostMessageW(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(dialog), MAKELPARAM(caption.x, caption.y));
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    for (int wait = 0; wait < 100; ++wait) {
        if (GetGUIThreadInfo(session.UiThread(), &thread) && (thread.flags & GUI_INMENUMODE) != 0) {
            PostMessageW(thread.hwndMenuOwner, WM_CANCELMODE, 0, 0);
            session.Ui().Settle();
            return true;
        }
        Sleep(20);
    }
    return false;
}

TEST(SendSession, ARightClickOnACaptionShowsTheSystemMenu)
{
    SendFaxSession session;
    host::UiDriver& ui = OnFaxJobPage(session).Ui();
    EXPECT_TRUE(ShowsSystemMenu(session, ui.Dialog()));
    constexpr int kEditDefaults = 279, kSenderName = 261;
    ui.GoToPage(1);
    ui.Press(kEditDefaults);
    ui.WaitForControl(kSenderName);
    EXPECT_TRUE(ShowsSystemMenu(session, ui.Dialog()));
    ui.Press(IDCANCEL);
    session.Cancel();
}

TEST(SendSession, TheOldAddressBookIsTakenOverOnceAndNeverAgain)
{
    SendFaxSession session;
    const std::wstring oldBook = session.SettingsKey() + L"\\QX-FAX\\Address Book";
    host::SetUserValue(oldBook, {L"only one string", std::wstring(L"Old Ann")}); // fax number and company are missing
    OnFaxJobPage(session);
    EXPECT_TRUE(std::filesystem::exists(session.PhoneBookFile()));
    session.Cancel();
    std::filesystem::remove(session.PhoneBookFile());
    OnFaxJobPage(session);
    EXPECT_FALSE(std::filesystem::exists(session.PhoneBookFile()));
    session.Cancel();
}

// A window of another program, as far as a broadcast goes: it has a thread of its own.
class Listener {
public:
    Listener()
    {
        thread_ = std::thread([this] { Listen(); });
        ready_.get_future().wait();
    }
    ~Listener()
    {
        PostMessageW(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }

    int Told() const noexcept { return told_; }

private:
    void Listen()
    {
        window_ = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
        ready_.set_value();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        static const UINT changed = RegisterWindowMessageW(L"PB_{d12b6b3a-3fee-4506-3f95-b1885bcf2149}");
        if (message == changed)
            ++reinterpret_cast<Listener*>(GetWindowLongPtrW(window, GWLP_USERDATA))->told_;
        if (message == WM_CLOSE)
            PostQuitMessage(0);
        return DefWindowProcW(window, message, w, l);
    }

    HWND window_ = nullptr;
    std::atomic<int> told_{0};
    std::promise<void> ready_;
    std::thread thread_;
};

TEST(SendSession, TakingOverTheOldAddressBookIsToldToAllWindows)
{
    const Listener listener;
    SendFaxSession session;
    OnFaxJobPage(session);
    session.Cancel();
    EXPECT_EQ(listener.Told(), 0); // there was nothing to take over
    SendFaxSession another;
    host::SetUserValue(another.SettingsKey() + L"\\QX-FAX\\Address Book", {L"first", std::wstring(L"Old Ann")});
    OnFaxJobPage(another);
    EXPECT_EQ(listener.Told(), 1);
    another.Cancel();
    EXPECT_EQ(listener.Told(), 1);
}

} // namespace
} // namespace qx::test
