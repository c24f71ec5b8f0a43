#include "base/window_procedure.h"

namespace qx {

namespace {

constexpr wchar_t kBefore[] = L"qxfaxui procedure before";

WNDPROC ProcedureOf(HWND window) noexcept
{
    return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
}

// A property of a window is a handle, whatever it means.
HANDLE AsProperty(WNDPROC procedure) noexcept
{
    return reinterpret_cast<HANDLE>(procedure);
}

} // namespace

WNDPROC ReplaceProcedure(HWND window, WNDPROC ours) noexcept
{
    return reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ours)));
}

void RestoreProcedure(HWND window, WNDPROC ours, WNDPROC previous) noexcept
{
    if (ProcedureOf(window) != ours || ReplaceProcedure(window, previous) == nullptr)
        SetPropW(window, kBefore, AsProperty(previous));
}

LRESULT CallProcedureBefore(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    const auto before = reinterpret_cast<WNDPROC>(GetPropW(window, kBefore));
    if (message == WM_NCDESTROY)
        RemovePropW(window, kBefore);
    return before != nullptr ? CallWindowProcW(before, window, message, w, l) : DefWindowProcW(window, message, w, l);
}

} // namespace qx
