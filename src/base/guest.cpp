#include "base/guest.h"

#include "base/module.h"

#include <xmmintrin.h>

namespace qx {

namespace {

using SetThreadDpiAwarenessContextFunction = DPI_AWARENESS_CONTEXT WINAPI(DPI_AWARENESS_CONTEXT);

// The mode before, or null when the system has none to change.
DPI_AWARENESS_CONTEXT EnterSystemScaledMode(SetThreadDpiAwarenessContextFunction* setContext) noexcept
{
    if (setContext == nullptr)
        return nullptr;
    const DPI_AWARENESS_CONTEXT before = setContext(DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED); // its text is sharp
    return before != nullptr ? before : setContext(DPI_AWARENESS_CONTEXT_UNAWARE);
}

} // namespace

// The runtime's own environment functions leave the vector unit's exceptions unmasked.
GuestScope::GuestScope() noexcept : vectorFloatingPoint_(_mm_getcsr()), cursor_(GetCursor())
{
    std::fegetenv(&floatingPoint_);
    std::fesetenv(FE_DFL_ENV);
    _mm_setcsr(_MM_MASK_MASK);
    setDpiContext_ = SystemFunction<SetThreadDpiAwarenessContextFunction>(L"user32", "SetThreadDpiAwarenessContext");
    dpiContext_ = EnterSystemScaledMode(setDpiContext_);
    SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &errorMode_);
}

GuestScope::~GuestScope()
{
    SetThreadErrorMode(errorMode_, nullptr);
    if (dpiContext_ != nullptr)
        setDpiContext_(dpiContext_);
    SetCursor(cursor_);
    std::fesetenv(&floatingPoint_);
    _mm_setcsr(vectorFloatingPoint_);
}

HWND ActiveWindowOfThread() noexcept
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(GetCurrentThreadId(), &info) ? info.hwndActive : nullptr;
}

} // namespace qx
