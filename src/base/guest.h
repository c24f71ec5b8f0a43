// The module is a guest in somebody else's process: what it needs to be different while it works is put back.
#pragma once

#include "base/no_copy.h"

#include <cfenv>
#include <windows.h>

namespace qx {

// For the length of one call, on the calling thread:
// - dialogs keep their stated pixel sizes and are scaled by the system, whatever DPI mode the printing program runs in;
// - an empty drive in a path does not raise a box of the system;
// - floating-point exceptions, which some programs unmask, stay quiet.
// At the end these and the cursor are what they were before.
class GuestScope : NoCopy {
public:
    GuestScope() noexcept;
    ~GuestScope();

private:
    std::fenv_t floatingPoint_;
    unsigned vectorFloatingPoint_;
    HCURSOR cursor_;
    // The system's, from the start to the end; null when it has none.
    DPI_AWARENESS_CONTEXT(WINAPI* setDpiContext_)(DPI_AWARENESS_CONTEXT) = nullptr;
    DPI_AWARENESS_CONTEXT dpiContext_ = nullptr;
    DWORD errorMode_ = 0;
};

// The calling thread's active window, or null.
HWND ActiveWindowOfThread() noexcept;

} // namespace qx
