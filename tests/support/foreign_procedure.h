// A window procedure that somebody else puts in front of whatever a window has.
#pragma once

#include <algorithm>
#include <vector>
#include <windows.h>

namespace qx::test {

// For one window at a time, and on its thread: notes the messages and passes them on.
class ForeignProcedure {
public:
    static void PutOver(HWND window)
    {
        seen_.clear();
        below_ =
            reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure)));
    }

    static std::ptrdiff_t TimesSeen(UINT message) { return std::ranges::count(seen_, message); }
    static UINT LastSeen() { return seen_.empty() ? WM_NULL : seen_.back(); }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        seen_.push_back(message);
        return CallWindowProcW(below_, window, message, w, l);
    }

    static inline WNDPROC below_ = nullptr;
    static inline std::vector<UINT> seen_;
};

} // namespace qx::test
