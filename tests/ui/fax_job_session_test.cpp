// The Fax Job page in whole sessions of the module, driven as a user would.
#include "base/no_copy.h"
#include "host/window_query.h"
#include "phonebook/recent/recent_list.h"
#include "res/add_recipients_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/phone_book.h"
#include "support/send_fax_session.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <prsht.h>

namespace qx::test {
namespace {

namespace fs = std::filesystem;

using Recipients = std::vector<Recipient>;
using Texts = std::vector<std::wstring>;

using host::kSheetTabs;

constexpr const wchar_t* kTooMany = L"The maximum number of fax numbers has been entered.";

class FaxJobSession : public ::testing::Test {
protected:
    void Open(SessionOptions options = {})
    {
        session_ = std::make_unique<SendFaxSession>(std::move(options));
        session_->SetDefault(L"ApplyDefaults", 1u); // else the sheet opens on the Setup page
        FillRecentList();
        session_->Start();
        Ui().WaitForControl(IDC_NAME_BOX);
    }
    // Before Open. The last one is the most recent.
    void RecentEntry(std::wstring name, std::wstring faxNumber, std::wstring company = L"")
    {
        recent_.push_back(book_.NewEntry({std::move(name), std::move(faxNumber), std::move(company)}));
    }
    void RecentGroup(const std::wstring& name, int members) { recent_.push_back(book_.NewGroup(name, members)); }

    SendFaxSession& Session() { return *session_; }
    host::UiDriver& Ui() { return session_->Ui(); }

    void Fill(const std::wstring& name, const std::wstring& faxNumber, const std::wstring& company = L"")
    {
        Ui().Type(IDC_NAME_BOX, name);
        Ui().Type(IDC_FAX_NUMBER, faxNumber);
        Ui().Type(IDC_COMPANY, company);
    }
    void Add(const std::wstring& name, const std::wstring& faxNumber, const std::wstring& company = L"")
    {
        Fill(name, faxNumber, company);
        Ui().Press(IDC_TO);
    }
    void AddGroup(const std::wstring& name)
    {
        Ui().Type(IDC_NAME_BOX, name);
        Ui().Press(IDC_TO);
    }
    // Keys as they stand on the keyboard: letters, digits, Tab and Enter.
    void Press(const char* keys)
    {
        for (; *keys != '\0'; ++keys)
            Ui().PressKey(static_cast<WORD>(*keys));
    }
    // Not by Ctrl+Tab, which not every system's sheets know.
    void GoToSheetTabs()
    {
        for (int presses = 0; presses < 20 && Ui().FocusedControl() != kSheetTabs; ++presses)
            Ui().PressKey(VK_TAB, {VK_SHIFT});
        ASSERT_EQ(Ui().FocusedControl(), kSheetTabs);
    }
    void Alt(WORD letter) { Ui().PressKey(letter, {VK_MENU}); }
    // Presses Send, which must be refused, and answers what the boxes said.
    Texts RefusedSend(int boxes)
    {
        Ui().Press(IDOK);
        Texts texts;
        for (int i = 0; i < boxes; ++i)
            texts.push_back(Ui().AnswerBox(IDOK).text);
        EXPECT_TRUE(Ui().HasControl(IDC_NAME_BOX)) << "the sheet has closed";
        return texts;
    }

    // The Setup page refuses it; the driver has left a 7 for the outcome.
    void SendToAnnaWithoutTheAddressToNotify()
    {
        SessionOptions options = WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 1u);
        options.prepare = [](FaxJobData& record) { record.Cancelled = 7; };
        Open(options);
        Fill(L"Anna", L"1");
        Ui().GoToPage(1);
        Ui().Choose(IDC_NOTIFY_EMAIL);
        Ui().Type(IDC_EMAIL, L"");
        Ui().Press(IDOK);
        Ui().AnswerBox(IDOK);
    }

private:
    void FillRecentList()
    {
        RecentRecipientList list;
        list.Open(session_->PrinterHandle());
        for (const PhoneBookItem* const item : recent_)
            list.AddRecent(item, &*book_);
        list.Save();
    }

    TestBook book_;
    std::vector<const PhoneBookItem*> recent_;
    std::unique_ptr<SendFaxSession> session_;
};

// ---- recipients

TEST_F(FaxJobSession, TakesTheHundredthRecipientAndRefusesTheNextOneWithItsFieldsKept)
{
    RecentGroup(L"Many", 99);
    Open();
    AddGroup(L"Many");
    ASSERT_EQ(Ui().RowCount(IDC_RECIPIENTS), 99);
    Add(L"Anna", L"5550100");
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 100);
    Add(L"Bob", L"5550101", L"Mill");
    EXPECT_EQ(Ui().AnswerBox(IDOK), ErrorBox(kTooMany));
    EXPECT_EQ(Ui().Text(IDC_NAME_BOX), L"Bob");
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"5550101");
    EXPECT_EQ(Ui().Text(IDC_COMPANY), L"Mill");
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 100);
}

TEST_F(FaxJobSession, RefusesAGroupThatWouldPassTheLimitAndTakesItWholeBelow)
{
    RecentGroup(L"Ninety-five", 95);
    RecentGroup(L"Five", 5);
    Open();
    AddGroup(L"Ninety-five");
    Add(L"Anna", L"1");
    AddGroup(L"Five");
    EXPECT_EQ(Ui().AnswerBox(IDOK).text, kTooMany);
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 96);
    Ui().SelectRows(IDC_RECIPIENTS, {95});
    Ui().Press(IDC_DELETE);
    AddGroup(L"Five");
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 100);
    Session().Send();
    EXPECT_EQ(Session().Recipients().size(), 100u);
    EXPECT_EQ(Session().Recipients().back(), (Recipient{L"Five 5", L"9005", L""}));
}

TEST_F(FaxJobSession, DropsATypedPlusAndBlankAndPutsTheOldNumberBackAfterAPasteWithThem)
{
    Open();
    Ui().Type(IDC_FAX_NUMBER, L"12+");
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"12");
    Ui().Type(IDC_FAX_NUMBER, L"12+3 4");
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"1234");
    Ui().Paste(IDC_FAX_NUMBER, L"+1 555");
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"1234");
    Ui().Type(IDC_FAX_NUMBER, L"");
    for (const wchar_t* const refused : {L"12a3", L"(030) 1234-5678"}) {
        Ui().Paste(IDC_FAX_NUMBER, refused);
        EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"");
    }
    Ui().Paste(IDC_FAX_NUMBER, L"(030)1234-5678,,#9"); // every sign of the fax keypad
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"(030)1234-5678,,#9");
}

TEST_F(FaxJobSession, AddsTheSameRecipientTwice)
{
    Open();
    Add(L"Anna", L"5550100");
    Add(L"Anna", L"5550100");
    Session().Send();
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"5550100", L""}, {L"Anna", L"5550100", L""}}));
}

TEST_F(FaxJobSession, TellsTheMemberCountOfAPickedGroup)
{
    RecentGroup(L"Solo", 1);
    RecentGroup(L"Duo", 2);
    Open();
    Ui().Type(IDC_NAME_BOX, L"solo");
    EXPECT_EQ(Ui().Text(IDC_GROUP_TEXT), L"Group members: 1");
    Ui().Type(IDC_NAME_BOX, L"duo");
    EXPECT_EQ(Ui().Text(IDC_GROUP_TEXT), L"Group members: 2");
    EXPECT_TRUE(Ui().IsVisible(IDC_GROUP_TEXT));
    EXPECT_FALSE(Ui().IsVisible(IDC_FAX_NUMBER));
}

TEST_F(FaxJobSession, DeletesExactlyTheThreeScatteredRecipients)
{
    Open();
    for (const wchar_t* name : {L"A", L"B", L"C", L"D", L"E"})
        Add(name, L"1");
    Ui().SelectRows(IDC_RECIPIENTS, {0, 2, 4});
    Ui().Press(IDC_DELETE);
    EXPECT_FALSE(Ui().IsEnabled(IDC_DELETE));
    EXPECT_EQ(Ui().FocusedControl(), IDC_RECIPIENTS);
    Session().Send();
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"B", L"1", L""}, {L"D", L"1", L""}}));
}

TEST_F(FaxJobSession, AnEntryThatDiffersOnlyInLetterCaseIsADuplicateInThePhoneBook)
{
    Open();
    Fill(L"Anna Smith", L"5550100");
    Ui().Press(IDC_ADD_TO_PHONE_BOOK);
    EXPECT_EQ(Ui().FocusedControl(), IDC_NAME_BOX);
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"5550100"); // the fields keep their text
    Fill(L"ANNA SMITH", L"5550100", L"Orchard");
    Ui().Press(IDC_ADD_TO_PHONE_BOOK);
    EXPECT_EQ(Ui().AnswerBox(IDOK),
              WarningBox(L"This is a duplicate entry. Please enter a different name or fax number.",
                         MB_ICONERROR)); // a warning with the stop icon, on purpose
    EXPECT_EQ(Ui().FocusedControl(), IDC_NAME_BOX);
    Fill(L"Anna Smith", L"5550101");
    Ui().Press(IDC_ADD_TO_PHONE_BOOK);
    Session().Cancel();
    EXPECT_TRUE(fs::exists(Session().PhoneBookFile()));
}

TEST_F(FaxJobSession, RemembersEveryTakenRecipientForTheNextSession)
{
    Open();
    Add(L"Anna", L"5550100", L"Orchard");
    Fill(L"Bob", L"5550101");
    Session().Send();
    Session().Start();
    Ui().WaitForControl(IDC_NAME_BOX);
    Ui().DropDown(IDC_NAME_BOX, true);
    EXPECT_EQ(Ui().ComboItems(IDC_NAME_BOX), (Texts{L"Bob", L"Anna"}));
    Ui().Select(IDC_NAME_BOX, 1);
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"5550100");
    EXPECT_EQ(Ui().Text(IDC_COMPANY), L"Orchard");
}

// ---- cover page, billing code and Send

TEST_F(FaxJobSession, WithoutAnyRecipientNothingIsSent)
{
    Open();
    Session().Record().Cancelled = 7;
    EXPECT_EQ(RefusedSend(1), (Texts{L"At least one fax number is required."}));
    EXPECT_EQ(Ui().FocusedControl(), IDC_FAX_NUMBER);
    EXPECT_EQ(Session().Record().Cancelled, 7u);
}

TEST_F(FaxJobSession, ANumberThatStillStandsInItsFieldIsSentToo)
{
    Open();
    Fill(L"Anna", L"5550100", L"Orchard");
    EXPECT_EQ(Session().Send().Cancelled, 0u);
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"5550100", L"Orchard"}}));
}

TEST_F(FaxJobSession, AHundredRowsPassAndATypedNumberOnTopDoesNot)
{
    RecentGroup(L"Hundred", 100);
    Open();
    AddGroup(L"Hundred");
    Ui().Type(IDC_FAX_NUMBER, L"1");
    EXPECT_EQ(RefusedSend(1), Texts{kTooMany});
    EXPECT_EQ(Ui().FocusedControl(), IDC_FAX_NUMBER);
    Ui().Type(IDC_FAX_NUMBER, L"");
    Session().Send();
    EXPECT_EQ(Session().Recipients().size(), 100u);
}

SessionOptions WithBillingCode(DWORD minLength)
{
    SessionOptions options;
    options.printer.SetDevice(L"FAX_BILLING_CODE_ENABLED", 1u);
    options.printer.SetDevice(L"FAX_BILLING_CODE_MINLENGTH", minLength);
    return options;
}

TEST_F(FaxJobSession, ABillingCodeShorterThanTheMinimumIsRefusedWithTheMinimum)
{
    SessionOptions options = WithBillingCode(4);
    options.printer.textLibrary = false;
    Open(options);
    Fill(L"Anna", L"1");
    Ui().Type(IDC_BILLING_CODE, L"1a23"); // the letter is dropped
    EXPECT_EQ(RefusedSend(1), (Texts{L"The billing code must be at least 4 digits"}));
    EXPECT_EQ(Ui().FocusedControl(), IDC_BILLING_CODE);
    Ui().Type(IDC_BILLING_CODE, L"1234");
    EXPECT_STREQ(Session().Send().BillingCode, L"1234");
}

TEST_F(FaxJobSession, AnEmptyBillingCodeAndAMissingImageGiveTwoMessagesAndTheFocusEndsOnTheImage)
{
    Open(WithBillingCode(1));
    Fill(L"Anna", L"1");
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Paste(IDC_IMAGE, L"C:\\none.bmp");
    EXPECT_EQ(RefusedSend(2),
              (Texts{L"The following information is required:\nBilling code", L"The file cannot be found."}));
    EXPECT_EQ(Ui().FocusedControl(), IDC_IMAGE);
}

TEST_F(FaxJobSession, AnImageMustBeNamedAsABitmapInAnyLetterCase)
{
    const TemporaryFolder folder;
    Open();
    Fill(L"Anna", L"1");
    Ui().Check(IDC_COVER_PAGE, true);
    for (const wchar_t* name : {L"logo.bmp.txt", L"logo"}) {
        Ui().Paste(IDC_IMAGE, folder.NewFile(name).wstring());
        EXPECT_EQ(RefusedSend(1), (Texts{L"The file format is not supported. Please specify a bitmap (.bmp) file."}));
        EXPECT_EQ(Ui().FocusedControl(), IDC_IMAGE);
    }
    Ui().Paste(IDC_IMAGE, folder.NewFile(L"Logo.BMP").wstring());
    EXPECT_EQ(Session().Send().OverlayPath, (folder / L"Logo.BMP").wstring());
}

TEST_F(FaxJobSession, UnderTheOverlayLockTheImageIsFixedAndNeverChecked)
{
    SessionOptions options;
    options.printer.coverPageLock = 1;
    options.printer.coverPagePath = L"C:\\Gone\\official.bmp";
    Open(options);
    EXPECT_TRUE(Ui().IsChecked(IDC_COVER_PAGE));
    EXPECT_FALSE(Ui().IsEnabled(IDC_COVER_PAGE));
    EXPECT_TRUE(Ui().IsEnabled(IDC_NOTES));
    EXPECT_TRUE(Ui().IsEnabled(IDC_SUBJECT));
    EXPECT_FALSE(Ui().IsEnabled(IDC_IMAGE));
    EXPECT_FALSE(Ui().IsEnabled(IDC_BROWSE));
    const HWND image = Ui().Control(IDC_IMAGE);
    Ui().Do([=] { SetWindowTextW(image, L"C:\\Gone\\none.txt"); });
    Fill(L"Anna", L"1");
    EXPECT_EQ(Session().Send().AddCoverPage, 1u);
}

TEST_F(FaxJobSession, TheCoverPageGoesOutAsTyped)
{
    Open();
    Fill(L"Anna", L"1");
    EXPECT_FALSE(Ui().IsEnabled(IDC_NOTES));
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Type(IDC_NOTES, L"First line\rSecond line");
    Ui().Type(IDC_SUBJECT, L"Offer 7");
    const FaxJobData& job = Session().Send();
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_STREQ(job.CoverPageNotes, L"First line\r\nSecond line");
    EXPECT_STREQ(job.CoverPageSubject, L"Offer 7");
    EXPECT_STREQ(job.OverlayPath, L"");
}

TEST_F(FaxJobSession, BrowseTakesTheChosenFile)
{
    const TemporaryFolder folder;
    const fs::path file = folder.NewFile(L"logo.bmp");
    Open();
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Press(IDC_BROWSE);
    Ui().AnswerFileDialog(file);
    Ui().WaitForControl(IDC_IMAGE);
    EXPECT_EQ(Ui().Text(IDC_IMAGE), file.wstring());
}

TEST_F(FaxJobSession, ASendThatTheSetupPageRefusesDoesNotSendTheTypedRecipientTwice)
{
    SendToAnnaWithoutTheAddressToNotify();
    Ui().Type(IDC_EMAIL, L"anna@example.org");
    Session().Send();
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"1", L""}}));
}

TEST_F(FaxJobSession, ASendThatTheSetupPageRefusesLeavesNothingBehindWhenTheProgramQuits)
{
    SendToAnnaWithoutTheAddressToNotify();
    Ui().Settle();
    EXPECT_EQ(Session().Record().Cancelled, 7u);
    EXPECT_EQ(Session().Recipients(), Recipients{});
    PostThreadMessageW(Session().UiThread(), WM_QUIT, 0, 0); // a sheet that ends like that is not told so
    EXPECT_EQ(Session().End().Cancelled, 7u);
    EXPECT_EQ(Session().Recipients(), Recipients{});
}

// A sheet that asks its pages from the last to the first, while this lives. Nothing says in which order one does.
class AskedBackwards : NoCopy {
public:
    AskedBackwards(HWND faxJobPage, HWND setupPage) : pages_{{faxJobPage}, {setupPage}}
    {
        current_ = this;
        for (Page& page : pages_)
            page.before = Exchange(page.window, Procedure);
    }
    ~AskedBackwards()
    {
        for (const Page& page : pages_)
            Exchange(page.window, page.before);
    }

private:
    struct Page {
        HWND window;
        WNDPROC before = nullptr;
    };

    static WNDPROC Exchange(HWND window, WNDPROC procedure)
    {
        return reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        const auto call = [=](const Page& page) { return CallWindowProcW(page.before, page.window, message, w, l); };
        const auto& [first, last] = current_->pages_;
        if (message != WM_NOTIFY || reinterpret_cast<const NMHDR*>(l)->code != static_cast<UINT>(PSN_APPLY))
            return call(window == first.window ? first : last);
        if (window == last.window)
            return current_->answerOfLast_; // asked already
        current_->answerOfLast_ = call(last);
        return current_->answerOfLast_ == PSNRET_NOERROR ? call(first) : current_->answerOfLast_;
    }

    static inline AskedBackwards* current_ = nullptr;
    Page pages_[2];
    LRESULT answerOfLast_ = PSNRET_NOERROR;
};

class AskedSheet : public FaxJobSession {
protected:
    // With a sender, and nobody to send to.
    void OpenWithSender()
    {
        SessionOptions options;
        options.prepare = [](FaxJobData& record) { record.Cancelled = 7; };
        Open(options);
        Ui().GoToPage(1);
        Ui().Type(IDC_SENDER_NAME, L"Carol");
        setupPage_ = Ui().Page();
        Ui().GoToPage(0);
    }
    AskedBackwards AskBackwards() { return {Ui().Page(), setupPage_}; }

    void ExpectNothingWritten()
    {
        EXPECT_EQ(Session().Record().Cancelled, 7u);
        EXPECT_STREQ(Session().Record().SenderName, L"");
    }
    void ExpectAllWritten()
    {
        EXPECT_EQ(Session().Record().Cancelled, 0u);
        EXPECT_STREQ(Session().Record().SenderName, L"Carol");
        EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"1", L""}}));
    }

private:
    HWND setupPage_ = nullptr;
};

TEST_F(AskedSheet, SendsAllOrNothingAlsoWhenItAsksTheSetupPageFirst)
{
    OpenWithSender();
    const AskedBackwards backwards = AskBackwards();
    EXPECT_EQ(RefusedSend(1), Texts{L"At least one fax number is required."}); // the Setup page has accepted
    ExpectNothingWritten();
    Fill(L"Anna", L"1");
    Session().Send();
    ExpectAllWritten();
}

// As other programs do, such as those that help the user to press buttons. The press that is refused ends with the page
// that the next one asks last.
TEST_F(AskedSheet, SendsHoweverItIsToldToAndInWhateverOrderItAsks)
{
    struct Way {
        UINT message;
        WPARAM w;
        bool closes;
    };
    for (const Way& way : {Way{PSM_PRESSBUTTON, PSBTN_OK, true}, Way{PSM_PRESSBUTTON, PSBTN_APPLYNOW, false},
                           Way{PSM_APPLY, 0, false}}) {
        SCOPED_TRACE(way.message + way.w);
        OpenWithSender();
        const auto press = [&, sheet = Ui().Dialog()] {
            PostMessageW(sheet, way.message, way.w, 0);
            Ui().Settle();
        };
        press();
        EXPECT_EQ(Ui().AnswerBox(IDOK).text, L"At least one fax number is required.");
        ExpectNothingWritten();
        Fill(L"Anna", L"1");
        const AskedBackwards backwards = AskBackwards();
        press();
        if (way.closes)
            Session().End();
        ExpectAllWritten();
        if (!way.closes) {
            EXPECT_FALSE(Ui().Finished());
            EXPECT_EQ(Session().Cancel().Cancelled, 1u);
        }
    }
}

TEST_F(FaxJobSession, AGroupThatStillStandsInTheFieldsIsLeftOutOfTheJob)
{
    RecentGroup(L"Duo", 2);
    Open();
    Add(L"Anna", L"1");
    Ui().Type(IDC_NAME_BOX, L"duo");
    ASSERT_TRUE(Ui().IsVisible(IDC_GROUP_TEXT));
    ASSERT_TRUE(Ui().IsEnabled(IDC_TO));
    EXPECT_EQ(Session().Send().Cancelled, 0u);
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"1", L""}}));
}

// ---- the keyboard

TEST_F(FaxJobSession, AWholeJobIsSentWithoutTheMouse)
{
    RecentEntry(L"Anna", L"5550100", L"Orchard");
    Open();
    EXPECT_EQ(Ui().FocusedControl(), IDC_NAME_BOX);
    Ui().PressKey('A');       // completes to Anna
    Ui().PressKey(VK_RETURN); // takes her; the sheet stays
    EXPECT_EQ(Ui().Text(IDC_NAME_BOX), L"Anna");
    Ui().PressKey('T', {VK_MENU});
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 1);
    Ui().PressKey('F', {VK_MENU});
    EXPECT_EQ(Ui().FocusedControl(), IDC_FAX_NUMBER);
    for (const WORD key : {'5', '5', '5'})
        Ui().PressKey(key);
    Ui().PressKey('V', {VK_MENU});
    EXPECT_TRUE(Ui().IsChecked(IDC_COVER_PAGE));
    Ui().PressKey('S', {VK_MENU});
    const FaxJobData& job = Session().End();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"Anna", L"5550100", L"Orchard"}, {L"", L"555", L""}}));
}

TEST_F(FaxJobSession, ANameAndANumberAreSentWithTwoTabsAndEnter)
{
    Open();
    Press("ANNA\t\t555\r");
    EXPECT_EQ(Session().End().Cancelled, 0u);
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"anna", L"555", L""}}));
}

// Whoever goes on with Tab from field to field comes to the button that takes what was typed, and back to the name.
TEST_F(FaxJobSession, ThreeRecipientsAreTypedWithTabAndEnterAlone)
{
    Open();
    for (const char* const recipient : {"ANN\t\t11\tACME\t\r", "BOB\t\t22\t\t\r", "CAT\t\t33"})
        Press(recipient);
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 2);
    Press("\r");
    EXPECT_EQ(Session().End().Cancelled, 0u);
    EXPECT_EQ(Session().Recipients(),
              (Recipients{{L"ann", L"11", L"acme"}, {L"bob", L"22", L""}, {L"cat", L"33", L""}}));
}

// The sender's defaults, a new entry for the phone book, recipients from there and typed ones, one of them taken back,
// and the cover page.
TEST_F(FaxJobSession, FromTheDefaultsToSendEverythingIsDoneWithTheKeyboardAlone)
{
    Open();
    Alt('N');
    GoToSheetTabs();
    Ui().PressKey(VK_RIGHT);
    Ui().WaitForControl(IDC_EDIT_DEFAULTS);
    Alt('E');
    Ui().WaitForControl(IDC_APPLY_DEFAULTS);
    Press("NORA\r"); // OK is the default button
    Ui().WaitForControl(IDC_EDIT_DEFAULTS);
    GoToSheetTabs();
    Ui().PressKey(VK_LEFT);
    Ui().WaitForControl(IDC_NAME_BOX);

    Alt('N');
    Press("ANN\t\t11\tACME");
    Alt('A'); // into the phone book, and back in the name
    EXPECT_EQ(Ui().FocusedControl(), IDC_NAME_BOX);
    Alt('L');      // clear
    Press("\t\r"); // the picker
    Ui().WaitForControl(IDC_PICK_LIST);
    Alt('L');
    Ui().PressKey(VK_TAB);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_HOME);
    Press("\r"); // takes the first row
    Alt('L');
    Press("\r"); // OK
    Ui().WaitForControl(IDC_NAME_BOX);
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 1);

    Alt('N');
    Press("BOB\t\t22\t\t\rCAT\t\t33\t\t\r");
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 3);
    Alt('R');
    Ui().PressKey(VK_HOME);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_DELETE);              // Bob
    Ui().PressKey(VK_SPACE, {VK_CONTROL}); // selects Cat, who is next
    EXPECT_EQ(Ui().SelectedRows(IDC_RECIPIENTS), std::vector<int>{1});
    Alt('V');
    Press("\tHI");
    Alt('S');
    const FaxJobData& job = Session().End();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_STREQ(job.CoverPageNotes, L"hi");
    EXPECT_EQ(Session().Recipients(), (Recipients{{L"ann", L"11", L"acme"}, {L"cat", L"33", L""}}));
}

TEST_F(FaxJobSession, EnterInTheFaxNumberSends)
{
    Open();
    Ui().Type(IDC_FAX_NUMBER, L"555");
    Ui().PressKey(VK_RETURN);
    EXPECT_EQ(Session().End().Cancelled, 0u);
}

TEST_F(FaxJobSession, EscapeClosesTheListFirstAndThenTheSheet)
{
    RecentEntry(L"Anna", L"5550100");
    Open();
    Ui().PressKey('A');
    EXPECT_EQ(Ui().Text(IDC_NAME_BOX), L"Anna");
    Ui().PressKey(VK_ESCAPE);
    EXPECT_EQ(Ui().Text(IDC_NAME_BOX), L"");
    EXPECT_FALSE(Ui().Finished());
    Ui().PressKey(VK_ESCAPE);
    EXPECT_EQ(Session().End().Cancelled, 1u);
}

TEST_F(FaxJobSession, EscapeInTheNotesCancelsTheSheet)
{
    Open();
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Type(IDC_NOTES, L"Hello");
    Ui().PressKey(VK_ESCAPE);
    EXPECT_EQ(Session().End().Cancelled, 1u);
}

TEST_F(FaxJobSession, AFieldThatCannotBeUsedLooksDisabled)
{
    Open();
    const auto ground = [&](int id) {
        COLORREF color = 0;
        Ui().Do([&color, field = Ui().Control(id)] {
            RedrawWindow(field, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ERASE | RDW_FRAME);
            RECT area;
            GetClientRect(field, &area);
            const HDC dc = GetDC(field);
            color = GetPixel(dc, area.right - 4, area.bottom / 2);
            ReleaseDC(field, dc);
        });
        return color;
    };
    for (const int id : {IDC_NOTES, IDC_SUBJECT, IDC_IMAGE})
        EXPECT_EQ(ground(id), GetSysColor(COLOR_BTNFACE)) << id;
    Ui().Check(IDC_COVER_PAGE, true);
    for (const int id : {IDC_NOTES, IDC_SUBJECT, IDC_IMAGE})
        EXPECT_EQ(ground(id), GetSysColor(COLOR_WINDOW)) << id;
    Ui().GoToPage(1);
    EXPECT_EQ(ground(IDC_EMAIL), GetSysColor(COLOR_BTNFACE));
}

TEST_F(FaxJobSession, TabReachesEveryFieldInReadingOrder)
{
    Open(WithBillingCode(0));
    Ui().Check(IDC_COVER_PAGE, true);
    Fill(L"Anna", L"1");
    Ui().Focus(IDC_NAME_BOX);
    std::vector<int> reached{IDC_NAME_BOX};
    for (;;) {
        Ui().PressKey(VK_TAB);
        const int control = Ui().FocusedControl();
        if (control == IDOK || reached.size() > 30)
            break;
        reached.push_back(control);
    }
    EXPECT_EQ(reached, (std::vector<int>{IDC_NAME_BOX, IDC_PHONE_BOOK, IDC_FAX_NUMBER, IDC_COMPANY, IDC_TO,
                                         IDC_RECIPIENTS, IDC_ADD_TO_PHONE_BOOK, IDC_CLEAR_FIELDS, IDC_COVER_PAGE,
                                         IDC_NOTES, IDC_SUBJECT, IDC_IMAGE, IDC_BROWSE, IDC_BILLING_CODE}));
    Ui().Press(IDC_TO);
    Ui().Focus(IDC_RECIPIENTS);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_TAB);
    EXPECT_EQ(Ui().FocusedControl(), IDC_DELETE);
}

TEST_F(FaxJobSession, ControlAAndDeleteEmptyTheRecipientList)
{
    Open();
    Add(L"A", L"1");
    Add(L"B", L"2");
    Ui().Focus(IDC_RECIPIENTS);
    Ui().PressKey('A', {VK_CONTROL});
    EXPECT_EQ(Ui().SelectedRows(IDC_RECIPIENTS).size(), 2u);
    Ui().PressKey(VK_DELETE);
    EXPECT_EQ(Ui().RowCount(IDC_RECIPIENTS), 0);
}

// ---- the screen

constexpr LONG kLowScreen = 560; // what a screen of 600 lines shows beside its taskbar

RECT PlaceOnScreen(HWND window)
{
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

bool IsWhollyOnScreen(HWND window)
{
    RECT screen{}, seen{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
    const RECT place = PlaceOnScreen(window);
    return IntersectRect(&seen, &screen, &place) && EqualRect(&seen, &place);
}

// Puts a sheet into the corner of the screen before it learns that it is going to be shown.
LRESULT CALLBACK PutIntoTheCorner(int code, WPARAM w, LPARAM l)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(l);
    const bool isSheet =
        code == HC_ACTION && sent.message == WM_SHOWWINDOW && GetDlgItem(sent.hwnd, kSheetTabs) != nullptr;
    if (isSheet && sent.wParam != FALSE && !IsWindowVisible(sent.hwnd))
        SetWindowPos(sent.hwnd, nullptr, GetSystemMetrics(SM_CXSCREEN) - 60, GetSystemMetrics(SM_CYSCREEN) - 60, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return CallNextHookEx(nullptr, code, w, l);
}

TEST_F(FaxJobSession, TheSheetIsShownWholeWhereverItIsPut)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, PutIntoTheCorner, nullptr, session.UiThread());
    session.Start();
    session.Ui().WaitForControl(IDC_NAME_BOX);
    UnhookWindowsHookEx(hook);
    const HWND sheet = session.Ui().Dialog();
    EXPECT_TRUE(IsWhollyOnScreen(sheet));
    EXPECT_GT(PlaceOnScreen(sheet).left, 100) << "it was not put into the corner";
    session.Cancel();
}

TEST_F(FaxJobSession, FromASheetInTheCornerEveryDialogOpensWhole)
{
    Open();
    SetWindowPos(Ui().Dialog(), nullptr, GetSystemMetrics(SM_CXSCREEN) - 300, GetSystemMetrics(SM_CYSCREEN) - 200, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER);
    ASSERT_FALSE(IsWhollyOnScreen(Ui().Dialog()));
    Ui().Press(IDC_PHONE_BOOK);
    Ui().WaitForControl(IDC_PICK_LIST);
    EXPECT_TRUE(IsWhollyOnScreen(Ui().Dialog()));
    Ui().Press(IDCANCEL);
    Ui().WaitForControl(IDC_NAME_BOX);
    Ui().GoToPage(1);
    Ui().Press(IDC_EDIT_DEFAULTS);
    Ui().WaitForControl(IDC_APPLY_DEFAULTS);
    EXPECT_TRUE(IsWhollyOnScreen(Ui().Dialog()));
}

TEST_F(FaxJobSession, TheSheetFitsALowScreen)
{
    Open();
    const RECT place = PlaceOnScreen(Ui().Dialog());
    EXPECT_LE(place.bottom - place.top, kLowScreen);
}

// ---- the completing name box

TEST_F(FaxJobSession, TheArrowOffersAllRecentNamesAndEnterTakesOne)
{
    RecentEntry(L"Bob", L"2");
    RecentEntry(L"Anna", L"1");
    Open();
    Ui().PressKey(VK_DOWN, {VK_MENU});
    EXPECT_EQ(Ui().ComboItems(IDC_NAME_BOX), (Texts{L"Anna", L"Bob"}));
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_RETURN);
    EXPECT_EQ(Ui().Text(IDC_NAME_BOX), L"Bob");
    EXPECT_EQ(Ui().Text(IDC_FAX_NUMBER), L"2");
    EXPECT_FALSE(Ui().Finished());
}

TEST_F(FaxJobSession, ThirtyFourSessionsOfAProcessAllComplete)
{
    RecentEntry(L"Anna", L"1");
    Open();
    for (int i = 0; i < 34; ++i) {
        Ui().WaitForControl(IDC_NAME_BOX);
        Ui().Type(IDC_NAME_BOX, L"a");
        ASSERT_EQ(Ui().Text(IDC_NAME_BOX), L"Anna") << i;
        Session().Cancel();
        Session().Start();
    }
}

// ---- bad surroundings

TEST_F(FaxJobSession, APhoneBookThatIsGoneDoesNotDisturb)
{
    Open();
    fs::remove(Session().PhoneBookFile());
    Fill(L"Anna", L"1");
    Ui().Press(IDC_ADD_TO_PHONE_BOOK);
    Session().Send();
    EXPECT_EQ(Session().Recipients().size(), 1u);
}

} // namespace
} // namespace qx::test
