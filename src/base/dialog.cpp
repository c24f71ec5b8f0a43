#include "base/dialog.h"

#include <algorithm>

namespace qx {

std::wstring WindowText(HWND window, std::size_t units)
{
    const auto length = static_cast<std::size_t>(std::max(GetWindowTextLengthW(window), 0));
    std::wstring text(std::min(length, units), L'\0');
    const int copied = GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(std::max(copied, 0)));
    return text;
}

std::wstring WindowText(HWND window)
{
    return WindowText(window, static_cast<std::size_t>(-1));
}

void EnableControl(HWND dialog, int control, bool enabled) noexcept
{
    const HWND window = GetDlgItem(dialog, control);
    if (!enabled && window != nullptr && GetFocus() == window)
        SendMessageW(dialog, WM_NEXTDLGCTL, 0, FALSE);
    EnableWindow(window, enabled);
}

} // namespace qx
