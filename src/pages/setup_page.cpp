#include "pages/setup_page.h"

#include "pages/send_problems.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"

#include <new>

namespace qx {

namespace {

constexpr auto kControls =
    Joined(std::to_array<Control>({
               {.id = IDC_EDIT_DEFAULTS, .text = 5226, .fallback = L"-Edit Defaults...", .topic = 15599},
               {.id = IDC_EDIT_PHONE_BOOK, .text = 6067, .fallback = L"-Edit PhoneBook...", .topic = 15703},
           }),
           SendSettingsControls(BuiltInTexts::Dashed, {5311, L"-Standard"}, {5312, L"-None"}));
static_assert(IdsAreUnique(kControls));

// ---- start-up ----

void FitSendButtonToText(SetupPage& page)
{
    TogglePreview(page.settings);
    // A page may be created before the sheet has laid out its buttons: then the sheet asks again when it is shown.
    if (IsWindowVisible(GetParent(page.dialog)))
        FitSendButtonOfSheet(page);
}

void LoadSetupPage(SetupPage& page)
{
    LoadSendSettings(page.settings, *page.job);
    LoadPreview(page.settings, page.printer, *page.job);
    if (page.settings.previewOffered)
        FitSendButtonToText(page);
}

// Noted before, since the fields may not take it.
void ReloadSetupPage(SetupPage& page)
{
    page.settingsAreOld = true;
    LoadSetupPage(page);
    page.settingsAreOld = false;
}

// The device's flags decide in the defaults dialog, too, what can be chosen.
void LoadWorkingDefaults(SetupPage& page)
{
    FaxJobData& defaults = page.defaults.Get();
    page.defaultsDialog.deviceIsKnown = ReadDeviceState(defaults, page.printer);
    LoadFaxDefaults(defaults);

    static_cast<TextOwner&>(page.defaultsDialog) = page;
    page.defaultsDialog.printer = page.printer;
    page.defaultsDialog.defaults = &defaults;
}

// ---- commands ----

// Whether the job takes the defaults that the user has just stored. The first ones it takes in any case.
bool TakeDefaults(FaxJobData& job, const FaxJobData& defaults)
{
    OwnedFaxJobData copy;
    CopyFaxDefaults(defaults, copy.Get());
    if (!HasSendSettings(copy.Get()) || !HasCoverPage(copy.Get()))
        throw std::bad_alloc();
    if (defaults.DefaultsSaved != 0)
        job.DefaultsSaved = 1;
    else if (defaults.ApplyDefaults != 0)
        job.ApplyDefaults = 1;
    else
        return false;
    ExchangeSendSettings(job, copy.Get());
    ExchangeCoverPage(job, copy.Get());
    job.CoverPageFromDefaults = 1;
    return true;
}

void EditDefaults(SetupPage& page)
{
    if (ShowModal<kEditDefaultsDialog>(page.dialog, page.defaultsDialog) == IDOK &&
        TakeDefaults(*page.job, page.defaults.Get()))
        ReloadSetupPage(page);
}

// The book in memory holds what a cancelled edit left behind: it is read again either way.
void EditPhoneBook(SetupPage& page)
{
    EditPhoneBookContext context(page, *page.book);
    ShowModal<kEditPhoneBookDialog>(page.dialog, context);
    ReloadSorted(*page.book);
}

// ---- the sheet's questions ----

bool ValidateSetupPage(SetupPage& page)
{
    const int field = ReportProblem(page, page.dialog, CheckEmail(page.settings, *page.job));
    if (field != 0)
        page.errorField = field;
    return field == 0;
}

bool PrepareSetupPage(SetupPage& page)
{
    if (page.settingsAreOld) {
        ReloadSetupPage(page);
        return false; // the user has not seen them yet
    }
    FaxJobData& draft = page.draft.emplace().Get();
    SaveSendSettings(page.settings, draft);
    if (draft.NotifyOn == 0)
        draft.NotifyMethod = 0;
    return true;
}

constexpr PageDuties<SetupPage> kDuties{.place = SendRound::kSetup,
                                        .activate = [](SetupPage&) {},
                                        .validate = ValidateSetupPage,
                                        .prepare = PrepareSetupPage,
                                        .errorField = [](const SetupPage& page) { return page.errorField; }};

// ---- routes ----

constexpr Route<SetupPage> kRoutes[] = {
    {IDC_EDIT_DEFAULTS, BN_CLICKED, EditDefaults},
    {IDC_EDIT_PHONE_BOOK, BN_CLICKED, EditPhoneBook},
    {IDC_PREVIEW, BN_CLICKED, FitSendButtonToText},
};

INT_PTR AnswerOther(SetupPage& page, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_COMMAND:
        return AnswerCommand(page.settings, LOWORD(w), HIWORD(w));
    case WM_NOTIFY:
        return AnswerSheet(page, kDuties, reinterpret_cast<const NMHDR*>(l)->code);
    default:
        return FALSE;
    }
}

void Fill(SetupPage& page)
{
    page.settings.dialog = page.dialog;
    LoadWorkingDefaults(page);
    LoadSetupPage(page);
    HookSheet(page);
    // Hooking the sheet gives the Send button its first caption.
    if (page.settings.previewOffered)
        FitSendButtonToText(page);
}

} // namespace

constexpr Dialog<SetupPage> kSetupPage{
    .ids = {IDD_SETUP_PAGE, IDD_SETUP_PAGE_RTL},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = AnswerOther,
    .couldNotBeFilled = EndAsCancelled<SetupPage>,
};

// ---- interface ----

void FitSendButtonOfSheet(SetupPage& page)
{
    if (page.dialog != nullptr && page.settings.previewOffered)
        FitSendButton(page, GetParent(page.dialog), page.settings.showPreview != 0, page.sendButtonGrowth);
}

void SaveSetupPage(SetupPage& page) noexcept
{
    FaxJobData& draft = page.draft->Get(); // NOLINT(bugprone-unchecked-optional-access): the page has accepted
    ExchangeSendSettings(*page.job, draft);
    page.draft.reset();
    page.job->Cancelled = 0;
}

} // namespace qx
