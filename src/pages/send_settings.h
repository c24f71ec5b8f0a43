// The controls that the Setup page and the Edit Defaults dialog share: sender, fax quality, notification, preview.
#pragma once

#include "base/number_text.h"
#include "dialog/controls.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "pages/send_rules.h"
#include "res/send_settings_ids.h"
#include "text/localized_text.h"

#include <array>
#include <optional>
#include <qxfax/send_fax.h>
#include <windows.h>

namespace qx {

// The shared part of a dialog, with what the user has chosen so far. Values are those of the job record.
struct SendSettings {
    HWND dialog = nullptr;
    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}};
    // Kept: without square brackets, which only a fax number may have.
    NumberFilter voiceNumber{.allowed = AllowedInVoiceNumber, .accepted = {}};
    DWORD resolution = 0;
    DWORD notifyOn = 0;
    DWORD notifyMethod = 0;
    DWORD showPreview = 0;
    bool previewOffered = false;
};

// The Setup page's built-in texts begin with a dash, those of the Edit Defaults dialog are the same without. For two of
// the buttons they have texts of their own.
enum class BuiltInTexts { Dashed, Plain };

constexpr std::array<Control, 26> SendSettingsControls(BuiltInTexts texts, Text standard, Text notifyNever) noexcept
{
    std::array<Control, 26> controls{{
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
        {.id = IDC_STANDARD, .text = standard.id, .fallback = standard.fallback, .topic = 15620},
        {.id = IDC_FINE, .text = 5232, .fallback = L"-Fine", .topic = 15603},
        {.id = IDC_SUPERFINE, .text = 5233, .fallback = L"-Superfine", .topic = 15604},
        {.id = IDC_NOTIFICATION_GROUP, .text = 5234, .fallback = L"-Notification"},
        {.id = IDC_NOTIFY_LABEL, .text = 5235, .fallback = L"-Notification:"},
        {.id = IDC_NOTIFY_NEVER, .text = notifyNever.id, .fallback = notifyNever.fallback, .topic = 15628},
        {.id = IDC_NOTIFY_THIS_JOB, .text = 5236, .fallback = L"-This Job", .topic = 15605},
        {.id = IDC_NOTIFY_ON_ERROR, .text = 5237, .fallback = L"-On Error", .topic = 15606},
        {.id = IDC_NOTIFY_TYPE_LABEL, .text = 5238, .fallback = L"-Type:"},
        {.id = IDC_NOTIFY_PRINT, .text = 5239, .fallback = L"-Print", .topic = 15607},
        {.id = IDC_NOTIFY_EMAIL, .text = 5240, .fallback = L"-E-mail", .topic = 15608},
        {.id = IDC_EMAIL_LABEL, .text = 5241, .fallback = L"-E-mail Address:", .topic = 15609},
        {.id = IDC_EMAIL, .limit = kEmailLimit, .topic = 15609, .leftToRight = true, .noInputMethod = true},
        {.id = IDC_PREVIEW_GROUP, .text = 4304, .fallback = L"-Preview"},
        {.id = IDC_PREVIEW, .text = 5242, .fallback = L"-Show Preview Before Sending Fax", .topic = 15610},
    }};
    for (Control& control : controls) {
        if (texts == BuiltInTexts::Plain && control.fallback != nullptr && *control.fallback == L'-')
            ++control.fallback;
    }
    return controls;
}

// Shows the record's sender, quality and notification. What the device cannot do is hidden or disabled. Throws when
// something cannot be shown.
void LoadSendSettings(SendSettings& settings, const FaxJobData& record);

// Shows whether to preview; a printer of a print server offers no preview, and hides it. Throws
// when it cannot be shown.
void LoadPreview(SendSettings& settings, HANDLE printer, const FaxJobData& record);

// As the check box says. Throws when that cannot be told.
void TogglePreview(SendSettings& settings);

// What is wrong with the address, if notification by e-mail is chosen and the device has it. Throws when the field
// cannot be read.
std::optional<SendProblem> CheckEmail(const SendSettings& settings, const FaxJobData& record);

// Writes sender, quality, notification and preview to the record. Throws, with a part of them written, when one cannot
// be read or stored.
void SaveSendSettings(const SendSettings& settings, FaxJobData& record);

// What of the stored notification could not be chosen stays as it was. For a device that may have it after all. Throws
// std::bad_alloc.
void KeepNotification(FaxJobData& chosen, const FaxJobData& stored);

// What the shared controls do. FALSE: not one of them.
INT_PTR AnswerCommand(SendSettings& settings, int control, UINT code);

} // namespace qx
