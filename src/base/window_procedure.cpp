#include "base/window_procedure.h"

#include <stdexcept>

namespace qx {

namespace {

constexpr wchar_t kBefore[] = L"qxfaxui procedure before";

WNDPROC ProcedureOf(HWND window) noexcept
{
    return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
}

} // namespace

WNDPROC ReplaceProcedure(HWND window, WNDPROC ours) noexcept
{
    return reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ours)));
}

void HookWithData(HWND window, WNDPROC ours, const void* data, WNDPROC& previous)
{
    previous = ProcedureOf(window);
    const auto pointer = reinterpret_cast<LONG_PTR>(data);
    SetWindowLongPtrW(window, GWLP_USERDATA, pointer);
    // The procedure relies on the data, and on the one before it.
    if (previous == nullptr || GetWindowLongPtrW(window, GWLP_USERDATA) != pointer ||
        ReplaceProcedure(window, ours) == nullptr)
        throw std::runtime_error("a control cannot be hooked");
}

void RestoreProcedure(HWND window, WNDPROC ours, WNDPROC previous) noexcept
{
    if (ProcedureOf(window) != ours || ReplaceProcedure(window, previous) == nullptr)
        SetPropW(window, kBefore, reinterpret_cast<HANDLE>(previous)); // a property is a handle, whatever it means
}

LRESULT CallProcedureBefore(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    const auto before = reinterpret_cast<WNDPROC>(GetPropW(window, kBefore));
    if (message == WM_NCDESTROY)
        RemovePropW(window, kBefore);
    return before != nullptr ? CallWindowProcW(before, window, message, w, l) : DefWindowProcW(window, message, w, l);
}

} // namespace qx
