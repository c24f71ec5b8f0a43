// Buttons that grow with their captions.
#pragma once

#include <string>
#include <windows.h>

namespace qx {

// Of one line, in the font that is selected (pixels).
int TextWidth(HDC dc, const std::wstring& text) noexcept;

// Makes a control wider by so many pixels before its left and behind its right edge, as its parent's coordinates run:
// in a mirrored dialog left is right. False: it stays as it is.
bool Widen(HWND control, int before, int behind) noexcept;

// Widens a button whose caption does not fit, behind its end. Nothing else moves.
void FitButtonToText(HWND button);

} // namespace qx
