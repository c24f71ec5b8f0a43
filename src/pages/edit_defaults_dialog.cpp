#include "pages/edit_defaults_dialog.h"

#include "pages/cover_page.h"
#include "record/fax_job_data.h"
#include "res/edit_defaults_ids.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "text/help.h"

namespace qx {

namespace {

constexpr Text kTitle{5243, L"-Default Settings"};
constexpr int kHelpButtonTopic = 15621; // of a click; the button's own context help is another page

constexpr Control kControls[] = {
    {.id = IDC_SENDER_GROUP, .text = 5227, .fallback = L"Sender Information"},
    {.id = IDC_SENDER_NAME_LABEL, .text = 5228, .fallback = L"Sender Name:", .topic = 15600},
    {.id = IDC_SENDER_NAME, .limit = kNameLimit, .topic = 15600},
    {.id = IDC_SENDER_FAX_LABEL, .text = 5209, .fallback = L"Fax Number:", .topic = 15627},
    {.id = IDC_SENDER_FAX, .limit = kNameLimit, .topic = 15627, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_SENDER_COMPANY_LABEL, .text = 5210, .fallback = L"Company Name:", .topic = 15626},
    {.id = IDC_SENDER_COMPANY, .limit = kNameLimit, .topic = 15626},
    {.id = IDC_SENDER_VOICE_LABEL, .text = 5229, .fallback = L"Voice Phone Number:", .topic = 15601},
    {.id = IDC_SENDER_VOICE, .limit = kNameLimit, .topic = 15601, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_QUALITY_GROUP, .text = 5230, .fallback = L"Fax Quality"},
    {.id = IDC_RESOLUTION_LABEL, .text = 5231, .fallback = L"Resolution:"},
    {.id = IDC_STANDARD, .text = 5333, .fallback = L"Standard", .topic = 15620},
    {.id = IDC_FINE, .text = 5232, .fallback = L"Fine", .topic = 15603},
    {.id = IDC_SUPERFINE, .text = 5233, .fallback = L"Superfine", .topic = 15604},
    {.id = IDC_NOTIFICATION_GROUP, .text = 5234, .fallback = L"Notification"},
    {.id = IDC_NOTIFY_LABEL, .text = 5235, .fallback = L"Notification:"},
    {.id = IDC_NOTIFY_NEVER, .text = 5335, .fallback = L"None", .topic = 15628},
    {.id = IDC_NOTIFY_THIS_JOB, .text = 5236, .fallback = L"This Job", .topic = 15605},
    {.id = IDC_NOTIFY_ON_ERROR, .text = 5237, .fallback = L"On Error", .topic = 15606},
    {.id = IDC_NOTIFY_TYPE_LABEL, .text = 5238, .fallback = L"Type:"},
    {.id = IDC_NOTIFY_PRINT, .text = 5239, .fallback = L"Print", .topic = 15607},
    {.id = IDC_NOTIFY_EMAIL, .text = 5240, .fallback = L"E-mail", .topic = 15608},
    {.id = IDC_EMAIL_LABEL, .text = 5241, .fallback = L"E-mail Address:", .topic = 15609},
    {.id = IDC_EMAIL, .limit = kEmailLimit, .topic = 15609, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_COVER_PAGE_GROUP, .text = 5216, .fallback = L"Include With Fax"},
    {.id = IDC_COVER_PAGE, .text = 6094, .fallback = L"Co&ver Page", .topic = 15591},
    {.id = IDC_NOTES_LABEL, .text = 5334, .fallback = L"Notes:", .topic = 15592},
    {.id = IDC_NOTES, .limit = kNotesLimit, .topic = 15592},
    {.id = IDC_SUBJECT_LABEL, .text = 5219, .fallback = L"Subject:", .topic = 15593},
    {.id = IDC_SUBJECT, .limit = kNameLimit, .topic = 15593},
    {.id = IDC_IMAGE_LABEL, .text = 5310, .fallback = L"Image:", .topic = 15625},
    {.id = IDC_IMAGE, .limit = kImagePathLimit, .topic = 15625, .leftToRight = true},
    {.id = IDC_BROWSE, .text = 5220, .fallback = L"Browse", .topic = 15594},
    {.id = IDC_PREVIEW_GROUP, .text = 4304, .fallback = L"Preview"},
    {.id = IDC_PREVIEW, .text = 5242, .fallback = L"Show Preview Before Sending Fax", .topic = 15610},
    {.id = IDC_APPLY_GROUP},
    {.id = IDC_APPLY_DEFAULTS, .text = 6069, .fallback = L"Apply Defaults to this &job", .topic = 15702},
    {.id = IDOK, .text = 5249, .fallback = L"OK"},
    {.id = IDCANCEL, .text = 5224, .fallback = L"Cancel"},
    {.id = IDHELP, .text = 5225, .fallback = L"HELP", .topic = 15598},
};
static_assert(IdsAreUnique(kControls));

// ---- start-up ----

void LoadDefaults(EditDefaultsDialog& state)
{
    FaxJobData& defaults = *state.defaults;
    defaults.PrinterHandle = state.printer;
    // The first defaults that the user stores are applied to the job in any case.
    defaults.DefaultsSaved = LoadFaxDefaults(defaults) ? 0 : 1;
}

void ShowDefaults(EditDefaultsDialog& state)
{
    const FaxJobData& defaults = *state.defaults;
    LoadSendSettings(state.settings, defaults);
    LoadCoverPageFields(state.dialog, defaults);
    LoadPreview(state.settings, state.printer, defaults);
    if (!state.settings.previewOffered)
        EnableControl(state.dialog, IDC_PREVIEW_GROUP, false); // the Setup page leaves its own group box at hidden
    CheckDlgButton(state.dialog, IDC_APPLY_DEFAULTS, defaults.ApplyDefaults != 0 ? BST_CHECKED : BST_UNCHECKED);
    // The administrator's lock of the cover page does not reach here: it binds jobs, not what the user prefers.
    if (IsSpoolerThunkHost())
        ForbidCoverPage(state.dialog);
}

// ---- commands ----

void ToggleCoverPage(EditDefaultsDialog& state)
{
    OnCoverPageToggled(state.dialog);
}

void Browse(EditDefaultsDialog& state)
{
    BrowseForOverlayImage(state.dialog);
}

void TogglePreview(EditDefaultsDialog& state)
{
    state.settings.showPreview = PreviewIsChecked(state.dialog) ? 1 : 0;
}

void Help(EditDefaultsDialog& state)
{
    ShowHelp(state, state.dialog, kHelpButtonTopic);
}

void Cancel(EditDefaultsDialog& state)
{
    state.defaults->DefaultsSaved = 0;
    EndDialog(state.dialog, IDCANCEL);
}

// The image only counts with a cover page.
bool ConfirmImage(const EditDefaultsDialog& state)
{
    const std::wstring path = WindowText(GetDlgItem(state.dialog, IDC_IMAGE));
    if (IsDlgButtonChecked(state.dialog, IDC_COVER_PAGE) != BST_CHECKED || path.empty())
        return true;
    const ImageProblem problem = CheckImage(path);
    if (problem == ImageProblem::None)
        return true;
    ShowFaxMessage(state, ImageMessage(problem), state.dialog);
    return false;
}

// The field to correct, or 0. Unlike a Send, which lists all that is wrong, one message at a time.
int FieldToCorrect(const EditDefaultsDialog& state)
{
    if (!ConfirmEmailAddress(state, state.dialog, *state.defaults))
        return IDC_EMAIL;
    return ConfirmImage(state) ? 0 : IDC_IMAGE;
}

// Nothing is stored unless all of it could be read.
void Store(const EditDefaultsDialog& state)
{
    OwnedFaxJobData chosen;
    SaveSendSettings(state.settings, chosen.Get());
    SaveCoverPageFields(state.dialog, chosen.Get());

    FaxJobData& defaults = *state.defaults;
    ExchangeSendSettings(defaults, chosen.Get());
    ExchangeCoverPage(defaults, chosen.Get());
    defaults.ApplyDefaults = IsDlgButtonChecked(state.dialog, IDC_APPLY_DEFAULTS) == BST_CHECKED ? 1 : 0;
    SaveFaxDefaults(defaults);
}

void Ok(EditDefaultsDialog& state)
{
    const int field = FieldToCorrect(state);
    if (field != 0)
        return FocusControl(state.dialog, field);
    Store(state);
    EndDialog(state.dialog, IDOK);
}

// ---- routes ----

constexpr Route<EditDefaultsDialog> kRoutes[] = {
    {IDC_COVER_PAGE, BN_CLICKED, ToggleCoverPage},
    {IDC_BROWSE, BN_CLICKED, Browse},
    {IDC_PREVIEW, BN_CLICKED, TogglePreview},
    {IDOK, BN_CLICKED, Ok},
    {IDCANCEL, BN_CLICKED, Cancel},
    {IDHELP, BN_CLICKED, Help},
};

} // namespace

// ---- the dialog procedure's questions ----

void Initialize(EditDefaultsDialog& state)
{
    state.settings.dialog = state.dialog;
    SetLocalizedText(state, kTitle.id, state.dialog, kTitle.fallback);
    SetUpControls(state, state.dialog, kControls);
    LoadDefaults(state);
    ShowDefaults(state);
}

std::span<const Route<EditDefaultsDialog>> RoutesOf(const EditDefaultsDialog&) noexcept
{
    return kRoutes;
}

INT_PTR HandleOther(EditDefaultsDialog& state, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_COMMAND)
        return RunRoute(state.settings, LOWORD(w), HIWORD(w));
    return AnswerHelp(state, state.dialog, message, w, l, kControls);
}

// ---- interface ----

INT_PTR ShowEditDefaults(HWND owner, EditDefaultsDialog& state)
{
    return ShowModal(kEditDefaultsTemplate, owner, state);
}

std::span<const Control> EditDefaultsControls() noexcept
{
    return kControls;
}

} // namespace qx
