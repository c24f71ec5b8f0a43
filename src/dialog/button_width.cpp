#include "dialog/button_width.h"

#include "base/trace.h"
#include "dialog/dialog.h"
#include "dialog/drawing.h"

namespace qx {

int TextWidth(HDC dc, const std::wstring& text) noexcept
{
    RECT area{};
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &area, DT_SINGLELINE | DT_CALCRECT);
    return area.right - area.left;
}

bool Widen(HWND control, int before, int behind) noexcept
{
    RECT place = PlaceOf(control);
    place.left -= before;
    place.right += behind;
    return SetPlace(control, place);
}

namespace {

// Work goes on after a failure: at worst a caption is cut.
void TraceFailure(bool succeeded, const wchar_t* call)
{
    if (!succeeded)
        Trace({L"fitting a button to its caption: no ", call});
}

} // namespace

void FitButtonToText(HWND button)
{
    const std::wstring caption = WindowText(button, kTextUnits - 1);
    RECT client{};
    TraceFailure(GetClientRect(button, &client) != FALSE, L"client rectangle");
    // The button's font is not selected: the measure stays on the wide side.
    const int needed = TextWidth(WindowDc(button).Get(), caption);
    TraceFailure(needed > 0 || caption.empty(), L"text measure");
    if (needed <= client.right)
        return;
    const bool moved = Widen(button, 0, needed - client.right);
    TraceFailure(moved, L"move");
    if (moved)
        Trace({L"a button was widened to fit its caption"});
}

} // namespace qx
