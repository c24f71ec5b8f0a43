// The system's HTML Help viewer.
#pragma once

#include <string>
#include <windows.h>

namespace qx {

// Opens page ("FILE.CHM::/15596.html"), owned by owner. On a thread in the multithreaded COM apartment the viewer gets
// a thread of its own, which lives until CloseHelpViewer. A system without a viewer shows nothing.
void ShowHelpPage(HWND owner, const std::wstring& page);

// Once the calling thread shows no more dialogs: ends the viewer's own thread, and with it the viewer's windows there.
void CloseHelpViewer() noexcept;

} // namespace qx
