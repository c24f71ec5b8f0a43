// The sheet's Send button says what pressing it does: send, or show a preview first.
#pragma once

#include "text/localized_text.h"

#include <optional>
#include <windows.h>

namespace qx {

// Kept: the trailing blank. It is what the button has always read when there is no translation.
inline constexpr Text kSendText{5223, L"-&Send "};
inline constexpr Text kPreviewAndSendText{6091, L"-Preview and &Send"};

// How much the button of a sheet is wider than at first (pixels); empty while it is not.
using SendButtonGrowth = std::optional<int>;

// Gives the Send button of sheet the caption for preview and the room for it. It grows once, towards the side where a
// line begins, however often it is asked for, and returns to its first size and place.
void FitSendButton(const TextOwner& texts, HWND sheet, bool preview, SendButtonGrowth& growth);

} // namespace qx
