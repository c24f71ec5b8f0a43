#include "pages/setup_page.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "res/setup_page_ids.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "settings/registry.h"

#include <new>
#include <stdexcept>

namespace qx {

namespace {

constexpr Control kControls[] = {
    {.id = IDC_EDIT_DEFAULTS, .text = 5226, .fallback = L"-Edit Defaults...", .topic = 15599},
    {.id = IDC_EDIT_PHONE_BOOK, .text = 6067, .fallback = L"-Edit PhoneBook...", .topic = 15703},
    {.id = IDC_SENDER_GROUP, .text = 5227, .fallback = L"-Sender Information"},
    {.id = IDC_SENDER_NAME_LABEL, .text = 5228, .fallback = L"-Sender Name:", .topic = 15600},
    {.id = IDC_SENDER_NAME, .limit = kNameLimit, .topic = 15600},
    {.id = IDC_SENDER_FAX_LABEL, .text = 5209, .fallback = L"-Fax Number:", .topic = 15627},
    {.id = IDC_SENDER_FAX, .limit = kNameLimit, .topic = 15627, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_SENDER_COMPANY_LABEL, .text = 5210, .fallback = L"-Company Name:", .topic = 15626},
    {.id = IDC_SENDER_COMPANY, .limit = kNameLimit, .topic = 15626},
    {.id = IDC_SENDER_VOICE_LABEL, .text = 5229, .fallback = L"-Voice Phone Number:", .topic = 15601},
    {.id = IDC_SENDER_VOICE, .limit = kNameLimit, .topic = 15601, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_QUALITY_GROUP, .text = 5230, .fallback = L"-Fax Quality"},
    {.id = IDC_RESOLUTION_LABEL, .text = 5231, .fallback = L"-Resolution:"},
    {.id = IDC_STANDARD, .text = 5311, .fallback = L"-Standard", .topic = 15620},
    {.id = IDC_FINE, .text = 5232, .fallback = L"-Fine", .topic = 15603},
    {.id = IDC_SUPERFINE, .text = 5233, .fallback = L"-Superfine", .topic = 15604},
    {.id = IDC_NOTIFICATION_GROUP, .text = 5234, .fallback = L"-Notification"},
    {.id = IDC_NOTIFY_LABEL, .text = 5235, .fallback = L"-Notification:"},
    {.id = IDC_NOTIFY_NEVER, .text = 5312, .fallback = L"-None", .topic = 15628},
    {.id = IDC_NOTIFY_THIS_JOB, .text = 5236, .fallback = L"-This Job", .topic = 15605},
    {.id = IDC_NOTIFY_ON_ERROR, .text = 5237, .fallback = L"-On Error", .topic = 15606},
    {.id = IDC_NOTIFY_TYPE_LABEL, .text = 5238, .fallback = L"-Type:"},
    {.id = IDC_NOTIFY_PRINT, .text = 5239, .fallback = L"-Print", .topic = 15607},
    {.id = IDC_NOTIFY_EMAIL, .text = 5240, .fallback = L"-E-mail", .topic = 15608},
    {.id = IDC_EMAIL_LABEL, .text = 5241, .fallback = L"-E-mail Address:", .topic = 15609},
    {.id = IDC_EMAIL, .limit = kEmailLimit, .topic = 15609, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_PREVIEW_GROUP, .text = 4304, .fallback = L"-Preview"},
    {.id = IDC_PREVIEW, .text = 5242, .fallback = L"-Show Preview Before Sending Fax", .topic = 15610},
};
static_assert(IdsAreUnique(kControls));

// ---- start-up ----

void FitSendButtonToText(SetupPage& page)
{
    page.settings.showPreview = PreviewIsChecked(page.dialog) ? 1 : 0;
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

// The device's flags decide in the defaults dialog, too, what can be chosen.
void LoadWorkingDefaults(SetupPage& page)
{
    FaxJobData& defaults = page.defaults.Get();
    ReadDeviceState(defaults, page.printer);
    LoadFaxDefaults(defaults);

    page.defaultsDialog.hStringDll = page.hStringDll;
    CopyText(page.defaultsDialog.HelpFilePath, page.HelpFilePath);
    page.defaultsDialog.printer = page.printer;
    page.defaultsDialog.defaults = &defaults;
}

void HookSheet(SetupPage& page)
{
    if (!page.sheet->PageCreated(GetParent(page.dialog)))
        throw std::runtime_error("the sheet cannot be hooked");
    // Hooking the sheet gives the Send button its first caption.
    if (page.settings.previewOffered)
        FitSendButtonToText(page);
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
    if (ShowEditDefaults(page.dialog, page.defaultsDialog) == IDOK && TakeDefaults(*page.job, page.defaults.Get()))
        LoadSetupPage(page);
}

// The book in memory holds what a cancelled edit left behind: it is read again either way.
void EditPhoneBook(SetupPage& page)
{
    EditPhoneBookContext context(page, *page.book);
    ShowModal<kEditPhoneBookDialog>(page.dialog, context);
    ReloadSorted(*page.book);
}

// ---- the sheet's questions ----

INT_PTR Apply(SetupPage& page)
{
    page.sheet->Round().Ask(SendRound::kSetup);
    page.draft.reset();
    if (!ValidateSetupPage(page)) {
        FocusAfterRefusal(page.errorField);
        return Answer(page.dialog, PSNRET_INVALID);
    }
    PrepareSetupPage(page);
    if (page.sheet->Round().Accept(SendRound::kSetup))
        page.sheet->SendJob();
    return Answer(page.dialog, PSNRET_NOERROR);
}

INT_PTR Reset(SetupPage& page) noexcept
{
    page.job->Cancelled = 1;
    return Answer(page.dialog, 0);
}

// Null lets the sheet choose.
INT_PTR InitialFocus(const SetupPage& page) noexcept
{
    return AnswerWithField(page.dialog, page.errorField);
}

INT_PTR AnswerSheet(SetupPage& page, UINT code)
{
    switch (code) {
    case PSN_APPLY:
        return Apply(page);
    case PSN_RESET:
        return Reset(page);
    case PSN_QUERYINITIALFOCUS:
        return InitialFocus(page);
    default:
        return FALSE;
    }
}

// ---- routes ----

constexpr Route<SetupPage> kRoutes[] = {
    {IDC_EDIT_DEFAULTS, BN_CLICKED, EditDefaults},
    {IDC_EDIT_PHONE_BOOK, BN_CLICKED, EditPhoneBook},
    {IDC_PREVIEW, BN_CLICKED, FitSendButtonToText},
};

} // namespace

// ---- the dialog procedure's questions ----

void Initialize(SetupPage& page)
{
    page.settings.dialog = page.dialog;
    SetUpControls(page, page.dialog, kControls);
    LoadWorkingDefaults(page);
    LoadSetupPage(page);
    HookSheet(page);
}

std::span<const Route<SetupPage>> RoutesOf(const SetupPage&) noexcept
{
    return kRoutes;
}

INT_PTR HandleOther(SetupPage& page, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_COMMAND:
        return RunRoute(page.settings, LOWORD(w), HIWORD(w));
    case WM_NOTIFY:
        return AnswerSheet(page, reinterpret_cast<const NMHDR*>(l)->code);
    default:
        return AnswerHelp(page, page.dialog, message, w, l, kControls);
    }
}

void CouldNotBeFilled(SetupPage& page) noexcept
{
    EndSheetAsCancelled(page.dialog, *page.job);
}

// ---- interface ----

SetupPage::~SetupPage()
{
    CloseKeys(KeySetOf(defaults.Get()));
}

INT_PTR CALLBACK SetupPageProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    return PageProcedure<SetupPage>(dialog, message, w, l);
}

std::span<const Control> SetupPageControls() noexcept
{
    return kControls;
}

void FitSendButtonOfSheet(SetupPage& page)
{
    if (page.dialog != nullptr && page.settings.previewOffered)
        FitSendButton(page, GetParent(page.dialog), PreviewIsChecked(page.dialog), page.sendButtonGrowth);
}

bool ValidateSetupPage(SetupPage& page)
{
    if (ConfirmEmailAddress(page, page.dialog, *page.job))
        return true;
    page.errorField = GetDlgItem(page.dialog, IDC_EMAIL);
    return false;
}

void PrepareSetupPage(SetupPage& page)
{
    FaxJobData& draft = page.draft.emplace().Get();
    SaveSendSettings(page.settings, draft);
    if (draft.NotifyOn == 0)
        draft.NotifyMethod = 0;
}

void SaveSetupPage(SetupPage& page) noexcept
{
    ExchangeSendSettings(*page.job, page.draft->Get());
    page.draft.reset();
    page.job->Cancelled = 0;
}

} // namespace qx
