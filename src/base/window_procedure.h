// Our procedure in front of a window's own, without taking another one away that somebody puts in front of ours.
#pragma once

#include <windows.h>

namespace qx {

// Makes ours the window's procedure; answers the one before, for CallWindowProcW.
WNDPROC ReplaceProcedure(HWND window, WNDPROC ours) noexcept;

// The same for a procedure that finds what it needs in the window's own data, which are free. previous is known before
// ours is called. Throws, with the window's procedure as it was, when the window does not take both.
void HookWithData(HWND window, WNDPROC ours, const void* data, WNDPROC& previous);

// Puts previous back while ours is still the window's procedure. Otherwise whoever came after us goes on calling ours,
// which has nothing to say any more and hands every message to CallProcedureBefore. For the window's own thread.
void RestoreProcedure(HWND window, WNDPROC ours, WNDPROC previous) noexcept;

// What came before ours in a window that RestoreProcedure had to leave as it was; without such, the system's default.
LRESULT CallProcedureBefore(HWND window, UINT message, WPARAM w, LPARAM l) noexcept;

} // namespace qx
