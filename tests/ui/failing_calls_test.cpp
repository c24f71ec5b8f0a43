// Sessions in which calls of the module fail. The printing program goes on, nothing is left behind, and what is sent is
// what the user has seen.
#include "support/failing_calls.h"

#include "host/window_query.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/add_recipients_ids.h"
#include "res/cover_page_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/phone_book_session.h"

#include <commctrl.h>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <prsht.h>

namespace qx::test {
namespace {

using Recipients = std::vector<Recipient>;

constexpr int kSetupPage = 1;
const Recipient kBob{L"Bob", L"22", L"Mill"};
const Recipient kAnna{L"Anna", L"11", L"Orchard"};

// A driver that would take a record without an outcome for a sent one.
SessionOptions WithOutcomeUnknown()
{
    SessionOptions options = WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 1u);
    options.printer.SetDevice(L"FAX_BILLING_CODE_ENABLED", 1u);
    options.prepare = [](FaxJobData& record) { record.Cancelled = 7; };
    return options;
}

bool IsSheet(HWND window)
{
    return GetParent(window) == nullptr || (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) == 0;
}

class FailingCallsTest : public ::testing::Test {
protected:
    explicit FailingCallsTest(SessionOptions options = WithOutcomeUnknown()) : session_(std::move(options))
    {
        session_.SetDefault(L"ApplyDefaults", 1u);
    }

    HMODULE Module() const { return session_.Module(); }
    host::UiDriver& Ui() { return session_.Ui(); }
    FaxJobData& Job() { return session_.Record(); }

    void Fill(const Recipient& recipient)
    {
        Ui().Paste(IDC_NAME_BOX, recipient.name);
        Ui().Paste(IDC_FAX_NUMBER, recipient.faxNumber);
        Ui().Paste(IDC_COMPANY, recipient.company);
    }

    // Bob in the list, Anna in the fields, a cover page, a billing code and a sender.
    void FillEverything()
    {
        session_.Start();
        Ui().WaitForControl(IDC_FAX_NUMBER);
        Fill(kBob);
        Ui().Press(IDC_TO);
        Fill(kAnna);
        Ui().Check(IDC_COVER_PAGE, true);
        Ui().Paste(IDC_NOTES, L"\r\nline 2");
        Ui().Paste(IDC_SUBJECT, L"Offer 7");
        Ui().Paste(IDC_BILLING_CODE, L"0042");
        Ui().GoToPage(kSetupPage);
        Ui().WaitForControl(IDC_SENDER_NAME);
        Ui().Paste(IDC_SENDER_NAME, L"Carol");
        Ui().GoToPage(0);
        Ui().WaitForControl(IDC_FAX_NUMBER);
    }

    void PressSend()
    {
        Ui().Press(IDOK);
        Ui().Settle();
    }

    void ExpectEverythingSent(const std::string& what)
    {
        const FaxJobData& job = session_.End();
        EXPECT_EQ(job.Cancelled, 0u) << what;
        EXPECT_EQ(session_.Recipients(), (Recipients{kBob, kAnna})) << what;
        EXPECT_EQ(job.AddCoverPage, 1u) << what;
        EXPECT_STREQ(job.CoverPageNotes, L"\r\nline 2") << what;
        EXPECT_STREQ(job.CoverPageSubject, L"Offer 7") << what;
        EXPECT_STREQ(job.OverlayPath, L"") << what;
        EXPECT_STREQ(job.BillingCode, L"0042") << what;
        EXPECT_STREQ(job.SenderName, L"Carol") << what;
        EXPECT_STREQ(job.NotifyEmail, L"") << what;
    }

    void ExpectNothingWritten(const std::string& what)
    {
        EXPECT_EQ(Job().Cancelled, 7u) << what;
        EXPECT_EQ(session_.Recipients(), Recipients{kBob}) << what;
        EXPECT_EQ(Job().AddCoverPage, 0u) << what;
        EXPECT_STREQ(Job().CoverPageNotes, L"") << what;
        EXPECT_STREQ(Job().BillingCode, L"") << what;
        EXPECT_STREQ(Job().SenderName, L"") << what;
    }

    // Presses Send with the first, the second, ... call failing alone, then with some call and all that follow, until
    // there are no more. Whatever fails: all is sent as typed, or nothing is and a second Send sends it.
    template <class Calls> void SendWhileEachFails(Calls& calls, const std::string& function, long most)
    {
        for (const bool alone : {true, false}) {
            bool open = false;
            for (long call = 1; call <= most; call = alone ? call + 1 : call * 4) {
                const std::string what = function + (alone ? " " : " from ") + std::to_string(call);
                if (!std::exchange(open, true))
                    FillEverything();
                if (alone)
                    calls.FailOnly(call);
                else
                    calls.FailFrom(call);
                PressSend();
                const bool failed = calls.HasFailed();
                calls.FailNone();
                if (Ui().Finished()) {
                    ExpectEverythingSent(what);
                    open = false;
                } else {
                    ExpectNothingWritten(what);
                    EXPECT_TRUE(failed) << what << ": refused for no reason";
                }
                if (!failed || HasFailure())
                    break;
            }
            if (open && !HasFailure()) {
                // What was not shown whole is shown again by the first.
                for (int press = 0; press < 2 && !Ui().Finished(); ++press)
                    PressSend();
                ExpectEverythingSent(function);
            }
        }
    }

    SendFaxSession session_;
};

TEST_F(FailingCallsTest, WithoutMemoryASendSendsAllOrNothing)
{
    FailingCalls<decltype(HeapAlloc), struct HeapAllocCalls> calls(Module(), "HeapAlloc", nullptr);
    SendWhileEachFails(calls, "HeapAlloc", 40);
}

// What the C++ library allocates: texts, and the exceptions that tell of memory being short.
using AllocationCalls = FailingCalls<void*(std::size_t), struct AllocationTag>;

TEST_F(FailingCallsTest, WithoutMemoryForTextsASendSendsAllOrNothing)
{
    AllocationCalls calls(Module(), "malloc", nullptr);
    SendWhileEachFails(calls, "malloc", 40);
}

TEST_F(FailingCallsTest, ASessionWhoseMemoryEndsSomewhereLeavesTheHostAlone)
{
    for (const long call : {1, 2, 3, 5, 8, 13, 21, 34, 55, 89, 144, 233, 377, 610}) {
        AllocationCalls calls(Module(), "malloc", nullptr);
        FailingCalls<void*(std::size_t, std::size_t), struct ClearedTag> cleared(Module(), "calloc", nullptr);
        calls.FailFrom(call);
        cleared.FailFrom(1);
        session_.Start();
        Ui().Settle();
        Ui().CloseEverything();
        session_.End();
        EXPECT_NE(Job().Cancelled, 0u) << call;
    }
    FillEverything();
    PressSend();
    ExpectEverythingSent("the session after them");
}

TEST_F(FailingCallsTest, WithFieldsThatCannotBeReadASendSendsAllOrNothing)
{
    FailingCalls<decltype(GetWindowTextW), struct TextCalls> texts(Module(), "GetWindowTextW", 0);
    SendWhileEachFails(texts, "GetWindowTextW", 40);
    FailingCalls<decltype(GetWindowTextLengthW), struct LengthCalls> lengths(Module(), "GetWindowTextLengthW", 0);
    SendWhileEachFails(lengths, "GetWindowTextLengthW", 40);
}

TEST_F(FailingCallsTest, WithoutItsControlsASendSendsAllOrNothing)
{
    FailingCalls<decltype(GetDlgItem), struct ControlCalls> calls(Module(), "GetDlgItem", nullptr,
                                                                  ERROR_CONTROL_ID_NOT_FOUND);
    SendWhileEachFails(calls, "GetDlgItem", 40);
    FailingCalls<decltype(IsDlgButtonChecked), struct CheckedCalls> boxes(Module(), "IsDlgButtonChecked", 0);
    SendWhileEachFails(boxes, "IsDlgButtonChecked", 10);
}

TEST_F(FailingCallsTest, WithoutARegistryTheJobIsSentAllTheSame)
{
    FailingCalls<decltype(RegCreateKeyExW), struct CreateKeyCalls> keys(Module(), "RegCreateKeyExW",
                                                                        ERROR_ACCESS_DENIED);
    FillEverything();
    keys.FailFrom(1);
    PressSend();
    ExpectEverythingSent("no key can be written");
    EXPECT_TRUE(keys.HasFailed());
}

TEST_F(FailingCallsTest, ARowThatTheListDoesNotTakeLeavesListAndRecordAsTheyWere)
{
    const auto ofRows = [](HWND, UINT message, WPARAM, LPARAM) {
        return message == LVM_INSERTITEMW || message == LVM_SETITEMTEXTW;
    };
    session_.Start();
    Ui().WaitForControl(IDC_FAX_NUMBER);
    {
        FailingCalls<decltype(SendMessageW), struct RowCalls> calls(Module(), "SendMessageW", 0, 0, ofRows);
        FailingCalls<decltype(HeapAlloc), struct RowMemoryCalls> memory(Module(), "HeapAlloc", nullptr);
        for (long call = 2; call <= 3; ++call) { // the cells; the row itself answers its place, 0 when it is the first
            Fill(kBob);
            calls.FailOnly(call);
            Ui().Press(IDC_TO);
            Ui().Settle();
            EXPECT_TRUE(calls.HasFailed());
            calls.FailNone();
            EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 0) << call;
            EXPECT_EQ(session_.Recipients(), Recipients{}) << call;
            EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), kBob.faxNumber) << call; // for another try
        }
        for (long call = 1; call <= 4; ++call) { // the entry and its three texts
            memory.FailOnly(call);
            Ui().Press(IDC_TO);
            Ui().Settle();
            EXPECT_TRUE(memory.HasFailed());
            memory.FailNone();
            EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 0) << call;
            EXPECT_EQ(session_.Recipients(), Recipients{}) << call;
        }
    }
    Ui().Press(IDC_TO);
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 1);
    EXPECT_EQ(session_.Recipients(), Recipients{kBob});
    session_.Cancel();
}

// ---- the phone book picker

class FailingPickerTest : public FailingCallsTest {
protected:
    using Names = std::vector<std::wstring>;
    // Rows of the right list.
    static bool IsNewRow(HWND window, UINT message, WPARAM, LPARAM)
    {
        return message == LVM_INSERTITEMW && GetDlgCtrlID(window) == IDC_PICK_CHOSEN;
    }

    FailingPickerTest()
    {
        session_.WritePhoneBook(
            BookText().Entry(1, L"Ann", L"11").Entry(2, L"Bob", L"22").Entry(3, L"Cat", L"33").Text());
    }

    Names Shown() { return NamesIn(Ui(), IDC_PICK_CHOSEN); }
    bool PickerIsOpen() { return Ui().HasControl(IDC_PICK_LIST); }
    Names InRecord() const
    {
        Names names;
        for (const Recipient& recipient : session_.Recipients())
            names.push_back(recipient.name);
        return names;
    }

    // All of the book are selected, nobody is chosen yet.
    void OpenPicker()
    {
        Ui().Press(IDC_PHONE_BOOK);
        Ui().WaitForControl(IDC_PICK_LIST);
        if (const int rows = Ui().RowCount(IDC_PICK_CHOSEN); rows > 0) {
            Ui().SelectRows(IDC_PICK_CHOSEN, RowsUpTo(rows));
            Ui().Press(IDC_PICK_DELETE);
        }
        Ui().SelectRows(IDC_PICK_LIST, RowsUpTo(3));
    }

    void Press(int button)
    {
        Ui().Press(button);
        Ui().Settle();
    }

    // OK hands over what is shown, or nothing, and a second one does.
    void AcceptWhatIsShown(const std::string& what)
    {
        Names shown = Shown();
        Press(IDOK);
        if (PickerIsOpen()) {
            EXPECT_NE(Shown(), shown) << what << ": refused for no reason";
            shown = Shown();
            Press(IDOK);
        }
        ASSERT_FALSE(PickerIsOpen()) << what;
        EXPECT_EQ(InRecord(), shown) << what;
        EXPECT_EQ(NamesIn(Ui(), IDC_RECIPIENTS), shown) << what;
    }

    template <class Calls>
    void PickWhileEachFails(Calls& failing, const std::string& function, std::initializer_list<long> calls)
    {
        for (const long call : calls) {
            OpenPicker();
            failing.FailOnly(call);
            Press(IDC_PICK_TO);
            EXPECT_TRUE(failing.HasFailed()) << function << call;
            failing.FailNone();
            ASSERT_NO_FATAL_FAILURE(AcceptWhatIsShown(function + std::to_string(call)));
        }
    }
};

TEST_F(FailingPickerTest, WhenMemoryIsShortItHandsOverWhomItShows)
{
    session_.Start();
    Ui().WaitForControl(IDC_FAX_NUMBER);
    FailingCalls<decltype(HeapAlloc), struct PickedTexts> texts(Module(), "HeapAlloc", nullptr);
    PickWhileEachFails(texts, "HeapAlloc ", {1, 5, 6, 12}); // an entry and three texts for each
    AllocationCalls blocks(Module(), "malloc", nullptr);
    PickWhileEachFails(blocks, "malloc ", {1, 2, 3, 4, 5, 6, 7, 8, 10});
    session_.Cancel();
}

TEST_F(FailingPickerTest, ARowThatItsListDoesNotTakeMovesNoOtherToItsPlace)
{
    FailingCalls<decltype(SendMessageW), struct PickedRows> rows(Module(), "SendMessageW", -1, 0, IsNewRow);
    session_.Start();
    Ui().WaitForControl(IDC_FAX_NUMBER);
    OpenPicker();
    rows.FailOnly(2);
    Press(IDC_PICK_TO);
    EXPECT_TRUE(rows.HasFailed());
    EXPECT_EQ(Shown(), Names{}); // some would pass for all
    rows.FailFrom(1);
    for (const int button : {IDOK, IDC_PICK_TO}) {
        Press(button);
        ASSERT_TRUE(PickerIsOpen());
        EXPECT_EQ(Shown(), Names{});
    }
    EXPECT_EQ(InRecord(), Names{});
    rows.FailNone();
    Press(IDOK);
    ASSERT_TRUE(PickerIsOpen()); // the user has not seen them yet
    ASSERT_EQ(Shown(), (Names{L"Ann", L"Bob", L"Cat"}));
    Ui().SelectRows(IDC_PICK_CHOSEN, {1});
    rows.FailOnly(2);
    Press(IDC_PICK_DELETE);
    rows.FailNone();
    EXPECT_EQ(Shown(), Names{});
    Press(IDOK);
    ASSERT_EQ(Shown(), (Names{L"Ann", L"Cat"}));
    Ui().SelectRows(IDC_PICK_CHOSEN, {1});
    Press(IDC_PICK_DELETE);
    ASSERT_NO_FATAL_FAILURE(AcceptWhatIsShown("in the end"));
    EXPECT_EQ(InRecord(), Names{L"Ann"});
    session_.Cancel();
}

// ---- sheet and pages

TEST_F(FailingCallsTest, WithoutMemoryForItsPagesThereIsNoSheetAndNothingIsSent)
{
    const auto ofPages = [](HANDLE, DWORD, SIZE_T bytes) { return bytes == 2 * sizeof(PROPSHEETPAGEW); };
    FailingCalls<decltype(HeapAlloc), struct PageCalls> calls(Module(), "HeapAlloc", nullptr, 0, ofPages);
    calls.FailFrom(1);
    session_.Start();
    EXPECT_EQ(session_.End().Cancelled, 7u);
    EXPECT_TRUE(calls.HasFailed());
}

TEST_F(FailingCallsTest, ASheetThatCannotBeHookedEndsAsCancelled)
{
    const auto ofSheet = [](HWND window, int index, LONG_PTR) { return index == GWLP_WNDPROC && IsSheet(window); };
    FailingCalls<decltype(SetWindowLongPtrW), struct HookCalls> calls(Module(), "SetWindowLongPtrW", 0,
                                                                      ERROR_ACCESS_DENIED, ofSheet);
    calls.FailFrom(1);
    session_.Start();
    EXPECT_EQ(session_.End().Cancelled, 1u);
    EXPECT_TRUE(calls.HasFailed());
    calls.FailNone();
    FillEverything();
    PressSend();
    ExpectEverythingSent("the session after it");
}

TEST_F(FailingCallsTest, ASheetWhoseButtonDoesNotSayThatItSendsEndsAsCancelled)
{
    const auto ofButton = [](HWND window, const wchar_t*) {
        return GetDlgCtrlID(window) == IDOK && IsSheet(GetParent(window));
    };
    FailingCalls<decltype(SetWindowTextW), struct CaptionCalls> calls(Module(), "SetWindowTextW", FALSE,
                                                                      ERROR_NOT_ENOUGH_MEMORY, ofButton);
    calls.FailOnly(1);
    session_.Start();
    EXPECT_EQ(session_.End().Cancelled, 1u);
    EXPECT_TRUE(calls.HasFailed());
}

TEST_F(FailingCallsTest, AButtonOfWhichItCannotBeToldHowItIsHookedDoesNotEndTheProgram)
{
    for (const int asked : {GWLP_WNDPROC, GWLP_USERDATA}) {
        const auto ofButton = [asked](HWND window, int index) {
            return index == asked && GetDlgCtrlID(window) == IDC_PHONE_BOOK;
        };
        FailingCalls<decltype(GetWindowLongPtrW), struct HookData> calls(Module(), "GetWindowLongPtrW", 0,
                                                                         ERROR_INVALID_WINDOW_HANDLE, ofButton);
        for (long call = 1; call <= 4; ++call) {
            calls.FailOnly(call);
            session_.Start();
            Ui().Settle();
            const bool failed = calls.HasFailed();
            calls.FailNone();
            if (!Ui().Finished())
                session_.Cancel();
            EXPECT_EQ(session_.End().Cancelled, 1u) << call;
            EXPECT_TRUE(failed || call > 1) << asked;
        }
    }
}

TEST_F(FailingCallsTest, ANameBoxThatCannotBeHookedWhollyEndsTheSheetAsCancelled)
{
    for (const wchar_t* const part : {L"Edit", L"ComboLBox", L"ComboBox"}) {
        const auto ofPart = [part](HWND window, int index, LONG_PTR) {
            wchar_t name[16] = L"";
            GetClassNameW(window, name, 16);
            return index == GWLP_WNDPROC && lstrcmpiW(name, part) == 0;
        };
        FailingCalls<decltype(SetWindowLongPtrW), struct NameBoxCalls> calls(Module(), "SetWindowLongPtrW", 0,
                                                                             ERROR_ACCESS_DENIED, ofPart);
        calls.FailOnly(1);
        session_.Start();
        EXPECT_EQ(session_.End().Cancelled, 1u);
        EXPECT_TRUE(calls.HasFailed());
    }
    FillEverything();
    PressSend();
    ExpectEverythingSent("the session after it");
}

TEST_F(FailingCallsTest, APageThatCannotBeFilledEndsTheSheetAsCancelled)
{
    for (const int field : {IDC_NOTES, IDC_SENDER_NAME}) {
        const auto ofField = [field](HWND window, const wchar_t*) { return GetDlgCtrlID(window) == field; };
        FailingCalls<decltype(SetWindowTextW), struct FillCalls> calls(Module(), "SetWindowTextW", FALSE, 0, ofField);
        calls.FailFrom(1);
        session_.Start();
        if (field == IDC_SENDER_NAME && !Ui().Finished()) {
            // Where pages are created when they are first shown, the sheet is still there.
            try {
                Ui().WaitForControl(IDC_FAX_NUMBER);
                Ui().Paste(IDC_FAX_NUMBER, L"11");
                Ui().Paste(IDC_BILLING_CODE, L"0042");
                Ui().Press(IDOK);
            } catch (const host::UiFailure&) {
            }
        }
        EXPECT_EQ(session_.End().Cancelled, 1u) << field;
        EXPECT_EQ(session_.Recipients(), Recipients{}) << field;
    }
}

// The sheet, which the other page has hooked, is still there when the next message comes.
TEST_F(FailingCallsTest, APhoneBookThatChangesIsNotFollowedByAPageThatCouldNotBeFilled)
{
    SendFaxSession session(WithOutcomeUnknown()); // without defaults: it begins on the other page
    const auto ofNameBox = [](HWND window, int index, LONG_PTR) {
        if (index != GWLP_WNDPROC || !host::IsOfClass(window, L"Edit") ||
            GetDlgCtrlID(GetParent(window)) != IDC_NAME_BOX)
            return false;
        PostMessageW(GetAncestor(window, GA_ROOT), PhoneBookChangedMessage(), 0, 0);
        return true;
    };
    FailingCalls<decltype(SetWindowLongPtrW), struct NameBoxCalls> calls(session.Module(), "SetWindowLongPtrW", 0,
                                                                         ERROR_ACCESS_DENIED, ofNameBox);
    calls.FailOnly(1);
    session.Start();
    session.Ui().Settle();
    if (!session.Ui().Finished()) // where pages are created when they are first shown
        session.Ui().GoToPage(0);
    EXPECT_EQ(session.End().Cancelled, 1u);
    EXPECT_TRUE(calls.HasFailed());
}

TEST_F(FailingCallsTest, APageThatCannotShowAChoiceEndsTheSheetAsCancelled)
{
    for (const int control : {IDC_COVER_PAGE, IDC_STANDARD, IDC_NOTIFY_NEVER, IDC_NOTIFY_PRINT, IDC_PREVIEW}) {
        const auto ofControl = [control](HWND, int id, UINT) { return id == control; };
        FailingCalls<decltype(CheckDlgButton), struct ChoiceCalls> calls(Module(), "CheckDlgButton", FALSE,
                                                                         ERROR_CONTROL_ID_NOT_FOUND, ofControl);
        calls.FailFrom(1);
        session_.Start();
        Ui().Settle();
        if (!Ui().Finished()) // where pages are created when they are first shown
            Ui().GoToPage(kSetupPage);
        EXPECT_EQ(session_.End().Cancelled, 1u) << control;
        EXPECT_TRUE(calls.HasFailed()) << control;
    }
}

TEST_F(FailingCallsTest, AChoiceThatTheUserMadeAndThePageDidNotHearIsNotSentOtherwise)
{
    FillEverything();
    Ui().GoToPage(kSetupPage);
    // As a button that is checked without a word to its page.
    const HWND fine = Ui().Control(IDC_FINE);
    SendMessageW(Ui().Control(IDC_STANDARD), BM_SETCHECK, BST_UNCHECKED, 0);
    SendMessageW(fine, BM_SETCHECK, BST_CHECKED, 0);
    PressSend();
    EXPECT_FALSE(Ui().Finished());
    ExpectNothingWritten("a choice that the page did not hear");
    Ui().Choose(IDC_STANDARD);
    PressSend();
    ExpectEverythingSent("a choice that it heard");
}

TEST_F(FailingCallsTest, ACheckBoxThatCannotBeReadIsNotTakenForCleared)
{
    int box = IDC_COVER_PAGE;
    FailingCalls<decltype(IsDlgButtonChecked), struct UnreadBoxCalls> calls(
        Module(), "IsDlgButtonChecked", 0, ERROR_CONTROL_ID_NOT_FOUND, [&box](HWND, int id) { return id == box; });
    session_.SetDefault(L"ShowPreview", 0u);
    session_.Start();
    Ui().WaitForControl(IDC_FAX_NUMBER);
    Fill(kBob);
    Ui().Paste(IDC_BILLING_CODE, L"0042");
    calls.FailFrom(1);
    Ui().Check(IDC_COVER_PAGE, true);
    PressSend();
    ASSERT_FALSE(Ui().Finished()); // the cover page would be missing
    calls.FailNone();
    Ui().Check(IDC_COVER_PAGE, false);
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().GoToPage(kSetupPage);
    Ui().WaitForControl(IDC_PREVIEW);
    box = IDC_PREVIEW;
    calls.FailFrom(1);
    Ui().Check(IDC_PREVIEW, true);
    PressSend();
    ASSERT_FALSE(Ui().Finished()); // without a preview
    calls.FailNone();
    Ui().Check(IDC_PREVIEW, false);
    Ui().Check(IDC_PREVIEW, true);
    const FaxJobData& job = session_.Send();
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_EQ(job.ShowPreview, 1u);
}

// ---- the user's defaults

class FailingDefaultsTest : public FailingCallsTest {
protected:
    FailingDefaultsTest()
    {
        session_.SetDefault(L"SenderName", L"Old name");
        session_.SetDefault(L"SenderCompany", L"Old company");
        session_.SetDefault(L"Resolution", 2u);
    }

    void OpenSetupPage()
    {
        session_.Start();
        Ui().WaitForControl(IDC_FAX_NUMBER);
        Ui().GoToPage(kSetupPage);
        Ui().WaitForControl(IDC_EDIT_DEFAULTS);
    }

    // The dialog's own, since the page has fields of the same numbers.
    bool DefaultsDialogIsOpen() { return Ui().HasControl(IDC_APPLY_DEFAULTS); }
};

TEST_F(FailingDefaultsTest, DefaultsThatCannotBeReadAreNotOfferedAsEmptyOnes)
{
    FailingCalls<decltype(RegQueryValueExW), struct ReadCalls> reads(Module(), "RegQueryValueExW", ERROR_ACCESS_DENIED);
    FailingCalls<decltype(RegCreateKeyExW), struct OpenCalls> keys(Module(), "RegCreateKeyExW", ERROR_ACCESS_DENIED);
    FailingCalls<decltype(HeapAlloc), struct TextMemoryCalls> memory(Module(), "HeapAlloc", nullptr);
    OpenSetupPage();
    const auto expectNoDialog = [this](const char* what) {
        Ui().Press(IDC_EDIT_DEFAULTS);
        Ui().Settle();
        EXPECT_FALSE(DefaultsDialogIsOpen()) << what;
        if (DefaultsDialogIsOpen())
            Ui().Press(IDCANCEL);
    };
    for (const long call : {1, 2, 3, 16}) { // sizes, contents, the last one of all
        reads.FailFrom(call);
        expectNoDialog("a value that cannot be read");
    }
    reads.FailNone();
    keys.FailFrom(1);
    expectNoDialog("a key that cannot be opened");
    keys.FailNone();
    for (long call = 1; call <= 2; ++call) { // the name, the company
        memory.FailOnly(call);
        expectNoDialog("a text for which there is no memory");
        EXPECT_TRUE(memory.HasFailed());
    }
    memory.FailNone();
    Ui().Press(IDC_EDIT_DEFAULTS);
    Ui().WaitForControl(IDC_APPLY_DEFAULTS);
    EXPECT_EQ(Ui().Text(IDC_SENDER_NAME), L"Old name");
    EXPECT_EQ(Ui().Text(IDC_SENDER_COMPANY), L"Old company");
    Ui().Press(IDCANCEL);
    session_.Cancel();
}

TEST_F(FailingDefaultsTest, AnAddressIsNotLostWhenItCannotBeToldWhetherTheDeviceSendsMail)
{
    session_.SetDefault(L"NotifyEmail", L"ann@example.com");
    session_.SetDefault(L"NotifyMethod", 2u);
    const auto ofMail = [](HKEY, const wchar_t* name, DWORD*, DWORD*, BYTE*, DWORD*) {
        return name != nullptr && std::wstring_view(name) == L"EMAIL-SERVICE-OPERATIONAL";
    };
    FailingCalls<decltype(RegQueryValueExW), struct MailCalls> reads(Module(), "RegQueryValueExW", ERROR_ACCESS_DENIED,
                                                                     ERROR_SUCCESS, ofMail);
    reads.FailOnly(2); // the first is the job's
    OpenSetupPage();
    Ui().Press(IDC_EDIT_DEFAULTS);
    Ui().WaitForControl(IDC_APPLY_DEFAULTS);
    EXPECT_TRUE(reads.HasFailed());
    EXPECT_EQ(Ui().Text(IDC_EMAIL), L"");
    Ui().Press(IDOK);
    Ui().WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session_.StoredDefaults()[L"NotifyEmail"], DefaultValue(L"ann@example.com"));
    EXPECT_EQ(session_.StoredDefaults()[L"NotifyMethod"], DefaultValue(2u));
    session_.Cancel();
}

TEST_F(FailingDefaultsTest, DefaultsThatThePageCouldNotShowAreShownBeforeTheyAreSent)
{
    for (const int control : {IDC_SENDER_COMPANY, IDC_STANDARD}) {
        session_.SetDefault(L"Resolution", 2u);
        OpenSetupPage();
        const HWND page = GetParent(Ui().Control(IDC_EDIT_DEFAULTS));
        Ui().Press(IDC_EDIT_DEFAULTS);
        Ui().WaitForControl(IDC_APPLY_DEFAULTS);
        Ui().Paste(IDC_SENDER_NAME, L"New name");
        Ui().Paste(IDC_SENDER_COMPANY, L"New company");
        Ui().Choose(IDC_STANDARD);
        Ui().Check(IDC_APPLY_DEFAULTS, true);
        const auto text = [&](HWND window, const wchar_t*) {
            return GetDlgCtrlID(window) == control && GetParent(window) == page;
        };
        const auto choice = [&](HWND dialog, int id, UINT) { return id == control && dialog == page; };
        FailingCalls<decltype(SetWindowTextW), struct PageTextCalls> texts(Module(), "SetWindowTextW", FALSE, 0, text);
        FailingCalls<decltype(CheckDlgButton), struct PageChoiceCalls> choices(Module(), "CheckDlgButton", FALSE, 0,
                                                                               choice);
        texts.FailFrom(1);
        choices.FailFrom(1);
        Ui().Press(IDOK);
        Ui().Settle();
        EXPECT_TRUE(texts.HasFailed() || choices.HasFailed());
        texts.FailNone();
        choices.FailNone();
        Ui().GoToPage(0);
        Ui().WaitForControl(IDC_FAX_NUMBER);
        Fill(kBob);
        Ui().Paste(IDC_BILLING_CODE, L"0042");
        PressSend();
        ASSERT_FALSE(Ui().Finished()) << control; // the user has not seen them yet
        const FaxJobData& job = session_.Send();
        EXPECT_STREQ(job.SenderName, L"New name");
        EXPECT_STREQ(job.SenderCompany, L"New company");
        EXPECT_EQ(job.Resolution, 0u);
    }
}

TEST_F(FailingCallsTest, WithoutASystemFunctionThatIsLookedUpTheSessionWorksAndEnds)
{
    FailingCalls<decltype(GetModuleHandleW), struct ModuleCalls> modules(Module(), "GetModuleHandleW", nullptr);
    FailingCalls<decltype(GetProcAddress), struct FunctionCalls> functions(Module(), "GetProcAddress", nullptr);
    for (const int when : {0, 1}) { // from the start, and only in the end
        if (when == 0) {
            modules.FailFrom(1);
            functions.FailFrom(1);
        }
        session_.Start();
        Ui().WaitForControl(IDC_FAX_NUMBER);
        Ui().Paste(IDC_FAX_NUMBER, L"11");
        Ui().Paste(IDC_BILLING_CODE, L"0042");
        modules.FailFrom(1);
        functions.FailFrom(1);
        EXPECT_EQ(session_.Send().Cancelled, 0u);
        modules.FailNone();
        functions.FailNone();
    }
}

} // namespace
} // namespace qx::test
