// Which printers offer a preview before sending.
#pragma once

#include <windows.h>

namespace qx {

// Preview needs a printer of this computer, one that no print server stands behind. serverName may be null.
constexpr bool PreviewOffered(const wchar_t* serverName) noexcept
{
    return serverName == nullptr || *serverName == L'\0';
}

// The same for an open printer. One that the spooler does not describe offers none.
bool IsLocalPrinter(HANDLE printer);

} // namespace qx
