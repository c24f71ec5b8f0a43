// Input methods: how texts of languages with more letters than keys are typed.
#pragma once

#include <windows.h> // before the header that builds on it

#include <imm.h>

namespace qx::test {

// Whether what is typed into the window goes through the input method.
inline bool TakesInputMethod(HWND window)
{
    const HIMC context = ImmGetContext(window);
    if (context != nullptr)
        ImmReleaseContext(window, context);
    return context != nullptr;
}

} // namespace qx::test
