// What the user is told of each problem, and the field that mends it.
#pragma once

#include "pages/send_rules.h"
#include "text/localized_text.h"

#include <optional>
#include <windows.h>

namespace qx {

// Tells the user of the problem, if there is one, and answers the control to correct; 0 when nothing is to be corrected
// or the user insists. leastDigits is the least length of a billing code.
int ReportProblem(const TextOwner& texts, HWND dialog, std::optional<SendProblem> problem, DWORD leastDigits = 0);

} // namespace qx
