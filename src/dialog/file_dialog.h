// The system's open and save dialogs, as a guest shows them.
#pragma once

#include <windows.h> // before the headers that build on it

#include <commdlg.h>

namespace qx {

// Shows GetOpenFileNameW or GetSaveFileNameW, whatever the calling thread's COM apartment is, modal to its owner and
// under the module's activation context. Where the user has gone there does not move the program's current directory.
// False when the user cancels, or when there is no dialog.
bool AskForFileName(BOOL(WINAPI* ask)(OPENFILENAMEW*), OPENFILENAMEW& dialog) noexcept;

} // namespace qx
