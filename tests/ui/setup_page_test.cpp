#include "res/cover_page_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/input_method.h"
#include "support/late_buttons.h"
#include "support/phone_book_session.h"
#include "support/server_printer.h"

#include <gtest/gtest.h>
#include <optional>

namespace qx::test {
namespace {

using host::BoxContents;
using host::UiDriver;

constexpr int kFaxJobPage = 0;
constexpr int kSetupPage = 1;

// On the Setup page of a job that has a recipient: it could be sent as it is.
UiDriver& OnSetupPage(SendFaxSession& session)
{
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_NAME_BOX);
    ui.Type(IDC_FAX_NUMBER, L"5550100");
    ui.GoToPage(kSetupPage);
    ui.WaitForControl(IDC_SENDER_NAME);
    return ui;
}

RECT SendButtonPlace(UiDriver& ui)
{
    RECT place;
    GetWindowRect(ui.Control(IDOK), &place);
    return place;
}

bool Same(const RECT& a, const RECT& b)
{
    return EqualRect(&a, &b) != FALSE;
}

// ---- load and save --------------------------------------------------------------------------------------------------

TEST(SetupPage, ShowsTheStoredDefaultsAndSendsThem)
{
    SendFaxSession session;
    UserDefaults stored = SampleDefaults();
    stored[L"AddCoverPage"] = 0u; // there is no such image
    session.SetDefaults(stored);
    UiDriver& ui = OnSetupPage(session);
    const UserDefaults shown = SenderSettingsIn(ui.Page());
    EXPECT_EQ(shown, ThoseAmong(stored, shown));
    EXPECT_TRUE(ui.IsEnabled(IDC_EMAIL));

    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.Cancelled, 0u);
    EXPECT_EQ(DefaultsOf(job), stored);
}

TEST(SetupPage, SendsWhatTheUserChanged)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Type(IDC_SENDER_NAME, L"Bob");
    ui.Type(IDC_SENDER_FAX, L"[555]1");
    ui.Type(IDC_SENDER_COMPANY, L"Acme");
    ui.Type(IDC_SENDER_VOICE, L"(555)2");
    ui.Choose(IDC_FINE);
    ui.Choose(IDC_NOTIFY_ON_ERROR);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Type(IDC_EMAIL, L"bob@example.com");
    ui.Check(IDC_PREVIEW, true);
    const FaxJobData& job = session.Send();
    EXPECT_STREQ(job.SenderName, L"Bob");
    EXPECT_STREQ(job.SenderFaxNo, L"[555]1");
    EXPECT_STREQ(job.SenderCompany, L"Acme");
    EXPECT_STREQ(job.SenderVoiceNo, L"(555)2");
    EXPECT_EQ(job.Resolution, 1u);
    EXPECT_EQ(job.NotifyOn, 2u);
    EXPECT_EQ(job.NotifyMethod, 2u);
    EXPECT_STREQ(job.NotifyEmail, L"bob@example.com");
    EXPECT_EQ(job.ShowPreview, 1u);
    EXPECT_EQ(job.Cancelled, 0u);
}

TEST(SetupPage, EveryChoiceReachesTheJobAsItsNumber)
{
    struct Case {
        int control;
        DWORD FaxJobData::* field;
        DWORD value;
    };
    const Case cases[] = {
        {IDC_STANDARD, &FaxJobData::Resolution, 0},       {IDC_FINE, &FaxJobData::Resolution, 1},
        {IDC_SUPERFINE, &FaxJobData::Resolution, 2},      {IDC_NOTIFY_NEVER, &FaxJobData::NotifyOn, 0},
        {IDC_NOTIFY_THIS_JOB, &FaxJobData::NotifyOn, 1},  {IDC_NOTIFY_ON_ERROR, &FaxJobData::NotifyOn, 2},
        {IDC_NOTIFY_PRINT, &FaxJobData::NotifyMethod, 1},
    };
    SendFaxSession session;
    for (const Case& c : cases) {
        session.SetDefault(L"NotifyOn", 1u);
        session.SetDefault(L"NotifyMethod", 2u);
        session.SetDefault(L"NotifyEmail", L"ann@example.com");
        OnSetupPage(session).Choose(c.control);
        EXPECT_EQ(session.Send().*c.field, c.value) << c.control;
    }
}

TEST(SetupPage, ANotificationThatIsNeverSentHasNoMethod)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_PRINT);
    ui.Choose(IDC_NOTIFY_NEVER);
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.NotifyOn, 0u);
    EXPECT_EQ(job.NotifyMethod, 0u);
}

TEST(SetupPage, CancelMarksTheJobCancelled)
{
    SendFaxSession session;
    OnSetupPage(session);
    session.Record().Cancelled = 7;
    EXPECT_EQ(session.Cancel().Cancelled, 1u);
}

TEST(SetupPage, FieldsTakeNoMoreThanTheirLimits)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    for (const int edit : {IDC_SENDER_NAME, IDC_SENDER_FAX, IDC_SENDER_COMPANY, IDC_SENDER_VOICE}) {
        ui.Type(edit, std::wstring(60, L'5'));
        EXPECT_EQ(ui.Text(edit), std::wstring(50, L'5')) << edit;
    }
    ui.Type(IDC_EMAIL, std::wstring(300, L'@'));
    EXPECT_EQ(ui.Text(IDC_EMAIL), std::wstring(256, L'@'));
    EXPECT_EQ(std::wstring(session.Send().NotifyEmail), std::wstring(256, L'@'));
}

// ---- number filters -------------------------------------------------------------------------------------------------

TEST(SetupPage, NumbersAndTheAddressAreTypedWithoutAnInputMethod)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    const auto check = [&ui] {
        for (const int id : {IDC_SENDER_FAX, IDC_SENDER_VOICE, IDC_EMAIL})
            EXPECT_FALSE(TakesInputMethod(ui.Control(id))) << id;
        for (const int id : {IDC_SENDER_NAME, IDC_SENDER_COMPANY})
            EXPECT_TRUE(TakesInputMethod(ui.Control(id))) << id;
    };
    check();
    ui.Press(IDC_EDIT_DEFAULTS);
    check();
}

TEST(SetupPage, ABracketIsAcceptedInTheFaxNumberAndRefusedInTheVoiceNumber)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Type(IDC_SENDER_FAX, L"1[2]3");
    EXPECT_EQ(ui.Text(IDC_SENDER_FAX), L"1[2]3");
    ui.Type(IDC_SENDER_VOICE, L"1[2]3");
    EXPECT_EQ(ui.Text(IDC_SENDER_VOICE), L"123");
}

TEST(SetupPage, ARefusedChangePutsTheLastAcceptedTextBackWithTheCaretAtItsEnd)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    for (const int edit : {IDC_SENDER_FAX, IDC_SENDER_VOICE}) {
        ui.Type(edit, L"55,-*#()5");
        ui.Paste(edit, L"666 x");
        EXPECT_EQ(ui.Text(edit), L"55,-*#()5");
        EXPECT_EQ(SendMessageW(ui.Control(edit), EM_GETSEL, 0, 0), MAKELRESULT(9, 9));
        ui.TypeMore(edit, L"+a 7");
        EXPECT_EQ(ui.Text(edit), L"55,-*#()57");
        ui.Paste(edit, L"");
        ui.TypeMore(edit, L"x");
        EXPECT_EQ(ui.Text(edit), L""); // an empty text was the last accepted one
    }
}

TEST(SetupPage, AStoredNumberWithABracketComesBackEmpty)
{
    SendFaxSession session;
    session.SetDefault(L"SenderFaxNo", L"[555]");
    EXPECT_EQ(OnSetupPage(session).Text(IDC_SENDER_FAX), L"");
}

// ---- notification ---------------------------------------------------------------------------------------------------

TEST(SetupPage, ChoosingPrintDisablesTheAddressAndChoosingEmailEnablesIt)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    EXPECT_TRUE(ui.IsEnabled(IDC_EMAIL));
    ui.Choose(IDC_NOTIFY_PRINT);
    EXPECT_FALSE(ui.IsEnabled(IDC_EMAIL));
}

TEST(SetupPage, WithoutNotificationItsControlsAreGoneAndNothingIsNotified)
{
    SendFaxSession session(WithDevice(L"FAX_NOTIFICATION_AVAILABLE", 0u));
    session.SetDefault(L"NotifyOn", 2u);
    session.SetDefault(L"NotifyMethod", 2u);
    UiDriver& ui = OnSetupPage(session);
    for (const int control :
         {IDC_NOTIFICATION_GROUP, IDC_NOTIFY_LABEL, IDC_NOTIFY_NEVER, IDC_NOTIFY_THIS_JOB, IDC_NOTIFY_ON_ERROR,
          IDC_NOTIFY_TYPE_LABEL, IDC_NOTIFY_PRINT, IDC_NOTIFY_EMAIL, IDC_EMAIL_LABEL, IDC_EMAIL})
        EXPECT_FALSE(ui.IsVisible(control)) << control;
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.NotifyOn, 0u);
    EXPECT_EQ(job.NotifyMethod, 0u);
}

TEST(SetupPage, WithoutTheEmailServiceOnlyPrintIsOfferedAndTheAddressIsNotChecked)
{
    SendFaxSession session(WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 0u));
    session.SetDefault(L"NotifyOn", 1u);
    session.SetDefault(L"NotifyMethod", 2u);
    session.SetDefault(L"NotifyEmail", L"no address");
    UiDriver& ui = OnSetupPage(session);
    EXPECT_FALSE(ui.IsEnabled(IDC_NOTIFY_EMAIL));
    EXPECT_FALSE(ui.IsEnabled(IDC_EMAIL));
    EXPECT_TRUE(ui.IsVisible(IDC_EMAIL));
    EXPECT_TRUE(ui.IsChecked(IDC_NOTIFY_PRINT));
    EXPECT_FALSE(ui.IsChecked(IDC_NOTIFY_EMAIL));
    const FaxJobData& job = session.Send(); // no question
    EXPECT_EQ(job.NotifyMethod, 1u);
    EXPECT_STREQ(job.NotifyEmail, L""); // saved from its field, which does not show the stored one
}

TEST(SetupPage, AnAddressWithAnAtSignPasses)
{
    SendFaxSession session;
    for (const wchar_t* const address : {L"user@", L"@"}) {
        UiDriver& ui = OnSetupPage(session);
        ui.Choose(IDC_NOTIFY_EMAIL);
        ui.Type(IDC_EMAIL, address);
        EXPECT_STREQ(session.Send().NotifyEmail, address);
    }
}

TEST(SetupPage, AnAddressWithoutAnAtSignIsAskedAboutAndNoKeepsTheSheetOpenWithItSelected)
{
    SendFaxSession session(WithoutTextLibrary());
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Type(IDC_EMAIL, L"user.example");
    ui.Focus(IDC_SENDER_NAME);
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDNO),
              WarningBox(L"The e-mail address is not in a recognized e-mail format.  Do you still want to use it?",
                         MB_ICONWARNING, {IDYES, IDNO}));
    EXPECT_FALSE(ui.Finished());
    EXPECT_EQ(ui.FocusedControl(), IDC_EMAIL);
    EXPECT_TRUE(AllSelected(ui, IDC_EMAIL));

    ui.Press(IDOK);
    ui.AnswerBox(IDYES);
    const FaxJobData& job = session.End();
    EXPECT_STREQ(job.NotifyEmail, L"user.example");
    EXPECT_EQ(job.Cancelled, 0u);
}

TEST(SetupPage, AMissingAddressIsAnError)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Press(IDOK);
    const BoxContents box = ui.AnswerBox(IDOK);
    EXPECT_EQ(box.icon, static_cast<UINT>(MB_ICONERROR));
    EXPECT_EQ(box.buttons, std::vector<int>{IDOK});
    EXPECT_NE(box.text.find(L'\n'), std::wstring::npos); // what is needed, and below it what is missing
    EXPECT_FALSE(ui.Finished());
    EXPECT_EQ(ui.FocusedControl(), IDC_EMAIL);
}

TEST(SetupPage, AFailedCheckBringsThePageBackWhenAnotherOneIsShown)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.GoToPage(kFaxJobPage);
    ui.WaitForControl(IDC_NAME_BOX);
    ui.Press(IDOK);
    ui.AnswerBox(IDOK);
    ui.WaitForControl(IDC_EMAIL);
    EXPECT_EQ(ui.FocusedControl(), IDC_EMAIL);
    ui.Type(IDC_EMAIL, L"ann@example.com");
    session.Send();
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"", L"5550100", L""}})); // once, though sent twice
}

// ---- preview and the Send button ------------------------------------------------------------------------------------

TEST(SetupPage, TogglingThePreviewTwiceLeavesTheSendButtonAtItsFirstSize)
{
    for (const bool textLibrary : {true, false}) {
        SendFaxSession session(textLibrary ? SessionOptions() : WithoutTextLibrary());
        UiDriver& ui = OnSetupPage(session);
        const RECT before = SendButtonPlace(ui);
        const std::wstring send = ui.Text(IDOK);
        ui.Check(IDC_PREVIEW, true);
        EXPECT_FALSE(Same(SendButtonPlace(ui), before));
        EXPECT_NE(ui.Text(IDOK), send);
        ui.Check(IDC_PREVIEW, false);
        EXPECT_TRUE(Same(SendButtonPlace(ui), before));
        ui.Check(IDC_PREVIEW, true);
        ui.Check(IDC_PREVIEW, false);
        EXPECT_TRUE(Same(SendButtonPlace(ui), before));
        EXPECT_EQ(session.Send().ShowPreview, 0u);
    }
}

TEST(SetupPage, TheSendButtonHasTheBuiltInCaptionsWithoutTheTextLibrary)
{
    SendFaxSession session(WithoutTextLibrary());
    UiDriver& ui = OnSetupPage(session);
    ui.Check(IDC_PREVIEW, true);
    EXPECT_EQ(ui.Text(IDOK), L"-Preview and &Send");
    ui.Check(IDC_PREVIEW, false);
    EXPECT_EQ(ui.Text(IDOK), L"-&Send ");
}

TEST(SetupPage, AStoredPreviewIsOnTheSendButtonWhicheverPageComesFirst)
{
    for (const bool setupFirst : {true, false}) {
        SessionOptions options = WithoutTextLibrary();
        if (setupFirst) // nothing stored: the sheet opens on the Setup page, with what the driver put into the record
            options.prepare = [](FaxJobData& record) { record.ShowPreview = 1; };
        SendFaxSession session(std::move(options));
        UiDriver& ui = session.Ui();
        if (setupFirst) {
            session.Start();
            ui.WaitForControl(IDC_SENDER_NAME);
        } else {
            session.SetDefault(L"ShowPreview", 1u);
            OnSetupPage(session);
        }
        EXPECT_EQ(ui.Text(IDOK), L"-Preview and &Send");
        const RECT grown = SendButtonPlace(ui);
        ui.Check(IDC_PREVIEW, false);
        EXPECT_FALSE(Same(SendButtonPlace(ui), grown));
        RECT cancel;
        GetWindowRect(ui.Control(IDCANCEL), &cancel);
        const RECT send = SendButtonPlace(ui);
        EXPECT_EQ(send.right - send.left, cancel.right - cancel.left); // as the sheet makes them
        ui.Check(IDC_PREVIEW, true);
        EXPECT_TRUE(Same(SendButtonPlace(ui), grown));
    }
}

TEST(SetupPage, AStoredPreviewFitsTheSendButtonThatIsLaidOutAfterThePages)
{
    SendFaxSession session;
    const LateButtons late(session.UiThread());
    session.SetDefault(L"ShowPreview", 1u);
    session.Start(); // first use: on the Setup page
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_SENDER_NAME);
    const auto widthOf = [&ui](int button) {
        RECT place{};
        GetWindowRect(ui.Control(button), &place);
        return place.right - place.left;
    };
    EXPECT_TRUE(ui.IsChecked(IDC_PREVIEW));
    EXPECT_GT(widthOf(IDOK), widthOf(IDCANCEL));
    ui.Check(IDC_PREVIEW, false);
    EXPECT_EQ(widthOf(IDOK), widthOf(IDCANCEL));
    session.Cancel();
}

TEST(SetupPage, APrinterOfAServerHidesThePreviewAndSendsNone)
{
    SendFaxSession session(WithoutTextLibrary());
    const PrintersBehindServer server(session.Module());
    session.SetDefault(L"ShowPreview", 1u);
    UiDriver& ui = OnSetupPage(session);
    EXPECT_FALSE(ui.IsVisible(IDC_PREVIEW));
    EXPECT_FALSE(ui.IsVisible(IDC_PREVIEW_GROUP));
    EXPECT_FALSE(ui.IsEnabled(IDC_PREVIEW));
    EXPECT_TRUE(ui.IsEnabled(IDC_PREVIEW_GROUP)); // hidden, and no more than that
    EXPECT_EQ(ui.Text(IDOK), L"-&Send");
    ui.Press(IDC_EDIT_DEFAULTS);
    EXPECT_FALSE(ui.IsVisible(IDC_PREVIEW));
    EXPECT_FALSE(ui.IsVisible(IDC_PREVIEW_GROUP));
    EXPECT_FALSE(ui.IsEnabled(IDC_PREVIEW));
    EXPECT_FALSE(ui.IsEnabled(IDC_PREVIEW_GROUP));
    ui.Press(IDCANCEL);
    EXPECT_EQ(session.Send().ShowPreview, 0u);
}

// ---- keyboard -------------------------------------------------------------------------------------------------------

TEST(SetupPage, TabStopsOnceInEachGroupOfChoicesAndArrowsMoveWithinIt)
{
    SendFaxSession session;
    session.SetDefault(L"Resolution", 1u);
    session.SetDefault(L"NotifyOn", 0u);
    session.SetDefault(L"NotifyMethod", 2u);
    UiDriver& ui = OnSetupPage(session);
    ui.Focus(IDC_SENDER_NAME);
    for (const int next : {IDC_SENDER_FAX, IDC_SENDER_COMPANY, IDC_SENDER_VOICE, IDC_FINE, IDC_NOTIFY_NEVER,
                           IDC_NOTIFY_EMAIL, IDC_EMAIL, IDC_PREVIEW, IDC_EDIT_DEFAULTS, IDC_EDIT_PHONE_BOOK}) {
        ui.PressKey(VK_TAB);
        EXPECT_EQ(ui.FocusedControl(), next);
    }
    ui.Focus(IDC_FINE);
    ui.PressKey(VK_DOWN);
    EXPECT_TRUE(ui.IsChecked(IDC_SUPERFINE));
    ui.PressKey(VK_DOWN); // round within the group
    EXPECT_TRUE(ui.IsChecked(IDC_STANDARD));
    EXPECT_TRUE(ui.IsChecked(IDC_NOTIFY_NEVER));
    ui.Focus(IDC_NOTIFY_EMAIL);
    ui.PressKey(VK_UP);
    EXPECT_TRUE(ui.IsChecked(IDC_NOTIFY_PRINT));
    EXPECT_FALSE(ui.IsEnabled(IDC_EMAIL));
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.Resolution, 0u);
}

// ---- the user's defaults --------------------------------------------------------------------------------------------

TEST(SetupPage, TheFirstDefaultsAreTakenByTheJobEvenWhenNotAskedFor)
{
    SendFaxSession session;
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_EDIT_DEFAULTS); // first use: the sheet opens on this page
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.Type(IDC_SENDER_NAME, L"Ann Lee");
    ui.Choose(IDC_FINE);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Type(IDC_SUBJECT, L"Offer");
    ui.Check(IDC_APPLY_DEFAULTS, false);
    ui.Press(IDOK);
    EXPECT_EQ(ui.Text(IDC_SENDER_NAME), L"Ann Lee"); // the page shows them
    EXPECT_TRUE(ui.IsChecked(IDC_FINE));

    ui.GoToPage(kFaxJobPage);
    ui.WaitForControl(IDC_NAME_BOX);
    EXPECT_TRUE(ui.IsChecked(IDC_COVER_PAGE));
    ui.Type(IDC_FAX_NUMBER, L"5550100");
    const FaxJobData& job = session.Send();
    EXPECT_STREQ(job.SenderName, L"Ann Lee");
    EXPECT_EQ(job.Resolution, 1u);
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_STREQ(job.CoverPageSubject, L"Offer");
    EXPECT_EQ(job.ApplyDefaults, 0u);
}

TEST(SetupPage, LaterDefaultsAreTakenByTheJobOnlyWhenAskedFor)
{
    for (const bool apply : {false, true}) {
        SendFaxSession session;
        session.SetDefault(L"SenderName", L"before");
        UiDriver& ui = OnSetupPage(session);
        ui.Press(IDC_EDIT_DEFAULTS);
        ui.Type(IDC_SENDER_NAME, L"after");
        ui.Check(IDC_APPLY_DEFAULTS, apply);
        ui.Press(IDOK);
        EXPECT_EQ(ui.Text(IDC_SENDER_NAME), apply ? L"after" : L"before");
        const FaxJobData& job = session.Send();
        EXPECT_STREQ(job.SenderName, apply ? L"after" : L"before");
        EXPECT_EQ(job.DefaultsSaved, 0u);
    }
}

// The Fax Job page was not seen again since: its older fields do not win over the defaults.
TEST(SetupPage, ACoverPageFromTheDefaultsOfAnEarlierSessionDoesNotReplaceTheOneThatIsTyped)
{
    SessionOptions options;
    options.prepare = [](FaxJobData& record) { record.CoverPageFromDefaults = 1; }; // as such a session leaves it
    SendFaxSession session(options);
    UiDriver& ui = OnSetupPage(session);
    ui.GoToPage(kFaxJobPage);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"typed");
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_STREQ(job.CoverPageNotes, L"typed");
    EXPECT_EQ(job.CoverPageFromDefaults, 0u);
}

TEST(SetupPage, TheCoverPageOfTheDefaultsIsSentWithoutSeeingTheFaxJobPageAgain)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"line 1\r\nline 2");
    ui.Check(IDC_APPLY_DEFAULTS, true);
    ui.Press(IDOK);
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_STREQ(job.CoverPageNotes, L"line 1\r\nline 2");
}

// The sheet turns to the page, and not every one tells the page so. What the user then types there is what is sent.
TEST(SetupPage, ASendThatTheFaxJobPageRefusesShowsTheCoverPageOfTheDefaults)
{
    SendFaxSession session;
    UiDriver& ui = OnSetupPage(session);
    ui.GoToPage(kFaxJobPage);
    ui.Type(IDC_FAX_NUMBER, L"");
    ui.GoToPage(kSetupPage);
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"from the defaults");
    ui.Check(IDC_APPLY_DEFAULTS, true);
    ui.Press(IDOK);
    ui.Press(IDOK); // to nobody
    ui.AnswerBox(IDOK);
    ui.WaitForControl(IDC_NAME_BOX);
    EXPECT_TRUE(ui.IsChecked(IDC_COVER_PAGE));
    EXPECT_EQ(ui.Text(IDC_NOTES), L"from the defaults");
    ui.Type(IDC_FAX_NUMBER, L"5550100");
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"typed");
    const FaxJobData& job = session.Send();
    EXPECT_EQ(job.AddCoverPage, 1u);
    EXPECT_STREQ(job.CoverPageNotes, L"typed");
}

TEST(SetupPage, CancellingTheDefaultsLeavesTheJobAsItWas)
{
    SendFaxSession session;
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    ui.Type(IDC_SENDER_NAME, L"typed");
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.Type(IDC_SENDER_NAME, L"Ann Lee");
    ui.Press(IDCANCEL);
    EXPECT_EQ(ui.Text(IDC_SENDER_NAME), L"typed");
    const FaxJobData& job = session.Cancel();
    EXPECT_EQ(job.DefaultsSaved, 0u);
    EXPECT_EQ(job.CoverPageFromDefaults, 0u);
}

// ---- the phone book -------------------------------------------------------------------------------------------------

TEST(SetupPage, ThePhoneBookIsReadAgainAfterItsEditor)
{
    SendFaxSession session;
    session.WritePhoneBook(BookText().Entry(0, L"Ann", L"1").Text());
    UiDriver& ui = OnSetupPage(session);
    ui.Press(IDC_EDIT_PHONE_BOOK);
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 1);
    DeleteRows(ui, {0});
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 0);
    ui.Press(IDCANCEL);
    ui.WaitForControl(IDC_EDIT_PHONE_BOOK);
    ui.Press(IDC_EDIT_PHONE_BOOK);
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 1); // the cancelled deletion is gone
    ui.Press(IDCANCEL);
    session.Cancel();
}

} // namespace
} // namespace qx::test
