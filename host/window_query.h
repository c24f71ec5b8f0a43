// Windows, looked at from outside.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace qx::host {

// Controls of Windows' own windows: the tabs of a property sheet, and the name in a file dialog.
inline constexpr int kSheetTabs = 0x3020;
inline constexpr int kFileNameCombo = 1148, kFileNameEdit = 1152;

std::wstring ClassOf(HWND window);
bool IsOfClass(HWND window, const wchar_t* name); // in any letter case; null is of none

// All below parent, in the order of EnumChildWindows.
std::vector<HWND> ChildrenOf(HWND parent);
// The thread's own windows, from the topmost down.
std::vector<HWND> WindowsOf(DWORD thread);

} // namespace qx::host
