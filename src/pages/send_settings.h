// The controls that the Setup page and the Edit Defaults dialog share: sender, fax quality, notification, preview.
#pragma once

#include "base/number_text.h"
#include "dialog/dialog.h"
#include "dialog/number_filter.h"
#include "text/localized_text.h"

#include <qxfax/send_fax.h>
#include <span>
#include <windows.h>

namespace qx {

// The shared part of a dialog, with what the user has chosen so far. Values are those of the job record.
struct SendSettings {
    HWND dialog = nullptr;
    NumberFilter faxNumber{.allowed = AllowedInFaxNumber, .accepted = {}};
    // Without square brackets, on purpose: only a fax number may have them.
    NumberFilter voiceNumber{.allowed = AllowedInVoiceNumber, .accepted = {}};
    DWORD resolution = 0;
    DWORD notifyOn = 0;
    DWORD notifyMethod = 0;
    DWORD showPreview = 0;
    bool previewOffered = false;
};

// Shows the record's sender, quality and notification. What the device cannot do is hidden or disabled.
void LoadSendSettings(SendSettings& settings, const FaxJobData& record);

// Shows whether to preview; a printer of a print server offers no preview, and hides it.
void LoadPreview(SendSettings& settings, HANDLE printer, const FaxJobData& record);

bool PreviewIsChecked(HWND dialog) noexcept;

// Whether the address may stay: the user is told when it is missing, and asked when it does not look like one.
// False means that the address field is to be corrected. Without the device's e-mail service, or with printed
// notification, it is not looked at.
[[nodiscard]] bool ConfirmEmailAddress(const TextOwner& texts, HWND dialog, const FaxJobData& record);

// Writes sender, quality, notification and preview to the record. Throws, with a part of them written, when one cannot
// be read or stored.
void SaveSendSettings(const SendSettings& settings, FaxJobData& record);

// What the shared controls do.
std::span<const Route<SendSettings>> RoutesOf(const SendSettings&) noexcept;

} // namespace qx
