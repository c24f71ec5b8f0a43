#include "pages/send_settings.h"

#include "base/limits.h"
#include "base/printer.h"
#include "base/text.h"
#include "record/fax_job_data.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

// A radio button and the value that it stands for.
struct Choice {
    int control;
    DWORD value;
};

constexpr DWORD kNotifyNever = 0;
constexpr DWORD kMethodNone = 0;
constexpr DWORD kMethodPrint = 1;
constexpr DWORD kMethodEmail = 2;

constexpr Choice kResolutions[] = {{IDC_STANDARD, 0}, {IDC_FINE, 1}, {IDC_SUPERFINE, 2}};
constexpr Choice kOccasions[] = {{IDC_NOTIFY_NEVER, kNotifyNever}, {IDC_NOTIFY_THIS_JOB, 1}, {IDC_NOTIFY_ON_ERROR, 2}};
constexpr Choice kMethods[] = {{IDC_NOTIFY_PRINT, kMethodPrint}, {IDC_NOTIFY_EMAIL, kMethodEmail}};

constexpr int kNotificationFields[] = {IDC_NOTIFY_NEVER, IDC_NOTIFY_THIS_JOB, IDC_NOTIFY_ON_ERROR,
                                       IDC_NOTIFY_PRINT, IDC_NOTIFY_EMAIL,    IDC_EMAIL};
constexpr int kNotificationLabels[] = {IDC_NOTIFICATION_GROUP, IDC_NOTIFY_LABEL, IDC_NOTIFY_TYPE_LABEL,
                                       IDC_EMAIL_LABEL};

void TakeAway(HWND dialog, int control) noexcept
{
    EnableControl(dialog, control, false);
    ShowControl(dialog, control, false);
}

// False for a value that no button stands for: the buttons and the value chosen before stay as they are.
bool Choose(HWND dialog, std::span<const Choice> choices, DWORD value, DWORD& chosen)
{
    if (std::ranges::find(choices, value, &Choice::value) == choices.end())
        return false;
    for (const Choice& choice : choices)
        SetChecked(dialog, choice.control, choice.value == value);
    chosen = value;
    return true;
}

// The user has clicked a control. False when it is none of the choices.
bool TakeChoice(std::span<const Choice> choices, int control, DWORD& chosen) noexcept
{
    const auto choice = std::ranges::find(choices, control, &Choice::control);
    if (choice == choices.end())
        return false;
    chosen = choice->value;
    return true;
}

// What the buttons show was not taken over when one was clicked.
void ExpectChosen(HWND dialog, std::span<const Choice> choices, DWORD chosen)
{
    for (const Choice& choice : choices) {
        if (choice.value != chosen && IsChecked(dialog, choice.control))
            throw std::runtime_error("a choice was not read");
    }
}

void LoadSender(SendSettings& settings, const FaxJobData& record)
{
    const HWND dialog = settings.dialog;
    SetFieldText(dialog, IDC_SENDER_NAME, record.SenderName);
    SetFilteredText(settings.faxNumber, dialog, IDC_SENDER_FAX, record.SenderFaxNo);
    SetFieldText(dialog, IDC_SENDER_COMPANY, record.SenderCompany);
    SetFilteredText(settings.voiceNumber, dialog, IDC_SENDER_VOICE, record.SenderVoiceNo);
}

void LoadMethod(SendSettings& settings, const FaxJobData& record)
{
    const HWND dialog = settings.dialog;
    SetFieldText(dialog, IDC_EMAIL, record.NotifyEmail);
    if (Choose(dialog, kMethods, record.NotifyMethod, settings.notifyMethod))
        EnableControl(dialog, IDC_EMAIL, settings.notifyMethod == kMethodEmail);
}

// The address is not shown, and what the empty field says is what is saved.
void OfferPrintOnly(SendSettings& settings)
{
    EnableControl(settings.dialog, IDC_NOTIFY_EMAIL, false);
    EnableControl(settings.dialog, IDC_EMAIL, false);
    Choose(settings.dialog, kMethods, kMethodPrint, settings.notifyMethod);
}

void TakeNotificationAway(SendSettings& settings) noexcept
{
    for (const int control : kNotificationFields)
        TakeAway(settings.dialog, control);
    for (const int control : kNotificationLabels)
        ShowControl(settings.dialog, control, false);
    settings.notifyOn = kNotifyNever;
    settings.notifyMethod = kMethodNone;
}

void LoadNotification(SendSettings& settings, const FaxJobData& record)
{
    if (record.NotificationAvailable == 0)
        return TakeNotificationAway(settings);
    Choose(settings.dialog, kOccasions, record.NotifyOn, settings.notifyOn);
    if (record.EmailServiceOperational != 0)
        LoadMethod(settings, record);
    else
        OfferPrintOnly(settings);
}

// A radio button, or another control: then false.
bool AnswerClick(SendSettings& settings, int control) noexcept
{
    if (TakeChoice(kMethods, control, settings.notifyMethod)) {
        EnableControl(settings.dialog, IDC_EMAIL, settings.notifyMethod == kMethodEmail);
        return true;
    }
    return TakeChoice(kResolutions, control, settings.resolution) || TakeChoice(kOccasions, control, settings.notifyOn);
}

constexpr Route<SendSettings> kRoutes[] = {
    {IDC_SENDER_FAX, EN_CHANGE, FilterField<&SendSettings::faxNumber, IDC_SENDER_FAX>},
    {IDC_SENDER_VOICE, EN_CHANGE, FilterField<&SendSettings::voiceNumber, IDC_SENDER_VOICE>},
    {IDC_PREVIEW, BN_CLICKED, TogglePreview},
};

} // namespace

void LoadSendSettings(SendSettings& settings, const FaxJobData& record)
{
    LoadSender(settings, record);
    Choose(settings.dialog, kResolutions, record.Resolution, settings.resolution);
    LoadNotification(settings, record);
}

void LoadPreview(SendSettings& settings, HANDLE printer, const FaxJobData& record)
{
    settings.previewOffered = IsLocalPrinter(printer);
    settings.showPreview = settings.previewOffered && record.ShowPreview != 0 ? 1 : 0;
    SetChecked(settings.dialog, IDC_PREVIEW, settings.showPreview != 0);
    if (settings.previewOffered)
        return;
    TakeAway(settings.dialog, IDC_PREVIEW);
    ShowControl(settings.dialog, IDC_PREVIEW_GROUP, false);
}

void TogglePreview(SendSettings& settings)
{
    settings.showPreview = IsChecked(settings.dialog, IDC_PREVIEW) ? 1 : 0;
}

std::optional<SendProblem> CheckEmail(const SendSettings& settings, const FaxJobData& record)
{
    if (record.EmailServiceOperational == 0 || !IsChecked(settings.dialog, IDC_NOTIFY_EMAIL))
        return {};
    return CheckEmailAddress(FieldText(settings.dialog, IDC_EMAIL, kEmailLimit + 1));
}

void SaveSendSettings(const SendSettings& settings, FaxJobData& record)
{
    const HWND dialog = settings.dialog;
    // What the box shows was not taken over when it was clicked.
    if (IsChecked(dialog, IDC_PREVIEW) != (settings.showPreview != 0))
        throw std::runtime_error("the preview's check box was not read");
    ExpectChosen(dialog, kResolutions, settings.resolution);
    ExpectChosen(dialog, kOccasions, settings.notifyOn);
    ExpectChosen(dialog, kMethods, settings.notifyMethod);
    SetSenderName(record, FieldText(dialog, IDC_SENDER_NAME, kTextUnits).c_str());
    SetSenderFaxNo(record, FieldText(dialog, IDC_SENDER_FAX, kTextUnits).c_str());
    SetSenderCompany(record, FieldText(dialog, IDC_SENDER_COMPANY, kTextUnits).c_str());
    SetSenderVoiceNo(record, FieldText(dialog, IDC_SENDER_VOICE, kTextUnits).c_str());
    record.Resolution = settings.resolution;
    record.NotifyOn = settings.notifyOn;
    record.NotifyMethod = settings.notifyMethod;
    SetNotifyEmail(record, FieldText(dialog, IDC_EMAIL, kEmailLimit + 1).c_str());
    record.ShowPreview = settings.showPreview;
    if (!HasSendSettings(record))
        throw std::bad_alloc();
}

void KeepNotification(FaxJobData& chosen, const FaxJobData& stored)
{
    if (stored.NotificationAvailable != 0 && stored.EmailServiceOperational != 0)
        return;
    if (stored.NotificationAvailable == 0)
        chosen.NotifyOn = stored.NotifyOn;
    chosen.NotifyMethod = stored.NotifyMethod;
    SetNotifyEmail(chosen, OrEmpty(stored.NotifyEmail));
    if (!HasSendSettings(chosen))
        throw std::bad_alloc();
}

INT_PTR AnswerCommand(SendSettings& settings, int control, UINT code)
{
    return (code == BN_CLICKED && AnswerClick(settings, control)) || RunRoute(kRoutes, settings, control, code);
}

} // namespace qx
