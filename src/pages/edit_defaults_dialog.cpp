#include "pages/edit_defaults_dialog.h"

#include "pages/send_problems.h"
#include "record/fax_job_data.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "text/help.h"

namespace qx {

namespace {

// Kept: a click shows this page, the button's own context help is another one.
constexpr int kHelpButtonTopic = 15621;

constexpr auto kControls =
    Joined(SendSettingsControls(BuiltInTexts::Plain, {5333, L"Standard"}, {5335, L"None"}),
           CoverPageControls({5334, L"Notes:"}),
           std::to_array<Control>({
               {.id = IDC_APPLY_GROUP},
               {.id = IDC_APPLY_DEFAULTS, .text = 6069, .fallback = L"Apply Defaults to this &job", .topic = 15702},
               {.id = IDOK, .text = 5249, .fallback = L"OK"},
               {.id = IDCANCEL, .text = 5224, .fallback = L"Cancel"},
               {.id = IDHELP, .text = 5225, .fallback = L"HELP", .topic = 15598},
           }));
static_assert(IdsAreUnique(kControls));

// ---- start-up ----

void LoadDefaults(EditDefaultsDialog& state)
{
    FaxJobData& defaults = *state.defaults;
    defaults.PrinterHandle = state.printer;
    // The first defaults that the user stores are applied to the job in any case.
    defaults.DefaultsSaved = LoadFaxDefaults(defaults, UnreadDefaults::Refused) ? 0 : 1;
}

void ShowDefaults(EditDefaultsDialog& state)
{
    const FaxJobData& defaults = *state.defaults;
    LoadSendSettings(state.settings, defaults);
    LoadCoverPageFields(state.coverPage, defaults);
    LoadPreview(state.settings, state.printer, defaults);
    // Kept: the Setup page only hides its group box.
    if (!state.settings.previewOffered)
        EnableControl(state.dialog, IDC_PREVIEW_GROUP, false);
    SetChecked(state.dialog, IDC_APPLY_DEFAULTS, defaults.ApplyDefaults != 0);
    // The administrator's lock of the cover page does not reach here: it binds jobs, not what the user prefers.
    if (IsSpoolerThunkHost())
        ForbidCoverPage(state.coverPage);
}

// ---- commands ----

void Help(EditDefaultsDialog& state)
{
    ShowHelp(state, state.dialog, kHelpButtonTopic);
}

void Cancel(EditDefaultsDialog& state)
{
    state.defaults->DefaultsSaved = 0;
    EndDialog(state.dialog, IDCANCEL);
}

// The field to correct, or 0. Unlike a Send, which lists all that is wrong, one message at a time.
int FieldToCorrect(const EditDefaultsDialog& state)
{
    const int field = ReportProblem(state, state.dialog, CheckEmail(state.settings, *state.defaults));
    return field != 0 ? field : ReportProblem(state, state.dialog, CheckImage(state.coverPage));
}

// Nothing is stored unless all of it could be read.
void Store(const EditDefaultsDialog& state)
{
    OwnedFaxJobData chosen;
    SaveSendSettings(state.settings, chosen.Get());
    SaveCoverPageFields(state.coverPage, chosen.Get());

    const bool apply = IsChecked(state.dialog, IDC_APPLY_DEFAULTS);

    FaxJobData& defaults = *state.defaults;
    if (!state.deviceIsKnown)
        KeepNotification(chosen.Get(), defaults);
    ExchangeSendSettings(defaults, chosen.Get());
    ExchangeCoverPage(defaults, chosen.Get());
    defaults.ApplyDefaults = apply ? 1 : 0;
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
    {IDOK, BN_CLICKED, Ok},
    {IDCANCEL, BN_CLICKED, Cancel},
    {IDHELP, BN_CLICKED, Help},
};

INT_PTR AnswerOther(EditDefaultsDialog& state, UINT message, WPARAM w, LPARAM)
{
    return message == WM_COMMAND && (AnswerCommand(state.settings, LOWORD(w), HIWORD(w)) ||
                                     AnswerCommand(state.coverPage, LOWORD(w), HIWORD(w)));
}

void Fill(EditDefaultsDialog& state)
{
    state.settings.dialog = state.coverPage.dialog = state.dialog;
    LoadDefaults(state);
    ShowDefaults(state);
}

} // namespace

constexpr Dialog<EditDefaultsDialog> kEditDefaultsDialog{
    {IDD_EDIT_DEFAULTS, IDD_EDIT_DEFAULTS_RTL}, {5243, L"-Default Settings"}, kControls, kRoutes, Fill, AnswerOther};

} // namespace qx
