#include "res/edit_defaults_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/print_host.h"
#include "support/send_fax_session.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::UiDriver;

// Opens the dialog on a first use: nothing is stored, and the sheet starts on the Setup page.
UiDriver& InEditDefaults(SendFaxSession& session)
{
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.WaitForControl(IDC_APPLY_DEFAULTS);
    return ui;
}

// The same when there are stored defaults.
UiDriver& InEditDefaultsAgain(SendFaxSession& session)
{
    session.SetDefault(L"ApplyDefaults", 0u);
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_NAME_BOX);
    ui.GoToPage(1);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.WaitForControl(IDC_APPLY_DEFAULTS);
    return ui;
}

// ---- load and store -------------------------------------------------------------------------------------------------

TEST(EditDefaults, StoresEveryValueWithItsType)
{
    const TemporaryFolder folder;
    const std::wstring image = folder.NewFile(L"logo.bmp").wstring();
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Type(IDC_SENDER_NAME, L"Ann Lee");
    ui.Type(IDC_SENDER_FAX, L"(555)1*#,-");
    ui.Type(IDC_SENDER_COMPANY, L"\u00c4rzte & S\u00f6hne");
    ui.Type(IDC_SENDER_VOICE, L"555-2");
    ui.Choose(IDC_SUPERFINE);
    ui.Choose(IDC_NOTIFY_THIS_JOB);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Type(IDC_EMAIL, L"ann@example.com");
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_NOTES, L"line 1\r\nline 2");
    ui.Type(IDC_SUBJECT, L"Offer");
    ui.Paste(IDC_IMAGE, image);
    ui.Check(IDC_PREVIEW, true);
    ui.Check(IDC_APPLY_DEFAULTS, true);
    EXPECT_EQ(session.StoredDefaults(), UserDefaults()); // nothing before OK
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    UserDefaults expected = SampleDefaults();
    expected[L"OverlayPath"] = image;
    EXPECT_EQ(session.StoredDefaults(), expected);
    session.Cancel();
}

TEST(EditDefaults, ShowsWhatIsStored)
{
    SendFaxSession session;
    UserDefaults stored = SampleDefaults();
    stored[L"Resolution"] = 1u;
    stored[L"NotifyOn"] = 2u;
    session.SetDefaults(stored);
    UiDriver& ui = InEditDefaultsAgain(session);
    UserDefaults shown = SenderSettingsIn(ui.Dialog());
    shown.merge(CoverPageIn(ui.Dialog()));
    EXPECT_EQ(shown, ThoseAmong(stored, shown));
    EXPECT_TRUE(ui.IsEnabled(IDC_EMAIL));
    EXPECT_FALSE(ui.IsChecked(IDC_APPLY_DEFAULTS));
}

TEST(EditDefaults, OkWithoutAChangeStoresTheSameValuesAgain)
{
    SendFaxSession session;
    UserDefaults stored = SampleDefaults();
    stored[L"ApplyDefaults"] = 0u;
    stored[L"AddCoverPage"] = 0u; // there is no such image
    session.SetDefaults(stored);
    InEditDefaultsAgain(session).Press(IDOK);
    session.Ui().WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults(), stored);
    session.Cancel();
}

TEST(EditDefaults, CancelStoresNothing)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Type(IDC_SENDER_NAME, L"Ann Lee");
    ui.Press(IDCANCEL);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults(), UserDefaults());
    ui.Press(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(ui.Text(IDC_SENDER_NAME), L""); // and nothing is kept for the next time
}

// Cancel after a first use, then OK with defaults that another program has stored meanwhile: those are not the first.
TEST(EditDefaults, WhetherTheyAreTheFirstIsAskedAnewEachTime)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Press(IDCANCEL);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    session.SetDefault(L"ApplyDefaults", 0u);
    ui.Press(IDC_EDIT_DEFAULTS);
    ui.Type(IDC_SENDER_NAME, L"Ann Lee");
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(ui.Text(IDC_SENDER_NAME), L""); // not taken by the job
    EXPECT_EQ(session.Cancel().DefaultsSaved, 0u);
}

TEST(EditDefaults, FieldsTakeNoMoreThanTheirLimits)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Check(IDC_COVER_PAGE, true);
    const std::pair<int, std::size_t> limits[] = {
        {IDC_SENDER_NAME, 50}, {IDC_SENDER_FAX, 50}, {IDC_SENDER_COMPANY, 50}, {IDC_SENDER_VOICE, 50},
        {IDC_EMAIL, 256},      {IDC_NOTES, 500},     {IDC_SUBJECT, 50},        {IDC_IMAGE, 260},
    };
    for (const auto& [edit, limit] : limits) {
        ui.Type(edit, std::wstring(limit + 9, L'5'));
        EXPECT_EQ(ui.Text(edit), std::wstring(limit, L'5')) << edit;
    }
}

// ---- what the device offers -----------------------------------------------------------------------------------------

TEST(EditDefaults, WithoutNotificationItsControlsAreGone)
{
    SendFaxSession session(WithDevice(L"FAX_NOTIFICATION_AVAILABLE", 0u));
    session.SetDefault(L"NotifyOn", 2u);
    session.SetDefault(L"NotifyMethod", 2u);
    UiDriver& ui = InEditDefaultsAgain(session);
    for (const int control :
         {IDC_NOTIFICATION_GROUP, IDC_NOTIFY_LABEL, IDC_NOTIFY_NEVER, IDC_NOTIFY_THIS_JOB, IDC_NOTIFY_ON_ERROR,
          IDC_NOTIFY_TYPE_LABEL, IDC_NOTIFY_PRINT, IDC_NOTIFY_EMAIL, IDC_EMAIL_LABEL, IDC_EMAIL})
        EXPECT_FALSE(ui.IsVisible(control)) << control;
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults()[L"NotifyOn"], DefaultValue(0u));
    EXPECT_EQ(session.StoredDefaults()[L"NotifyMethod"], DefaultValue(0u));
    session.Cancel();
}

TEST(EditDefaults, WithoutTheEmailServiceOnlyPrintIsOffered)
{
    SendFaxSession session(WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 0u));
    session.SetDefault(L"NotifyMethod", 2u);
    session.SetDefault(L"NotifyEmail", L"ann@example.com");
    UiDriver& ui = InEditDefaultsAgain(session);
    EXPECT_FALSE(ui.IsEnabled(IDC_NOTIFY_EMAIL));
    EXPECT_FALSE(ui.IsEnabled(IDC_EMAIL));
    EXPECT_TRUE(ui.IsChecked(IDC_NOTIFY_PRINT));
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults()[L"NotifyMethod"], DefaultValue(1u));
    EXPECT_EQ(session.StoredDefaults()[L"NotifyEmail"], DefaultValue(L"")); // what its field shows
    session.Cancel();
}

TEST(EditDefaults, TheMethodIsStoredAlsoWhenThereIsNothingToNotifyOf)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Choose(IDC_NOTIFY_NEVER);
    ui.Choose(IDC_NOTIFY_PRINT);
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults()[L"NotifyMethod"], DefaultValue(1u));
    session.Cancel();
}

TEST(EditDefaults, TheLockOfTheCoverPageDoesNotReachThem)
{
    SessionOptions options;
    options.printer.coverPageLock = 1;
    options.printer.coverPagePath = L"C:\\locked.bmp";
    SendFaxSession session(std::move(options));
    UiDriver& ui = InEditDefaults(session);
    EXPECT_TRUE(ui.IsEnabled(IDC_COVER_PAGE));
    ui.Check(IDC_COVER_PAGE, true);
    EXPECT_TRUE(ui.IsEnabled(IDC_IMAGE));
    EXPECT_TRUE(ui.IsEnabled(IDC_BROWSE));
}

// The print host is known by its name alone: this program runs itself again under that name.
TEST(EditDefaults, InThePrintHostFor32BitProgramsThereIsNoCoverPage)
{
    if (!InPrintHost()) {
        EXPECT_EQ(RunInPrintHost("EditDefaults.InThePrintHost*"), 0u);
        return;
    }

    SendFaxSession session;
    session.SetDefault(L"AddCoverPage", 1u);
    session.SetDefault(L"CoverPageSubject", L"Offer");
    UiDriver& ui = InEditDefaultsAgain(session);
    EXPECT_FALSE(ui.IsChecked(IDC_COVER_PAGE));
    for (const int control : {IDC_COVER_PAGE, IDC_NOTES, IDC_SUBJECT, IDC_IMAGE, IDC_BROWSE})
        EXPECT_FALSE(ui.IsEnabled(control)) << control;
    EXPECT_EQ(ui.Text(IDC_SUBJECT), L"Offer");
}

// ---- cover page -----------------------------------------------------------------------------------------------------

TEST(EditDefaults, TheCoverPagesFieldsFollowItsCheckBox)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    for (const bool on : {true, false}) {
        ui.Check(IDC_COVER_PAGE, on);
        for (const int control : {IDC_NOTES, IDC_SUBJECT, IDC_IMAGE, IDC_BROWSE})
            EXPECT_EQ(ui.IsEnabled(control), on) << control;
    }
}

TEST(EditDefaults, BrowsePutsTheChosenFileIntoTheImageField)
{
    const TemporaryFolder folder;
    const std::wstring image = folder.NewFile(L"chosen.bmp").wstring();
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Press(IDC_BROWSE);
    ui.AnswerFileDialog(image);
    ui.WaitForControl(IDC_APPLY_DEFAULTS);
    EXPECT_EQ(ui.Text(IDC_IMAGE), image);
}

// ---- checks ---------------------------------------------------------------------------------------------------------

TEST(EditDefaults, ABadAddressAndAMissingImageGiveOnlyTheMessageAboutTheAddress)
{
    SendFaxSession session(WithoutTextLibrary());
    UiDriver& ui = InEditDefaults(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Type(IDC_EMAIL, L"user.example");
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_IMAGE, L"C:\\missing.bmp");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDNO),
              WarningBox(L"The e-mail address is not in a recognized e-mail format.  Do you still want to use it?",
                         MB_ICONWARNING, {IDYES, IDNO}));
    EXPECT_TRUE(ui.HasControl(IDC_APPLY_DEFAULTS)); // no second box, the dialog is still open
    EXPECT_EQ(ui.FocusedControl(), IDC_EMAIL);
    EXPECT_TRUE(AllSelected(ui, IDC_EMAIL));

    ui.Press(IDOK);
    ui.AnswerBox(IDYES);
    EXPECT_EQ(ui.AnswerBox(IDOK), ErrorBox(L"The file cannot be found."));
    EXPECT_EQ(ui.FocusedControl(), IDC_IMAGE);
    EXPECT_TRUE(AllSelected(ui, IDC_IMAGE));
    EXPECT_EQ(session.StoredDefaults(), UserDefaults()); // nothing until all checks pass
}

TEST(EditDefaults, AMissingAddressIsAnErrorOnlyWithNotificationByEmail)
{
    SendFaxSession session;
    UiDriver& ui = InEditDefaults(session);
    ui.Choose(IDC_NOTIFY_EMAIL);
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK).icon, static_cast<UINT>(MB_ICONERROR));
    EXPECT_EQ(ui.FocusedControl(), IDC_EMAIL);
    ui.Choose(IDC_NOTIFY_PRINT);
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults().size(), 14u);
    session.Cancel();
}

TEST(EditDefaults, AnImageMustBeNamedAsABitmap)
{
    const TemporaryFolder folder;
    const std::wstring upper = folder.NewFile(L"Logo.BMP").wstring();
    SendFaxSession session(WithoutTextLibrary());
    UiDriver& ui = InEditDefaults(session);
    ui.Check(IDC_COVER_PAGE, true);
    ui.Paste(IDC_IMAGE, folder.NewFile(L"logo.bmp.txt").wstring());
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"The file format is not supported. Please specify a bitmap (.bmp) file.");
    EXPECT_EQ(ui.FocusedControl(), IDC_IMAGE);
    ui.Paste(IDC_IMAGE, upper);
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults()[L"OverlayPath"], DefaultValue(upper));
    session.Cancel();
}

TEST(EditDefaults, TheImageIsNotCheckedWithoutACoverPage)
{
    SendFaxSession session;
    session.SetDefault(L"OverlayPath", L"C:\\missing.bmp");
    UiDriver& ui = InEditDefaultsAgain(session);
    ui.Press(IDOK);
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(session.StoredDefaults()[L"OverlayPath"], DefaultValue(L"C:\\missing.bmp"));
    session.Cancel();
}

// ---- captions -------------------------------------------------------------------------------------------------------

TEST(EditDefaults, TheBuiltInTextsHaveADashOnTheSetupPageAndInTheTitleOnly)
{
    SendFaxSession session(WithoutTextLibrary());
    session.Start();
    UiDriver& ui = session.Ui();
    ui.WaitForControl(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(ui.Text(IDC_EDIT_DEFAULTS), L"-Edit Defaults...");
    EXPECT_EQ(ui.Text(IDC_EDIT_PHONE_BOOK), L"-Edit PhoneBook...");
    const std::pair<int, const wchar_t*> both[] = {
        {IDC_SENDER_GROUP, L"Sender Information"},
        {IDC_SENDER_NAME_LABEL, L"Sender Name:"},
        {IDC_SENDER_FAX_LABEL, L"Fax Number:"},
        {IDC_SENDER_COMPANY_LABEL, L"Company Name:"},
        {IDC_SENDER_VOICE_LABEL, L"Voice Phone Number:"},
        {IDC_QUALITY_GROUP, L"Fax Quality"},
        {IDC_RESOLUTION_LABEL, L"Resolution:"},
        {IDC_STANDARD, L"Standard"},
        {IDC_FINE, L"Fine"},
        {IDC_SUPERFINE, L"Superfine"},
        {IDC_NOTIFICATION_GROUP, L"Notification"},
        {IDC_NOTIFY_LABEL, L"Notification:"},
        {IDC_NOTIFY_NEVER, L"None"},
        {IDC_NOTIFY_THIS_JOB, L"This Job"},
        {IDC_NOTIFY_ON_ERROR, L"On Error"},
        {IDC_NOTIFY_TYPE_LABEL, L"Type:"},
        {IDC_NOTIFY_PRINT, L"Print"},
        {IDC_NOTIFY_EMAIL, L"E-mail"},
        {IDC_EMAIL_LABEL, L"E-mail Address:"},
        {IDC_PREVIEW_GROUP, L"Preview"},
        {IDC_PREVIEW, L"Show Preview Before Sending Fax"},
    };
    for (const auto& [control, caption] : both)
        EXPECT_EQ(ui.Text(control), std::wstring(L"-") + caption) << control;
    ui.Press(IDC_EDIT_DEFAULTS);
    EXPECT_EQ(ui.Title(), L"-Default Settings");
    for (const auto& [control, caption] : both)
        EXPECT_EQ(ui.Text(control), caption) << control;
    const std::pair<int, const wchar_t*> own[] = {
        {IDC_COVER_PAGE_GROUP, L"Include With Fax"},
        {IDC_COVER_PAGE, L"Co&ver Page"},
        {IDC_NOTES_LABEL, L"Notes:"},
        {IDC_SUBJECT_LABEL, L"Subject:"},
        {IDC_IMAGE_LABEL, L"Image:"},
        {IDC_BROWSE, L"Browse"},
        {IDC_APPLY_GROUP, L""},
        {IDC_APPLY_DEFAULTS, L"Apply Defaults to this &job"},
        {IDOK, L"OK"},
        {IDCANCEL, L"Cancel"},
        {IDHELP, L"HELP"},
    };
    for (const auto& [control, caption] : own)
        EXPECT_EQ(ui.Text(control), caption) << control;
}

} // namespace
} // namespace qx::test
